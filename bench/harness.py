"""Runs Ferrylane in a home of its own and tells what it costs. For receive.py, send.py and storms.py,
each of which begins in a network and a process space of its own."""

import argparse
import base64
import contextlib
import json
import operator
import os
import pathlib
import re
import resource
import shutil
import signal
import socket
import statistics
import subprocess
import sys
import tempfile
import threading
import time
import zlib

PORT = 8788
STATUS = b"GET /transfer-status HTTP/1.1\r\n\r\n"
PROJECT = pathlib.Path(__file__).resolve().parent.parent
MEMORY = pathlib.Path("/dev/shm")
MEBIBYTE = 1 << 20

# Paths in a home.
SETTINGS = ".config/Ferrylane/settings.ini"
LOG = ".local/state/Ferrylane/ferrylane.log"
KEY = ".local/share/Ferrylane/receiver-key-v1.bin"
TRANSFERS = ".local/share/Ferrylane/transfer-log-v1.json"
PAIRED_PHONES = ".local/share/Ferrylane/paired-targets-v2.json"


def arguments(description, **options):
    """The parser of a benchmark's command line."""
    parser = argparse.ArgumentParser(description=description, **options)
    parser.add_argument("--build", type=pathlib.Path, default=PROJECT / "build/bench",
                        help="the build folder; build/bench if not given")
    return parser


def add_run_arguments(parser):
    parser.add_argument("--size", type=int, default=1024, metavar="MIB", help="of a big file")
    parser.add_argument("--runs", type=int, default=5, metavar="N", help="with a big file")
    parser.add_argument("--json", action="store_true", help="one line of JSON in place of a table")
    parser.add_argument("--loud", action="store_true",
                        help="count also runs in which other processes were busy")


def enter_namespaces(*options):
    """Begins the script anew in namespaces of its own. All that it starts ends with it."""
    if os.environ.get("FERRYLANE_BENCH") != "inside":
        os.environ["FERRYLANE_BENCH"] = "inside"
        os.execvp("unshare", ["unshare", "--net", "--pid", "--fork", "--kill-child", "--mount-proc",
                              *options, sys.executable, *sys.argv])
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    resource.setrlimit(resource.RLIMIT_NOFILE, (20000, 20000))


def wait_until(condition, what, seconds=20):
    end = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > end:
            raise TimeoutError(what)
        time.sleep(0.02)


def connect():
    return socket.create_connection(("127.0.0.1", PORT), timeout=60)


def answer(request):
    with connect() as client:
        client.sendall(request)
        return b"".join(iter(lambda: client.recv(65536), b""))


class Running(contextlib.AbstractContextManager):
    """Processes and a folder of theirs, which end with it."""

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="ferrylane-bench-"))
        self.processes = []

    def run(self, *command, **options):
        options = {"stderr": subprocess.DEVNULL} | options
        self.processes.append(subprocess.Popen(command, **options))
        return self.processes[-1]

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.send_signal(signal.SIGTERM)
            process.wait(30)
        shutil.rmtree(self.folder, ignore_errors=True)


class Home(Running):
    """The home of a user with these files, and the programs of a build folder."""

    def __init__(self, build, files={}, environment={}):
        super().__init__()
        self.programs = build.resolve() / "bin"
        (self.folder / "runtime").mkdir(mode=0o700)
        for path, content in files.items():
            self.path(path).parent.mkdir(parents=True, exist_ok=True)
            self.path(path).write_text(content)
        self.environment = os.environ | {
            "HOME": str(self.folder), "XDG_RUNTIME_DIR": str(self.folder / "runtime"),
            "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.folder}/no-bus",
            "QT_QPA_PLATFORM": "offscreen"} | environment
        for name in ["XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME"]:
            self.environment.pop(name, None)

    def path(self, name):
        return self.folder / name

    def text(self, name):
        return self.path(name).read_text() if self.path(name).exists() else ""

    def start_phone(self, *words):
        """ferrylane-phone: its process."""
        return self.run(self.programs / "ferrylane-phone", *words, env=self.environment,
                        stdout=subprocess.DEVNULL)

    def start_upload(self, phone, key, paths):
        """Uploads to a Phone with this key."""
        link = f"http://127.0.0.1:{phone.port}/?flkey=" + base64.urlsafe_b64encode(key).decode()
        return self.start_phone("upload", "--skip-identify", "--name", "Phone",
                                link.rstrip("="), *paths)


