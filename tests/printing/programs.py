"""Prints what real programs make through the queues of a print server and of vlx-ipp to a virtual
printer, and reads the bar codes back from its pictures.

    programs.py BUILD [--office]

--office: a document of the office suite, too, which has to be installed.
"""

import argparse
import collections
import os
import re
import subprocess
import sys
import tempfile
import time
import zlib

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from cups_server import CupsServer, free_port

parser = argparse.ArgumentParser()
parser.add_argument("build")
parser.add_argument("--office", action="store_true")
arguments = parser.parse_args()
BIN = os.path.join(os.path.abspath(arguments.build), "bin")
TEXT = "LABEL-4711"
RED = (120, 24)  # a field on the page in two colours, in pixels of the browser, 96 an inch
faults, count = [], 0


def run(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, **options).stdout


class VirtualPrinter:
    def __init__(self, folder, dpi):
        self.folder, self.port, self.jobs = folder, free_port(), 0
        self.process = subprocess.Popen(
            [os.path.join(BIN, "vlx"), "serve", "-o", folder, "--port", str(self.port), "--dpi",
             str(dpi)], stdout=subprocess.DEVNULL)

    def stop(self):
        self.process.terminate()
        self.process.wait(30)

    def next_picture(self):
        """The first label of the next job, once its sheet is drawn."""
        self.jobs += 1
        name = os.path.join(self.folder, f"job-{self.jobs:04}")
        for _ in range(600):
            if os.path.exists(name + ".html"):
                return name + "-0001.png"
            time.sleep(0.1)
        raise RuntimeError(f"{name} does not come")


def html(width, height, svg, below="<p>A label</p>"):
    return (f"<html><head><style>@page {{size: {width}mm {height}mm; margin: 0}} body {{margin: 3mm}}"
            f"</style></head><body>{svg}{below}</body></html>")


def chromium_pdf(folder, name, page):
    source, target = os.path.join(folder, name + ".html"), os.path.join(folder, name + ".pdf")
    with open(source, "w", encoding="utf-8") as file:
        file.write(page)
    run("chromium", "--headless", "--no-sandbox", "--disable-gpu", "--no-pdf-header-footer",
        f"--print-to-pdf={target}", "file://" + source)
    return target


def office_pdf(folder, code):
    """A drawing of 100 x 60 mm with the code as a picture."""
    source = os.path.join(folder, "office.fodt")
    with open(source, "w", encoding="utf-8") as file:
        file.write(f"""<?xml version="1.0"?>
<office:document xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
 xmlns:style="urn:oasis:names:tc:opendocument:xmlns:style:1.0"
 xmlns:fo="urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0"
 xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0"
 xmlns:draw="urn:oasis:names:tc:opendocument:xmlns:drawing:1.0"
 xmlns:svg="urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0"
 xmlns:xlink="http://www.w3.org/1999/xlink" office:mimetype="application/vnd.oasis.opendocument.text"
 office:version="1.2"><office:automatic-styles><style:page-layout style:name="p">
<style:page-layout-properties fo:page-width="100mm" fo:page-height="60mm" fo:margin="3mm"/>
</style:page-layout></office:automatic-styles><office:master-styles>
<style:master-page style:name="Standard" style:page-layout-name="p"/></office:master-styles>
<office:body><office:text><text:p>A label<draw:frame svg:width="70mm" svg:height="25mm"
 text:anchor-type="as-char"><draw:image xlink:href="{code}"/></draw:frame></text:p></office:text>
</office:body></office:document>""")
    run("soffice", "--headless", "--convert-to", "pdf", "--outdir", folder, source,
        env={**os.environ, "HOME": folder})
    return os.path.join(folder, "office.pdf")


def images(job):
    """The images of a job, each as rows of dots: "1" prints."""
    found, at = [], 0
    while (at := job.find(b"\x89PNG", at) + 8) >= 8:
        width, packed, kind = int.from_bytes(job[at + 8:at + 12], "big"), b"", b""
        while kind != b"IEND":
            size, kind = int.from_bytes(job[at:at + 4], "big"), job[at + 4:at + 8]
            packed += job[at + 8:at + 8 + size] if kind == b"IDAT" else b""
            at += 12 + size
        raw, stride = zlib.decompress(packed), 1 + (width + 7) // 8
        rows = (bytes(255 - byte for byte in raw[i + 1:i + stride]) for i in range(0, len(raw), stride))
        found.append([f"{int.from_bytes(row, 'big'):0{8 * len(row)}b}"[:width] for row in rows])
    return found


def runs(row):
    return [len(run) for run in re.findall("1+|0+", row.strip("0"))]


