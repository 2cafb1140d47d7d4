#!/usr/bin/python3
"""Plays what a hostile neighbour can do to a running Ferrylane, and prints how it bears it.

    bench/storms.py [--build FOLDER] [STORM...]     (root)

Each storm starts the program anew, in a home and a network of its own. While it lasts, the main
thread is asked ten times a second for a sign of life and an honest client is served; the table says
how long they waited (median and longest) and what the storm cost: memory, log, processor time and threads.
"""

import argparse
import contextlib
import functools
import itertools
import json
import random
import re
import select
import signal
import socket
import struct
import time

import harness
from harness import PAIRED_PHONES, SETTINGS, STATUS, answer, connect, wait_until
from neighbourhood import (BROADCAST, COMPUTER, NEIGHBOUR, Avahi, Computer, at_rate, lay_cable,
                           measured, note, print_head, socket_next_door)

UPLOAD = (b"POST /secure-upload-v4 HTTP/1.1\r\nTransfer-Encoding: chunked\r\n"
          b"X-Filename: storm.bin\r\n"
          b"X-Ferrylane-Transfer-ID: 00000000-0000-0000-0000-000000000000\r\n"
          b"X-Ferrylane-Nonce-Prefix: AAAAAAAAAAA\r\nX-Ferrylane-File-Size: 8\r\n\r\n")
# A record of 8 bytes under no key at all: its tag cannot verify.
FALSE_RECORD = b"20\r\n" + struct.pack(">II", 8, 0) + bytes(24) + b"\r\n"

DISCOVERY_PORT = 8789
SEARCH = b"FERRYLANE_DISCOVER_V1"
PATIENCE_OF_A_PHONE = 0.6
MDNS = ("224.0.0.251", 5353)


# The storms. Each is given what starts the program.

def silence(start):
    """An upload that sends nothing, one that stops in the middle: how long no phone gets in."""
    with start() as program:
        with connect() as client:
            client.sendall(UPLOAD)
            wait_while_busy(program, "an upload of nothing")
        phone = program.start_honest_upload(4_000_000_000)
        wait_until(is_busy, "no upload")
        phone.send_signal(signal.SIGSTOP)
        wait_while_busy(program, "an upload that stops in the middle")
        phone.kill()


def is_busy():
    return b"BUSY" in answer(STATUS)


def wait_while_busy(program, name):
    begin = time.monotonic()
    time.sleep(0.2)
    with measured(program, name):
        while is_busy():
            time.sleep(0.1)
    note(f"phones were kept out for {time.monotonic() - begin:.1f} s")


def wrong_key(start):
    """Uploads under a wrong key, 2,000 a second for 10 s, then an honest one."""
    def upload():
        with contextlib.suppress(OSError):
            answer(UPLOAD + FALSE_RECORD + b"0\r\n\r\n")

    with start() as program:
        upload()
        with measured(program, "uploads under a wrong key"):
            count = at_rate(upload, 2000, 10)
        note(f"{count} uploads; an honest one after them: {program.upload() * 1000:.0f} ms")


def sockets(start):
    """Status requests, 3,000 a second for 5 s, whose senders keep their sockets open."""
    kept = []

    def ask():
        client = connect()
        client.sendall(STATUS)
        kept.append(client)
        if len(kept) > 4000:
            kept.pop(0).close()

    with start(descriptors=1024) as program:
        with measured(program, "answered sockets kept open"):
            count = at_rate(ask, 3000, 5)
        note(f"{count} requests")


def heads(start):
    """5,000 request heads that never end."""
    hold_idle_heads(start, 5000, 1024)


def few_descriptors(start):
    """300 request heads that never end, and 128 descriptors."""
    hold_idle_heads(start, 300, 128)


def hold_idle_heads(start, count, descriptors):
    with start(descriptors=descriptors) as program, contextlib.ExitStack() as clients:
        with measured(program, f"{count} idle heads, {descriptors} descriptors"):
            for _ in range(count):
                clients.enter_context(connect()).sendall(b"GET /trans")
            time.sleep(2)
        rests = program.log.count("Server listener waiting")
        note(f"log: {rests} rests, {program.log.count('Server ready on port')} listeners")


def flood(start):
    """Searches from hosts that do not exist, 300 a second for 13 s: first many hosts, then few."""
    search_from_nowhere(start, made_up_hosts(60_000))
    search_from_nowhere(start, made_up_hosts(250))


def search_from_nowhere(start, hosts):
    answers = []
    with start() as program, wire_next_door() as wire:
        def search():
            send_forged(wire, (random.choice(hosts), 40000), (BROADCAST, DISCOVERY_PORT), SEARCH)

        with measured(program, f"searches from {len(hosts)} made-up hosts", pause=1,
                      client=lambda: answers.append(is_found_by_a_phone())):
            at_rate(search, 300, 13, processes=1)
    note(f"{sum(answers)} of a phone's {len(answers)} searches answered")


def made_up_hosts(count):
    return [f"10.9.{number // 250 + 1}.{number % 250 + 1}" for number in range(count)]


def wire_next_door():
    return socket_next_door(socket.SOCK_RAW, socket.IPPROTO_RAW)


