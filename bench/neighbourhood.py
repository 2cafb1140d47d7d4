"""A computer that runs Ferrylane, a neighbour's host on the same cable, and what the program makes
of what the neighbour does, in figures. For storms.py, in namespaces of its own."""

import contextlib
import ctypes
import multiprocessing
import os
import socket
import statistics
import subprocess
import threading
import time

from harness import STATUS, TRANSFERS, Program, Running, answer, wait_until

COMPUTER, NEIGHBOUR, BROADCAST = "10.9.0.1", "10.9.0.2", "10.9.255.255"
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


class Computer(Program):
    """Ferrylane on the computer, with what tells how it bears a storm."""

    def show(self):
        """Asks the main thread, as a second start of the program does, and waits for its answer."""
        with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as client:
            client.settimeout(60)
            client.connect(str(self.folder / "runtime/ferrylane/requests"))
            client.sendall(b"show")
            client.recv(1)

    def start_honest_upload(self, size):
        """A phone that sends a file of so many bytes: its process."""
        file = self.path("honest.bin")
        with file.open("wb") as content:
            content.truncate(size)
        return self.start_phone("upload", "--local", "--name", "Phone", file)

    def upload(self):
        """Seconds until an honest upload is stored and in the transfer log."""
        def count():
            return self.text(TRANSFERS).count('"Received"')

        before, begin = count(), time.monotonic()
        if self.start_honest_upload(100_000).wait() != 0:
            raise RuntimeError("an honest upload has failed")
        while count() == before:
            time.sleep(0.005)
        return time.monotonic() - begin

    def costs(self):
        """Memory in MiB, log in KiB, processor time in seconds, threads."""
        return (self.memory(), len(self.log) / 1024, sum(self.processor_times()),
                self.status("Threads"))


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


ROW = "{:36} {:>8} {:>8}  {:>8} {:>8}  {:>8}  {:>8}  {:>6}  {:>7}"


def print_head():
    print(ROW.format("", "main", "thread", "honest", "client", "memory", "log", "CPU", "threads"))
    print(ROW.format("", "median", "max ms", "median", "max ms", "MiB", "KiB", "s", ""), flush=True)


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

    shown, served = [], []
    threads = [threading.Thread(target=ask, args=arguments)
               for arguments in [(program.show, 0.1, shown), (client, pause, served)]]
    before = program.costs()
    for thread in threads:
        thread.start()
    try:
        yield
    finally:
        stop.set()
        for thread in threads:
            thread.join()
    memory, log, processor, threads = (
        after - first for after, first in zip(program.costs(), before))
    waits = [f"{figure(times):.1f}" for times in (shown, served)
             for figure in (statistics.median, max)]
    print(ROW.format(name, *waits, f"{memory:+.1f}", f"{log:.1f}", f"{processor:.1f}",
                     f"{threads:+}"), flush=True)
