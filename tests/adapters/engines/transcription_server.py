#!/usr/bin/python3
"""A transcription server that behaves in whatever way the begin of the path says. It understands of sound how much there
is, and tells what else it was given.

    transcription_server.py [CERTIFICATE KEY]    prints its port; speaks TLS with a certificate
"""

import email
import email.policy
import io
import json
import ssl
import sys
import time
import wave
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

failures = 0


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_):
        pass

    def answer(self, status: int, body: bytes, headers: dict | None = None):
        self.send_response(status)
        for name, value in (headers or {}).items():
            self.send_header(name, value)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def fields(self, body: bytes) -> dict:
        head = f"Content-Type: {self.headers['Content-Type']}\r\n\r\n".encode()
        message = email.message_from_bytes(head + body, policy=email.policy.HTTP)
        return {part.get_param("name", header="content-disposition"): part for part in message.iter_parts()}

    def do_POST(self):
        global failures
        body = self.rfile.read(int(self.headers["Content-Length"]))
        way, _, call = self.path[1:].partition("/")
        if call != "v1/audio/transcriptions":
            self.answer(404, b"no such call")
        elif way == "understands":
            fields = self.fields(body)
            with wave.open(io.BytesIO(fields["file"].get_content())) as sound:
                heard = [sound.getframerate(), sound.getnchannels(), sound.getsampwidth(), sound.getnframes()]
            told = {name: part.get_content().strip() for name, part in fields.items() if name != "file"}
            text = {"sound": heard, "type": fields["file"].get_content_type(), "fields": told,
                    "key": self.headers.get("Authorization")}
            self.answer(200, json.dumps({"text": " " + json.dumps(text) + "\n"}).encode())
        elif way == "sleeps":
            time.sleep(60)
        elif way == "stumbles":
            failures += 1
            self.answer(503 if failures == 1 else 200, b'{"text": "hola"}')
        elif way == "redirects":
            self.answer(307, b"", {"Location": "/understands/" + call})
        elif way == "floods":
            self.answer(200, b"x" * 3_000_000)
        elif way == "says":
            self.answer(200, b'{"text": 7}')
        else:
            self.answer(int(way), b"secret words of the server")


server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
server.daemon_threads = True
if len(sys.argv) == 3:
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(*sys.argv[1:])
    server.socket = context.wrap_socket(server.socket, server_side=True)
print(server.server_address[1], flush=True)
server.serve_forever()
