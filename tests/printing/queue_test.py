"""Prints through queues of a print server of its own: what people see when it works, and when not.

    queue_test.py BUILD SOURCES
"""

import os
import re
import signal
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from cups_server import CupsServer, document, free_port, without_date

build, sources = sys.argv[1:]
VLX = os.path.join(build, "bin", "vlx")
faults = []


def expect(holds, fault):
    if not holds:
        faults.append(fault)


def vlx(*arguments):
    return subprocess.run([VLX, *arguments], capture_output=True, text=True, check=False)


def wait_for(condition, seconds=30):
    for _ in range(seconds * 50):
        if condition():
            return True
        time.sleep(0.02)
    return False


class Queue:
    """A queue whose printer is a file."""

    def __init__(self, server, name, dpi=300, device=None):
        self.server, self.name = server, name
        self.file = server.path("out", name)
        server.add_queue(name, device or "file:" + self.file, f"drv:///vlx.drv/vlx-{dpi}.ppd")

    def job(self):
        with open(self.file, "rb") as file:
            return file.read()

    def message(self):
        return self.server.run("lpstat", "-p", self.name).stdout

    def expect_printed(self, path, options, arguments, name=None):
        """The queue's job is that of vlx print."""
        job = self.server.lp(self.name, "-t", "label", *options, path)
        state = self.server.wait(job)["job-state"]
        expect(state == "completed", f"{path} {options}: {state}; {self.message()}")
        other = self.server.path("print.job")
        done = vlx("print", name or path, "--name", "label", "-o", other, *arguments)
        expect(done.returncode == 0, f"vlx print {path}: {done.stderr}")
        with open(other, "rb") as file:
            expect(without_date(file.read()) == without_date(self.job()),
                   f"{path} {options}: not the job of vlx print {arguments}")

    def expect_failure(self, path, options, message):
        before = os.path.exists(self.file) and self.job()
        job = self.server.lp(self.name, *options, path)
        state = self.server.wait(job)["job-state"]
        expect(state in ("aborted", "processing-stopped"), f"{path} {options}: {state}")
        expect(message in self.message(), f"{path} {options}: people see {self.message()}")
        left = os.path.exists(self.file) and self.job()
        expect(left in (before, b"", False), f"{path} {options}: a part of the job was sent")


def check_documents(server, files):
    queue = Queue(server, "labels")
    queue.expect_printed(files["two.pdf"], [], ["--paper", "100x150mm"])
    queue.expect_printed(files["two.pdf"], ["-n", "3", "-o", "cut=each-label", "-o", "print.speed=150"],
                         ["--copies", "3", "--set", "cut.enabled=true", "--set",
                          "cut.mode=each-label", "--set", "print.speed=150"])
    queue.expect_printed(files["83.pdf"], ["-o", "media=Custom.83x47mm"], ["--paper", "83x47mm"])
    queue.expect_printed(os.path.join(sources, "samples", "box-1.png"), ["-o", "media=100x60mm"],
                         ["--paper", "100x60mm"])
    coloured = os.path.join(sources, "samples", "two-colour.png")
    queue.expect_printed(coloured, ["-o", "media=100x60mm", "-o", "ColorModel=RGB"],
                         ["--paper", "100x60mm", "--set", "colour.mode=two"])
    narrow = Queue(server, "narrow", dpi=203)
    narrow.expect_printed(files["two.pdf"], [], ["--dpi", "203"])
    for name, text in (("a.txt", "hello label\n"), ("a.ps", POSTSCRIPT)):
        server.write(name, text)
        job = server.lp("labels", server.path(name))
        expect(server.wait(job)["job-state"] == "completed", f"{name}: {queue.message()}")
        explained = vlx("view", queue.file, "-o", server.path(name + "-seen"))
        expect(explained.returncode == 0 and b"\r\nA1\r\n" in queue.job(), f"{name}: no label")


POSTSCRIPT = """%!PS-Adobe-3.0
%%Pages: 1
%%EndComments
%%Page: 1 1
<</PageSize [283 425]>> setpagedevice 20 20 50 100 rectfill showpage
%%EOF
"""


def check_refusals(server, files):
    queue = Queue(server, "strict")
    queue.expect_failure(files["a4.pdf"], [], "Page 1 is 210.1 x 297")
    queue.expect_failure(files["two.pdf"], ["-o", "print.speed=5000"], "print.speed")
    queue.expect_failure(files["two.pdf"], ["-o", "blocks.0.text=x"], "A job may not set")
    queue.expect_printed(files["two.pdf"], [], ["--paper", "100x150mm"])
    full = Queue(server, "full", device="file:/dev/full")
    full.file = server.path("none")
    full.expect_failure(files["two.pdf"], [], "No space left on device")


def filter_process(server, job):
    found = re.findall(rf"\[Job {job}\] Started filter \S*rastertovlx \(PID (\d+)\)", server.log())
    return int(found[-1]) if found else None


def check_interruptions(server, files):
    queue = Queue(server, "slow")

    def start():
        job = server.lp("slow", files["long.pdf"])
        started = f"[Job {job}] PAGE: 2"
        expect(wait_for(lambda: started in server.log()), f"job {job} does not print")
        return job

    job = start()
    server.run("cancel", f"slow-{job}")
    expect(server.wait(job)["job-state"] == "canceled", "a cancelled job is not")
    process = filter_process(server, job)
    expect(wait_for(lambda: not os.path.exists(f"/proc/{process}")), "the filter goes on")
    linted = vlx("lint", queue.file)
    expect(linted.returncode == 0, f"a cancelled job: {linted.stdout}")

    job = start()
    os.kill(filter_process(server, job), signal.SIGKILL)
    server.wait(job)
    queue.expect_printed(files["two.pdf"], [], ["--paper", "100x150mm"])


def check_dead_printer(server, files):
    queue = Queue(server, "dead", device=f"socket://127.0.0.1:{free_port()}")
    job = server.lp("dead", files["two.pdf"])
    shown = wait_for(lambda: "unavailable" in queue.message())
    expect(shown, f"a dead printer: people see {queue.message()}")
    expect("2 labels" not in queue.message(), "the cost hides what is wrong")
    server.run("cancel", f"dead-{job}")
    expect(server.wait(job)["job-state"] == "canceled", "a job for a dead printer stays")


def main():
    with tempfile.TemporaryDirectory(prefix="vlx-queue-") as folder:
        os.chmod(folder, 0o755)
        prefix = os.path.join(folder, "usr")
        subprocess.run(["cmake", "--install", build, "--prefix", prefix], check=True,
                       stdout=subprocess.DEVNULL)
        with CupsServer(prefix, {"VLX_HOME": folder}) as server:
            files = {"two.pdf": document(2), "83.pdf": document(1, 235.276, 133.228),
                     "a4.pdf": document(1, 595.276, 841.89), "long.pdf": document(3000)}
            for name, text in files.items():
                server.write(name, text)
            files = {name: server.path(name) for name in files}
            try:
                for check in (check_documents, check_refusals, check_interruptions,
                              check_dead_printer):
                    check(server, files)
            except (OSError, RuntimeError, TypeError) as error:
                faults.append(f"{check.__name__} cannot go on: {error}")
            finally:
                if "VLX_TEST_LOG" in os.environ:
                    with open(os.environ["VLX_TEST_LOG"], "w", encoding="utf-8") as log:
                        log.write(server.log())
    print("\n".join(faults))
    sys.exit(1 if faults else 0)


main()
