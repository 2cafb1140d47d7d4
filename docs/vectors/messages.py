"""Requests, answers, datagrams and pairing texts."""

import base64
import urllib.parse

from parts import KEY, PREFIX, TRANSFER_ID, head, hexadecimal, text, transfer
from reference import base64url, identify_answer, plain_answer

LEGACY = "Legacy transfer route disabled; Ferrylane protocol v4 required"


# Request heads.

def request(method, target, *headers):
    return "\r\n".join([f"{method} {target} HTTP/1.1", *headers, "", ""])


def upload_request(*headers, transfer_id=TRANSFER_ID, prefix=base64url(PREFIX)):
    return request("POST", "/secure-upload-v4", "Transfer-Encoding: chunked",
                   f"X-Ferrylane-Transfer-ID: {transfer_id}",
                   f"X-Ferrylane-Nonce-Prefix: {prefix}", *headers)


def upload(what, sent, **values):
    values = {"fileName": "file", "fileSize": -1, "transferId": TRANSFER_ID,
              "noncePrefix": PREFIX.hex(), "senderName": None} | values
    return {"what": what, "request": text(sent), "upload": values}


def spaced(request_head):
    lower = request_head.replace("X-F", "x-f").replace("Transfer-E", "TRANSFER-E")
    return lower.replace(": ", ":\t ").replace("\r\nx", " \r\nx")


def read_uploads():
    name, size, sender = "X-Filename: ", "X-Ferrylane-File-Size: ", "X-Ferrylane-Sender-Name: "
    return [
        upload("as a sender writes it", head(transfer()),
               fileName="photo.jpg", fileSize=30, senderName="Pixel 8"),
        upload("nothing but what is needed", upload_request()),
        upload("header names in any case, blanks and tabs around values",
               spaced(upload_request())),
        upload("gzip, then chunked",
               upload_request().replace("chunked", "gzip, Chunked")),
        upload("the shortest transfer id", upload_request(transfer_id="i" * 16),
               transferId="i" * 16),
        upload("the longest transfer id", upload_request(transfer_id="i" * 128),
               transferId="i" * 128),
        upload("a nonce prefix in standard base64", upload_request(prefix="//79/Pv6+fg="),
               noncePrefix="fffefdfcfbfaf9f8"),
        upload("an escaped name", upload_request(name + "report%20final%2F%c3%a4.txt"),
               fileName="report final/\u00e4.txt"),
        upload("a name with letters that are not escaped", upload_request(name + "n\u00e4me"),
               fileName="n\u00e4me"),
        upload("a name with a bad escape", upload_request(name + "100%")),
        upload("a name that is not UTF-8", upload_request(name + "%FF")),
        upload("two names: the later one counts", upload_request(name + "a", name + "b:c"),
               fileName="b:c"),
        upload("a blank before the colon: another header", upload_request("X-Filename : a")),
        upload("a size with a plus sign", upload_request(size + "+17"), fileSize=17),
        upload("a size that is no number", upload_request(size + "12x")),
        upload("a size beyond 64 bits", upload_request(size + "9223372036854775808")),
        upload("a sender's name with a bad escape", upload_request(sender + "100%"),
               senderName="100%"),
        upload("byte order marks are characters like any other",
               upload_request(name + "\ufeffa", sender + "%EF%BB%BFb", transfer_id="\ufeff" + "i" * 15),
               fileName="\ufeffa", transferId="\ufeff" + "i" * 15, senderName="\ufeffb"),
        upload("a name without a blank in front", upload_request("x-filename:a%2Fb"),
               fileName="a/b"),
        upload("blanks and tabs around a name", upload_request("X-FILENAME: \t n%C3%A4me \t "),
               fileName="n\u00e4me"),
        upload("two names, the later one with a bad escape",
               upload_request(name + "first", name + "100%"), fileName="first"),
        upload("a name of one blank", upload_request(name), fileName=""),
        upload("no name behind the colon", upload_request("X-Filename:")),
        upload("no colon", upload_request("X-Filename")),
        upload("a blank before the header", upload_request(" X-Filename: a")),
        upload("colons before the header", upload_request("::X-Filename: a:b"), fileName="a:b"),
        upload("a size below 0", upload_request(size + "-5"), fileSize=-5),
        upload("the greatest size", upload_request(size + "9223372036854775807"),
               fileSize=9223372036854775807),
        *[upload(f"a size of {odd}", upload_request(size + odd)) for odd in ["1 2", "+-5", "+"]],
        upload("a size, then none", upload_request(size + "5", size + "x")),
        upload("chunked, then another coding", upload_request("Transfer-Encoding: gzip")),
        upload("a transfer id is not escaped", upload_request(transfer_id="i" * 16 + "%20"),
               transferId="i" * 16 + "%20"),
        upload("two transfer ids: the later one counts",
               upload_request("X-Ferrylane-Transfer-ID: " + "j" * 16), transferId="j" * 16),
        upload("a transfer id of 16 characters, each of two code points",
               upload_request(transfer_id="e\u0301" * 16), transferId="e\u0301" * 16),
        upload("an escaped sender's name", upload_request(sender + "Zo%C3%AB's+phone"),
               senderName="Zo\u00eb's+phone"),
    ]