class Program(Home):
    """Ferrylane itself, with at most so many descriptors."""

    def __init__(self, build, descriptors=1024, environment={}, files={}):
        super().__init__(build, files, environment)

        def limit():
            resource.setrlimit(resource.RLIMIT_NOFILE, (descriptors, descriptors))

        self.process = self.run(self.programs / "ferrylane", env=self.environment, preexec_fn=limit)
        self.wait_for_log("Server ready on port")
        time.sleep(1)

    @property
    def log(self):
        return self.text(LOG)

    @property
    def key(self):
        return self.path(KEY).read_bytes()

    def wait_for_log(self, text):
        wait_until(lambda: text in self.log, f"the log says nothing of: {text}")

    def status(self, name):
        return status_of(self.process.pid, name)

    def memory(self):
        """Resident MiB."""
        return self.status("VmRSS") / 1024

    def peak_memory(self):
        """The most resident MiB since the last call."""
        peak = self.status("VmHWM") / 1024
        pathlib.Path(f"/proc/{self.process.pid}/clear_refs").write_text("5")
        return peak

    def processor_times(self):
        """Seconds of user and system time, of all its threads."""
        return processor_times(self.process.pid)[:2]


def status_of(process, name):
    """A number of its status: proc(5)."""
    text = pathlib.Path(f"/proc/{process}/status").read_text()
    return int(re.search(rf"^{name}:\s*(\d+)", text, re.MULTILINE)[1])


def processor_times(process):
    """Seconds: user and system time, and those of children that have ended."""
    words = pathlib.Path(f"/proc/{process}/stat").read_text().rsplit(")", 1)[1].split()
    return [int(word) / os.sysconf("SC_CLK_TCK") for word in words[11:15]]


class Phone(threading.Thread):
    """Plays a phone that takes uploads and checks nothing. Ends with the process."""

    BODY_END = b"\r\n0\r\n\r\n"

    def __init__(self, keeps):
        """`keeps`: whether it keeps the requests, in `requests`."""
        super().__init__(daemon=True)
        self.requests, self.keeps, self.begin, self.end = [], keeps, None, 0
        self.buffer = bytearray(MEBIBYTE)
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        self.start()

    def run(self):
        while True:
            with self.listener.accept()[0] as connection:
                self.begin = self.begin or time.monotonic()
                with contextlib.suppress(ConnectionError):
                    self.serve(connection)
                self.end = time.monotonic()

    def serve(self, connection):
        request, last, size = bytearray(), b"", 1
        # Ciphertext looks like the end of a body once in 2^56 times.
        while size and not last.endswith(self.BODY_END):
            size = connection.recv_into(self.buffer)
            if not last and self.buffer.startswith(b"GET "):
                return reply(connection, b"READY")
            last = last[-8:] + self.buffer[max(0, size - 8):size]
            if self.keeps:
                request += memoryview(self.buffer)[:size]
        self.requests.append(request)
        reply(connection, b"OK SHA256")

    def seconds(self):
        """Between the first connection since the last call and the last answer."""
        seconds, self.begin = self.end - self.begin, None
        return seconds


def reply(connection, body):
    connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nConnection: close\r\n"
                       b"Content-Length: %d\r\n\r\n%s" % (len(body), body))


def make_files(folder, count, size):
    """Files of so many bytes each, of which no two megabytes are alike to a processor's caches."""
    piece, paths = os.urandom(min(size, MEBIBYTE)), []
    for number in range(count):
        paths.append(folder / f"file-{number}.bin")
        with paths[-1].open("wb") as file:
            for start in range(0, size, len(piece)):
                file.write(piece[:size - start])
    return paths


@contextlib.contextmanager
def folder_in(parent):
    """A folder that goes afterwards."""
    parent.mkdir(exist_ok=True)
    with tempfile.TemporaryDirectory(prefix="ferrylane-bench-", dir=parent) as folder:
        yield pathlib.Path(folder)