def send_forged(wire, source, target, content):
    """Sends a datagram that claims to come from `source`."""
    udp = struct.pack("!HHHH", source[1], target[1], 8 + len(content), 0) + content
    head = struct.pack("!BBHHHBBH4s4s", 0x45, 0, 20 + len(udp), 0, 0, 255, socket.IPPROTO_UDP, 0,
                       socket.inet_aton(source[0]), socket.inet_aton(target[0]))
    wire.sendto(head + udp, (target[0], 0))


def is_found_by_a_phone():
    with socket_next_door(socket.SOCK_DGRAM) as phone:
        phone.sendto(SEARCH, ("255.255.255.255", DISCOVERY_PORT))
        if not select.select([phone], [], [], PATIENCE_OF_A_PHONE)[0]:
            return False
        return phone.recvfrom(600)[1] == (COMPUTER, DISCOVERY_PORT)


def replies(start):
    """1,000 replies a scan: a paired phone's name with as many ports, from one host and from two;
    then as many names and hosts."""
    hosts = made_up_hosts(1000)
    reply_to_scans(start, "a phone's name from one host", hosts[:1], "Pixel|{}")
    reply_to_scans(start, "a phone's name from two hosts", hosts[:2], "Pixel|{}")
    reply_to_scans(start, "names from 1000 made-up hosts", hosts, "Phone {}|8787")


def reply_to_scans(start, name, hosts, text):
    phone = {"name": "Pixel", "baseURL": "http://10.9.0.9:8787", "keyB64": "A" * 43}
    with start(files={PAIRED_PHONES: json.dumps([phone])}) as program:
        with measured(program, name):
            scans = reply_for(14, hosts, text)
        kept = phone["baseURL"] == json.loads(program.text(PAIRED_PHONES))[0]["baseURL"]
        note(f"{scans} scans; the paired address {'is the old one' if kept else 'has followed'}; "
             f"log: {program.log.count('Updated paired address')} updates, "
             f"{program.log.count('More than one device')} warnings, "
             f"{program.log.count('Nearby devices')} lists")


def reply_for(seconds, hosts, text):
    """Replies to the program's scans; returns how many there were."""
    numbers, scans, end = itertools.count(10_000), 0, time.monotonic() + seconds
    with socket_next_door(socket.SOCK_DGRAM) as listener, wire_next_door() as wire:
        listener.bind(("", DISCOVERY_PORT))
        while select.select([listener], [], [], max(0, end - time.monotonic()))[0]:
            scanner = listener.recvfrom(600)[1]
            scans += 1
            for host in itertools.islice(itertools.cycle(hosts), 1000):
                reply = "FERRYLANE_HERE_V1|" + text.format(next(numbers))
                send_forged(wire, (host, DISCOVERY_PORT), scanner, reply.encode())
    return scans


def names(start):
    """3,000 DNS-SD names that come and go at once, where the program's own name is taken, too."""
    own = "Office PC"
    with Avahi("computer") as avahi, Avahi.of_neighbour() as neighbour, wire_next_door() as wire:
        neighbour.announce(own)
        with start(environment=avahi.environment,
                   files={SETTINGS: f"[General]\nFerrylaneDeviceName={own}\n"}) as program:
            program.wait_for_log("announced as")
            with measured(program, "3000 names by DNS-SD"):
                for seconds_to_live in (4500, 0):
                    announce_many(wire, seconds_to_live)
                    time.sleep(10)
            tell_of_names(program.log)


def announce_many(wire, seconds_to_live):
    """Says by mDNS that 3,000 services of ours are there, or with 0 seconds that they are gone."""
    def label(text):
        return bytes([len(text)]) + text.encode()

    service_type = label("_ferrylane") + label("_tcp") + label("local") + b"\0"
    for first in range(0, 3000, 20):
        message = struct.pack("!6H", 0, 0x8400, 0, 20, 0, 0)
        for number in range(first, first + 20):
            name = label(f"phone {number:04}") + service_type
            pointer = struct.pack("!HHIH", 12, 1, seconds_to_live, len(name))
            message += service_type + pointer + name
        send_forged(wire, (NEIGHBOUR, MDNS[1]), MDNS, message)


def tell_of_names(log):
    lists = re.findall("Nearby devices: (.*)", log)
    announced = re.findall("announced as “(.*)”", log)
    listed = any(name in told for name in announced for told in lists)
    note(f"log: {len(lists)} lists of nearby devices; announced as “{'”, “'.join(announced)}”, "
         f"which is {'LISTED' if listed else 'not listed'}")


STORMS = {"silence": silence, "wrong-key": wrong_key, "sockets": sockets, "heads": heads,
          "few-descriptors": few_descriptors, "flood": flood, "replies": replies, "names": names}


def main():
    parser = harness.arguments(
        __doc__.split("\n\n")[0], formatter_class=argparse.RawDescriptionHelpFormatter,
        epilog="\n".join(f"{name}: {storm.__doc__}" for name, storm in STORMS.items()))
    parser.add_argument("storms", nargs="*", metavar="STORM", choices=[[], *STORMS],
                        help="which ones; all if none is given")
    arguments = parser.parse_args()
    harness.enter_namespaces("--mount")
    lay_cable()
    print_head()
    for name in arguments.storms or STORMS:
        STORMS[name](functools.partial(Computer, arguments.build))


if __name__ == "__main__":
    main()
