"""Writes the cases that fuzzing of job streams starts from. Usage: make_stream_cases.py FOLDER"""

import os
import struct
import sys
import zlib


def png(width, height, depth=1, kind=0, data=None):
    def chunk(name, content):
        return struct.pack(">I", len(content)) + name + content + struct.pack(">I", zlib.crc32(name + content))

    channels = {0: 1, 2: 3, 3: 1, 4: 2, 6: 4}[kind]
    row = b"\0" + b"\x5a" * ((width * depth * channels + 7) // 8)
    data = zlib.compress(row * height) if data is None else data
    palette = chunk(b"PLTE", bytes(6)) if kind == 3 else b""
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, depth, kind, 0, 0, 0)) +
            palette + chunk(b"IDAT", data) + chunk(b"IEND", b""))


def download(name, file):
    return b"dPNG;" + name + b"\r\n\x1b:" + file + b"\x1bend-of-data\r\n"


SET_UP = b"mm\r\nzO\r\nJ\r\nH100,5:3,D,R1,B2\r\n"
SIZE = b"Sl0;0.00,-1.50,20.00,23.00,30.00\r\n"
ONE = b";Print job name: one\r\neIMG;*\r\n" + download(b"0", png(30, 20)) + SET_UP + SIZE
CASES = {
    "one": ONE + b"P5.00\r\nCsp,0.70\r\nCs,3.00\r\nCp,0.50\r\nC2,2.00,1.50\r\nI:Image0;30.00,20.00,180;0\r\nA3\r\n",
    "two": download(b"0", png(9, 7)) + download(b"1", png(15, 20)) + SET_UP +
           b"O A0=3,A1='Automatic',A5=1.00,C1.3,H0.25,X,T2.50\r\n" + SIZE +
           b"I:Image0;15.00,0.00,270;0\r\nI:Image1;0.00,20.00,90;1\r\nCe,2.00,1.50\r\nA1\r\n",
    "recall": ONE + b"I:Image0;0.00,0.00,0;0\r\nA1\r\n" + download(b"0", png(8, 8, 8)) + b"\r\nR Image0;0\r\nA2\r\n",
    "colour": ONE + download(b"0", png(60, 20, 8, 2)) + b"I:Image0;0.00,0.00,0;0\r\nA1\r\n",
    "palette": ONE + download(b"0", png(16, 4, 1, 3)) + b"I:F;0.00,0.00,0;0\r\nA1\r\n",
    "alpha": ONE + download(b"0", png(4, 4, 8, 6)) + b"I:F;0.00,0.00,0;0\r\nA1\r\n",
    "huge_png": download(b"0", png(2**31 - 1, 2**31 - 1, data=b"x")) + SET_UP + SIZE + b"I:F;0,0,0;0\r\nA1\r\n",
    "long_label": SET_UP + b"Sl0;0.00,0.00,10000000.00,10000000.00,100.00\r\nA1000000\r\n",
    "cut_off": ONE[:90],
    "line_ends": b"J\nJ\rA1",
    "garbage": bytes(range(256)) * 2,
}

os.makedirs(sys.argv[1], exist_ok=True)
for case, content in CASES.items():
    with open(os.path.join(sys.argv[1], case), "wb") as output:
        output.write(content)