def touch_memory(size, *read):
    """On a virtual machine memory that is free belongs to the host, and the first touch of it costs
    more than all that is measured here: takes so many bytes of files in memory, lets them go, and
    reads `read`."""
    with tempfile.TemporaryFile(dir=MEMORY) as file:
        for _ in range(0, size, MEBIBYTE):
            file.write(bytes(MEBIBYTE))
    for content in read:
        zlib.crc32(content)


def crypto_speed(build, name):
    """Bytes a second of one thread that does nothing but this; see functions.cpp."""
    output = subprocess.run([build / "bin/bench_functions", f"--benchmark_filter=^{name}$",
                             "--benchmark_min_time=0.3", "--benchmark_format=json"],
                            check=True, capture_output=True).stdout
    return json.loads(output)["benchmarks"][0]["bytes_per_second"]


def busy_times():
    """Processor time so far: of the whole machine, its host's share included, and of our own."""
    words = pathlib.Path("/proc/stat").read_text().split()
    user, nice, system, steal = (int(words[index]) for index in (1, 2, 3, 8))
    own = 0
    for process in filter(str.isdigit, os.listdir("/proc")):
        with contextlib.suppress(OSError):
            own += sum(processor_times(process))
    return (user + nice + system + steal) / os.sysconf("SC_CLK_TCK"), own


class Report:
    """What a benchmark has found: a table, or one line of JSON."""

    def __init__(self, title):
        model = re.search("model name.*: (.*)", pathlib.Path("/proc/cpuinfo").read_text())
        self.title = f"{title}; {os.cpu_count()} x {model[1] if model else 'unknown processor'}"
        self.figures = {}

    def add(self, name, value, unit="", at_least=None, at_most=None):
        target = {}
        if at_least is not None or at_most is not None:
            target = {"target": f"at most {at_most}" if at_least is None else f"at least {at_least}",
                      "met": value <= at_most if at_least is None else value >= at_least}
        self.figures[name] = {"value": round(value, 3), "unit": unit} | target

    def quiet_runs(self, run, arguments):
        """What `run` returns, as often as is asked for. Once more before, for nothing. A run in
        which other processes took more than a tenth of a core does not count."""
        run()
        results, thrown_away = [], 0
        while len(results) < arguments.runs:
            begin, (busy, own) = time.monotonic(), busy_times()
            result = run()
            now_busy, now_own = busy_times()
            others = ((now_busy - busy) - (now_own - own)) / (time.monotonic() - begin)
            if others <= 0.1 or arguments.loud:
                results.append(result)
            else:
                thrown_away += 1
            print(f"run {len(results) + thrown_away}: others took {max(0, others):.2f} of a core",
                  file=sys.stderr)
            if thrown_away > 3 * arguments.runs:
                sys.exit("This machine is not quiet enough (--loud measures all the same).")
        self.add("runs thrown away: others were busy", thrown_away)
        return results

    def add_transfers(self, speeds, limits, user, system, most_processor_time):
        """Of each run: bytes a second, those of the cryptography, and seconds a GiB."""
        median = statistics.median
        self.add("throughput", median(speeds) / 1e6, "MB/s")
        self.add("serial cryptography", median(limits) / 1e6, "MB/s")
        self.add("throughput / serial cryptography",
                 median(map(operator.truediv, speeds, limits)), at_least=0.85)
        self.add("user processor time", median(user), "s/GiB")
        self.add("system processor time", median(system), "s/GiB")
        self.add("processor time", median(map(sum, zip(user, system))), "s/GiB",
                 at_most=most_processor_time)

    def print(self, as_json):
        if as_json:
            print(json.dumps({"title": self.title} | self.figures))
            return
        print(self.title)
        for name, figure in self.figures.items():
            met = {True: "ok", False: "missed", None: ""}[figure.get("met")]
            print(f"  {name:44} {figure['value']:>10g} {figure['unit']:6}"
                  f" {figure.get('target', ''):14} {met}".rstrip())
