"""vlx print when its target fails, and when it is killed: kill_print.py VLX COUNT [stalled]. A
job's file holds the whole job or does not exist."""

import os
import random
import re
import select
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
    print(*wrong, f"{what}: {tried} tried, {len(wrong)} found", sep="\n")
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
    os.remove(job)
    chance = random.Random(1)
    finished = 0
    for i in range(COUNT):
        process = printed(page, "-o", job)
        time.sleep(chance.uniform(0, 1.1 * longest))
        process.kill()
        process.communicate()
        # Adapts to the load of the machine, so that some jobs finish and some do not.
        longest *= 0.8 if os.path.exists(job) else 1.25
        if os.path.exists(job):
            finished += 1
            if body(job) != whole:
                wrong.append(f"kill {i} leaves a part under the job's name")
            os.remove(job)
    if not 0 < finished < COUNT:
        wrong.append(f"{finished} of {COUNT} jobs were through: nothing was tried")
    return report("kills", COUNT)


def peer(answer):
    """The address of a network printer on loopback that answers a connection in its own way."""
    listener = socket.create_server(("127.0.0.1", 0))
    threading.Thread(target=lambda: answer(listener.accept()[0]), daemon=True).start()
    return "tcp://127.0.0.1:%d" % listener.getsockname()[1]


def hang_up(connection):
    connection.recv(1)
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, b"\1\0\0\0\0\0\0\0")
    connection.close()


def ignore(connection):
    """Takes nothing of a job that is there whole."""
    job_end = select.poll()
    job_end.register(connection, select.POLLRDHUP)
    job_end.poll(10000)
    hang_up(connection)


def stall(connection):
    time.sleep(120)
    connection.close()


def printer_that_leaves_its_side_open(pages_file, job):
    taken, ended = [], []

    def take(connection):
        while piece := connection.recv(65536):
            taken.append(piece)
        ended.append(time.monotonic())
        stall(connection)

    process = printed(pages_file, "-o", job, "--to", peer(take))
    error = process.communicate()[1]
    if process.returncode != 0 or time.monotonic() - ended[0] > 8:
        wrong.append(f"a printer that leaves its side open: {error}")
    with open(job, "rb") as file:
        if b"".join(taken) != file.read():
            wrong.append("what the network printer took is not the job")
    os.remove(job)


def failing_targets(folder, stalled):
    page, many = os.path.join(folder, "page.pgm"), os.path.join(folder, "many.pgm")
    pages(page, 1)
    pages(many, 2000 if stalled else 200)
    job = os.path.join(folder, "b.job")
    printer_that_leaves_its_side_open(many, job)
    closed_end, open_end = os.pipe()
    os.close(closed_end)
    partly = "only a part of the job"
    tried = [("a full disk", page, "/dev/full", 5, "No space"),
             ("a full disk behind a pipe", page, open("/dev/full", "wb"), 5, "No space"),
             ("a closed pipe", many, open_end, 5, "standard output"),
             ("a folder", page, folder, 5, "irectory"),
             ("nobody there", page, "tcp://127.0.0.1:1", 5, "not answer"),
             ("a peer that hangs up", many, peer(hang_up), 7, partly),
             ("a peer that takes nothing", page, peer(ignore), 7, "before it had taken all of the job")]
    if stalled:
        tried.append(("a peer that stalls", many, peer(stall), 7, partly))
    for what, file, target, code, text in tried:
        if not isinstance(target, str):
            process = printed(file, "-o", "-", stdout=target)
        elif target.startswith("tcp:"):
            process = printed(file, "-o", job, "--to", target)
        else:
            process = printed(file, "-o", target)
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
