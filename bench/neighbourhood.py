"""A computer that runs Ferrylane, a neighbour's host on the same cable, and what the program makes
of what the neighbour does, in figures. For storms.py, in namespaces of its own."""

import contextlib
import ctypes
import multiprocessing
import os
import pathlib
import resource
import shutil
import signal
import socket
import statistics
import subprocess
import tempfile
import threading
import time

PORT = 8788
COMPUTER, NEIGHBOUR, BROADCAST = "10.9.0.1", "10.9.0.2", "10.9.255.255"
STATUS = b"GET /transfer-status HTTP/1.1\r\n\r\n"

# Paths in a home.
SETTINGS = ".config/Ferrylane/settings.ini"
LOG = ".local/state/Ferrylane/ferrylane.log"
TRANSFERS = ".local/share/Ferrylane/transfer-log-v1.json"
PAIRED_PHONES = ".local/share/Ferrylane/paired-targets-v2.json"

AVAHI = "org.freedesktop.Avahi"
# The cache has room for every name, so that it is not the daemon that withstands the storm.
AVAHI_CONFIGURATION = """[server]
host-name={}
use-ipv6=no
cache-entries-max=20000
[publish]
publish-workstation=no
publish-hinfo=no
"""


def lay_cable():
    """Makes the neighbour's host and connects it, in a /run that hides the machine's own buses."""
    commands = ["mount -t tmpfs none /run", "ip netns add neighbour",
                "ip link add eth0 type veth peer name eth0 netns neighbour"]
    for ip, address in [("ip", COMPUTER), ("ip -n neighbour", NEIGHBOUR)]:
        commands += [f"{ip} link set lo up multicast on", f"{ip} link set eth0 up",
                     f"{ip} address add {address}/16 broadcast + dev eth0",
                     f"{ip} route add default dev eth0"]
    for command in commands:
        subprocess.run(command.split(), check=True)


def socket_next_door(kind, protocol=0):
    """A socket of the neighbour's host, which may send to everybody."""
    def enter(network):
        if ctypes.CDLL(None).setns(network.fileno(), 0) != 0:
            raise OSError("cannot enter a network namespace")

    with open("/proc/thread-self/ns/net") as home, open("/run/netns/neighbour") as neighbours:
        enter(neighbours)
        try:
            made = socket.socket(socket.AF_INET, kind, protocol)
        finally:
            enter(home)
    made.setsockopt(socket.SOL_SOCKET, socket.SO_BROADCAST, 1)
    return made


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
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="ferrylane-storm-"))
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


