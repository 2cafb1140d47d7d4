#!/usr/bin/env python3
"""Plays what a hostile neighbour can do to a running Ferrylane, and prints how it bears it.

    bench/storms.py [--bin FOLDER] [STORM...]     (root; FOLDER: build/release/bin)

Each storm starts the program anew, in a home and a network of its own. While it lasts, the main
thread is asked ten times a second for a sign of life and an honest client is served; the table says
how long they waited (median and longest, in milliseconds) and by how much the memory grew.
"""

import argparse
import contextlib
import multiprocessing
import os
import pathlib
import resource
import select
import shutil
import signal
import socket
import statistics
import struct
import subprocess
import sys
import tempfile
import threading
import time

PORT = 8788
STATUS = b"GET /transfer-status HTTP/1.1\r\n\r\n"
UPLOAD = (b"POST /secure-upload-v4 HTTP/1.1\r\nTransfer-Encoding: chunked\r\nX-Filename: storm.bin\r\n"
          b"X-Ferrylane-Transfer-ID: 00000000-0000-0000-0000-000000000000\r\n"
          b"X-Ferrylane-Nonce-Prefix: AAAAAAAAAAA\r\nX-Ferrylane-File-Size: 8\r\n\r\n")
# A record of 8 bytes under no key at all: its tag cannot verify.
FALSE_RECORD = b"20\r\n" + struct.pack(">II", 8, 0) + bytes(24) + b"\r\n"


def connect():
    return socket.create_connection(("127.0.0.1", PORT), timeout=60)


def answer(request):
    with connect() as client:
        client.sendall(request)
        return b"".join(iter(lambda: client.recv(65536), b""))


class Program:
    """Ferrylane in a home of its own, with at most `descriptors` of them."""

    def __init__(self, folder, descriptors=None):
        self.bin = folder
        self.home = pathlib.Path(tempfile.mkdtemp(prefix="ferrylane-storm-"))
        runtime = self.home / "runtime"
        runtime.mkdir(mode=0o700)
        self.environment = os.environ | {
            "HOME": str(self.home), "XDG_RUNTIME_DIR": str(runtime), "QT_QPA_PLATFORM": "offscreen"}
        for name in ["XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME"]:
            self.environment.pop(name, None)

        def limit():
            if descriptors:
                resource.setrlimit(resource.RLIMIT_NOFILE, (descriptors, descriptors))

        self.process = subprocess.Popen([self.bin / "ferrylane"], env=self.environment,
                                        stderr=subprocess.DEVNULL, preexec_fn=limit)
        self.wait_for_log("Server ready on port")
        time.sleep(1)

    @property
    def log(self):
        path = self.home / ".local/state/Ferrylane/ferrylane.log"
        return path.read_text() if path.exists() else ""

    @property
    def transfers(self):
        path = self.home / ".local/share/Ferrylane/transfer-log-v1.json"
        return path.read_text().count('"Received"') if path.exists() else 0

    def wait_for_log(self, text, seconds=20):
        end = time.monotonic() + seconds
        while text not in self.log:
            if time.monotonic() > end:
                raise TimeoutError(f"the log says nothing of: {text}")
            time.sleep(0.02)

    def memory(self):
        """Resident MiB."""
        status = pathlib.Path(f"/proc/{self.process.pid}/status").read_text()
        return int(status.split("VmRSS:")[1].split()[0]) / 1024

    def sign_of_life(self):
        """Asks the main thread, as a second start of the program does; seconds until it answers."""
        begin = time.monotonic()
        with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as client:
            client.settimeout(60)
            client.connect(str(self.home / "runtime/ferrylane/requests"))
            client.sendall(b"show")
            client.recv(1)
        return time.monotonic() - begin

    def upload(self):
        """An honest upload; seconds until it is stored and in the transfer log."""
        (self.home / "honest.bin").write_bytes(os.urandom(100_000))
        before = self.transfers
        begin = time.monotonic()
        subprocess.run([self.bin / "ferrylane-phone", "upload", "--local", "--name", "Phone",
                        self.home / "honest.bin"], env=self.environment, check=True,
                       stdout=subprocess.DEVNULL)
        while self.transfers == before:
            time.sleep(0.005)
        return time.monotonic() - begin

    def end(self):
        self.process.send_signal(signal.SIGTERM)
        code = self.process.wait(30)
        shutil.rmtree(self.home, ignore_errors=True)
        return code


