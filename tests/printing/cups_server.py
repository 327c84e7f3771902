"""A print server of its own for a test: cupsd in a temporary folder, on a free port of the loopback
interface, with the filter and the descriptions of an installed tree beside the system's own. Nothing
of the machine's print system is read or changed; the server ends with the fixture, by its process id."""

import os
import re
import shutil
import signal
import socket
import subprocess
import tempfile
import time

SYSTEM_SERVER = "/usr/lib/cups"
SYSTEM_DATA = "/usr/share/cups"

SERVER_CONF = """\
Listen 127.0.0.1:{port}
LogLevel debug
MaxLogSize 0
Browsing No
WebInterface No
DefaultAuthType None
JobKillDelay 20
JobRetryInterval 1
JobRetryLimit 3
<Location />
  Order allow,deny
  Allow 127.0.0.1
</Location>
<Policy default>
  <Limit All>
    Order deny,allow
  </Limit>
</Policy>
"""
FILES_CONF = """\
ServerRoot {root}/etc
CacheDir {root}/cache
StateDir {root}/state
RequestRoot {root}/spool
TempDir {root}/spool/tmp
DocumentRoot {root}/etc
ServerBin {root}/bin
DataDir {root}/data
ErrorLog {root}/error_log
AccessLog {root}/access_log
PageLog {root}/page_log
FileDevice Yes
SystemGroup root
ServerKeychain {root}/etc
{environment}
"""
JOB_REQUEST = """\
{
  OPERATION Get-Job-Attributes
  GROUP operation-attributes-tag
  ATTR charset attributes-charset utf-8
  ATTR naturalLanguage attributes-natural-language en
  ATTR uri job-uri $uri
  ATTR name requesting-user-name root
}
"""
RUNNING = {"pending", "held", "processing"}


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def link_all(source, target):
    """The folder's entries as links; folders that get more entries are made."""
    os.makedirs(target, exist_ok=True)
    for name in os.listdir(source) if os.path.isdir(source) else []:
        if not os.path.lexists(os.path.join(target, name)):
            os.symlink(os.path.join(source, name), os.path.join(target, name))


def document(pages, width=283.465, height=425.197):
    """A PDF file whose pages are filled with bars, each page with other ones."""
    objects, kids = [], []
    for page in range(pages):
        bars = " ".join(f"{20 + 9 * i} 30 {1 + (i * 7 + page) % 5} 300 re f" for i in range(25))
        kids.append(f"{3 + 2 * page} 0 R")
        objects.append(f"{3 + 2 * page} 0 obj <</Type/Page/Parent 2 0 R/MediaBox[0 0 {width} {height}]"
                       f"/Contents {4 + 2 * page} 0 R>> endobj\n"
                       f"{4 + 2 * page} 0 obj <</Length {len(bars)}>> stream\n{bars}\nendstream endobj\n")
    return ("%PDF-1.4\n1 0 obj <</Type/Catalog/Pages 2 0 R>> endobj\n"
            f"2 0 obj <</Type/Pages/Count {pages}/Kids[{' '.join(kids)}]>> endobj\n"
            f"{''.join(objects)}trailer <</Root 1 0 R>>\n%%EOF\n")


def without_date(job):
    return job[job.find(b"\n"):]


class CupsServer:
    """with CupsServer(prefix) as server: server.lp("labels", "page.pdf")"""

    def __init__(self, prefix, environment=None):
        self.root = tempfile.mkdtemp(prefix="vlx-cups-")
        os.chmod(self.root, 0o755)
        for folder in ("etc/ppd", "cache", "state", "spool/tmp", "out"):
            os.makedirs(self.path(folder))
        os.chmod(self.path("out"), 0o777)
        for part in ("filter", "drv", "mime"):
            server = part == "filter"
            target = self.path("bin" if server else "data", part)
            for origin in (prefix + "/lib/cups" if server else prefix + "/share/cups",
                           SYSTEM_SERVER if server else SYSTEM_DATA):
                link_all(os.path.join(origin, part), target)
        link_all(SYSTEM_SERVER, self.path("bin"))
        link_all(SYSTEM_DATA, self.path("data"))
        self.port = free_port()
        settings = "".join(f"SetEnv {k} {v}\n" for k, v in (environment or {}).items())
        self.write("etc/cupsd.conf", SERVER_CONF.format(port=self.port))
        self.write("etc/cups-files.conf", FILES_CONF.format(root=self.root, environment=settings))
        self.process = None

    def path(self, *parts):
        return os.path.join(self.root, *parts)

    def write(self, name, text):
        with open(self.path(name), "w", encoding="utf-8") as file:
            file.write(text)

    def read(self, name):
        with open(self.path(name), "rb") as file:
            return file.read()

    def __enter__(self):
        self.process = subprocess.Popen(
            ["/usr/sbin/cupsd", "-f", "-c", self.path("etc/cupsd.conf"),
             "-s", self.path("etc/cups-files.conf")],
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for _ in range(200):
            if self.process.poll() is not None:
                raise RuntimeError("cupsd has ended:\n" + self.log()[-2000:])
            if self.run("lpstat", "-r", check=False).stdout.startswith("scheduler is running"):
                return self
            time.sleep(0.05)
        raise RuntimeError("cupsd does not answer")

    def __exit__(self, *_):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait(30)
        shutil.rmtree(self.root, ignore_errors=True)

    def log(self):
        return self.read("error_log").decode("utf-8", "replace")

    def run(self, program, *arguments, check=True, data=None):
        environment = {**os.environ, "CUPS_SERVER": f"127.0.0.1:{self.port}", "LC_ALL": "C"}
        done = subprocess.run([program, *arguments], env=environment, capture_output=True,
                              input=data, text=data is None or isinstance(data, str), check=False)
        if check and done.returncode != 0:
            raise RuntimeError(f"{program} {arguments}: {done.stdout}{done.stderr}")
        return done

    def add_queue(self, name, device, model, *options):
        pairs = [word for option in options for word in ("-o", option)]
        self.run("lpadmin", "-p", name, "-E", "-v", device, "-m", model, *pairs)

    def add_driverless_queue(self, name, uri):
        """A queue that asks the printer what it can do. cupsd answers before it has asked, and aborts
        a job that comes before it has filed what it learnt."""
        self.run("lpadmin", "-p", name, "-E", "-v", uri, "-m", "everywhere")
        for _ in range(600):
            if os.path.exists(self.path("cache", name + ".data")):
                return
            time.sleep(0.05)
        raise RuntimeError(f"{uri} is not described:\n" + self.log()[-2000:])

    def lp(self, queue, *arguments):
        """Sends a job and gives its number."""
        said = self.run("lp", "-d", queue, *arguments).stdout
        return int(said.split()[3].rpartition("-")[2])

    def wait(self, job, seconds=60):
        """Waits for the job's end and gives its state and its state message."""
        for _ in range(seconds * 20):
            state = self.job(job)
            if state["job-state"] not in RUNNING:
                break
            time.sleep(0.05)
        return state

    def job(self, number):
        """The attributes of the job, as ipptool shows them."""
        self.write("job.test", JOB_REQUEST)
        shown = self.run("ipptool", "-tv", f"ipp://127.0.0.1:{self.port}/jobs/{number}",
                         self.path("job.test"), check=False).stdout
        pairs = (re.match(r"\s+([a-z-]+) \([^)]*\) = (.*)", line) for line in shown.splitlines())
        return {pair.group(1): pair.group(2) for pair in pairs if pair}
