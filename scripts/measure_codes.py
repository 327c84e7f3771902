#!/usr/bin/env python3
"""Measures how well `vlx lint` tells which bar codes cannot be read.

Symbols of the usual kinds are drawn at whole and at broken module sizes, crisp, smoothed, blurred or in grey,
upright and turned, and printed through the plug-in with every ditherer. What zbarimg and dmtxread read from
the virtual printer's pictures is compared with what lint says. A code is good if it is black and sharp and
its modules have at least 2 dots. Programs also read perfect pictures of finer ones, which print heads do not
print reliably.

Usage: measure_codes.py VLX [FOLDER]; needs zint, zbarimg and dmtxread. FOLDER keeps jobs and pictures.
Exits 1 if lint blames a good code that can be read."""

import collections
import json
import os
import random
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib
from concurrent.futures import ThreadPoolExecutor

DPI = 300
SIDE = 708  # dots, 60 mm
KINDS = {  # zint's options, text, height of the bars in modules; 0 for a square symbol
    "Code 128": (["--barcode=20"], "LOT-20260042", 30),
    "EAN-13": (["--barcode=13"], "4012345678901", 40),
    "Code 39": (["--barcode=8"], "LOT42", 30),
    "ITF": (["--barcode=3"], "12345670", 30),
    "QR": (["--barcode=58"], "https://example.com/p/42", 0),
    "DataMatrix": (["--barcode=71", "--square"], "SN 000123 / 7", 0),
}
DITHERERS = ["floyd-steinberg", "threshold", "ordered", "clustered-dot", "blue-noise",
             "clustered-diffusion"]
WHOLE = (1, 2, 3, 4)
BROKEN = (1.2, 1.5, 1.7, 2.2, 2.5, 3.3)
LEAST_HEIGHT = 96  # dots, 8 mm
Code = collections.namedtuple("Code", "kind look module ditherer turned")


def run(*command, **options):
    done = subprocess.run(command, capture_output=True, text=True, check=False, **options)
    return done.returncode, done.stdout, done.stderr


def modules(code):
    """Rows of a symbol, 1 for dark."""
    options, text, height = KINDS[code.kind]
    if height:
        height = max(height, int(LEAST_HEIGHT / code.module))
    dump = run("zint", *options, "--dump", "-d", text)[1].split("\n")
    rows = [[int(bit) for digit in line.replace(" ", "") for bit in f"{int(digit, 16):04b}"]
            for line in dump if line.strip()]
    return [row[: len(rows)] for row in rows] if height == 0 else rows[:1] * height


