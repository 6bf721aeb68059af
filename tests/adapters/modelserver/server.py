#!/usr/bin/python3
"""A server of language models that behaves in whatever way its paths say: /HOW/v1/models, /HOW/v1/chat/completions,
/HOW/v1/embeddings.

    server.py    prints its port

What it was asked last is told under /seen.
"""

import json
import select
import time
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

ANSWER = '{"titulo": "Informe", "texto": "Enviamos el {informe} \\"mañana\\"."}'
CONTENT = {
    "good": ANSWER,
    "fenced": f"Claro, {{aquí}} tienes:\n```json\n{ANSWER}\n```\n¿Algo más?",
    "thinking": f'<think>{{"titulo": "a", "texto": "borrador"}}</think>\n{ANSWER}',
    "prose": "Enviamos el informe mañana.",
    "half": ANSWER[:-10],
    "wrong": '{"titulo": "Informe", "texto": ["no", "text"]}',
    "keyed": ANSWER,
    "refusing": ANSWER,
    "musing": "\n<think>Un </borrador>\n</think>\n\nEnviado. </think>",
    "lost": "<think>Quizá",
    "limited": "Enviamos el",
}
EMBEDDERS = [{"id": "bge-reranker"}, {"id": "small"}, {"id": "nomic-embed-text"}]
MODELS = {
    "empty": None,
    "tagged": [{"id": "nomic-embed-text"}, {"id": "small:latest"}],
    "vectors": EMBEDDERS,
    "words": EMBEDDERS,
    "growing": EMBEDDERS,
}
seen = {"left": 0, "chats": []}


class Handler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_):
        pass

    def answer(self, status: int, body) -> None:
        text = body if isinstance(body, bytes) else json.dumps(body).encode()
        self.send_response(status)
        self.send_header("Content-Length", str(len(text)))
        self.end_headers()
        self.wfile.write(text)

    def whole(self, content: str, reason: str = "stop") -> None:
        choice = {"message": {"role": "assistant", "content": content}, "finish_reason": reason}
        self.answer(200, {"choices": [choice]})

    def do_GET(self) -> None:
        how = self.path.split("/")[1]
        if how == "seen":
            self.answer(200, seen)
        elif how == "loading":
            self.answer(503, {"error": {"message": "Loading model"}})
        elif how == "website":
            self.answer(200, b"<html>")
        elif how == "keyed" and self.headers.get("Authorization") != "Bearer secret":
            self.answer(401, {})
        else:
            self.answer(200, {"object": "list", "data": MODELS.get(how, [{"id": "small"}])})

    def do_POST(self) -> None:
        how = self.path.split("/")[1]
        asked = json.loads(self.rfile.read(int(self.headers["Content-Length"])))
        seen["chats"].append(asked | {"path": self.path})
        if self.path.endswith("/embeddings"):
            vector = {"vectors": [3, 0, 4], "words": ["three", "four"]}.get(how, [1] * len(seen["chats"]))
            self.answer(200, {"object": "list", "data": [{"index": 0, "embedding": vector}]})
        elif how == "refusing" and "response_format" in asked:
            self.answer(400, {"error": "unknown response_format"})
        elif how in CONTENT:
            self.whole(CONTENT[how], "length" if how == "limited" else "stop")
        else:
            getattr(self, how)()

    def pieces(self) -> None:
        """Its events, though nobody asked for them, in pieces that keep to no boundary, and slowly."""
        events = [{"choices": [{"delta": {"role": "assistant"}}]}]
        events += [{"choices": [{"delta": {"content": ANSWER[at:at + 7]}}]} for at in range(0, len(ANSWER), 7)]
        text = "".join(f"data: {json.dumps(event)}\n\n" for event in events) + "data: [DONE]\n\n"
        self.send_response(200)
        self.send_header("Content-Type", "text/event-stream")
        self.send_header("Connection", "close")
        self.end_headers()
        for at in range(0, len(text), 50):
            self.wfile.write(text[at:at + 50].encode())
            time.sleep(0.01)
        self.close_connection = True

    def dying(self) -> None:
        self.send_response(200)
        self.send_header("Content-Length", "1000")
        self.end_headers()
        self.wfile.write(b'{"choices": [{"mess')
        self.close_connection = True

    def silent(self) -> None:
        select.select([self.connection], [], [], 60)
        seen["left"] += 1
        self.close_connection = True

    def endless(self) -> None:
        self.send_response(200)
        self.end_headers()
        while True:
            self.wfile.write(b" " * 65536)


class Server(ThreadingHTTPServer):
    daemon_threads = True

    def handle_error(self, *_):
        pass


server = Server(("127.0.0.1", 0), Handler)
print(server.server_address[1], flush=True)
server.serve_forever()