def answered(what, sent, status, body):
    return {"what": what, "request": text(sent) if isinstance(sent, str) else sent,
            "answer": plain_answer(status, body)}


def routed():
    not_found = ("404 Not Found", "Not found")
    legacy = [answered(f"a route of an older version, {target}", request("POST", target),
                       "426 Upgrade Required", LEGACY)
              for target in ["/upload", "/secure-upload", "/secure-upload-v2", "/secure-upload-v3"]]
    pages = [{"what": f"the page for browsers, {target}", "request": text(request("GET", target)),
              "page": True} for target in ["/", "/?flkey=x", "/transfer-status?x=1", "/upload", "/\u00e4"]]
    pages.append({"what": "the page for browsers, no target", "request": text("GET\r\n\r\n"),
                  "page": True})
    return legacy + pages + [
        answered("ready", request("GET", "/transfer-status"), "200 OK", "READY"),
        answered("blanks around method and target",
                 "  GET   /transfer-status   HTTP/1.1 and more\r\n\r\n", "200 OK", "READY"),
        answered("no version", "GET /transfer-status\r\n\r\n", "200 OK", "READY"),
        answered("a tab is no blank", "GET\t/transfer-status HTTP/1.1\r\n\r\n", *not_found),
        answered("upload in another coding",
                 upload_request().replace("chunked", "gzip"), *not_found),
        answered("method in lower case", request("get", "/transfer-status"), *not_found),
        answered("another method", request("HEAD", "/transfer-status"), *not_found),
        answered("a method after a byte order mark", request("\ufeffGET", "/transfer-status"), *not_found),
        answered("no request line", "\r\n\r\n", *not_found),
        answered("no slash", request("GET", "*"), *not_found),
        answered("a post elsewhere", request("POST", "/"), *not_found),
        answered("a query with an older route", request("POST", "/upload?x"), *not_found),
        answered("upload without chunks", request("POST", "/secure-upload-v4"), *not_found),
    ]


def ready_with(*header):
    """A request to be told whether the computer is ready, with one more header line."""
    return text("GET /transfer-status HTTP/1.1\r\n") + sum(header, []) + text("\r\n\r\n")


def headers(count):
    return text("GET /transfer-status HTTP/1.1") + text("\r\nA: b", count) + text("\r\n\r\n")


def limits_of_heads():
    bad, fields = "400 Bad Request", "431 Request Header Fields Too Large"
    ready = ("200 OK", "READY")
    name = text("X-Filename: ")
    long_target = text("GET /") + text("x", 4096) + text(" HTTP/1.1\r\n\r\n")
    cluster = "e\u0301\u0302\u0303"  # one character
    end = text(" HTTP/1.1\r\n\r\n")
    empty = text("GET / HTTP/1.1") + text("\r\nA: b", 63) + text("\r\nx\r\ny\r\n\r\n")
    endless = text("GET / HTTP/1.1\r\nA: ") + text("x", 65518)
    return [
        answered("64 headers", headers(64), *ready),
        answered("65 headers", headers(65), fields, "Too many headers"),
        answered("65,536 bytes", ready_with(text("A: "), text("x", 65536 - 34)), *ready),
        answered("65,537 bytes without an end", endless, fields, "Headers too large"),
        answered("a head that is not UTF-8", ready_with(text("A: "), hexadecimal(b"\xff")), bad,
                 "Invalid headers"),
        answered("a target of 4,097 characters", long_target, "414 URI Too Long", "URI too long"),
        {"what": "a target of 4,096 characters, each of four code points",
         "request": text("GET /") + text(cluster, 4095) + end, "page": True},
        answered("a target of 4,097 characters, each of four code points",
                 text("GET /") + text(cluster, 4096) + end, "414 URI Too Long", "URI too long"),
        answered("lines without a colon count", empty, fields, "Too many headers"),
        answered("a surrogate in UTF-8", ready_with(text("A: "), hexadecimal(b"\xed\xa0\x80")), bad,
                 "Invalid headers"),
        answered("a file name with a carriage return", ready_with(name, text("a\rb")), bad,
                 "Invalid filename"),
        answered("a file name of 4,096 characters", ready_with(name, text("x", 4096)), *ready),
        answered("a file name of 4,097 characters", ready_with(name, text("x", 4097)), bad,
                 "Invalid filename"),
        answered("a file name with a line feed", ready_with(name, text("a\nb")), bad,
                 "Invalid filename"),
    ]


