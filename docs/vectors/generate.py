#!/usr/bin/env python3
"""Writes the test vectors of this folder, from docs/protocol.md alone.

It needs Python 3.9 and the "cryptography" package, draws nothing at random, and writes the same
files each time.
"""

import json
import pathlib
import sys

sys.dont_write_bytecode = True

import messages  # noqa: E402
import streams  # noqa: E402
from parts import simplified  # noqa: E402


def write(name, value):
    content = json.dumps(simplified(value), indent=1, ensure_ascii=False)
    # Nobody sees a byte order mark, and some readers drop it.
    content = content.replace("\ufeff", "\\ufeff")
    (pathlib.Path(__file__).parent / name).write_text(content + "\n", encoding="utf-8")


if __name__ == "__main__":
    write("streams.json", streams.streams())
    write("received-bodies.json", streams.received_bodies())
    write("request-heads.json", messages.request_heads())
    write("identify.json", messages.identify())
    write("discovery.json", messages.discovery())
    write("pairing.json", messages.pairing())
    write("phone-answers.json", messages.phone_answers())
