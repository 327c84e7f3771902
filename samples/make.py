#!/usr/bin/python3
"""Draws the sample labels. Needs Debian's python3-pil, zint and fonts-dejavu-core."""

import math
import os
import subprocess
import tempfile

from PIL import Image, ImageDraw, ImageFont

HERE = os.path.dirname(os.path.abspath(__file__))
FONTS = "/usr/share/fonts/truetype/dejavu/"
DPI = 300
BLACK, WHITE, RED = (0, 0, 0), (255, 255, 255), (255, 0, 0)


def dots(mm):
    return int(DPI * mm / 25.4)


def font(mm, bold=True):
    return ImageFont.truetype(FONTS + ("DejaVuSans-Bold.ttf" if bold else "DejaVuSans.ttf"), dots(mm))


def label(width_mm, length_mm):
    image = Image.new("RGB", (dots(width_mm), dots(length_mm)), WHITE)
    draw = ImageDraw.Draw(image)
    draw.fontmode = "1"  # dots, not greys
    return image, draw


def symbol(kind, data, module):
    """A bar code whose modules are that many dots wide."""
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "symbol.png")
        command = ["zint", "-b", kind, "-d", data, "-o", path, "--scale", "0.5", "--notext"]
        if kind == "CODE128":
            command += ["--height", "20"]
        subprocess.run(command, check=True)
        small = Image.open(path).convert("L").point(lambda level: 255 if level > 127 else 0)
    if kind == "CODE128":
        row = small.crop((0, 0, small.width, 1))
        return row.resize((row.width * module, 1), Image.NEAREST)
    return small.resize((small.width * module, small.height * module), Image.NEAREST)


def barcode(image, kind, data, at, module, height=0):
    picture = symbol(kind, data, module)
    if height:
        picture = picture.resize((picture.width, height), Image.NEAREST)
    image.paste(picture.convert("RGB"), at)
    return picture.width


def shipping():
    image, draw = label(100, 150)
    edge, right = dots(5), image.width - dots(5)
    draw.text((edge, dots(5)), "NORDWIND EXPRESS", BLACK, font(6))
    draw.text((edge, dots(13)), "Parcel service  ·  24 h", BLACK, font(3.4, False))
    draw.rectangle((edge, dots(19), right, dots(19) + 4), BLACK)
    draw.text((edge, dots(21)), "From", BLACK, font(2.6, False))
    draw.text((edge, dots(25)), "Example Works Ltd, 4 Quay Street\n20457 Harbourtown", BLACK,
              font(3.2, False), spacing=8)
    draw.rectangle((edge, dots(35), right, dots(35) + 4), BLACK)
    draw.text((edge, dots(37)), "To", BLACK, font(2.6, False))
    draw.text((edge, dots(41)), "Ada Muster\n12 Meadow Lane\n54321 Sampleton", BLACK, font(5.6),
              spacing=14)
    draw.rectangle((edge, dots(66), right, dots(66) + 4), BLACK)
    barcode(image, "QRCODE", "https://example.org/track/NW-2044-7781-90", (edge, dots(70)), 8)
    draw.rectangle((dots(50), dots(70), right, dots(92)), BLACK)
    draw.text(((dots(50) + right) // 2, dots(81)), "HH-3", WHITE, font(14), anchor="mm")
    draw.text((dots(50), dots(94)), "4.2 kg   1 of 1   12:00", BLACK, font(3.4, False))
    draw.rectangle((edge, dots(103), right, dots(103) + 4), BLACK)
    width = symbol("CODE128", "NW2044778190", 5).width
    barcode(image, "CODE128", "NW2044778190", ((image.width - width) // 2, dots(108)), 5, dots(28))
    draw.text((image.width // 2, dots(141)), "NW 2044 7781 90", BLACK, font(4.4), anchor="mm")
    return image


def two_colour():
    image, draw = label(100, 60)
    edge, right = dots(4), image.width - dots(4)
    draw.rectangle((0, 0, image.width, dots(14)), RED)
    draw.text((image.width // 2, dots(7)), "DANGER", WHITE, font(9), anchor="mm")
    draw.polygon([(dots(16), dots(18)), (dots(5), dots(38)), (dots(27), dots(38))], RED)
    draw.polygon([(dots(16), dots(22)), (dots(8.5), dots(36)), (dots(23.5), dots(36))], WHITE)
    draw.text((dots(16), dots(31)), "!", BLACK, font(9), anchor="mm")
    draw.text((dots(32), dots(18)), "Cleaning concentrate A7", BLACK, font(4.4))
    draw.text((dots(32), dots(25)), "Causes severe skin burns and\neye damage. Wear gloves and\n"
              "eye protection.", BLACK, font(3, False), spacing=8)
    barcode(image, "CODE128", "A7-001944", (edge, dots(43)), 3, dots(11))
    draw.text((right, dots(46)), "5 L", RED, font(8), anchor="ra")
    return image


def photo():
    image, draw = label(100, 60)
    pixels = image.load()
    ox, oy, width, height = dots(4), dots(4), dots(60), dots(52)
    for y in range(height):
        for x in range(width):
            sky = 235 - 110 * (1 - y / height)
            hill = height * (0.62 + 0.08 * math.sin(x / 90) + 0.03 * math.sin(x / 23))
            far = height * (0.48 + 0.10 * math.sin(x / 140 + 2))
            level = sky
            dx, dy = x - width * 0.7, y - height * 0.24
            if dx * dx + dy * dy < (height * 0.12) ** 2:
                level = 252
            if y > far:
                level = 150 + 40 * (y - far) / height
            if y > hill:
                level = 40 + 90 * (y - hill) / (height - hill) + 12 * math.sin(x / 5 + y / 7)
            pixels[ox + x, oy + y] = (max(0, min(255, int(level))),) * 3
    for step in range(9):
        grey = 255 * step // 8
        draw.rectangle((dots(68), dots(4 + 5 * step), dots(80), dots(9 + 5 * step)), (grey,) * 3)
    draw.text((dots(83), dots(4)), "Grey\nwedge", BLACK, font(3), spacing=8)
    draw.text((dots(68), dots(51)), "Hill View Wine", BLACK, font(3))
    return image


def box(number):
    image, draw = label(100, 60)
    draw.rectangle((0, 0, image.width, dots(8)), RED)
    draw.text((image.width // 2, dots(4)), "THIS WAY UP", WHITE, font(5), anchor="mm")
    draw.text((dots(5), dots(12)), "Box", BLACK, font(5, False))
    draw.text((dots(5), dots(18)), f"{number} / 3", BLACK, font(18))
    barcode(image, "CODE128", f"BOX-{number}-OF-3", (dots(5), dots(43)), 4, dots(13))
    return image


def save(image, name, mode):
    if mode == "1":
        image = image.convert("L").point(lambda level: 255 if level > 127 else 0).convert("1")
    elif mode == "L":
        image = image.convert("L")
    else:
        image = image.quantize(8)
    image.save(os.path.join(HERE, name + ".png"), optimize=True, dpi=(DPI, DPI))


save(shipping(), "shipping", "1")
save(two_colour(), "two-colour", "P")
save(photo(), "photo", "L")
for n in (1, 2, 3):
    save(box(n), f"box-{n}", "P")
