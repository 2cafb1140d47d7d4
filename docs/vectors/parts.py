"""What the rows of the test vectors are made of."""

import hashlib

from reference import Transfer

KEY = bytes(range(32))
OTHER_KEY = hashlib.sha256(b"another key").digest()
PREFIX = bytes(range(0xA0, 0xA8))
TRANSFER_ID = "6F9619FF-8B86-D011-B42D-00CF4FC964FF"
HOST = "192.168.1.20"
PORT = 8788
SENDER = "Pixel 8"


def transfer(name="photo.jpg", size=30, key=KEY, prefix=PREFIX, transfer_id=TRANSFER_ID):
    return Transfer(name, size, key, prefix, transfer_id)


def head(sent):
    return sent.head(HOST, PORT, SENDER)


# Bytes in JSON: a list of parts, each a text or hexadecimal digits, which may be repeated.

def text(value, times=1):
    part = {"text": value}
    return [part | {"times": times}] if times > 1 else [part]


def hexadecimal(value):
    return [{"hex": value.hex()}]


def simplified(value):
    """The same, with a text alone as a string."""
    if isinstance(value, dict):
        return {name: simplified(member) for name, member in value.items()}
    if isinstance(value, list):
        if len(value) == 1 and isinstance(value[0], dict) and value[0].keys() == {"text"}:
            return value[0]["text"]
        return [simplified(member) for member in value]
    return value
