"""vlx print when its target fails, and when it is killed: kill_print.py VLX COUNT [stalled]. What
stands under a job's name is a whole job or nothing."""

import os
import random
import re
import socket
import subprocess
import sys
import tempfile
import threading
import time

VLX, COUNT = sys.argv[1], int(sys.argv[2])
wrong = []


def pages(path, count):
    """Pages of noise, which no compression makes small: a job fills the buffers on its way."""
    rows = bytes(255 * (byte & 1) for byte in random.Random(2).randbytes(400 * 300))
    with open(path, "wb") as file:
        file.write((b"P5 400 300 255\n" + rows) * count)


def printed(*arguments, stdout=subprocess.PIPE):
    return subprocess.Popen([VLX, "print", *arguments, "--paper", "50x38mm", "--dpi", "203"],
                            stdout=stdout, stderr=subprocess.PIPE)


def body(path):
    with open(path, "rb") as file:
        return file.read().partition(b"\n")[2]  # the first line holds the time


def report(what, tried):
    print("\n".join(wrong))
    print(f"{what}: {tried} tried, {len(wrong)} found")
    found = bool(wrong)
    wrong.clear()
    return found


def kill_at_any_moment(folder):
    page, job = os.path.join(folder, "page.pgm"), os.path.join(folder, "a.job")
    pages(page, 20)
    start = time.monotonic()
    if printed(page, "-o", job).wait() != 0:
        wrong.append("the job fails by itself")
    longest = time.monotonic() - start
    whole = body(job)
    chance = random.Random(1)
    finished = 0
    for i in range(COUNT):
        os.remove(job) if os.path.exists(job) else None
        process = printed(page, "-o", job)
        time.sleep(chance.uniform(0, 1.1 * longest))
        process.kill()
        process.communicate()
        # Follows the load of the machine, so that some jobs get through and some do not.
        longest *= 0.8 if os.path.exists(job) else 1.25
        if os.path.exists(job):
            finished += 1
            if body(job) != whole:
                wrong.append(f"kill {i} leaves a part under the job's name")
    if not 0 < finished < COUNT:
        wrong.append(f"{finished} of {COUNT} jobs were through: nothing was tried")
    return report("kills", COUNT)


class Peer:
    """A network printer on loopback that answers a connection in its own way."""

    def __init__(self, answer):
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.address = "tcp://127.0.0.1:%d" % self.listener.getsockname()[1]
        threading.Thread(target=lambda: answer(self.listener.accept()[0]), daemon=True).start()


def hang_up(connection):
    connection.recv(1)
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, b"\1\0\0\0\0\0\0\0")
    connection.close()


def stall(connection):
    time.sleep(120)
    connection.close()


def failing_targets(folder, stalled):
    page, many = os.path.join(folder, "page.pgm"), os.path.join(folder, "many.pgm")
    pages(page, 1)
    pages(many, 2000 if stalled else 200)
    job = os.path.join(folder, "b.job")
    closed_end, open_end = os.pipe()
    os.close(closed_end)
    full = open("/dev/full", "wb")
    tried = [("a full disk", (page, "-o", "/dev/full"), {}, 5, "No space"),
             ("a full disk behind a pipe", (page, "-o", "-"), {"stdout": full}, 5, "No space"),
             ("a closed pipe", (many, "-o", "-"), {"stdout": open_end}, 5, "standard output"),
             ("a folder", (page, "-o", folder), {}, 5, "irectory"),
             ("nobody there", (page, "-o", job, "--to", "tcp://127.0.0.1:1"), {}, 5, "not answer"),
             ("a peer that hangs up", (many, "-o", job, "--to", Peer(hang_up).address), {}, 7,
              "a part of the job")]
    if stalled:
        tried.append(("a peer that stalls", (many, "-o", job, "--to", Peer(stall).address), {}, 7,
                      "a part of the job"))
    for what, arguments, options, code, text in tried:
        process = printed(*arguments, **options)
        error = process.communicate()[1].decode()
        if process.returncode != code or text not in error:
            wrong.append(f"{what}: exit code {process.returncode}, not {code}: {error}")
        left = [name for name in os.listdir(folder) if re.search(r"b\.job|\.part$", name)]
        if left:
            wrong.append(f"{what} leaves {left}")
    if not os.path.exists("/dev/full") or os.path.isfile("/dev/full"):
        wrong.append("the device is gone")
    return report("failing targets", len(tried))


with tempfile.TemporaryDirectory() as home:
    os.environ["VLX_HOME"] = home
    failed = failing_targets(home, "stalled" in sys.argv)
    failed |= kill_at_any_moment(home)
sys.exit(1 if failed else 0)
