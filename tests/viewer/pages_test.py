"""The contact sheet and the page of vlx serve in a real browser: what they show, and their layout.

Usage: pages_test.py VLX CHROMIUM AXE-FOLDER

The accessibility checker is fetched with npm into the folder. Without npm that check is skipped."""

import html
import json
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import unittest

VLX, CHROMIUM, AXE = sys.argv[1:4]
del sys.argv[1:4]
AXE_VERSION = "4.10.3"
SAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "samples")

MEASURE = """<script>onload = () => setTimeout(() => {
  const box = e => { const r = e.getBoundingClientRect(); return [r.left, r.top, r.right, r.bottom]; };
  const facts = {
    width: innerWidth, content: document.documentElement.scrollWidth,
    images: [...document.images].map(i => ({dots: [i.naturalWidth, i.naturalHeight], box: box(i)})),
    cuts: document.querySelectorAll('.cut').length,
    copies: [...document.querySelectorAll('.copies')].map(e => e.textContent),
    text: document.body.innerText, alts: [...document.images].map(i => i.alt),
    dark: matchMedia('(prefers-color-scheme: dark)').matches, violations: [], outside: performance.getEntriesByType('resource')
      .map(e => e.name).filter(n => !n.startsWith('data:') && !n.startsWith('file:'))};
  const checked = !window.axe ? Promise.resolve() : axe.run(document).then(r => {
    facts.rules = r.passes.length;
    facts.violations = r.violations.flatMap(v => v.nodes.map(n => v.id + ' ' + n.html)); });
  checked.then(() => parent.postMessage(JSON.stringify(facts), '*')); }, 1000);</script>"""


def checker():
    """The accessibility checker's script; skips the test where it cannot be fetched."""
    path = os.path.join(AXE, "node_modules", "axe-core", "axe.min.js")
    if not os.path.exists(path):
        command = ["npm", "install", "--no-save", "--ignore-scripts", "--no-audit", "--no-fund",
                   "--prefix", AXE, "axe-core@" + AXE_VERSION]
        try:
            subprocess.run(command, capture_output=True, text=True, timeout=120, check=True)
        except (OSError, subprocess.SubprocessError) as error:
            raise unittest.SkipTest(f"npm does not fetch axe-core: {error}") from error
    with open(path, encoding="utf-8") as file:
        return "<script>" + file.read() + "</script>"


def measure(page, width, dark=False, script=""):
    """Loads the page in a frame of that width and returns what MEASURE saw."""
    with tempfile.TemporaryDirectory() as home:
        path = os.path.join(os.path.dirname(page), "frame.html")
        with open(page, encoding="utf-8") as file:
            inner = file.read()
        inner = inner.replace('loading="lazy" ', "").replace("</body>", script + MEASURE + "</body>")
        inner = inner.replace("<head>", f'<head><base href="file://{os.path.dirname(page)}/">')
        with open(path, "w", encoding="utf-8") as file:
            file.write("<!DOCTYPE html><pre id=facts></pre><script>onmessage = e => { "
                       "document.getElementById('facts').textContent = e.data; };</script>"
                       f'<iframe width={width} height=800 srcdoc="{html.escape(inner)}"></iframe>')
        command = [CHROMIUM, "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
                   "--no-first-run", "--disable-background-networking", "--disable-component-update",
                   "--disable-sync", "--user-data-dir=" + home, "--virtual-time-budget=20000",
                   f"--blink-settings=preferredColorScheme={0 if dark else 1}",
                   "--dump-dom", "file://" + path]
        dom = subprocess.run(command, capture_output=True, text=True, timeout=120).stdout
        os.remove(path)
    facts = re.search(r'<pre id="facts">(.*?)</pre>', dom, re.S)
    return json.loads(html.unescape(facts.group(1)))


