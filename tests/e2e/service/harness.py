"""The service and what it talks to, started for a test: a folder of its own, a port that is free, an upstream model
that records what it is asked."""

import http.client
import json
import os
import re
import signal
import socket
import ssl
import subprocess
import tempfile
import threading
import time
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from pathlib import Path

BOUND = 20.0  # seconds that a busy machine keeps
# The folder of a PostgreSQL server's socket: services then share a database by their folder there.
POSTGRESQL = os.environ.get("DORIX_TEST_POSTGRESQL")
LISTENING = re.compile(r"event=listening .*port=(\d+)")


def wait_until(condition, what: str, bound: float = BOUND):
    end = time.monotonic() + bound
    while not (value := condition()):
        if time.monotonic() > end:
            raise AssertionError(f"{what} did not come true within {bound} s")
        time.sleep(0.02)
    return value


def database_for(folder: Path) -> str:
    if not POSTGRESQL:
        return f"sqlite:{folder}/service.sqlite"
    name = re.sub("[^a-z0-9]", "", folder.name.lower())
    # It is there already when a second service has the same folder.
    subprocess.run(["createdb", "-h", POSTGRESQL, "-U", "dorix", name], stderr=subprocess.DEVNULL, check=False)
    return f"postgresql:///{name}?host={POSTGRESQL}&user=dorix"


class Service:
    """One process. The log is kept, to look for what must not be in it."""

    def __init__(self, binary: str, folder: Path | None = None, options=(), pass_fds=(), extra=None, **settings: str):
        self.holder = None if folder else tempfile.TemporaryDirectory()
        self.folder = Path(folder or self.holder.name)
        self.log_path = self.folder / f"log-{time.monotonic_ns()}"
        environment = {"PATH": os.environ["PATH"], "HOME": str(self.folder), "DORIX_SERVICE_LISTEN": "127.0.0.1:0",
                       "DORIX_SERVICE_DATABASE": database_for(self.folder),
                       "DORIX_SERVICE_MAIL": f"outbox:{self.folder}/outbox"}
        environment |= {key: value for key, value in os.environ.items() if key.endswith("SAN_OPTIONS")}
        environment |= {f"DORIX_SERVICE_{name}": value for name, value in settings.items()} | (extra or {})
        self.tls = None
        if certificate := settings.get("TLS_CERTIFICATE"):
            self.tls = ssl.create_default_context(cafile=certificate)
        with self.log_path.open("w") as log:
            self.process = subprocess.Popen([binary, *options], env=environment, stderr=log, pass_fds=pass_fds)
        self.port = int(wait_until(self._listening, "listening").group(1))

    def _listening(self):
        if self.process.poll() is not None:
            raise AssertionError(f"the service ended: {self.log()}")
        return LISTENING.search(self.log())

    def log(self) -> str:
        return self.log_path.read_text(errors="replace")

    def stop(self) -> int:
        """Ends it well, and says with which status."""
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
        status = self.process.wait(BOUND)
        if self.holder:
            self.holder.cleanup()
        return status

    def connect(self) -> http.client.HTTPConnection:
        if self.tls:
            return http.client.HTTPSConnection("localhost", self.port, timeout=BOUND, context=self.tls)
        return http.client.HTTPConnection("127.0.0.1", self.port, timeout=BOUND)

    def call(self, method: str, path: str, body=None, token: str = "", headers=None):
        """The status, and the body as JSON where it is some."""
        connection = self.connect()
        fields = {"authorization": f"Bearer {token}"} if token else {}
        payload = None if body is None else body if isinstance(body, (bytes, str)) else json.dumps(body)
        try:
            connection.request(method, path, payload, fields | (headers or {}))
            answer = connection.getresponse()
            text = answer.read().decode()
        finally:
            connection.close()
        try:
            return answer.status, json.loads(text)
        except json.JSONDecodeError:
            return answer.status, text

    def mails(self) -> list[str]:
        return [path.read_text() for path in sorted((self.folder / "outbox").glob("*.eml"))]

    def code_for(self, email: str, lang: str = "es") -> str:
        before = len(self.mails())
        status, body = self.call("POST", "/v1/auth/request-code", {"email": email, "lang": lang})
        assert (status, body) == (200, {"ok": True}), (status, body)
        wait_until(lambda: len(self.mails()) > before, "the mail")
        newest = max((self.folder / "outbox").glob("*.eml"), key=lambda path: path.stat().st_mtime_ns)
        return re.search(r"\b(\d{6})\b", newest.read_text().split("\n\n", 1)[1]).group(1)

    def sign_in(self, email: str = "ana@example.org", device: str = "pc") -> str:
        status, body = self.call("POST", "/v1/auth/verify",
                                 {"email": email, "code": self.code_for(email), "device": device})
        assert status == 200, body
        assert body["profile"] == {"email": email}, body
        return body["token"]

    def raw(self, data: bytes, until: bytes = b"") -> bytes:
        """What comes back for bytes as they are: all of it, or up to `until`, for which the connection stays open."""
        with socket.create_connection(("127.0.0.1", self.port), BOUND) as connection:
            connection.sendall(data)
            if not until:
                connection.shutdown(socket.SHUT_WR)
            answer = b""
            while not (until and until in answer) and (piece := connection.recv(65536)):
                answer += piece
            return answer

    def events(self, body: dict, token: str, headers=None) -> list[dict]:
        status, text = self.call("POST", "/v1/ai/ask", body, token, headers)
        assert status == 200, (status, text)
        return [json.loads(line[6:]) for line in text.splitlines() if line.startswith("data: ")]


