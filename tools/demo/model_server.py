#!/usr/bin/python3
"""A server of language models that writes what was dictated, with a capital and a full stop, and answers everything else
with one sentence, piece by piece where that is asked for.

    model_server.py FILE    prints its port, and keeps what it is asked in the file: one JSON object a line
"""

import json
import re
import sys
import time
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

ANSWER = "Wednesday **at seven**."
BETWEEN_PIECES = 0.1  # seconds


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_):
        pass

    def answer(self, body: dict) -> None:
        text = json.dumps(body).encode()
        self.send_response(200)
        self.send_header("Content-Length", str(len(text)))
        self.end_headers()
        self.wfile.write(text)

    def stream(self, text: str) -> None:
        self.send_response(200)
        self.send_header("Content-Type", "text/event-stream")
        self.send_header("Connection", "close")
        self.end_headers()
        for piece in re.findall(r"\S+\s*", text):
            event = {"choices": [{"delta": {"content": piece}}]}
            self.wfile.write(f"data: {json.dumps(event)}\n\n".encode())
            self.wfile.flush()
            time.sleep(BETWEEN_PIECES)
        self.wfile.write(b"data: [DONE]\n\n")

    def do_GET(self) -> None:
        self.answer({"object": "list", "data": [{"id": "stand-in"}]})

    def do_POST(self) -> None:
        asked = json.loads(self.rfile.read(int(self.headers["Content-Length"])))
        with open(sys.argv[1], "a", encoding="utf-8") as record:
            record.write(json.dumps(asked) + "\n")
        dictated = re.search(r"<dictado>\n(.*)\n</dictado>", str(asked["messages"][-1]["content"]), re.DOTALL)
        words = dictated[1].strip() if dictated else ""
        text = json.dumps({"titulo": "", "texto": words[:1].upper() + words[1:] + "."}) if words else ANSWER
        if asked.get("stream"):
            self.stream(text)
        else:
            self.answer({"choices": [{"message": {"role": "assistant", "content": text}}]})


server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
server.daemon_threads = True
print(server.server_address[1], flush=True)
server.serve_forever()