def refused_uploads():
    metadata = ("400 Bad Request", "Authentication metadata missing")
    no_id = request("POST", "/secure-upload-v4", "Transfer-Encoding: chunked",
                    "X-Ferrylane-Nonce-Prefix: oKGio6Slpqc")
    return [
        answered("no transfer id", no_id, *metadata),
        answered("transfer id too short", upload_request(transfer_id="i" * 15), *metadata),
        answered("a transfer id of 15 characters, each of two code points",
                 upload_request(transfer_id="e\u0301" * 15), *metadata),
        answered("transfer id too long", upload_request(transfer_id="i" * 129), *metadata),
        *[answered(f"transfer id with a control character, U+{ord(control):04X}",
                   upload_request(transfer_id="i" * 8 + control + "i" * 8), *metadata)
          for control in ["\x00", "\n", "\x7f", "\x85"]],
        answered("nonce prefix of 7 bytes", upload_request(prefix="AAECAwQFBg"), *metadata),
        answered("nonce prefix of 9 bytes", upload_request(prefix="AAECAwQFBgcI"), *metadata),
        answered("nonce prefix that is not base64", upload_request(prefix="AAECAwQFBg!"),
                 *metadata),
    ]


def request_heads():
    return read_uploads() + refused_uploads() + routed() + limits_of_heads()


# Identify handshake.

def identified(what, challenge, decoded, name="Office PC"):
    return {"what": what, "challenge": challenge, "name": name,
            "answer": identify_answer(KEY, challenge, decoded, name)}


def refused_challenge(what, challenge):
    return {"what": what, "challenge": challenge, "name": "Office PC",
            "answer": plain_answer("400 Bad Request", "Invalid challenge")}


def identify():
    shortest, longest, awkward = bytes(range(16)), bytes(range(64)), bytes([0xFB] * 16)
    standard = base64.b64encode(awkward).decode()
    return {"key": KEY.hex(), "rows": [
        identified("16 bytes", base64url(shortest), shortest),
        identified("64 bytes", base64url(longest), longest),
        identified("a name beyond ASCII", base64url(shortest), shortest,
                   "K\u00fcche \u4e2d \"1\"|%"),
        identified("base64url", base64url(awkward), awkward),
        identified("the same in standard base64", standard, awkward),
        refused_challenge("none", None),
        refused_challenge("15 bytes", base64url(bytes(15))),
        refused_challenge("65 bytes", base64url(bytes(65))),
        refused_challenge("what a name proof begins with", base64url(b"Ferrylane-name-v1")),
        refused_challenge("a name proof's message", base64url(b"Ferrylane-name-v1\nAAAA\nOffice")),
        refused_challenge("not base64", "not base64 but long enough!"),
    ]}


# Discovery.

ASK = b"FERRYLANE_DISCOVER_V1"
TAG = "FERRYLANE_HERE_V1|"


def asked(datagram, is_answered):
    return {"datagram": text(datagram.decode()) if datagram.isascii() else hexadecimal(datagram),
            "answered": is_answered}


def reply_written(name, port, datagram):
    return {"name": name, "port": port, "datagram": text(datagram)}


def reply_read(datagram, name=None, port=None):
    return {"datagram": datagram if isinstance(datagram, list) else text(datagram),
            "name": name, "port": port}


def discovery():
    others = [b"", ASK + b"\n", b" " + ASK, ASK + ASK, ASK[:-1], ASK.lower(), ASK + b"\x00",
              ASK + b"\xff", b"\xef\xbb\xbf" + ASK, b"FERRYLANE_DISCOVER_V2",
              b"FERRYLANE_HERE_V1|Pixel 8|8787"]
    return {
        "requests": [asked(ASK, True)] + [asked(other, False) for other in others],
        "repliesWritten": [
            reply_written("Office PC", 8788, TAG + "Office PC|8788"),
            reply_written("K\u00fcche \U0001f600", 65535, TAG + "K\u00fcche \U0001f600|65535"),
            reply_written("|a||b\n\nc|", 8788, TAG + " a  b  c |8788"),
            reply_written(" a\r\tb ", 1, TAG + " a\r\tb |1"),
        ],
        "repliesRead": good_replies() + bad_replies(),
    }