class Avahi(Running):
    """A bus and an avahi-daemon: the computer's, or the neighbour's."""

    def __init__(self, host, enter=()):
        super().__init__()
        self.bus = f"unix:path={self.folder}/bus"
        self.environment = {"DBUS_SYSTEM_BUS_ADDRESS": self.bus}
        self.run("dbus-daemon", "--session", "--nofork", "--nopidfile", "--address=" + self.bus)
        wait_until((self.folder / "bus").exists, "no bus")
        configuration = self.folder / "avahi.conf"
        configuration.write_text(AVAHI_CONFIGURATION.format(host))
        # It keeps its state in /run, where there can be but one of it.
        self.run(*enter, "unshare", "--mount", "sh", "-c", 'mount -t tmpfs none /run && exec "$@"',
                 "sh", "avahi-daemon", f"--file={configuration}", "--no-drop-root", "--no-chroot",
                 "--no-rlimits", env=os.environ | self.environment)
        wait_until(self.is_ready, "no avahi-daemon")

    def is_ready(self):
        return subprocess.run(["busctl", "--address=" + self.bus, "status", AVAHI],
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode == 0

    def announce(self, name):
        """Announces a service of ours for as long as this runs; returns when it has the name."""
        publisher = self.run("avahi-publish", "--service", name, "_ferrylane._tcp", "80", text=True,
                             env=os.environ | self.environment, stderr=subprocess.PIPE)
        while "Established under name" not in (line := publisher.stderr.readline()):
            if not line:
                raise RuntimeError(f"cannot announce {name}")

    @classmethod
    def of_neighbour(cls):
        return cls("neighbour", ["ip", "netns", "exec", "neighbour"])


class Program(Running):
    """Ferrylane, with at most so many descriptors, in a home of its own with these files."""

    def __init__(self, executable, descriptors=None, environment={}, files={}):
        super().__init__()
        self.phone = executable.parent / "ferrylane-phone"
        (self.folder / "runtime").mkdir(mode=0o700)
        for path, content in files.items():
            self.path(path).parent.mkdir(parents=True)
            self.path(path).write_text(content)
        self.environment = os.environ | environment | {
            "HOME": str(self.folder), "XDG_RUNTIME_DIR": str(self.folder / "runtime"),
            "QT_QPA_PLATFORM": "offscreen"}
        for name in ["XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME"]:
            self.environment.pop(name, None)

        def limit():
            if descriptors:
                resource.setrlimit(resource.RLIMIT_NOFILE, (descriptors, descriptors))

        self.process = self.run(executable, env=self.environment, preexec_fn=limit)
        self.wait_for_log("Server ready on port")
        time.sleep(1)

    def path(self, name):
        return self.folder / name

    def text(self, name):
        return self.path(name).read_text() if self.path(name).exists() else ""

    @property
    def log(self):
        return self.text(LOG)

    def wait_for_log(self, text):
        wait_until(lambda: text in self.log, f"the log says nothing of: {text}")

    def memory(self):
        """Resident MiB."""
        status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text()
        return int(status.split("VmRSS:")[1].split()[0]) / 1024

    def processor_time(self):
        """Seconds, of all its threads."""
        status = pathlib.Path(f"/proc/{self.process.pid}/stat").read_text()
        return sum(map(int, status.rsplit(")", 1)[1].split()[11:13])) / os.sysconf("SC_CLK_TCK")

    def show(self):
        """Asks the main thread, as a second start of the program does, and waits for its answer."""
        with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as client:
            client.settimeout(60)
            client.connect(str(self.folder / "runtime/ferrylane/requests"))
            client.sendall(b"show")
            client.recv(1)

    def start_upload(self, size):
        """An honest phone that sends a file of so many bytes: its process."""
        file = self.path("honest.bin")
        with file.open("wb") as content:
            content.truncate(size)
        return self.run(self.phone, "upload", "--local", "--name", "Phone", file,
                        env=self.environment, stdout=subprocess.DEVNULL)

    def upload(self):
        """Seconds until an honest upload is stored and in the transfer log."""
        def count():
            return self.text(TRANSFERS).count('"Received"')

        before, begin = count(), time.monotonic()
        if self.start_upload(100_000).wait() != 0:
            raise RuntimeError("an honest upload has failed")
        while count() == before:
            time.sleep(0.005)
        return time.monotonic() - begin


def at_rate(action, rate, seconds, processes=2):
    """Does `action` so many times a second in all, or as often as it can; returns how often."""
    def run(count):
        begin, done = time.monotonic(), 0
        while (now := time.monotonic() - begin) < seconds:
            if done < now * rate / processes:
                action()
                done += 1
            else:
                time.sleep(0.0005)
        with count.get_lock():
            count.value += done

    context = multiprocessing.get_context("fork")
    count = context.Value("i", 0)
    workers = [context.Process(target=run, args=(count,)) for _ in range(processes)]
    for worker in workers:
        worker.start()
    for worker in workers:
        worker.join()
    return count.value


ROW = "{:36} {:>8} {:>8}  {:>8} {:>8}  {:>8}  {:>8}  {:>6}"


def print_head():
    print(ROW.format("", "main", "thread", "honest", "client", "memory", "log", "CPU"))
    print(ROW.format("", "median", "max ms", "median", "max ms", "MiB", "KiB", "s"), flush=True)


def note(text):
    print("   ", text, flush=True)


@contextlib.contextmanager
def measured(program, name, client=lambda: answer(STATUS), pause=0.1):
    """Prints a row on what happens within: how long the main thread and an honest client, who comes
    again after each `pause`, had to wait, and what it cost the program."""
    stop = threading.Event()

    def ask(call, pause, waits):
        while not stop.wait(pause):
            begin = time.monotonic()
            call()
            waits.append((time.monotonic() - begin) * 1000)

    def costs():
        return program.memory(), len(program.log) / 1024, program.processor_time()

    shown, served = [], []
    threads = [threading.Thread(target=ask, args=arguments)
               for arguments in [(program.show, 0.1, shown), (client, pause, served)]]
    before = costs()
    for thread in threads:
        thread.start()
    try:
        yield
    finally:
        stop.set()
        for thread in threads:
            thread.join()
    memory, log, processor = (after - first for after, first in zip(costs(), before))
    waits = [f"{figure(times):.1f}" for times in (shown, served)
             for figure in (statistics.median, max)]
    print(ROW.format(name, *waits, f"{memory:+.1f}", f"{log:.1f}", f"{processor:.1f}"), flush=True)
