"""The contact sheet and the page of vlx serve in a real browser: what is seen, and how it is laid out.

Usage: pages_test.py VLX CHROMIUM"""

import html
import json
import os
import re
import socket
import subprocess
import sys
import tempfile
import time
import unittest

VLX, CHROMIUM = sys.argv[1:3]
del sys.argv[1:3]
SAMPLES = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "samples")

MEASURE = """<script>onload = () => {
  const box = e => { const r = e.getBoundingClientRect(); return [r.left, r.top, r.right, r.bottom]; };
  const facts = {
    width: innerWidth, content: document.documentElement.scrollWidth,
    images: [...document.images].map(i => ({dots: [i.naturalWidth, i.naturalHeight], box: box(i)})),
    cuts: document.querySelectorAll('.cut').length,
    copies: [...document.querySelectorAll('.copies')].map(e => e.textContent),
    text: document.body.innerText, outside: performance.getEntriesByType('resource')
      .map(e => e.name).filter(n => !n.startsWith('data:') && !n.startsWith('file:'))};
  parent.postMessage(JSON.stringify(facts), '*'); };</script>"""


def look(page, width):
    """Loads the page in a frame of that width and returns what MEASURE saw."""
    with tempfile.TemporaryDirectory() as home:
        path = os.path.join(os.path.dirname(page), "frame.html")
        with open(page, encoding="utf-8") as file:
            inner = file.read()
        inner = inner.replace('loading="lazy" ', "").replace("</body>", MEASURE + "</body>")
        inner = inner.replace("<head>", f'<head><base href="file://{os.path.dirname(page)}/">')
        with open(path, "w", encoding="utf-8") as file:
            file.write("<!DOCTYPE html><pre id=facts></pre><script>onmessage = e => { "
                       "document.getElementById('facts').textContent = e.data; };</script>"
                       f'<iframe width={width} height=800 srcdoc="{html.escape(inner)}"></iframe>')
        command = [CHROMIUM, "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
                   "--no-first-run", "--disable-background-networking", "--disable-component-update",
                   "--disable-sync", "--user-data-dir=" + home, "--virtual-time-budget=5000",
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
        self.job = os.path.join(self.home, "boxes.job")
        boxes = [os.path.join(SAMPLES, f"box-{i}.png") for i in (1, 2, 3)]
        subprocess.run([VLX, "print", *boxes, "--settings", os.path.join(SAMPLES, "boxes.toml"),
                        "--copies", "4", "--name", "<b>&boxes", "-o", self.job],
                       check=True, stdout=subprocess.DEVNULL)

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
        desktop, phone = look(sheet, 1280), look(sheet, 390)
        self.check_labels(desktop)
        self.check_labels(phone)
        tops = [[i["box"][1] for i in facts["images"]] for facts in (desktop, phone)]
        self.assertEqual(len(set(tops[0])), 1)  # a row on the desk
        self.assertEqual(len(set(tops[1])), 3)  # a column in the hand

    def test_page_of_the_printer_shows_the_job(self):
        folder = os.path.join(self.home, "out")
        server = subprocess.Popen([VLX, "serve", "--port", "0", "-o", folder],
                                  stdout=subprocess.PIPE, text=True)
        try:
            port = int(re.search(r":(\d+),", server.stdout.readline()).group(1))
            page = os.path.join(folder, "index.html")
            self.assertIn("Waiting", look(page, 1280)["text"])
            with socket.create_connection(("127.0.0.1", port)) as client, open(self.job, "rb") as job:
                client.sendall(job.read())
            self.assertIn("job-0001: 3 labels, 12 with copies", server.stdout.readline())
            facts = look(page, 1280)
            self.assertEqual(facts["text"].count("Label printer"), 1)
            self.check_labels(facts)
        finally:
            server.terminate()
            server.wait(20)
            server.stdout.close()


unittest.main()
