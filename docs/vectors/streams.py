"""Uploads, as they are sent and as they are received."""

import hashlib
import struct

from parts import (HOST, KEY, OTHER_KEY, PORT, PREFIX, SENDER, TRANSFER_ID, head, hexadecimal, text,
                   transfer)
from reference import FINAL_INDEX, LAST_CHUNK, chunk


def stream(what, content, piece, name="photo.jpg", key=KEY, prefix=PREFIX,
           transfer_id=TRANSFER_ID, host=HOST, port=PORT, sender=SENDER, bulk=None):
    """One file as it is sent. `bulk` is the short form of a content whose body is too long."""
    sent = transfer(name, len(content), key, prefix, transfer_id)
    records = sent.records(content, piece)
    body = b"".join(map(chunk, records)) + LAST_CHUNK
    written = {"bodySha256": hashlib.sha256(body).hexdigest()} if bulk else {
        "records": [record.hex() for record in records], "body": body.hex()}
    return {
        "what": what, "key": key.hex(), "transferId": sent.id, "noncePrefix": prefix.hex(),
        "fileName": name, "fileSize": len(content), "senderName": sender, "host": host,
        "port": port, "content": bulk or hexadecimal(content), "pieceBytes": piece,
        "head": sent.head(host, port, sender),
    } | written


def streams():
    return [
        stream("an empty file", b"", 1048576, name="empty.txt"),
        stream("one byte", b"\x00", 1048576, name="one.bin"),
        stream("a record that is full to the byte", b"0123456789abcdef", 16),
        stream("a byte more", b"0123456789abcdefg", 16),
        stream("several records", bytes(range(40)), 16, name="several.bin", key=OTHER_KEY,
               prefix=bytes.fromhex("fffefdfcfbfaf9f8"), transfer_id="0123456789abcdef",
               host="[fe80::1c2:3ff]", port=8787, sender="Office PC"),
        stream("names beyond ASCII and with reserved characters", b"content", 4,
               name="Zo\u00eb e\u0301 \u65e5\u672c \u00bd \U0001f600 50%1 +#&/.jpg",
               sender="K\u00fcche 100% \"A\" [#1] b's/c?"),
        stream("records of the largest size", b"0123456789abcdef" * 65536 + b"x", 1048576,
               name="large.bin", bulk=text("0123456789abcdef", 65536) + text("x")),
    ]


def changed(record, at):
    return record[:at] + bytes([record[at] ^ 1]) + record[at + 1:]


def record_head(length, index):
    return struct.pack(">II", length, index)


CONTENT = b"the quick brown fox jumps over"
PHOTO = transfer()
FIRST, SECOND, THIRD, FINAL = PHOTO.records(CONTENT, 10)
WHOLE = FIRST + SECOND + THIRD + FINAL
NEVER_ENDED = "Connection closed before final HTTP chunk"


def accepted_bodies():
    whole = chunk(WHOLE)
    size = f"{len(WHOLE):x}".encode()
    return [
        ("each record in a chunk", b"".join(map(chunk, PHOTO.records(CONTENT, 10))) + LAST_CHUNK),
        ("all records in one chunk", whole + LAST_CHUNK),
        ("records cut by the chunks",
         b"".join(chunk(WHOLE[i:i + 7]) for i in range(0, len(WHOLE), 7)) + LAST_CHUNK),
        ("capital digits and leading zeros", b"00" + size.upper() + whole[len(size):] + b"000\r\n"),
        ("extensions", size + b" ;a=\"b\";c" + whole[len(size):] + b"0;d\r\n\r\n"),
        ("blanks around the size", b" \t" + size + b"\t " + whole[len(size):] + LAST_CHUNK),
        ("trailers, not read", whole + b"0\r\nX-Trailer: a\r\n\r\n"),
    ]


def failed_chunks():
    large, bad = "HTTP chunk header too large", "Bad HTTP chunk size"
    malformed = "Malformed HTTP chunk"
    return [
        ("129 bytes without the end of a size line", b"1" * 129, large),
        ("a byte above 0x7F in a size line", b"1\xc3\xa4\r\n", "Bad HTTP chunk header"),
        ("a byte above 0x7F in an extension", b"1;\xc3\xa4\r\n", "Bad HTTP chunk header"),
        ("no size", b"\r\n", bad),
        ("no size before an extension", b";a\r\n", bad),
        ("not hexadecimal", b"1g\r\n", bad),
        ("a prefix", b"0x1\r\n", bad),
        ("a minus sign", b"-1\r\n", bad),
        ("a plus sign", b"+1\r\n", bad),
        ("a blank within", b"1 1\r\n", bad),
        ("one byte above the limit", b"200001\r\n", bad),
        ("more than 64 bits", b"10000000000000001\r\n", bad),
        ("no line break behind a chunk", b"1\r\nxyz", malformed),
        ("a line feed alone behind a chunk", b"1\r\nx\n0\r\n", malformed),
    ]


