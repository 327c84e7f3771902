"""Reads the test label back: its bar codes at every resolution, and where its corner marks are.

    test_label_test.py VLX
"""

import os
import struct
import subprocess
import sys
import tempfile
import zlib

vlx = sys.argv[1]
faults = []


def box(path):
    """The first and last column and row with a dot of a picture that vlx has drawn: palette, white
    first, rows without filter."""
    with open(path, "rb") as file:
        png = file.read()
    width, height, depth = struct.unpack(">IIB", png[16:25])
    data, at = b"", 8
    while at < len(png):
        size, kind = struct.unpack(">I4s", png[at:at + 8])
        data += png[at + 8:at + 8 + size] if kind == b"IDAT" else b""
        at += size + 12
    stride = (width * depth + 7) // 8 + 1
    rows = zlib.decompress(data)
    bits = [f"{int.from_bytes(rows[y * stride + 1:(y + 1) * stride], 'big'):0{8 * stride - 8}b}"
            for y in range(height)]
    dark = [y for y in range(height) if "1" in bits[y]]
    return (width, height), (min(row.find("1") for row in bits if "1" in row) // depth, dark[0],
                             max(row.rfind("1") for row in bits) // depth, dark[-1])


def check(folder, dpi, *options):
    path = os.path.join(folder, "seen.png")
    done = subprocess.run([vlx, "test-label", "-o", path, "--paper", "100x220mm", "--dpi", str(dpi),
                           *options], capture_output=True, text=True, check=False)
    if done.returncode != 0 or done.stderr:
        return faults.append(f"{dpi} {options}: {done}")
    read = subprocess.run(["zbarimg", "-q", "--raw", "-Sx-density=1", "-Sy-density=1", path],
                          capture_output=True, text=True, check=False).stdout.splitlines()
    wanted = {f"{n}0{angle}" for n in range(1, 5) for angle in ("00", "90")}
    wanted |= {f"VLX {n} DOTS" for n in (2, 3, 4)}  # a square of single dots is for good readers
    if not wanted <= set(read):
        faults.append(f"{dpi} {options}: not read: {wanted - set(read)}")
    size, (left, top, right, bottom) = box(path)
    mm = round(dpi / 25.4)
    if (left, top, size[0] - 1 - right, size[1] - 1 - bottom) != (mm,) * 4:
        faults.append(f"{dpi} {options}: marks at {left}, {top}, {right}, {bottom} of {size}")


with tempfile.TemporaryDirectory(prefix="vlx-test-label-") as home:
    os.environ["VLX_HOME"] = home
    for resolution in (203, 300, 600):
        check(home, resolution)
        check(home, resolution, "--set", "colour.mode=two", "--orientation", "landscape")
print("\n".join(faults))
sys.exit(1 if faults else 0)