def make_certificate(folder: Path) -> dict[str, str]:
    """Of localhost, trusted by nobody else; as the settings name it."""
    files = {"TLS_CERTIFICATE": str(folder / "certificate.pem"), "TLS_KEY": str(folder / "key.pem")}
    subprocess.run(["openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes",
                    "-keyout", files["TLS_KEY"], "-out", files["TLS_CERTIFICATE"], "-days", "2", "-subj",
                    "/CN=localhost", "-addext", "subjectAltName=DNS:localhost"], check=True, capture_output=True)
    return files


class Model(ThreadingHTTPServer):
    """An OpenAI-compatible upstream. `script` answers a request; what was asked and how it ended is kept."""

    daemon_threads = True

    def __init__(self, script, tls: ssl.SSLContext | None = None):
        super().__init__(("127.0.0.1", 0), ModelHandler)
        if tls:
            self.socket = tls.wrap_socket(self.socket, server_side=True)
        self.script = script
        self.requests: list[dict] = []
        self.broken = threading.Event()  # a caller went away
        threading.Thread(target=self.serve_forever, daemon=True).start()

    @property
    def url(self) -> str:
        return f"http://127.0.0.1:{self.server_port}/v1"

    def handle_error(self, request, client_address):
        pass


class ModelHandler(BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *arguments):
        pass

    def do_POST(self):
        request = json.loads(self.rfile.read(int(self.headers["content-length"])))
        self.server.requests.append(request | {"path": self.path, "authorization": self.headers["authorization"]})
        try:
            self.server.script(self, len(self.server.requests))
        except (BrokenPipeError, ConnectionResetError):
            self.server.broken.set()

    def begin_stream(self):
        self.send_response(200)
        self.send_header("content-type", "text/event-stream")
        self.send_header("transfer-encoding", "chunked")
        self.end_headers()

    def chunk(self, data: str):
        encoded = data.encode()
        self.wfile.write(f"{len(encoded):x}\r\n".encode() + encoded + b"\r\n")
        self.wfile.flush()

    def text(self, text: str):
        self.chunk("data: " + json.dumps({"choices": [{"delta": {"content": text}}]}) + "\n\n")

    def done(self):
        self.chunk("data: [DONE]\n\n")
        self.wfile.write(b"0\r\n\r\n")

    def whole(self, text: str):
        body = json.dumps({"choices": [{"message": {"content": text}}]}).encode()
        self.send_response(200)
        self.send_header("content-length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def fail(self, status: int):
        self.send_response(status)
        self.send_header("content-length", "0")
        self.end_headers()