def failed_records():
    order, length = "Record order mismatch", "Bad encrypted record length"
    forged, data = "Authentication failed", FIRST + SECOND + THIRD
    one = [transfer(key=OTHER_KEY), transfer(prefix=bytes(8)), transfer(transfer_id="i" * 16),
           transfer("photo.jpeg"), transfer(size=31)]
    other_key, other_prefix, other_id, other_name, other_size = (
        sent.data_record(0, b"x") for sent in one)
    return [
        ("two records swapped", SECOND + FIRST + THIRD + FINAL, order),
        ("a record left out", FIRST + THIRD + FINAL, order),
        ("a record repeated", FIRST + FIRST, order),
        ("the order is looked at before the length", record_head(0, 1), order),
        ("length 0, no more than the record's head", record_head(0, 0), length),
        ("one byte above the largest length", record_head(1048577, 0), length),
        ("the largest length that fits the field", record_head(0xFFFFFFFF, 0), length),
        ("ciphertext changed", changed(FIRST, 8), forged),
        ("tag changed", changed(FIRST, len(FIRST) - 1), forged),
        ("length field changed", changed(WHOLE, 3), forged),
        ("another key", other_key, forged),
        ("another nonce prefix", other_prefix, forged),
        ("another transfer id", other_id, forged),
        ("another file name", other_name, forged),
        ("another file size", other_size, forged),
        ("final record changed", data + changed(FINAL, 8), forged),
        ("final record after too few records", FIRST + SECOND + FINAL, forged),
        ("final record that counts other records", data + PHOTO.final_record(CONTENT, 2), forged),
        ("final record that counts other bytes", data + PHOTO.final_record(CONTENT, 3, 29), forged),
        ("data behind the final record", WHOLE + FIRST, "Data after final record"),
        ("final record of 31 bytes", FIRST + record_head(31, FINAL_INDEX), "Invalid final record"),
        ("final record twice", WHOLE + FINAL, "Duplicate final record"),
        ("digest of another file", data + PHOTO.final_record(b"other", 3, 30), "SHA-256 mismatch"),
    ]


def failed_ends():
    missing = "Authenticated completion record missing"
    trailing = "Trailing or incomplete encrypted data"
    return [
        ("nothing but the last chunk", LAST_CHUNK, missing),
        ("no final record", chunk(FIRST + SECOND + THIRD) + LAST_CHUNK, missing),
        ("final record cut short", chunk(WHOLE[:-1]) + LAST_CHUNK, missing),
        ("a fragment behind the final record", chunk(WHOLE + b"1234567") + LAST_CHUNK, trailing),
        ("closed without a body", b"", NEVER_ENDED),
        ("closed in a size line", b"2", NEVER_ENDED),
        ("closed in a chunk", chunk(WHOLE)[:-1], NEVER_ENDED),
        ("closed without the last chunk", chunk(WHOLE), NEVER_ENDED),
        ("closed in the last chunk's line", chunk(WHOLE) + b"0\r", NEVER_ENDED),
    ]


def received_body(what, body, failure=None, declared=PHOTO):
    own_head = {} if declared is PHOTO else {"head": head(declared)}
    status = "400 Bad Request" if failure else "200 OK"
    return {"what": what} | own_head | {
        "body": body.hex(), "status": status, "text": failure or "OK SHA256"}


def sized(size):
    """A stream that is faultless but for the size that its head and its records declare."""
    sent = transfer(size=size)
    return chunk(b"".join(sent.records(CONTENT, 10))) + LAST_CHUNK, sent


def received_bodies():
    rows = [received_body(what, body) for what, body in accepted_bodies()]
    rows += [received_body(*row) for row in failed_chunks()]
    rows += [received_body(what, chunk(records), why) for what, records, why in failed_records()]
    for what, size in [("shorter than declared", 31), ("longer than declared", 29),
                       ("declared to be empty", 0)]:
        body, declared = sized(size)
        rows.append(received_body(what, body, "Declared file size mismatch", declared))
    body, declared = sized(-1)
    rows.append(received_body("a size of -1 is not compared", body, None, declared))
    rows += [received_body(*row) for row in failed_ends()]
    return {"key": KEY.hex(), "content": hexadecimal(CONTENT), "head": head(PHOTO),
            "rows": rows}