def check_dots(what, job, dpi):
    found = images(job)
    if "a PNG" in what:  # modules of 3 dots, printed as they are
        bars = collections.Counter(row for row in found[0] if "1" in row).most_common(1)[0][0]
        if len(runs(bars)) < 40 or any(run % 3 for run in runs(bars)):
            faults.append(f"{what}: bars are {runs(bars)} dots")
    if ("two colours" in what) != (len(found) == 2):
        faults.append(f"{what}: {len(found)} images")
    elif "two colours" in what:
        red = [runs(row) for row in found[0] if "1" in row]
        wide, long = (pixels / 96 * dpi for pixels in RED)
        if abs(len(red) - long) > 1 or any(len(r) != 1 or abs(r[0] - wide) > 1 for r in red):
            faults.append(f"{what}: red is {len(red)} rows of {red[:1]} dots, not {long} of {wide}")


def check(what, printer, state):
    global count
    count += 1
    if state["job-state"] != "completed":
        faults.append(f"{what}: {state['job-state']}, {state.get('job-printer-state-message')}")
        return
    picture = printer.next_picture()
    with open(picture.replace("-0001.png", ".job"), "rb") as job:
        check_dots(what, job.read(), int(what.split()[0]))
    read = subprocess.run(["zbarimg", "-q", "--raw", picture], capture_output=True, text=True,
                          check=False).stdout.split()
    print(f"{what}: {' '.join(read) or 'no bar code'}")
    if TEXT not in read:
        faults.append(f"{what}: the bar code is not read")


def print_all(server, folder, dpi, documents):
    printer = VirtualPrinter(os.path.join(folder, f"printer-{dpi}"), dpi)
    try:
        queue = f"labels{dpi}"
        server.add_queue(queue, f"socket://127.0.0.1:{printer.port}", f"drv:///vlx.drv/vlx-{dpi}.ppd")
        for what, path, options in documents:
            check(f"{dpi} dpi, {what}", printer, server.wait(server.lp(queue, *options, path)))
        print_driverless(server, folder, dpi, printer, documents)
    finally:
        printer.stop()


def print_driverless(server, folder, dpi, printer, documents):
    port = free_port()
    uri = f"ipp://localhost:{port}/ipp"
    application = subprocess.Popen(
        [os.path.join(BIN, "vlx-ipp"), "server", "-o", f"server-port={port}", "-o",
         f"spool-directory={folder}/ipp-{dpi}"], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    try:
        add = [os.path.join(BIN, "vlx-ipp"), "add", "-u", uri + "/system", "-d", "labels", "-m",
               f"vlx-{dpi}", "-v", f"socket://127.0.0.1:{printer.port}"]
        for _ in range(100):
            if subprocess.run(add, capture_output=True, check=False).returncode == 0:
                break
            time.sleep(0.1)
        queue = f"driverless{dpi}"
        server.add_driverless_queue(queue, uri + "/print/labels")
        what, path, _ = documents[0]
        state = server.wait(server.lp(queue, "-o", "media=Custom.100x60mm", path))
        check(f"{dpi} dpi, driverless, {what}", printer, state)
    finally:
        application.terminate()
        application.wait(30)


def main():
    with tempfile.TemporaryDirectory(prefix="vlx-programs-") as folder:
        os.chmod(folder, 0o755)
        run("cmake", "--install", arguments.build, "--prefix", folder + "/usr")
        svg, png = os.path.join(folder, "code.svg"), os.path.join(folder, "code.png")
        for path in (svg, png):  # the picture has 3 dots a module
            run("zint", "-b", "20", "-d", TEXT, "--scale", "1.5", "--height", "40", "-o", path)
        with open(svg, encoding="utf-8") as file:
            drawn = file.read()
        drawn = drawn[drawn.index("<svg"):]
        size = ["-o", "media=100x60mm"]
        portrait = chromium_pdf(folder, "portrait", html(100, 60, drawn))
        page = os.path.join(folder, "page.ps")
        run("pdftops", portrait, page)
        lying = chromium_pdf(folder, "lying", html(150, 100, drawn))
        # Wide enough that the browser does not shrink it.
        red = chromium_pdf(folder, "red", html(150, 60, drawn, f"<div style='width: {RED[0]}px;"
                            f" height: {RED[1]}px; background: #f00; print-color-adjust: exact'></div>"))
        documents = [
            ("a page of the browser", portrait, size),
            ("a landscape page of the browser", lying, ["-o", "media=100x150mm", "-o", "landscape"]),
            ("two colours", red, ["-o", "media=Custom.150x60mm", "-o", "ColorModel=RGB"]),
            ("a PNG", png, size),
            ("PostScript", page, size),
        ]
        if arguments.office:
            documents.append(("a page of the office suite", office_pdf(folder, svg), size))
        with CupsServer(folder + "/usr", {"VLX_HOME": folder}) as server:
            for dpi in (203, 300, 600):
                print_all(server, folder, dpi, documents)
    print(f"{count} jobs, {len(faults)} faults")
    print("\n".join(faults))
    sys.exit(1 if faults else 0)


main()
