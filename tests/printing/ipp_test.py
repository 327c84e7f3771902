"""Prints through vlx-ipp as IPP clients do, on a free port of the loopback interface with a spool
folder of its own.

    ipp_test.py BUILD
"""

import os
import re
import signal
import subprocess
import sys
import tempfile
import time
import urllib.request

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from cups_server import CupsServer, document, free_port, without_date

build = sys.argv[1]
BIN = os.path.join(build, "bin")
faults = []

PRINT = """\
{
  OPERATION Print-Job
  GROUP operation-attributes-tag
  ATTR charset attributes-charset utf-8
  ATTR naturalLanguage attributes-natural-language en
  ATTR uri printer-uri $uri
  ATTR name requesting-user-name somebody
  ATTR name job-name label
  ATTR mimeMediaType document-format $filetype
  GROUP job-attributes-tag
  ATTR collection media-col { MEMBER collection media-size {
    MEMBER integer x-dimension WIDTH MEMBER integer y-dimension LENGTH } }
  OPTIONS
  FILE $filename
  STATUS successful-ok
}
"""
JOB = """\
{
  OPERATION Get-Job-Attributes
  GROUP operation-attributes-tag
  ATTR charset attributes-charset utf-8
  ATTR naturalLanguage attributes-natural-language en
  ATTR uri printer-uri $uri
  ATTR integer job-id NUMBER
  ATTR name requesting-user-name somebody
}
"""

DEFAULTS = """\
{
  OPERATION Set-Printer-Attributes
  GROUP operation-attributes-tag
  ATTR charset attributes-charset utf-8
  ATTR naturalLanguage attributes-natural-language en
  ATTR uri printer-uri $uri
  ATTR name requesting-user-name somebody
  GROUP printer-attributes-tag
  OPTIONS
}
"""


def expect(holds, fault):
    if not holds:
        faults.append(fault)


def attributes(values):
    return "\n".join(f"ATTR {name} {value}" for name, value in values.items())


class Application:
    def __init__(self, folder):
        self.folder, self.port = folder, free_port()
        self.server = None
        self.start()

    def path(self, name):
        return os.path.join(self.folder, name)

    def start(self):
        environment = {**os.environ, "HOME": self.folder, "VLX_HOME": self.folder}
        with open(self.path("log"), "ab") as log:
            self.server = subprocess.Popen(
                [os.path.join(BIN, "vlx-ipp"), "server", "-o", f"server-port={self.port}",
                 "-o", f"spool-directory={self.path('spool')}"],
                env=environment, stdout=log, stderr=log)
        for _ in range(200):
            try:
                self.page("/")
                return
            except OSError:
                time.sleep(0.05)
        raise RuntimeError("vlx-ipp does not answer")

    def stop(self):
        self.server.send_signal(signal.SIGTERM)
        code = self.server.wait(30)
        if code != 0:
            with open(self.path("log"), encoding="utf-8", errors="replace") as log:
                faults.append(f"vlx-ipp ends with {code}:\n{log.read()[-5000:]}")

    def page(self, path):
        with urllib.request.urlopen(f"http://localhost:{self.port}{path}", timeout=10) as answer:
            return answer.read().decode()

    def uri(self, printer=None):
        return f"ipp://localhost:{self.port}/ipp/" + (f"print/{printer}" if printer else "system")

    def command(self, *arguments):
        done = subprocess.run([os.path.join(BIN, "vlx-ipp"), *arguments], capture_output=True,
                              text=True, check=False, timeout=30)
        expect(done.returncode == 0, f"vlx-ipp {arguments}: {done.stdout}{done.stderr}")
        return done.stdout

    def ipptool(self, uri, test, *arguments):
        with open(self.path("ipp.test"), "w", encoding="utf-8") as file:
            file.write(test)
        shown = subprocess.run(["ipptool", "-tv", *arguments, uri, self.path("ipp.test")],
                               capture_output=True, text=True, check=False, timeout=60).stdout
        pairs = (re.match(r"\s+([a-z-]+) \([^)]*\) = (.*)", line) for line in shown.splitlines())
        return {pair.group(1): pair.group(2) for pair in pairs if pair}

    def send(self, printer, path, size=(8300, 4700), options=None):
        test = PRINT.replace("WIDTH", str(size[0])).replace("LENGTH", str(size[1]))
        test = test.replace("OPTIONS", attributes(options or {}))
        return int(self.ipptool(self.uri(printer), test, "-f", path)["job-id"])

    def set_defaults(self, printer, defaults):
        self.ipptool(self.uri(printer), DEFAULTS.replace("OPTIONS", attributes(defaults)))

    def job(self, printer, number):
        return self.ipptool(self.uri(printer), JOB.replace("NUMBER", str(number)))

    def wait(self, printer, number):
        for _ in range(600):
            state = self.job(printer, number)
            if state["job-state"] not in ("pending", "processing"):
                break
            time.sleep(0.05)
        return state


