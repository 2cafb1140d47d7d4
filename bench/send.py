#!/usr/bin/python3
"""Measures how fast files are sent, and what that costs.

ferrylane-phone, which sends as Ferrylane does, sends a big file in memory over the loopback interface
to a phone that reads everything and keeps nothing. It stands beside this machine's cryptography,
sealing and hashing in one thread; ratios are taken within a run, figures are medians, and costs are
those beyond a file of one byte. Then come 1,000 files of 4 KiB. MB are decimal."""

import contextlib
import os
import subprocess
import time

import harness
from harness import MEBIBYTE

SMALL_FILES, SMALL_BYTES = 1000, 4096
KEY = bytes(range(32))


def send(home, phone, paths):
    """Seconds, what it took (resource.getrusage()), and the most MiB in memory."""
    process, memory = home.start_upload(phone, KEY, paths), 0
    while (end := os.wait4(process.pid, os.WNOHANG))[0] == 0:
        with contextlib.suppress(OSError, TypeError):
            memory = harness.status_of(process.pid, "VmHWM") / 1024
        time.sleep(0.005)
    process.returncode = os.waitstatus_to_exitcode(end[1])
    if process.returncode != 0:
        raise RuntimeError("a file cannot be sent")
    return phone.seconds(), end[2], memory


def measure_big(report, home, phone, folder, arguments):
    size = arguments.size * MEBIBYTE
    tiny = folder / "tiny"
    tiny.write_bytes(b"x")
    path, = harness.make_files(folder, 1, size)
    _, idle, idle_memory = send(home, phone, [tiny])

    def run():
        crypto = harness.crypto_speed(arguments.build, "sealAndHash")
        harness.touch_memory(16 * MEBIBYTE)
        subprocess.run(["cat", path], stdout=subprocess.DEVNULL, check=True)
        seconds, usage, peak = send(home, phone, [path])
        costs = [(usage.ru_utime - idle.ru_utime) * 2**30 / size,
                 (usage.ru_stime - idle.ru_stime) * 2**30 / size]
        return size / seconds, crypto, *costs, peak

    speed, crypto, user, system, memory = zip(*report.quiet_runs(run, arguments))
    report.add_transfers(speed, crypto, user, system, most_processor_time=None)
    report.add("memory for a file of one byte", idle_memory, "MiB")
    report.add("highest memory beyond that", max(memory) - idle_memory, "MiB", at_most=8)


def measure_small(report, home, phone, folder):
    paths = harness.make_files(folder, SMALL_FILES, SMALL_BYTES)
    send(home, phone, paths[:30])
    seconds, _, _ = send(home, phone, paths)
    report.add("4 KiB, a status request before each", SMALL_FILES / seconds, "1/s", at_least=150)


def main():
    parser = harness.arguments(__doc__.split("\n\n")[0], epilog=__doc__.split("\n\n")[1])
    harness.add_run_arguments(parser)
    arguments = parser.parse_args()
    harness.enter_namespaces("--map-root-user")
    report = harness.Report(f"Sending {arguments.size} MiB, {arguments.runs} runs")
    phone = harness.Phone(keeps=False)
    with harness.Home(arguments.build) as home, harness.folder_in(harness.MEMORY) as folder:
        measure_big(report, home, phone, folder, arguments)
        measure_small(report, home, phone, folder)
    report.print(arguments.json)


if __name__ == "__main__":
    main()
