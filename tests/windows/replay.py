#!/usr/bin/python3
"""Plays the scenarios to two builds of the plug-in, the reference and one more, and compares what
they write: command text but for the time stamp, log lines but for pointers, results, last errors
and geometry as they are, page images by their pixels. Exits 1 if anything differs."""

import argparse
import concurrent.futures
import hashlib
import io
import itertools
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys

from PIL import Image

import scenarios

PNG = re.compile(rb"\x89PNG\r\n\x1a\n.*?IEND....", re.DOTALL)
POINTER = re.compile(r"(OemPDEV|Old|New|pBitmapBuffer)=(0x)?[0-9A-Fa-f]+|\(nil\)")


def pixels(png):
    image = Image.open(io.BytesIO(png)).convert("RGB")
    return f"<{image.width} x {image.height} {hashlib.sha1(image.tobytes()).hexdigest()[:12]}>"


def read_job(path):
    """The job's lines with the pixels of its images in place of their PNG files."""
    data = path.read_bytes()
    lines = PNG.sub(lambda match: pixels(match.group()).encode(), data).splitlines()
    # An empty line keeps a job off a multiple of 512 bytes, so it depends on the size of the images.
    if len(data) % 512 == 2 and lines[-1:] == [b""]:
        lines.pop()
    return [re.sub(rb"^;Created: [0-9., :]+$", b";Created: now", line) for line in lines]


def read_log(path):
    entries = (line.split("\t", 2)[2] for line in path.read_text("utf-8").splitlines())
    return [POINTER.sub(r"\1=pointer", entry) for entry in entries]


def outcome(folder):
    stages = sorted((folder / "stages").glob("*"))
    return {"job": read_job(folder / "job"),
            "calls": (folder / "calls").read_text().splitlines(),
            "log": read_log(folder / "log"),
            "stages": [f"{stage.name} {pixels(stage.read_bytes())}" for stage in stages]}


def play(scenario, folder, side, command):
    """Runs the client in the scenario's folder, where all paths of both sides are the same."""
    (folder / side / "stages").mkdir(parents=True)
    environment = {**os.environ, "VLX_LOG": f"{side}/log", "VLX_LOG_LEVEL": "trace",
                   "VLX_SAVE_BITMAPS": f"{side}/stages", "TZ": "UTC"}
    call = [*command, side, *scenario.calls]
    (folder / side / "command").write_text(shlex.join(call) + "\n")
    # A file, not a pipe: programs that Wine leaves in the background would keep a pipe open.
    errors = folder / side / "errors"
    with open(errors, "wb") as stream:
        done = subprocess.run(call, cwd=folder, env=environment, stdout=stream, stderr=stream,
                              timeout=120)
    if done.returncode != 0:
        raise RuntimeError(f"{side}: {errors.read_text(errors='replace').strip()}")
    return outcome(folder / side)


def differences(scenario, folder, sides):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    for name, content in scenario.files.items():
        (folder / name).write_bytes(content)
    try:
        first, second = (play(scenario, folder, side, command) for side, command in sides)
    except (RuntimeError, OSError, ValueError, subprocess.TimeoutExpired) as error:
        return [str(error)]
    found = []
    for what in first:
        for number, (a, b) in enumerate(itertools.zip_longest(first[what], second[what])):
            if a != b:
                found.append(f"{what} line {number + 1}:\n    {a}\n    {b}")
                break
    return found


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--reference", required=True, help="client and plug-in, quoted")
    parser.add_argument("--other", required=True, help="the same of the other build")
    parser.add_argument("--folder", required=True, type=pathlib.Path, help="where both write")
    parser.add_argument("--random", type=int, default=0, help="how many random scenarios to add")
    parser.add_argument("--seed", type=int, default=1, help="of the first random scenario")
    parser.add_argument("--only", default="", help="scenarios whose names contain this text")
    options = parser.parse_args()

    played = scenarios.named()
    played += map(scenarios.random_scenario, range(options.seed, options.seed + options.random))
    played = [scenario for scenario in played if options.only in scenario.name]
    sides = (("reference", shlex.split(options.reference)), ("other", shlex.split(options.other)))
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        folders = [options.folder.resolve() / scenario.name for scenario in played]
        for folder, found in zip(folders, pool.map(differences, played, folders, [sides] * len(played))):
            failed += bool(found)
            for text in found:
                print(f"{folder}: {text}")
    print(f"{len(played) - failed} passed, {failed} failed")
    sys.exit(1 if failed or not played else 0)


if __name__ == "__main__":
    main()