def vlx(*arguments):
    return subprocess.run([os.path.join(BIN, "vlx"), *arguments], capture_output=True, text=True,
                          check=False)


def expect_same(application, output, path, size, options, arguments, cost="2 labels"):
    """The job with these attributes is that of vlx print."""
    open(output, "w").close()
    state = application.wait("file", application.send("file", path, size, options))
    expect(state["job-state"] == "completed", str(state))
    expect(state["job-state-message"].startswith(cost), state["job-state-message"])
    paper = f"{size[0] / 100}x{size[1] / 100}mm"
    done = vlx("print", path, "-o", application.path("other.job"), "--name", "label", "--paper", paper,
               *arguments.split())
    expect(done.returncode == 0, done.stderr)
    with open(application.path("other.job"), "rb") as other, open(output, "rb") as job:
        expect(without_date(job.read()) == without_date(other.read()),
               f"{options}: not the job of vlx print {arguments}")


def check_jobs(application, output):
    """Jobs go to a file, to which PAPPL appends."""
    label, large = application.path("label.pdf"), application.path("large.pdf")
    for path, text in ((label, document(2, 235.276, 133.228)), (large, document(1))):
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
    expect_same(application, output, label, (8300, 4700),
                {"keyword label-cut": "each-label", "integer print-speed": 15000, "integer copies": 3},
                "--copies 3 --set print.speed=150 --set cut.enabled=true --set cut.mode=each-label",
                "6 labels, 2 cuts")
    expect_same(application, output, label, (8300, 4700),
                {"keyword label-cut": "count", "integer label-cut-count": 3, "integer label-gap": 220,
                 "integer label-offset-x": -150, "integer label-offset-y": 40,
                 "keyword print-color-mode": "color", "keyword label-highlight": "blue",
                 "integer print-darkness": 26, "enum orientation-requested": 6},
                "--set cut.enabled=true --set cut.mode=count --set cut.count=3 --set paper.gap=2.2mm "
                "--set paper.offset_x=-1.5mm --set paper.offset_y=0.4mm --set colour.mode=two "
                "--set colour.highlight=#0000FF --set print.darkness=5 --set paper.rotation=180")
    application.set_defaults("file", {"integer label-gap-default": 250,
                                      "keyword label-cut-default": "job-end"})
    expect_same(application, output, label, (8300, 4700), {},
                "--set paper.gap=2.5mm --set cut.enabled=true --set cut.at_job_end=true",
                "2 labels, 1 cut,")
    application.set_defaults("file", {"integer label-gap-default": 300,
                                      "keyword label-cut-default": "none"})
    expect_same(application, output, label, (4700, 8300), {"enum orientation-requested": 4},
                "--orientation landscape")
    expect_same(application, output, label, (8300, 4700),
                {"integer copies": 2,
                 "keyword multiple-document-handling": "separate-documents-collated-copies"},
                label, "4 labels")

    for options, message in (({"integer label-gap": 20000}, "choose 0 to 10000"),
                             ({"keyword label-sensor": "x9"}, "one of e, l0, l1, l2, x0, x1 is expected")):
        state = application.wait("file", application.send("file", label, options=options))
        expect(state["job-state"] == "aborted" and message in state["job-state-message"], str(state))
    open(output, "w").close()
    for size in ((5000, 4700), (8300, 5000)):
        state = application.wait("file", application.send("file", label, size))
        expect(state["job-state"] == "aborted", f"a page of another size: {state['job-state']}")
        expect("83.1 x 47.1 mm, the label is" in state["job-state-message"],
               state["job-state-message"])
    expect(os.path.getsize(output) == 0, "a job that does not fit has sent something")

    state = application.wait("preview", application.send("preview", large, (10000, 15000)))
    expect(state["job-state"] == "completed", str(state))
    pages = [f"/labels-{printer}/index.html" for printer in (1, 2)]
    for _ in range(100):
        if all("job-0001" in application.page(page) for page in pages):
            break
        time.sleep(0.05)
    for page in pages:
        expect("job-0001" in application.page(page), f"no picture of the job: {page}")
        expect(page in application.page("/preview/") + application.page("/file/"), "no link")


