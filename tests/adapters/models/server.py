#!/usr/bin/python3
"""A server of models, which behaves in whatever way its paths say: /BEHAVIOUR/FILE, for the files of a folder.

    server.py FOLDER [CERTIFICATE KEY]    prints its port; speaks TLS with a certificate
"""

import json
import re
import select
import ssl
import sys
import threading
import time
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from pathlib import Path
from urllib.parse import unquote

folder = Path(sys.argv[1])
lock = threading.Lock()
asked = []  # what was asked for, and from where on


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_):
        pass

    def do_GET(self):
        behaviour, _, name = unquote(self.path[1:]).partition("/")
        if behaviour == "asked":
            return self.answer(200, json.dumps(asked).encode())
        range_asked = self.headers.get("Range")
        first = int(re.fullmatch(r"bytes=(\d+)-", range_asked)[1]) if range_asked else 0
        with lock:
            asked.append([behaviour, name, first])
            self.count = sum(one[:2] == [behaviour, name] for one in asked)
        if behaviour == "to":
            return self.answer(302, b"elsewhere", {"Location": name})
        self.content = (folder / Path(name).name).read_bytes()
        getattr(self, behaviour)(first, name)

    def answer(self, status: int, body: bytes, headers: dict | None = None, length: int | None = None):
        self.send_response(status)
        for key, value in (headers or {}).items():
            self.send_header(key, value)
        self.send_header("Content-Length", str(len(body) if length is None else length))
        self.end_headers()
        self.wfile.write(body)
        if length is not None and length != len(body):
            self.close_connection = True

    def rest(self, first: int, body: bytes, **kind):
        """What is asked for, as far as `body` goes from there."""
        if first == 0:
            return self.answer(200, body, **kind)
        whole = len(self.content)
        self.answer(206, body, {"Content-Range": f"bytes {first}-{whole - 1}/{whole}"}, **kind)

    def plain(self, first, _):
        self.rest(first, self.content[first:])

    def cut(self, first, _):
        """Half of what is left, at most."""
        left = self.content[first:]
        self.rest(first, left[: max(1000, len(left) // 2)], length=len(left))

    def slow(self, first, _):
        left = self.content[first:]
        self.rest(first, b"", length=len(left))
        for at in range(0, len(left), 20_000):
            self.wfile.write(left[at : at + 20_000])
            time.sleep(0.002)

    def stall(self, first, name):
        """The first time."""
        if self.count > 1:
            return self.plain(first, name)
        self.rest(first, self.content[first : first + 1000], length=len(self.content) - first)
        select.select([self.connection], [], [], 60)

    def busy(self, first, name):
        """The first time."""
        self.plain(first, name) if self.count > 1 else self.answer(503, b"later")

    def cutsAndStartsAnew(self, first, name):
        """Gives a part first, and knows no ranges."""
        if self.count > 1:
            return self.answer(200, self.content)
        self.answer(200, self.content[: len(self.content) // 2], length=len(self.content))

    def wrong(self, first, _):
        self.rest(first, bytes(len(self.content) - first))

    def short(self, first, _):
        self.answer(200, self.content[:-1])

    def endless(self, first, _):
        self.send_response(200)
        self.send_header("Transfer-Encoding", "chunked")
        self.end_headers()
        while True:
            self.wfile.write(b"%x\r\n%s\r\n" % (len(self.content), self.content))

    def page(self, first, _):
        self.answer(200, b"<html>Welcome to the hotel</html>", {"Content-Type": "text/html; charset=utf-8"})

    def liesAboutRange(self, first, _):
        if first == 0:
            return self.cut(first, _)
        whole = len(self.content)
        self.answer(206, self.content[first:], {"Content-Range": f"bytes {first + 5}-{whole - 1}/{whole}"})

    def liesAboutLength(self, first, _):
        if first == 0:
            return self.cut(first, _)
        self.answer(206, self.content[first:], {"Content-Range": f"bytes {first}-{len(self.content)}/{len(self.content) + 1}"})

    def missing(self, first, _):
        self.answer(404, b"not here")


class Server(ThreadingHTTPServer):
    daemon_threads = True

    def handle_error(self, *_):
        pass


server = Server(("127.0.0.1", 0), Handler)
if len(sys.argv) == 4:
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(*sys.argv[2:])
    server.socket = context.wrap_socket(server.socket, server_side=True)
print(server.server_address[1], flush=True)
server.serve_forever()
