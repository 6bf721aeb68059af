#!/usr/bin/python3
"""A server of language models that writes what was dictated, with a capital and a full stop.

    model_server.py    prints its port
"""

import json
import re
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer


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

    def do_GET(self) -> None:
        self.answer({"object": "list", "data": [{"id": "stand-in"}]})

    def do_POST(self) -> None:
        asked = json.loads(self.rfile.read(int(self.headers["Content-Length"])))
        dictated = re.search(r"<dictado>\n(.*)\n</dictado>", asked["messages"][-1]["content"], re.DOTALL)
        words = dictated[1].strip() if dictated else "."
        content = json.dumps({"titulo": "", "texto": words[:1].upper() + words[1:] + "."})
        self.answer({"choices": [{"message": {"role": "assistant", "content": content}}]})


server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
server.daemon_threads = True
print(server.server_address[1], flush=True)
server.serve_forever()
