#!/usr/bin/python3
"""An HTTP server that behaves in whatever way its paths say, for tests of a client.

    server.py [CERTIFICATE KEY]    prints its port; speaks TLS with a certificate
"""

import json
import select
import ssl
import sys
import threading
import time
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from urllib.parse import unquote

released = threading.Event()
seen = {"left": 0, "sent": 0, "connections": 0, "requests": 0}


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_):
        pass

    def setup(self):
        super().setup()
        seen["connections"] += 1

    def answer(self, status: int, body: bytes, headers: dict | None = None):
        self.send_response(status)
        for name, value in (headers or {}).items():
            self.send_header(name, value)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def begin_chunks(self):
        self.send_response(200)
        self.send_header("Transfer-Encoding", "chunked")
        self.end_headers()

    def chunk(self, data: bytes):
        self.wfile.write(b"%x\r\n%s\r\n" % (len(data), data))

    def wait_for_client_to_leave(self):
        select.select([self.connection], [], [], 60)
        seen["left"] += 1
        self.close_connection = True

    def do_POST(self):
        self.do_GET()

    def do_GET(self):
        seen["requests"] += 1
        name, _, argument = self.path[1:].partition("/")
        self.body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        getattr(self, name)(unquote(argument))

    def echo(self, _):
        told = {name.lower(): value for name, value in self.headers.items()}
        text = {"method": self.command, "path": self.path, "headers": told, "body": self.body.decode(),
                "connection": self.client_address[1]}
        self.answer(200, json.dumps(text).encode(), {"X-Mixed-Case": " padded "})

    def status(self, number):
        self.answer(int(number), b"words of " + number.encode())

    def seen(self, _):
        self.answer(200, json.dumps(seen).encode())

    def release(self, _):
        released.set()
        self.answer(200, b"")

    def never(self, _):
        self.wait_for_client_to_leave()

    def stall(self, _):
        self.begin_chunks()
        self.chunk(b"some")
        self.wait_for_client_to_leave()

    def drip(self, _):
        """A part, and the rest when /release is asked for."""
        self.begin_chunks()
        self.chunk(b"one")
        released.wait(60)
        self.chunk(b"two")
        self.chunk(b"")

    def trickle(self, _):
        """A byte every now and then, without end."""
        self.begin_chunks()
        while True:
            self.chunk(b".")
            time.sleep(0.1)

    def chunks(self, count):
        self.begin_chunks()
        for number in range(int(count)):
            self.chunk(b"%07d\n" % number)
        self.chunk(b"")

    def cut(self, _):
        self.send_response(200)
        self.send_header("Content-Length", "100")
        self.end_headers()
        self.wfile.write(b"some")
        self.close_connection = True

    def bytes(self, count):
        """That many, from those that the range begins with."""
        whole = int(count)
        first = int(self.headers.get("Range", "bytes=0-").removeprefix("bytes=").split("-")[0])
        self.send_response(206 if "Range" in self.headers else 200)
        if "Range" in self.headers:
            self.send_header("Content-Range", f"bytes {first}-{whole - 1}/{whole}")
        self.send_header("Content-Length", str(whole - first))
        self.end_headers()
        piece = bytes(i % 251 for i in range(251 * 256))
        for at in range(first, whole, len(piece)):
            self.wfile.write(piece[: whole - at] if at % 251 == 0 else bytes((at + i) % 251 for i in range(min(len(piece), whole - at))))
            seen["sent"] = at

    def redirect(self, where):
        self.answer(302, b"elsewhere", {"Location": where})


class Server(ThreadingHTTPServer):
    daemon_threads = True

    def handle_error(self, *_):
        pass


server = Server(("127.0.0.1", 0), Handler)
if len(sys.argv) == 3:
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(*sys.argv[1:])
    server.socket = context.wrap_socket(server.socket, server_side=True)
print(server.server_address[1], flush=True)
server.serve_forever()