@contextlib.contextmanager
def measured(program, name, honest=lambda: answer(STATUS)):
    """Prints a row on what happens within: the waits of the main thread and of an honest client."""
    waits, served, stop = [], [], threading.Event()

    def ask(call, times):
        while not stop.wait(0.1):
            begin = time.monotonic()
            call()
            times.append((time.monotonic() - begin) * 1000)

    threads = [threading.Thread(target=ask, args=pair)
               for pair in [(program.sign_of_life, waits), (honest, served)]]
    memory, log = program.memory(), len(program.log)
    for thread in threads:
        thread.start()
    yield
    stop.set()
    for thread in threads:
        thread.join()
    print(f"{name:34} main thread {statistics.median(waits):6.1f} {max(waits):7.1f}   "
          f"client {statistics.median(served):6.1f} {max(served):7.1f}   "
          f"memory {program.memory() - memory:+6.1f} MiB   "
          f"log {(len(program.log) - log) / 1024:6.1f} KiB", flush=True)


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


# The storms.

def silence(folder):
    """One upload that sends nothing: how long it keeps phones out."""
    program = Program(folder)
    with connect() as client:
        client.sendall(UPLOAD)
        begin = time.monotonic()
        time.sleep(0.2)
        with measured(program, "a silent upload"):
            while b"BUSY" in answer(STATUS):
                time.sleep(0.1)
        print(f"    phones were kept out for {time.monotonic() - begin:.1f} s")
    program.end()


def wrong_key(folder):
    """Uploads under a wrong key, 2,000 a second for 10 s, then an honest one."""
    program = Program(folder)

    def upload():
        with contextlib.suppress(OSError):
            answer(UPLOAD + FALSE_RECORD + b"0\r\n\r\n")

    upload()
    with measured(program, "uploads under a wrong key, 10 s"):
        count = at_rate(upload, 2000, 10)
    print(f"    {count} uploads; an honest one after them: {program.upload() * 1000:.0f} ms")
    program.end()


def sockets(folder):
    """Status requests, 3,000 a second for 5 s, whose senders keep their sockets open."""
    program = Program(folder, 1024)
    kept = []

    def ask():
        client = connect()
        client.sendall(STATUS)
        kept.append(client)
        if len(kept) > 4000:
            kept.pop(0).close()

    with measured(program, "answered sockets kept open, 5 s"):
        count = at_rate(ask, 3000, 5)
    print(f"    {count} requests")
    program.end()


def idle_heads(folder, descriptors, count):
    program = Program(folder, descriptors)
    with measured(program, f"{count} idle heads, {descriptors} descriptors"):
        clients = []
        for _ in range(count):
            clients.append(connect())
            clients[-1].sendall(b"GET /trans")
        time.sleep(2)
    rests = program.log.count("Server listener waiting")
    print(f"    log: {rests} rests, {program.log.count('Server ready on port')} listeners")
    for client in clients:
        client.close()
    program.end()


def heads(folder):
    """5,000 request heads that never end."""
    idle_heads(folder, 1024, 5000)


def few_descriptors(folder):
    """300 request heads that never end, and 128 descriptors."""
    idle_heads(folder, 128, 300)


STORMS = {"silence": silence, "wrong-key": wrong_key, "sockets": sockets, "heads": heads,
          "few-descriptors": few_descriptors}


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0], epilog="\n".join(
        f"{name}: {storm.__doc__}" for name, storm in STORMS.items()),
        formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--bin", type=pathlib.Path, default=pathlib.Path("build/release/bin"))
    parser.add_argument("storms", nargs="*", metavar="STORM", choices=[[], *STORMS])
    arguments = parser.parse_args()
    if "FERRYLANE_STORM" not in os.environ:
        os.environ["FERRYLANE_STORM"] = "in a network of its own"
        os.execvp("unshare", ["unshare", "--net", "--mount", sys.executable, *sys.argv])
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    resource.setrlimit(resource.RLIMIT_NOFILE, (20000, 20000))
    for name in arguments.storms or STORMS:
        STORMS[name](arguments.bin.resolve())


if __name__ == "__main__":
    main()
