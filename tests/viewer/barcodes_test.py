"""Bar codes that are printed and viewed are read back, whatever the turn of the label.

Usage: barcodes_test.py VLX. Exits 77 when a program that makes or reads symbols is missing."""

import os
import shutil
import subprocess
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..",
                                "scripts"))
import check_symbols as symbols  # noqa: E402

ROWS = [  # dpi, dots of a module, ink, settings
    (203, 2, symbols.BLACK, ["paper.rotation=0", "print.crop=true"]),
    (203, 3, symbols.HIGHLIGHT, ["paper.rotation=270", "colour.mode=two", "print.model=K5"]),
    (300, 2, symbols.HIGHLIGHT, ["paper.rotation=180", "colour.mode=two", "print.crop=true"]),
    (300, 4, symbols.BLACK, ["paper.rotation=90", "paper.offset_x=0.3mm"]),
]


def view(vlx, folder, page, dpi, settings):
    """The picture of the label that shows the page."""
    symbols.write_png(os.path.join(folder, "page.png"), page, b"\xff\0\0")
    size = "x".join(f"{side * 25.4 / dpi + 0.3:.1f}" for side in (len(page[0]), len(page)))
    job = os.path.join(folder, "page.job")
    sets = [part for setting in settings for part in ("--set", setting)]
    subprocess.run([vlx, "print", os.path.join(folder, "page.png"), "-o", job, "--dpi", str(dpi),
                    "--paper", size + "mm", "--set", "colour.ditherer=threshold", *sets],
                   check=True, stdout=subprocess.DEVNULL)
    subprocess.run([vlx, "view", job, "-o", folder, "--dpi", str(dpi)], check=True,
                   stdout=subprocess.DEVNULL)
    return os.path.join(folder, "page-0001.png")


def main(vlx):
    if not all(shutil.which(program) for program in ("zint", "zbarimg", "dmtxread")):
        print("zint, zbarimg or dmtxread is missing")
        return 77
    drawn = [symbols.modules(*symbol) for symbol in symbols.SYMBOLS]
    unread = 0
    for dpi, module, ink, settings in ROWS:
        with tempfile.TemporaryDirectory() as folder:
            page = symbols.make_page(drawn, module, ink)
            found = symbols.read(view(vlx, folder, page, dpi, settings))
        for _, text, _ in symbols.SYMBOLS:
            if text not in found:
                unread += 1
                print(f"{text} is not read at {dpi} dpi, {module} dots a module, {settings}")
    print(f"{len(ROWS) * len(drawn) - unread} of {len(ROWS) * len(drawn)} symbols read")
    return 1 if unread else 0


sys.exit(main(sys.argv[1]))
