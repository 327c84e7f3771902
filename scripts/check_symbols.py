"""Prints bar codes beside a photo through the plug-in and reads them back from its 1-bit images.

Usage: check_symbols.py VLX. Exits 1 if a symbol cannot be read or reads wrong, 77 if a program that makes or
reads symbols is missing."""

import math
import os
import random
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib

SYMBOLS = [  # zint's number and options, text, modules across the bars (0: the symbol is square)
    (["--barcode=20"], "LOT-2026/0042", 24),
    (["--barcode=13"], "4012345678901", 24),
    (["--barcode=71", "--square"], "SN 000123 / 7", 0),
    (["--barcode=58"], "https://example.com/p/42", 0),
]
SIZES = [(203, 2), (203, 3), (300, 2), (300, 4), (600, 3), (600, 5)]  # dpi, dots of a module
BLACK, PAPER, HIGHLIGHT, PHOTO = 0, 1, 2, 3  # colours of a page; photo tones follow
TONES = 250
QUIET = 10


def run(*command, check=False, **options):
    done = subprocess.run(command, capture_output=True, text=True, **options)
    if check and done.returncode != 0:
        sys.exit(f"{' '.join(command)}: {done.stdout}{done.stderr}")
    return done


def modules(options, text, height):
    """Rows of a symbol, True for dark."""
    dump = run("zint", *options, "--dump", "-d", text, check=True).stdout.split("\n")
    rows = [[bit == "1" for digit in line.replace(" ", "") for bit in f"{int(digit, 16):04b}"]
            for line in dump if line.strip()]
    return [row[: len(rows)] for row in rows] if height == 0 else rows[:1] * height


def draw(rows, module, ink, x, y, page):
    for number, row in enumerate(rows):
        line = b"".join(bytes([ink if dark else PAPER]) * module for dark in row)
        for i in range(module):
            page[y + number * module + i][x : x + len(line)] = line


def make_page(drawn, module, ink):
    """Bytes of colour numbers: quiet zones of paper around the symbols, photo everywhere else."""
    noise = random.Random(module)
    width, height = 210 * module, 125 * module
    page = [bytearray(PHOTO + (x * 2 + y * 3 + noise.randrange(40)) * TONES // 1500 % TONES
                      for x in range(width)) for y in range(height)]
    for rows, (x, y) in zip(drawn, [(3, 3), (3, 45), (3, 85), (80, 85)]):
        quiet = [[False] * (len(rows[0]) + 2 * QUIET)] * (len(rows) + 2 * min(QUIET, 4))
        draw(quiet, module, ink, x * module, y * module, page)
        draw(rows, module, ink, (x + QUIET) * module, (y + 4) * module, page)
    return page


def write_png(path, page, highlight):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    palette = bytes([0, 0, 0, 255, 255, 255]) + highlight
    palette += b"".join(bytes([t + 3, t + 1, max(t - 30, 0)]) for t in range(TONES))
    header = struct.pack(">IIBBBBB", len(page[0]), len(page), 8, 3, 0, 0, 0)
    with open(path, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"PLTE", palette) +
                   chunk(b"IDAT", zlib.compress(b"".join(b"\0" + bytes(row) for row in page), 1)) +
                   chunk(b"IEND", b""))


def print_pages(vlx, folder, dpi, ditherer, ink, paths, page):
    """Prints a job; returns the 1-bit images that hold the symbols."""
    size = "x".join(f"{math.ceil(side * 254 / dpi + 1) / 10}" for side in (len(page[0]), len(page)))
    saved = os.path.join(folder, "saved")
    os.mkdir(saved)
    run(vlx, "print", "--set", f"paper.size={size}mm", "--set", f"paper.dpi={dpi}",
        "--set", f"colour.ditherer={ditherer}",
        "--set", f"colour.mode={'one' if ink == BLACK else 'two'}",
        "-o", os.path.join(folder, "job.prn"), *paths, check=True,
        env={**os.environ, "VLX_HOME": folder, "VLX_SAVE_BITMAPS": saved})
    stage = "e_1C_Background" if ink == BLACK else "e_2C_Highlight"
    return sorted(os.path.join(saved, name) for name in os.listdir(saved) if stage in name)


def read(image):
    bars = run("zbarimg", "-q", "--raw", "-Sdisable", "-Scode128.enable", "-Sean13.enable",
               "-Sqrcode.enable", image).stdout.split("\n")
    return bars + [run("dmtxread", "-N1", "-m60000", image).stdout]


def ditherers(vlx):
    lines = run(vlx, "settings", "keys", check=True).stdout.splitlines()
    return next(line.split("\t")[1].split() for line in lines if line.startswith("colour.ditherer\t"))


def check(vlx, drawn, ditherer, dpi, module, ink):
    """Prints four turns of a page; returns how many symbols were read, and what was not."""
    right, missing = 0, []
    with tempfile.TemporaryDirectory() as folder:
        page = make_page(drawn, module, ink)
        turned = [bytes(row) for row in zip(*page[::-1])]
        for turns, pages in ((0, [page, [row[::-1] for row in page[::-1]]]),
                             (1, [turned, [row[::-1] for row in turned[::-1]]])):
            inner = os.path.join(folder, str(turns))
            os.mkdir(inner)
            paths = [os.path.join(inner, f"{i}.png") for i in (0, 1)]
            for path, rows in zip(paths, pages):
                write_png(path, rows, b"\xff\0\0")
            for half, image in enumerate(print_pages(vlx, inner, dpi, ditherer, ink, paths, pages[0])):
                found = read(image)
                for _, text, _ in SYMBOLS:
                    if text in found:
                        right += 1
                        continue
                    missing.append(f"{dpi} dpi, module {module}, {ditherer}, ink {ink}, "
                                   f"{90 * turns + 180 * half} degrees: {text}")
    return right, missing


def main():
    if not all(shutil.which(program) for program in ("zint", "zbarimg", "dmtxread")):
        print("zint, zbarimg or dmtxread is missing")
        return 77
    drawn = [modules(*symbol) for symbol in SYMBOLS]
    names = ditherers(sys.argv[1])
    right, wrong = 0, []
    for number, (dpi, module) in enumerate(SIZES):
        for ink, shift in ((BLACK, 0), (HIGHLIGHT, 3)):
            ditherer = names[(number + shift) % len(names)]
            read_back, missing = check(sys.argv[1], drawn, ditherer, dpi, module, ink)
            right += read_back
            wrong += missing
    expected = len(SIZES) * 2 * 4 * len(SYMBOLS)
    print("\n".join(wrong + [f"{right} of {expected} symbols read"]))
    return 0 if right == expected else 1


if __name__ == "__main__":
    sys.exit(main())