class Pages(unittest.TestCase):
    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.home = home.name
        self.job = self.print_boxes("boxes.job", (1, 2, 3))

    def print_boxes(self, name, order):
        job = os.path.join(self.home, name)
        boxes = [os.path.join(SAMPLES, f"box-{i}.png") for i in order]
        subprocess.run([VLX, "print", *boxes, "--settings", os.path.join(SAMPLES, "boxes.toml"),
                        "--copies", "4", "--name", "<b>&boxes", "-o", job],
                       check=True, stdout=subprocess.DEVNULL)
        return job

    def check_labels(self, facts):
        self.assertEqual([i["dots"] for i in facts["images"]], [[1181, 709]] * 3)
        for image in facts["images"]:
            left, top, right, bottom = image["box"]
            self.assertAlmostEqual((right - left) / (bottom - top), 1181 / 709, delta=0.02)
            self.assertGreaterEqual(left, 0)
            self.assertLessEqual(right, facts["width"])
        self.assertLessEqual(facts["content"], facts["width"])
        self.assertEqual((facts["cuts"], facts["copies"]), (3, ["× 4"] * 3))
        self.assertEqual(facts["outside"], [])
        self.assertIn("<b>&boxes", facts["text"])
        self.assertEqual(facts["text"].count("re-used"), 2)

    def test_sheet_fits_desktop_and_phone(self):
        sheet = os.path.join(self.home, "sheet.html")
        subprocess.run([VLX, "view", self.job, "--sheet", sheet], check=True,
                       stdout=subprocess.DEVNULL)
        with open(sheet, encoding="utf-8") as file:
            self.assertIsNone(re.search(r'(src|href)="(?!data:)', file.read()))
        desktop, phone = measure(sheet, 1280), measure(sheet, 390)
        self.check_labels(desktop)
        self.check_labels(phone)
        tops = [[i["box"][1] for i in facts["images"]] for facts in (desktop, phone)]
        self.assertEqual(len(set(tops[0])), 1)  # a row on a desktop
        self.assertEqual(len(set(tops[1])), 3)  # a column on a phone

    def start_printer(self, folder):
        server = subprocess.Popen([VLX, "serve", "--port", "0", "-o", folder],
                                  stdout=subprocess.PIPE, text=True)
        self.addCleanup(lambda: (server.terminate(), server.wait(20), server.stdout.close()))
        return server, int(re.search(r":(\d+),", server.stdout.readline()).group(1))

    def test_page_of_the_printer_shows_the_job(self):
        folder = os.path.join(self.home, "out")
        server, port = self.start_printer(folder)
        page, early = (os.path.join(folder, name) for name in ("index.html", "early.html"))
        self.assertIn("Waiting", measure(page, 1280)["text"])
        shutil.copy(page, early)
        with socket.create_connection(("127.0.0.1", port)) as client, open(self.job, "rb") as job:
            client.sendall(job.read())
        self.assertIn("job-0001: 3 labels, 12 with copies", server.stdout.readline())
        for facts in (measure(page, 1280), measure(early, 1280)):  # opened after and before it came
            self.assertEqual(facts["text"].count("Label printer"), 1)
            self.assertIn("1 job so far", facts["text"])
            self.assertNotIn("Waiting", facts["text"])
            self.check_labels(facts)

    def test_pages_are_accessible(self):
        script = checker()
        folder = os.path.join(self.home, "pages")
        os.mkdir(folder)
        other = self.print_boxes("other.job", (1, 3, 2))
        pages = {name: os.path.join(folder, name) for name in ("sheet.html", "diff.html", "index.html")}
        subprocess.run([VLX, "view", self.job, "--sheet", pages["sheet.html"]], check=True,
                       stdout=subprocess.DEVNULL)
        subprocess.run([VLX, "diff", self.job, other, "--sheet", pages["diff.html"]], check=False,
                       stdout=subprocess.DEVNULL)
        os.rename(other, os.path.join(folder, "job-0001.job"))
        self.start_printer(folder)
        for name, page in pages.items():
            for width, dark in ((390, False), (390, True), (1200, False), (1200, True)):
                facts = measure(page, width, dark, script)
                self.assertEqual((facts["dark"], facts["violations"]), (dark, []), (name, width))
                self.assertGreater(facts["rules"], 10)
                self.assertLessEqual(facts["content"], facts["width"], name)


unittest.main()