def good_replies():
    pixel = TAG + "Pixel 8|"
    odd_ports = ["port", " 9000", "9000\n", "9000|more", "99999999999999999999", "|9000", "+-1", "++1",
                 "-", "0x10"]
    return [
        reply_read(pixel + "8787", "Pixel 8", 8787),
        reply_read(pixel + "9000", "Pixel 8", 9000),
        reply_read(pixel + "+65535", "Pixel 8", 65535),
        reply_read(pixel + "007", "Pixel 8", 7),
        reply_read(TAG + "||Pixel 8|65535", "Pixel 8", 65535),
        reply_read(TAG + "\ufeffa|1", "\ufeffa", 1),
        reply_read(TAG + " \t K\u00fcche \U0001f600 \n|1", "K\u00fcche \U0001f600", 1),
        *[reply_read(pixel + port, "Pixel 8", 8787) for port in odd_ports],
        *[reply_read(pixel + port, "Pixel 8") for port in ["0", "65536", "-1", "9223372036854775807"]],
    ]


def bad_replies():
    return [reply_read(datagram) for datagram in [
        TAG, TAG + "Pixel 8", TAG + "Pixel 8|", TAG + "|8787", TAG + " \t\n|8787", "",
        "FERRYLANE_HERE_V1", "FERRYLANE_HERE_V2|Pixel 8|8787", TAG.lower() + "Pixel 8|8787",
        " " + TAG + "Pixel 8|8787", ASK.decode(), text(TAG) + hexadecimal(b"\xff") + text("|8787"),
    ]]


# Pairing.

KEY_TEXT = base64url(KEY)
AWKWARD_KEY = bytes([0xFB] * 32)  # with signs in which base64 and base64url differ
STANDARD = base64.b64encode(AWKWARD_KEY).decode()
FAMILY = "\U0001f468\u200d\U0001f469\u200d\U0001f467"  # one character
ESCAPED = urllib.parse.quote(STANDARD, safe="")
COMPUTER = "http://192.168.1.20:8788/?flkey="
PHONE = "http://192.168.1.30:8787/?flkey="


def link_written(name, link):
    return {"host": "192.168.1.20", "port": 8788, "name": name, "link": link}


def link_read(link, host="192.168.1.20", port=8788, key=KEY):
    return {"link": link, "host": host, "port": port, "key": key.hex()}


def computer_links():
    other_host = "http://kitchen.local:1/?name=a&flkey=" + KEY_TEXT
    ipv6 = "http://[fe80::1c2:3ff]:65535/?flkey=" + KEY_TEXT
    no_slash = "http://10.0.0.5:8788?flkey=" + KEY_TEXT + "&flkey=other"
    bad = ["", COMPUTER, COMPUTER + KEY_TEXT[:-1], COMPUTER + KEY_TEXT + "AAAA",
           COMPUTER + KEY_TEXT[:-1] + "*", "http://[fe80::1:8788/?flkey=" + KEY_TEXT]
    bad += [COMPUTER.replace(*change) + KEY_TEXT for change in [
        ("http", "https"), (":8788", ""), ("8788", "0"), ("8788", "65536"), ("flkey", "FLKEY"),
        ("192.168.1.20", "")]]
    return [
        link_read(COMPUTER + KEY_TEXT), link_read(COMPUTER + KEY_TEXT + "&name=Office%20PC"),
        link_read(COMPUTER + KEY_TEXT + "="), link_read(COMPUTER + ESCAPED, key=AWKWARD_KEY),
        link_read(other_host, "kitchen.local", 1), link_read(ipv6, "fe80::1c2:3ff", 65535),
        link_read(no_slash, "10.0.0.5"),
        *[{"link": link, "host": None} for link in bad],
    ]


def code(link, name="Android", host="192.168.1.30", key_text=KEY_TEXT):
    return {"text": link, "name": name, "baseURL": f"http://{host}:8787", "keyB64": key_text}


def named(item, name):
    return code(PHONE + KEY_TEXT + item, name)


