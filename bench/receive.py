#!/usr/bin/python3
"""Measures how fast Ferrylane receives, and what that costs.

A big upload goes over the loopback interface into a folder in memory. It has been sealed before and
stands beside this machine's cryptography, opening and hashing in one thread; ratios are taken within
a run, figures are medians. Then come files of 4 KiB, into memory and onto a disk. MB are decimal."""

import functools
import statistics
import time

import harness
from harness import MEBIBYTE

SMALL_FILES, SMALL_BYTES, WARM_UP = 330, 4096, 30


def sealed_requests(program, count, size):
    """So many uploads of so many bytes, as a phone sends them."""
    with harness.folder_in(harness.MEMORY) as folder:
        phone = harness.Phone(keeps=True)
        paths = harness.make_files(folder, count, size)
        if program.start_upload(phone, program.key, paths).wait() != 0:
            raise RuntimeError("the uploads cannot be sealed")
    return phone.requests


def start(build, folder):
    return harness.Program(
        build, files={harness.SETTINGS: f"[General]\nFerrylaneReceiveFolder={folder}\n"})


def upload(request):
    """Seconds from connecting to the answer."""
    begin = time.monotonic()
    answer = harness.answer(request)
    seconds = time.monotonic() - begin
    if not answer.endswith(b"OK SHA256"):
        raise RuntimeError(f"unexpected answer: {answer}")
    return seconds


def clear(folder, count, size):
    files = [path for path in folder.rglob("*") if path.is_file()]
    if [path.stat().st_size for path in files] != [size] * count:
        raise RuntimeError("what is stored is not what has been sent")
    for path in files:
        path.unlink()


def measure_big(report, arguments):
    build, size = arguments.build, arguments.size * MEBIBYTE
    with harness.folder_in(harness.MEMORY) as folder, start(build, folder) as program:
        idle_memory = program.memory()
        request, = sealed_requests(program, 1, size)

        def run():
            crypto = harness.crypto_speed(build, "openAndHash")
            harness.touch_memory(size, request)
            program.peak_memory()
            before = program.processor_times()
            seconds = upload(request)
            costs = [(after - first) * 2**30 / size
                     for after, first in zip(program.processor_times(), before)]
            clear(folder, 1, size)
            return size / seconds, crypto, *costs, program.peak_memory()

        speed, crypto, user, system, memory = zip(*report.quiet_runs(run, arguments))
    report.add_transfers(speed, crypto, user, system, most_processor_time=1.45)
    report.add("memory before the first upload", idle_memory, "MiB")
    report.add("highest memory beyond that", max(memory) - idle_memory, "MiB", at_most=24)


def measure_small(report, build, where, parent, **target):
    with harness.folder_in(parent) as folder, start(build, folder) as program:
        times = [upload(request) * 1000
                 for request in sealed_requests(program, SMALL_FILES, SMALL_BYTES)]
        clear(folder, SMALL_FILES, SMALL_BYTES)
    times = sorted(times[WARM_UP:])
    report.add(f"4 KiB {where}, median", statistics.median(times), "ms", **target)
    report.add(f"4 KiB {where}, 99th percentile", times[len(times) * 99 // 100], "ms")


def main():
    parser = harness.arguments(__doc__.split("\n\n")[0], epilog=__doc__.split("\n\n")[1])
    harness.add_run_arguments(parser)
    arguments = parser.parse_args()
    harness.enter_namespaces("--map-root-user")
    report = harness.Report(f"Receiving {arguments.size} MiB, {arguments.runs} runs")
    measure_big(report, arguments)
    small = functools.partial(measure_small, report, arguments.build)
    small("into memory", harness.MEMORY, at_most=2)
    small("onto a disk", harness.PROJECT / "build")
    report.print(arguments.json)


if __name__ == "__main__":
    main()
