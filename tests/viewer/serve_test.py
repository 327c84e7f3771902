"""vlx serve as its clients meet it: jobs at once, clients that stall, hang up or send garbage."""

import concurrent.futures
import os
import re
import signal
import socket
import struct
import subprocess
import sys
import tempfile
import time
import unittest

VLX = sys.argv.pop(1)


def job(name, labels=1):
    page = b"mm\r\nzO\r\nJ\r\nH100,5,T,R0\r\nSl0;0.00,0.00,10.00,13.00,20.00\r\nA1\r\n"
    return b";Print job name: " + name.encode() + b"\r\n" + page * labels


class Serve(unittest.TestCase):
    def setUp(self):
        home = tempfile.TemporaryDirectory()
        self.addCleanup(home.cleanup)
        self.folder = os.path.join(home.name, "out")
        self.start()
        self.addCleanup(self.stop)

    def start(self):
        command = [VLX, "serve", "--port", "0", "--patience", "1", "-o", self.folder]
        self.server = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        self.port = int(re.search(r":(\d+),", self.server.stdout.readline()).group(1))

    def stop(self):
        self.server.send_signal(signal.SIGTERM)
        self.assertEqual(self.server.wait(20), 0)
        self.server.stdout.close()

    def connect(self):
        return socket.create_connection(("127.0.0.1", self.port), 10)

    def send(self, data):
        with self.connect() as client:
            client.sendall(data)
            client.shutdown(socket.SHUT_WR)
            self.assertEqual(client.recv(1), b"")  # the printer has it all

    def read(self, name):
        with open(os.path.join(self.folder, name), "rb") as file:
            return file.read()

    def page_with(self, count):
        for _ in range(200):
            page = self.read("index.html").decode()
            if page.count('<section class="job"') >= count:
                return page
            time.sleep(0.05)
        self.fail(f"no {count} jobs on the page: {page[-500:]}")

    def test_jobs_sent_at_once_are_all_kept_whole(self):
        jobs = [job(f"order {i}", 1 + i % 3) for i in range(20)]
        slow = [self.connect() for _ in range(5)]  # hold their connections meanwhile
        with concurrent.futures.ThreadPoolExecutor(20) as threads:
            list(threads.map(self.send, jobs))
        page = self.page_with(20)
        for client in slow:
            client.close()
        kept = sorted(self.read(n) for n in os.listdir(self.folder) if n.endswith(".job"))
        self.assertEqual(kept, sorted(jobs))
        for i in range(20):
            self.assertIn(f"order {i}<", page)
        for source in set(re.findall(r'src="([^"]+)"', page)):
            self.assertTrue(self.read(source).startswith(b"\x89PNG"), source)

    def test_bad_clients_harm_nobody(self):
        stalls = self.connect()
        stalls.sendall(job("stalls")[:-4])
        hangs_up = self.connect()
        hangs_up.sendall(job("hangs up"))
        time.sleep(0.3)
        hangs_up.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
        hangs_up.close()
        self.connect().close()  # sends nothing
        self.send(os.urandom(200_000))
        self.send(job("good"))
        page = self.page_with(4)
        stalls.close()
        for text in ("sent nothing for 1 second;", "hung up in the middle", ">good<"):
            self.assertIn(text, page)
        self.assertEqual([n for n in os.listdir(self.folder) if n.endswith(".part")], [])

    def test_next_run_numbers_on_from_the_jobs_it_finds(self):
        self.send(job("first"))
        self.page_with(1)
        half = self.connect()
        half.sendall(job("half"))
        time.sleep(0.3)
        self.stop()
        half.close()
        with open(os.path.join(self.folder, "job-7.job"), "wb"):
            pass  # a name that the printer does not give
        self.start()
        self.send(job("third"))
        page = self.page_with(3)
        self.assertLess(page.index(">third<"), page.index(">half<"))
        self.assertEqual(self.read("job-0003.job"), job("third"))

    def test_port_in_use_is_an_error(self):
        command = [VLX, "serve", "--port", str(self.port), "-o", self.folder]
        second = subprocess.run(command, capture_output=True, text=True)
        self.assertEqual(second.returncode, 5)
        self.assertIn("--port", second.stderr)


unittest.main()