def phone_codes():
    bad = ["", "Pixel 8", PHONE, PHONE + KEY_TEXT[:-1], PHONE + base64url(bytes(31)),
           PHONE + base64url(bytes(33)), "http://192.168.1.30:8787/"]
    bad += [PHONE.replace(*change) + KEY_TEXT for change in [
        ("8787", "8788"), (":8787", ""), ("http", "https"), ("http:", ""), ("192.168.1.30", ""),
        ("flkey", "FLKEY"), ("flkey=", "flkey&x="), ("http", "ferrylane"), ("?", "#"),
        ("flkey=", "flkey=&flkey=")]]
    bad += [PHONE + KEY_TEXT[:-1] + last for last in ["*", "%zz", "%ff"]]
    return [
        named("&name=Pixel%208", "Pixel 8"), named("", "Android"), named("&name=", "Android"),
        named("&name=%20%0A", "Android"), named("&name=FL%20%20%20Pixel%20%20", "Pixel"),
        named("&name=flower", "flower"), named("&name=A+B", "A+B"), named("&name=a&name=b", "a"),
        named("&name=" + "n" * 100, "n" * 80), named("&name=" + "e%CC%81" * 81, "e\u0301" * 80),
        named("&name=fl%20fl%20a", "fl a"), named("&name=ferrylane%20a", "ferrylane a"),
        named("&name=a%26b%3Dc&name=d", "a&b=c"), named("&name=%ff", "Android"),
        named("&name=" + FAMILY * 81, FAMILY * 80),
        code(PHONE.replace("flkey", "fl%6Bey") + STANDARD, key_text=STANDARD),
        code("http://[fe80::1%25wlan0]:8787/?flkey=" + KEY_TEXT, host="[fe80::1%25wlan0]"),
        code("http://k\u00fcche.local:8787/?flkey=" + KEY_TEXT, host="xn--kche-0ra.local"),
        code("http://[fe80::1]:8787/?flkey=" + KEY_TEXT, host="[fe80::1]"),
        code("http://u@phone.local:8787/a/b?flkey=" + KEY_TEXT, host="phone.local"),
        code(PHONE.replace("http", "HTTP") + KEY_TEXT),
        code("http://pixel.local:8787/pair?x=1&flkey=" + KEY_TEXT + "&flkey=x#y",
             host="pixel.local"),
        code(PHONE + KEY_TEXT + "=", key_text=KEY_TEXT + "="),
        code(PHONE + ESCAPED, key_text=STANDARD),
        *[{"text": link, "name": None} for link in bad],
    ]


def pairing():
    return {
        "key": KEY.hex(),
        "computerLinksWritten": [
            link_written(None, COMPUTER + KEY_TEXT),
            link_written("Office PC", COMPUTER + KEY_TEXT + "&name=Office%20PC"),
            link_written("a 1/2?", COMPUTER + KEY_TEXT + "&name=a%201/2?"),
            link_written("K\u00fcche|50%", COMPUTER + KEY_TEXT + "&name=K%C3%BCche%7C50%25"),
        ],
        "computerLinksRead": computer_links(),
        "phoneCodes": phone_codes(),
    }


# What a phone answers to the computer's upload.

def phone_answers():
    start = "HTTP/1.1 {}\r\nContent-Type: text/plain\r\nConnection: close\r\n\r\n"
    read = [
        (start.format("200 OK") + "OK SHA256", 200, "OK SHA256"),
        (start.format("204 No Content"), 204, ""),
        (start.format("299 Odd") + " \r\n stored \r\n\r\n", 299, "stored"),
        (start.format("400 Bad Request") + "Authentication failed", 400, "Authentication failed"),
        (start.format("409 Conflict") + "BUSY", 409, "BUSY"),
        ("HTTP/1.0  500 \r\n\r\na\r\n\r\nb", 500, "a\r\n\r\nb"),
        ("HTTP/1.1 300", 300, ""), ("HTTP/1.1 200 OK\r\nA: b\r\n", 200, ""),
    ]
    unreadable = [text(answer) for answer in [
        "", "\r\n\r\n", "hello", "HTTP/1.1", "HTTP/1.1 OK 200\r\n\r\n", "HTTP/1.1 2x0 OK"]]
    unreadable.append(text("HTTP/1.1 200 OK\r\n\r\n") + hexadecimal(b"\xff"))
    return [{"answer": text(answer), "status": status, "text": body,
             "stored": 200 <= status <= 299} for answer, status, body in read] + [
        {"answer": answer, "status": None} for answer in unreadable]
