#!/usr/bin/env python3
"""Compares the tone of the plug-in's ditherers with that of ImageMagick's and libvips' error diffusion on the
same pages: a ramp, a still life and a landscape, made here. The measure is how far the dots, seen from a
distance (low-passed by a Gaussian), are from the page, as root mean square in grey levels.

Usage: compare_tone.py [VLX]; needs imagemagick and libvips-tools. Exits 1 when Floyd-Steinberg of the plug-in
is farther from a page than one of the others."""

import math
import os
import random
import shutil
import struct
import subprocess
import sys
import tempfile
import zlib

SIDE = 600
BLURS = (1.5, 3)  # dots
DITHERERS = ["floyd-steinberg", "clustered-diffusion", "blue-noise", "ordered", "clustered-dot"]


def ramp(x, y):
    return 2 + 251 * x / (SIDE - 1)


def still_life(x, y):
    """Three lit balls on a table."""
    level = 210 - 0.2 * y if y < 360 else 90 + 0.25 * (y - 360)
    for cx, cy, radius, tone in ((170, 330, 120, 120), (370, 260, 170, 200), (480, 450, 90, 70)):
        dx, dy = (x - cx) / radius, (y - cy) / radius
        if dx * dx + dy * dy < 1:
            dz = math.sqrt(1 - dx * dx - dy * dy)
            light = max(0.0, -0.5 * dx - 0.6 * dy + 0.62 * dz)
            level = 12 + tone * light + 120 * light**20
    return level


def landscape_maker():
    """Sky, hills and water, with detail of every size: value noise of several octaves."""
    source = random.Random(5)
    grids = [[[source.random() for _ in range(SIDE // step + 2)] for _ in range(SIDE // step + 2)]
             for step in (128, 64, 32, 16, 8, 4)]

    def noise(x, y):
        total, weight = 0.0, 1.0
        for grid, step in zip(grids, (128, 64, 32, 16, 8, 4)):
            gx, fx = divmod(x, step)
            gy, fy = divmod(y, step)
            fx, fy = fx / step, fy / step
            top = grid[gy][gx] * (1 - fx) + grid[gy][gx + 1] * fx
            bottom = grid[gy + 1][gx] * (1 - fx) + grid[gy + 1][gx + 1] * fx
            total += weight * (top * (1 - fy) + bottom * fy)
            weight *= 0.55
        return total / 2.1

    def level(x, y):
        hill = 330 + 60 * math.sin(x / 90) + 25 * math.sin(x / 23)
        if y < hill:
            return 250 - y * 0.2 - 50 * noise(x, y)
        return 20 + 190 * noise(x, y) if y < 450 else 60 + 90 * noise(x, 4 * y % SIDE)

    return level


def write_png(path, level):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    rows = b"".join(b"\0" + bytes(min(254, max(1, round(level(x, y)))) for x in range(SIDE))
                    for y in range(SIDE))
    with open(path, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n" +
                   chunk(b"IHDR", struct.pack(">IIBBBBB", SIDE, SIDE, 8, 0, 0, 0, 0)) +
                   chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def run(*command, **environment):
    done = subprocess.run(command, capture_output=True, text=True, env={**os.environ, **environment})
    if done.returncode not in (0, 1):  # compare answers 1 for images that differ
        sys.exit(f"{' '.join(command)}: {done.stderr}")
    return done.stdout + done.stderr


def plugin(vlx, page, folder, ditherer):
    saved = os.path.join(folder, "saved-" + ditherer)
    os.makedirs(saved)
    side = math.ceil(SIDE * 254 / 300) / 10
    run(vlx, "print", "--set", f"paper.size={side}x{side}mm", "--set", "paper.dpi=300", "--set",
        f"colour.ditherer={ditherer}", "-o", os.path.join(folder, "job.prn"), page,
        VLX_HOME=folder, VLX_SAVE_BITMAPS=saved)
    image, = [name for name in os.listdir(saved) if "_e_" in name]
    return os.path.join(saved, image)


def imagemagick(page, folder):
    inks, result = os.path.join(folder, "inks.png"), os.path.join(folder, "imagemagick.png")
    run("convert", "xc:black", "xc:white", "+append", inks)
    run("convert", page, "-dither", "FloydSteinberg", "-remap", inks, result)
    return result


def libvips(page, folder):
    """libvips diffuses errors between two greys that it chooses; they are measured as they are."""
    result = os.path.join(folder, "libvips.png")
    run("vips", "pngsave", page, result, "--palette", "--bitdepth", "1", "--dither", "1")
    return result


def distance(page, image, blur):
    crop = ["-crop", f"{SIDE}x{SIDE}+0+0", "+repage", "-colorspace", "Gray", "-depth", "16"]
    soft = [image + ".page.png", image + ".soft.png"]
    for source, target in zip((page, image), soft):
        run("convert", source, *crop, "-gaussian-blur", f"0x{blur}", target)
    answer = run("compare", "-metric", "RMSE", *soft, "null:")
    return 255 * float(answer.split("(")[1].split(")")[0])


def main():
    vlx = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else "build/bin/vlx")
    for program in (vlx, "convert", "compare", "vips"):
        if not shutil.which(program):
            sys.exit(f"{program} is missing; install imagemagick and libvips-tools, and build vlx")
    worse = False
    print(f"{'page':12} {'ditherer':28}" + "".join(f"  blur {blur:<4}" for blur in BLURS))
    for name, level in (("ramp", ramp), ("still life", still_life), ("landscape", landscape_maker())):
        with tempfile.TemporaryDirectory() as folder:
            page = os.path.join(folder, "page.png")
            write_png(page, level)
            images = {f"plug-in, {d}": plugin(vlx, page, folder, d) for d in DITHERERS}
            images["ImageMagick, FloydSteinberg"] = imagemagick(page, folder)
            images["libvips, dither 1"] = libvips(page, folder)
            found = {key: [distance(page, image, blur) for blur in BLURS]
                     for key, image in images.items()}
        for key, distances in found.items():
            print(f"{name:12} {key:28}" + "".join(f"  {value:9.2f}" for value in distances))
        ours = found["plug-in, floyd-steinberg"]
        others = [found["ImageMagick, FloydSteinberg"], found["libvips, dither 1"]]
        worse |= any(a > b for other in others for a, b in zip(ours, other))
    return 1 if worse else 0


sys.exit(main())
