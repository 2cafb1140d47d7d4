"""The protocol of docs/protocol.md in a few lines, for reading and for writing the test vectors.

It shares no code with the program, so that both have to have understood that page alike.
"""

import base64
import hashlib
import hmac
import struct
import unicodedata
import urllib.parse

from cryptography.hazmat.primitives.ciphers.aead import AESGCM

FINAL_INDEX = 0xFFFFFFFF
LAST_CHUNK = b"0\r\n\r\n"


def base64url(value):
    return base64.urlsafe_b64encode(value).decode().rstrip("=")


def encode_file_name(name):
    def stays(character):
        return unicodedata.category(character)[0] in "LMN" or character in "-._~"
    return "".join(c if stays(c) else urllib.parse.quote(c, safe="") for c in name)


def encode_for_query(name):
    return urllib.parse.quote(name, safe="!$&'()*+,-./:;=?@_~")


class Transfer:
    """What the head of an upload says, and the records that it binds."""

    def __init__(self, name, size, key, prefix, transfer_id):
        self.name, self.size, self.key, self.prefix, self.id = name, size, key, prefix, transfer_id

    def seal(self, index, plaintext, kind, fifth, sixth):
        data = "\n".join([kind, self.id, self.name, str(self.size), str(fifth), str(sixth)])
        nonce = self.prefix + struct.pack(">I", index)
        sealed = AESGCM(self.key).encrypt(nonce, plaintext, data.encode())
        return struct.pack(">II", len(plaintext), index) + sealed

    def data_record(self, index, plaintext):
        return self.seal(index, plaintext, "Ferrylane-v4", index, len(plaintext))

    def final_record(self, content, count, total=None):
        total = len(content) if total is None else total
        digest = hashlib.sha256(content).digest()
        return self.seal(FINAL_INDEX, digest, "Ferrylane-v4-final", count, total)

    def records(self, content, piece):
        pieces = [content[i:i + piece] for i in range(0, len(content), piece)]
        data = [self.data_record(i, p) for i, p in enumerate(pieces)]
        return data + [self.final_record(content, len(pieces))]

    def head(self, host, port, sender):
        return "\r\n".join([
            "POST /secure-upload-v4 HTTP/1.1",
            f"Host: {host}:{port}",
            "Connection: close",
            "Transfer-Encoding: chunked",
            "Content-Type: application/octet-stream",
            f"X-Filename: {encode_file_name(self.name)}",
            "X-Ferrylane-Protocol: 4",
            f"X-Ferrylane-Transfer-ID: {self.id}",
            f"X-Ferrylane-Nonce-Prefix: {base64url(self.prefix)}",
            f"X-Ferrylane-File-Size: {self.size}",
            f"X-Ferrylane-Sender-Name: {encode_for_query(sender)}",
            "", ""])


def chunk(payload):
    return f"{len(payload):x}\r\n".encode() + payload + b"\r\n"


def plain_answer(status, body):
    return (f"HTTP/1.1 {status}\r\nContent-Type: text/plain\r\nContent-Length: {len(body)}\r\n"
            f"Cache-Control: no-store\r\nConnection: close\r\n\r\n{body}")


def mac(key, message):
    return base64url(hmac.new(key, message, hashlib.sha256).digest())


def identify_answer(key, challenge, challenge_bytes, name):
    encoded = encode_for_query(name)
    name_message = f"Ferrylane-name-v1\n{challenge}\n{encoded}".encode()
    return "\r\n".join([
        "HTTP/1.1 200 OK", "Content-Length: 0", "Connection: close", "Cache-Control: no-store",
        f"X-Ferrylane-Proof: {mac(key, challenge_bytes)}",
        f"X-Ferrylane-Name: {encoded}",
        f"X-Ferrylane-Name-Proof: {mac(key, name_message)}", "", ""])