def check_cancel(application, output):
    open(output, "w").close()
    with open(application.path("long.pdf"), "w", encoding="utf-8") as file:
        file.write(document(3000, 235.276, 133.228))
    number = application.send("file", application.path("long.pdf"))
    for _ in range(600):
        if int(application.job("file", number).get("job-impressions-completed", 0)) > 2:
            break
        time.sleep(0.02)
    application.command("cancel", "-u", application.uri("file"), "-j", str(number))
    state = application.wait("file", number)
    expect(state["job-state"] == "canceled", str(state))
    linted = vlx("lint", output)
    expect(linted.returncode == 0, f"a cancelled job: {linted.stdout}")


def check_state(application):
    application.stop()
    application.start()
    printers = application.command("printers", "-u", application.uri())
    expect(printers.split() == ["file", "preview"], f"kept printers: {printers}")


def check_waiting(application):
    """A job waits for a printer that does not answer: the server ends, and prints it after its next
    start."""
    port = free_port()
    application.command("add", "-u", application.uri(), "-d", "dead", "-m", "vlx-300", "-v",
                        f"socket://127.0.0.1:{port}")
    number = application.send("dead", application.path("label.pdf"))
    application.stop()
    folder = application.path("printer")
    printer = subprocess.Popen([os.path.join(BIN, "vlx"), "serve", "-o", folder, "--port", str(port)],
                               stdout=subprocess.DEVNULL)
    try:
        application.start()
        state = application.wait("dead", number)
        expect(state["job-state"] == "completed", f"a job that has waited: {state}")
    finally:
        printer.terminate()
        printer.wait(30)
    expect(os.path.exists(os.path.join(folder, "job-0001.job")), "the printer got no job")


def check_clients(application, output):
    """A queue of CUPS without a driver."""
    with CupsServer(application.path("usr")) as server:
        server.add_driverless_queue("labels", application.uri("file"))
        open(output, "w").close()
        path = server.path("page.pdf")
        server.write("page.pdf", document(1))
        state = server.wait(server.lp("labels", path))
        expect(state["job-state"] == "completed", f"driverless: {state}")
        with open(output, "rb") as job:
            text = job.read()
        expect(b",150.00,153.00,100.00\r\n" in text, "driverless: not a label of 100 x 150 mm")
        open(output, "w").close()
        server.wait(server.lp("labels", "-o", "finishings=11", path))
        with open(output, "rb") as job:
            expect(b"\r\nCe" in job.read(), "driverless: finishings=11 does not cut")


def main():
    with tempfile.TemporaryDirectory(prefix="vlx-ipp-") as folder:
        output = os.path.join(folder, "out.job")
        open(output, "w").close()
        application = Application(folder)
        try:
            for name, device in (("file", "file://" + output), ("preview", "preview:///")):
                application.command("add", "-u", application.uri(), "-d", name, "-m", "vlx-300",
                                    "-v", device)
            check_jobs(application, output)
            check_cancel(application, output)
            check_state(application)
            check_waiting(application)
            check_clients(application, output)
        finally:
            application.stop()
    print("\n".join(faults))
    sys.exit(1 if faults else 0)


main()