def weights(count, module, start, look):
    """For each dot of the side, the modules that it covers with their shares."""
    line = []
    for dot in range(SIDE):
        left, right = (dot - start) / module, (dot + 1 - start) / module
        if look == "blurred":  # linear interpolation between the middles of modules
            middle = (left + right) / 2 - 0.5
            first = int(middle // 1)
            shares = [(first, 1 - middle + first), (first + 1, middle - first)]
        else:
            shares = [(i, min(right, i + 1) - max(left, i)) for i in range(int(left // 1), int(right // 1) + 1)]
            shares = [(i, share * module) for i, share in shares]
        line.append([(i, share) for i, share in shares if 0 <= i < count and share > 1e-9])
    return line


def draw(rows, code, place):
    """A page of grey bytes with the symbol in its middle."""
    start = lambda count: (round if code.module in WHOLE else float)((SIDE - count * code.module) / 2 + place.random())
    across = weights(len(rows[0]), code.module, start(len(rows[0])), code.look)
    down = weights(len(rows), code.module, start(len(rows)), code.look)
    ink = 70 if code.look == "grey" else 0
    lines, page = {}, []
    for shares in down:
        key = tuple(shares)
        if key not in lines:
            dark = [sum(share * rows[y][x] * s for x, s in cells for y, share in shares) for cells in across]
            lines[key] = bytes(round(255 - (255 - ink) * min(1, value)) for value in dark)
        page.append(lines[key])
    return [bytes(column) for column in zip(*page[::-1])] if code.turned else page


def codes():
    for kind in KINDS:
        for turned in (False, True):
            for module in WHOLE:
                yield Code(kind, "crisp", module, "threshold", turned)
            for number, module in enumerate(WHOLE[1:]):
                yield Code(kind, "grey", module, DITHERERS[(0, 2, 3, 4, 5)[(number + turned) % 5]], turned)
            for ditherer in DITHERERS:
                for module in BROKEN:
                    yield Code(kind, "smooth", module, ditherer, turned)
                for module in BROKEN[4:]:
                    yield Code(kind, "blurred", module, ditherer, turned)


def rows_of(picture):
    """The picture of a label, 0 for black and 255 for paper; vlx writes 4 dots to a byte, unfiltered."""
    with open(picture, "rb") as file:
        png = file.read()
    width, height, depth = struct.unpack(">IIB", png[16:25])
    data, at = b"", 8
    while at < len(png):
        size, = struct.unpack(">I", png[at : at + 4])
        data += png[at + 8 : at + 8 + size] if png[at + 4 : at + 8] == b"IDAT" else b""
        at += size + 12
    assert depth == 2
    data, stride = zlib.decompress(data), (width + 3) // 4 + 1
    four = [bytes(0 if byte >> shift & 3 else 255 for shift in (6, 4, 2, 0)) for byte in range(256)]
    return [b"".join(four[byte] for byte in data[y * stride + 1 : (y + 1) * stride])[:width]
            for y in range(height)]


def readable(picture, code):
    """Reads the picture as it is and enlarged, as a camera would see it."""
    text, rows, larger = KINDS[code.kind][1], rows_of(picture), picture + ".pgm"
    for factor in (1, 2, 4):
        wide = [b"".join(bytes([level]) * factor for level in row) for row in rows]
        with open(larger, "wb") as file:
            file.write(b"P5 %d %d 255\n" % (len(wide[0]), len(wide) * factor) +
                       b"".join(row * factor for row in wide))
        if code.kind == "DataMatrix":
            found = [run("dmtxread", "-N1", "-m2000", larger)[1]]
        else:
            found = run("zbarimg", "-q", "--raw", "-Sdisable", "-Scode128.enable", "-Sean13.enable",
                        "-Scode39.enable", "-Si25.enable", "-Sqrcode.enable", larger)[1].split("\n")
        os.remove(larger)
        if any(text in one for one in found):
            return True
    return False


def print_codes(vlx, folder, ditherer, group):
    """Prints a page for each code; returns whether each can be read, and what lint says of each."""
    place = random.Random(ditherer)
    job, pages = os.path.join(folder, ditherer + ".job"), os.path.join(folder, ditherer + ".pgm")
    with open(pages, "wb") as file:
        for code in group:
            file.write(b"P5 %d %d 255\n" % (SIDE, SIDE) + b"".join(draw(modules(code), code, place)))
    for command in (["print", pages, "--paper", "60x60mm", "--dpi", str(DPI), "--set",
                     "colour.ditherer=" + ditherer, "-o", job],
                    ["view", job, "--dpi", str(DPI), "-o", os.path.join(folder, ditherer)]):
        status, _, error = run(vlx, *command)
        if status:
            sys.exit(error)
    os.remove(pages)
    pictures = sorted(os.path.join(folder, ditherer, name) for name in os.listdir(os.path.join(folder, ditherer)))
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        return list(pool.map(readable, pictures, group))


def blamed(vlx, job):
    """What lint says of the code on each label, None for nothing."""
    faults = json.loads(run(vlx, "lint", "--json", "--dpi", str(DPI), job)[1])["faults"]
    lines = [label["line"] for label in json.loads(run(vlx, "view", "--json", "--dpi", str(DPI), job)[1])["labels"]]
    said = [None] * len(lines)
    for fault in faults:
        if "code" in fault["text"]:
            said[next(i for i, line in enumerate(lines) if fault["line"] <= line)] = fault["text"]
    return said


def category(code):
    if code.module < 2:
        return "modules below 2 dots"
    return "blurred or grey" if code.look in ("blurred", "grey") else "sharp, 2 dots and more"


def main():
    vlx = os.path.abspath(sys.argv[1])
    for program in (vlx, "zint", "zbarimg", "dmtxread"):
        if not shutil.which(program):
            sys.exit(f"{program} is missing; scripts/install-packages.sh tests installs it")
    groups = collections.defaultdict(list)
    for code in codes():
        groups[code.ditherer].append(code)
    counts = collections.Counter()
    wrong = []
    with tempfile.TemporaryDirectory() as work:
        folder = sys.argv[2] if len(sys.argv) > 2 else work
        os.makedirs(folder, exist_ok=True)
        for ditherer, group in groups.items():
            found = print_codes(vlx, folder, ditherer, group)
            said = blamed(vlx, os.path.join(folder, ditherer + ".job"))
            with open(os.path.join(folder, ditherer + ".json"), "w", encoding="utf-8") as file:
                json.dump(found, file)
            for code, can_be_read, text in zip(group, found, said):
                shape = "bars" if KINDS[code.kind][2] else "square"
                counts[shape, category(code), ditherer, can_be_read, text is not None] += 1
                if can_be_read and text and category(code).startswith("sharp"):
                    wrong.append(f"{code}: {text}")
    print(f"{'':8}{'':24}{'':21}  read, blamed of   unreadable, found of")
    for key in sorted({key[:3] for key in counts}):
        row = [counts[(*key, *outcome)] for outcome in ((True, True), (True, False), (False, True), (False, False))]
        print(f"{key[0]:8}{key[1]:24}{key[2]:21}{row[0]:14} of {row[0] + row[1]:<3}{row[2]:16} of {row[2] + row[3]}")
    print("\n".join(wrong))
    return 1 if wrong else 0


sys.exit(main())
