#!/usr/bin/env python3
"""Writes a stream of different label pages to standard output: a frame, lines of text-like blocks,
a grey picture and a bar code that counts. One PNM page after the other, as `vlx print -` reads them.

    bench/make_pages.py --count 1000 --kind ppm > pages.ppm
    taskset -c 0 build/bin/vlx print - -o /dev/null --paper 100x150mm --dpi 300 < pages.ppm
"""

import argparse
import random
import sys

KINDS = {"pbm": b"P4", "pgm": b"P5", "ppm": b"P6"}


def dots(width_mm, length_mm, dpi):
    return round(width_mm * dpi / 25.4), round(length_mm * dpi / 25.4)


class Label:
    """One layout; a row is a bytes object of grey levels, equal rows are made once."""

    def __init__(self, width, height, kind, seed):
        self.width, self.height, self.kind = width, height, kind
        self.random = random.Random(seed)
        self.blank = bytes(b"\xff" * width)
        self.rows = [self.blank] * height
        edge = max(width // 100, 2)
        inside = b"\0" * edge + b"\xff" * (width - 2 * edge) + b"\0" * edge
        for y in range(edge, height - edge):
            self.rows[y] = inside
        self.rows[:edge] = self.rows[height - edge:] = [b"\0" * width] * edge

    def paint(self, top, bottom, left, levels):
        """Puts the grey levels into the rows from top to bottom, from the column left on."""
        for y in range(top, bottom):
            row = self.rows[y]
            self.rows[y] = row[:left] + levels + row[left + len(levels):]

    def text(self, top, size, left, length):
        """Letters of random strokes: every eighth of the height has its own pattern."""
        for step in range(8):
            levels = b"".join(
                bytes([self.random.choice((0, 0, 255))]) * max(size // 12, 1) for _ in range(length)
            )
            self.paint(top + step * size // 8, top + (step + 1) * size // 8, left, levels)

    def picture(self, top, size, left):
        for y in range(size):
            levels = bytes((x * 255 // size + y * 128 // size) % 256 for x in range(size))
            self.paint(top + y, top + y + 1, left, levels)

    def bars(self, number, top, bottom, left, module):
        levels = bytearray()
        for digit in f"{number:010d}":
            pattern = int(digit) * 37 + 0b10101100110
            for bit in range(11):
                levels += bytes([0 if pattern >> bit & 1 else 255]) * module
        self.paint(top, bottom, left, bytes(levels))

    def encoded(self):
        done = {}
        for row in set(self.rows):
            if self.kind == "pgm":
                done[row] = row
            elif self.kind == "ppm":
                done[row] = b"".join(bytes((level,)) * 3 for level in row)
            else:
                bits = "".join("1" if level < 128 else "0" for level in row)
                bits += "0" * (-len(bits) % 8)
                done[row] = int(bits, 2).to_bytes(len(bits) // 8, "big")
        return b"".join(done[row] for row in self.rows)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("--count", type=int, default=1000)
    parser.add_argument("--kind", choices=sorted(KINDS), default="ppm")
    parser.add_argument("--paper", default="100x150", help="width x length in mm")
    parser.add_argument("--dpi", type=int, default=300)
    arguments = parser.parse_args()
    width, height = dots(*(float(side) for side in arguments.paper.split("x")), arguments.dpi)
    header = KINDS[arguments.kind] + b"\n%d %d\n" % (width, height)
    if arguments.kind != "pbm":
        header += b"255\n"

    base = Label(width, height, arguments.kind, 1)
    unit = height // 40
    for line in range(8):
        base.text(unit * (3 + 2 * line), unit, width // 12, 60 + 5 * line)
    base.picture(unit * 20, unit * 6, width // 12)
    left, module = width // 12, max(width // 150, 1)
    encode, plain = Label.encoded, base.rows
    body = bytearray(encode(base))
    row_bytes = len(body) // height
    for number in range(arguments.count):
        # Only the rows that differ from page to page are made anew.
        base.rows = plain[:]
        base.bars(number, unit * 28, unit * 34, left, module)
        base.random.seed(number)
        base.text(unit * 35, unit, left, 50)
        changed = Label.__new__(Label)
        changed.kind, changed.rows = base.kind, base.rows[unit * 28:unit * 36]
        body[row_bytes * unit * 28:row_bytes * unit * 36] = encode(changed)
        sys.stdout.buffer.write(header + body)


main()
