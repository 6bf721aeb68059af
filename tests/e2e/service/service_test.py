#!/usr/bin/python3
"""dorix-service as its callers see it: sessions, answers, hostile input, its start and its end.

    service_test.py BINARY [TEST...]
"""

import json
import os
import secrets
import signal
import socket
import ssl
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path

sys.dont_write_bytecode = True

from harness import BOUND, POSTGRESQL, Model, Service, make_certificate, wait_until  # noqa: E402

BINARY = sys.argv.pop(1)
QUESTION = {"question": "¿Cuándo es la reunión?", "appName": "Editor"}
DOCUMENT = {"name": "acta.txt", "text": "La reunión con Marta es el martes a las diez. El resto se verá más adelante."}
LOCAL = "local@dorix.localhost"


class Started(unittest.TestCase):
    settings: dict = {}

    def setUp(self):
        self.service = self.start(**self.settings)

    def start(self, **arguments) -> Service:
        service = Service(BINARY, **arguments)
        self.addCleanup(lambda: self.assertEqual(service.stop(), 0, "the service ended badly"))
        return service

    def assert_refused(self, status: int, answer):
        self.assertEqual(answer[0], status, answer)
        self.assertTrue(answer[1]["message"])


class Sessions(Started):
    def test_a_code_becomes_a_session_that_ends_where_it_is_ended(self):
        service = self.service
        laptop = service.sign_in(device="portátil\n")
        tower = service.sign_in(device="torre")
        self.assertEqual(service.call("GET", "/v1/me", token=laptop), (200, {"email": "ana@example.org"}))
        sessions = service.call("GET", "/v1/sessions", token=laptop)[1]["sessions"]
        self.assertEqual({entry["device"]: entry["current"] for entry in sessions}, {"portátil": True, "torre": False})
        stranger = service.sign_in("eve@example.org")
        other = next(entry["id"] for entry in sessions if not entry["current"])
        self.assert_refused(404, service.call("DELETE", f"/v1/sessions/{other}", token=stranger))
        self.assertEqual(service.call("DELETE", f"/v1/sessions/{other}", token=laptop)[0], 200)
        self.assert_refused(401, service.call("GET", "/v1/me", token=tower))
        self.assertEqual(service.call("POST", "/v1/auth/logout", {}, laptop), (200, {"ok": True}))
        for _ in range(2):
            self.assert_refused(401, service.call("POST", "/v1/auth/logout", {}, laptop))
        for guess in ("", "x", secrets.token_hex(32), "' OR 1=1 --", laptop[:-1] + "0" * (laptop[-1] != "0")):
            self.assert_refused(401, service.call("GET", "/v1/me", token=guess))

    def test_a_code_is_good_once_and_for_five_tries(self):
        service = self.service
        body = {"email": "ana@example.org", "code": service.code_for("ana@example.org"), "device": "pc"}
        answers = []
        threads = [threading.Thread(target=lambda: answers.append(service.call("POST", "/v1/auth/verify", body)[0]))
                   for _ in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(sorted(answers), [200, 403, 403, 403])
        code = service.code_for("ana@example.org")
        wrong = body | {"code": f"{(int(code) + 1) % 1000000:06}"}
        for _ in range(5):
            self.assert_refused(403, service.call("POST", "/v1/auth/verify", wrong))
        self.assert_refused(403, service.call("POST", "/v1/auth/verify", body | {"code": code}))

    def test_too_many_codes_are_refused_in_the_callers_language(self):
        for _ in range(5):
            self.service.code_for("ana@example.org")
        for lang, word in (("es", "Espera"), ("en", "Wait")):
            answer = self.service.call("POST", "/v1/auth/request-code", {"email": " ANA@example.org", "lang": lang})
            self.assert_refused(429, answer)
            self.assertIn(word, answer[1]["message"])
        self.assert_refused(400, self.service.call("POST", "/v1/auth/request-code",
                                                   {"email": "a@b\r\nBcc: c@d", "lang": "es"}))
        self.service.code_for("berta@example.org", "en")

    def test_what_is_known_survives_a_kill_and_nothing_secret_is_written_down(self):
        killed = Service(BINARY)
        self.addCleanup(killed.holder.cleanup)
        token = killed.sign_in()
        code = killed.code_for("ana@example.org")
        killed.process.kill()
        killed.process.wait(BOUND)
        again = Service(BINARY, folder=killed.folder)
        self.assertEqual(again.call("GET", "/v1/me", token=token)[0], 200)
        self.assertEqual(again.stop(), 0)
        for secret in (token, code, "ana@example.org", "127.0.0.1:"):
            self.assertNotIn(secret, killed.log() + again.log())
        if not POSTGRESQL:
            self.assertNotIn(token.encode(), (killed.folder / "service.sqlite").read_bytes())
            self.assertEqual((killed.folder / "service.sqlite").stat().st_mode & 0o077, 0)

    def test_instances_share_what_they_know(self):
        first = Service(BINARY)
        self.addCleanup(first.stop)
        second = self.start(folder=first.folder)
        token = first.sign_in()
        self.assertEqual(second.call("GET", "/v1/me", token=token)[0], 200)
        code = second.code_for("ana@example.org")
        body = {"email": "ana@example.org", "code": code, "device": "pc"}
        self.assertEqual(first.call("POST", "/v1/auth/verify", body)[0], 200)
        self.assertEqual(second.call("POST", "/v1/auth/verify", body)[0], 403)
        self.assertEqual(second.call("POST", "/v1/auth/logout", {}, token)[0], 200)
        self.assert_refused(401, first.call("GET", "/v1/me", token=token))


class Metrics(Started):
    settings = {"METRICS_TOKEN": "m" * 32}

    def test_counts_are_for_this_machine_and_for_who_has_the_token(self):
        self.assertEqual(self.service.call("GET", "/metrics")[0], 200)
        for passed_on in ({"X-Forwarded-For": "127.0.0.1"}, {"Via": "1.1 proxy"}, {"Forwarded": "for=127.0.0.1"}):
            self.assert_refused(403, self.service.call("GET", "/metrics", headers=passed_on))
            self.assert_refused(403, self.service.call("GET", "/metrics", token="m" * 31, headers=passed_on))
            self.assertEqual(self.service.call("GET", "/metrics", token="m" * 32, headers=passed_on)[0], 200)


class Members(Started):
    settings = {"EMAILS": "@example.org", "REQUESTS_PER_DAY": "2"}

    def test_who_may_not_have_an_account_is_answered_like_anybody(self):
        answer = self.service.call("POST", "/v1/auth/request-code", {"email": "eve@example.com", "lang": "es"})
        self.assertEqual(answer, (200, {"ok": True}))
        self.service.sign_in()
        self.assertEqual(len(self.service.mails()), 1)

    def test_an_account_has_a_quota(self):
        token = self.service.sign_in()
        write = {"transcript": "hola a todos", "appName": "x", "tone": "neutral", "allowAsk": False}
        answers = [self.service.call("POST", "/v1/ai/write", write, token) for _ in range(3)]
        self.assertEqual([status for status, _ in answers], [200, 200, 429])
        self.assert_refused(429, answers[2])


class Rules(Started):
    def test_without_a_model_it_answers_what_it_can_and_says_what_it_cannot(self):
        token = self.service.sign_in()
        write = {"transcript": "eh nos vemos el lunes punto", "appName": "Correo", "tone": "neutral", "allowAsk": False}
        status, written = self.service.call("POST", "/v1/ai/write", write, token)
        self.assertEqual(status, 200)
        self.assertEqual(set(written), {"accion", "titulo", "texto"})
        self.assertIn("lunes", written["texto"])
        events = self.service.events(QUESTION, token, {"X-DORIX-Lang": "en"})
        self.assertEqual([event["type"] for event in events], ["error"])
        self.assertIn("language model", events[0]["message"])
        self.assert_refused(501, self.service.call("POST", "/v1/ai/transform",
                                                   {"instruction": "hazlo más amable", "selection": "No."}, token))
        for path in ("ai/action", "ai/learn", "ai/apply-rule", "slack/connect", "slack/send", "stats"):
            self.assert_refused(501, self.service.call("POST", f"/v1/{path}", {}, token))
            self.assert_refused(401, self.service.call("POST", f"/v1/{path}", {}))

    def test_a_body_that_is_not_right_is_refused_with_a_message(self):
        token = self.service.sign_in()
        picture = {"transcript": "hola", "appName": "x", "tone": "neutral", "allowAsk": False, "screenshot": "aGVsbG8="}
        for body in ("", "{", "[]", "{}", '{"question": 1}', "[" * 100000, b"\xff\xfe", picture):
            for path in ("/v1/ai/write", "/v1/ai/ask", "/v1/ai/transform"):
                self.assert_refused(400, self.service.call("POST", path, body, token))
        for body in ("", "[]", '{"email": 3}', '{"email": "a@b"'):
            self.assert_refused(400, self.service.call("POST", "/v1/auth/request-code", body))


class Upstream(Started):
    def setUp(self):
        self.model = Model(lambda handler, number: self.script(handler, number))
        self.addCleanup(self.model.server_close)
        self.addCleanup(self.model.shutdown)
        self.settings = {"MODEL_URL": self.model.url, "MODEL": "small", "MODEL_KEY": "key-1"}
        super().setUp()
        self.token = self.service.sign_in()

    def open_stream(self, body=None) -> socket.socket:
        payload = json.dumps(body or QUESTION).encode()
        connection = socket.create_connection(("127.0.0.1", self.service.port), BOUND)
        connection.sendall(b"POST /v1/ai/ask HTTP/1.1\r\nhost: x\r\nauthorization: Bearer " + self.token.encode() +
                           b"\r\ncontent-length: " + str(len(payload)).encode() + b"\r\n\r\n" + payload)
        return connection

    def test_pieces_go_through_as_they_arrive_and_in_order(self):
        go_on = threading.Event()

        def script(handler, _):
            handler.begin_stream()
            handler.text("uno, ")
            go_on.wait(BOUND)
            handler.chunk("data: {\"choi")  # cut anywhere
            handler.chunk("ces\":[{\"delta\":{\"content\":\"dos ñ\"}}]}\r\n\r\n: comment\n\ndata: nonsense\n\n")
            for number in range(200):
                handler.text(f" {number}")
            handler.done()

        self.script = script
        with self.open_stream() as connection:
            seen = b""
            while b"uno, " not in seen:
                seen += connection.recv(65536)
            go_on.set()
            while b"0\r\n\r\n" not in seen[-5:]:
                seen += connection.recv(65536)
        text = "".join(json.loads(line[6:])["text"] for line in seen.decode().splitlines() if line.startswith("data: "))
        self.assertEqual(text, "uno, dos ñ" + "".join(f" {number}" for number in range(200)))
        asked = self.model.requests[0]
        self.assertEqual((asked["path"], asked["authorization"], asked["model"], asked["stream"]),
                         ("/v1/chat/completions", "Bearer key-1", "small", True))
        self.assertNotIn("Cuándo", asked["messages"][0]["content"])
        self.assertIn("Cuándo", json.dumps(asked["messages"][1:], ensure_ascii=False))

    def test_a_client_that_goes_away_ends_the_models_work(self):
        for says_something in (True, False):
            self.model.broken.clear()

            def script(handler, _):
                if says_something:
                    handler.begin_stream()
                while not self.model.broken.is_set():
                    handler.wfile.write(b"5\r\n: hi\n\r\n" if says_something else b"HTTP/1.1 100 Continue\r\n\r\n")
                    time.sleep(0.02)

            self.script = script
            before = len(self.model.requests)
            connection = self.open_stream()
            wait_until(lambda: len(self.model.requests) > before, "the model is asked")
            time.sleep(0.1)
            connection.close()
            self.assertTrue(self.model.broken.wait(BOUND))
        wait_until(lambda: "dorix_service_streams 0" in self.service.call("GET", "/metrics")[1], "no stream is left")

    def test_a_reader_that_does_not_read_holds_nobody_else_up(self):
        piece = "x" * 60000

        def script(handler, number):
            handler.begin_stream()
            for _ in range(10000 if number == 1 else 3):
                handler.text(piece)
            handler.done()

        self.script = script
        with self.open_stream():
            wait_until(lambda: self.model.requests, "the first is under way")
            time.sleep(0.5)
            memory = self.resident()
            started = time.monotonic()
            for _ in range(5):
                self.assertEqual(len(self.service.events(QUESTION, self.token)), 3)
            self.assertLess(time.monotonic() - started, 5)
            self.assertLess(self.resident() - memory, 300_000)  # a sanitizer keeps what was freed

    def resident(self) -> int:
        """In KiB."""
        with open(f"/proc/{self.service.process.pid}/statm") as file:
            return int(file.read().split()[1]) * 4

    def test_what_fails_before_the_first_byte_is_tried_again_and_nothing_after_it(self):
        def patchy(handler, number):
            if number < 3:
                return handler.fail(503)
            handler.begin_stream()
            handler.text("ya")
            handler.done()

        self.script = patchy
        self.assertEqual(self.service.events(QUESTION, self.token), [{"type": "text", "text": "ya"}])
        self.assertEqual(len(self.model.requests), 3)

        def breaking(handler, _):
            handler.begin_stream()
            handler.text("a medias")
            handler.wfile.flush()
            handler.connection.shutdown(socket.SHUT_RDWR)

        self.script = breaking
        events = self.service.events(QUESTION, self.token)
        self.assertEqual([event["type"] for event in events], ["text", "error"])
        self.assertEqual(len(self.model.requests), 4)
        self.script = lambda handler, _: handler.fail(400)
        self.assert_refused(502, self.service.call("POST", "/v1/ai/ask", QUESTION, self.token))
        self.assertEqual(len(self.model.requests), 5)

    def test_a_model_writes_and_rewrites(self):
        answer = {"accion": "escribir", "titulo": "Saludo", "texto": "Hola, Marta:"}
        self.script = lambda handler, _: handler.whole("```json\n" + json.dumps(answer) + "\n```")
        write = {"transcript": "hola marta", "appName": "Correo", "tone": "profesional", "allowAsk": True}
        self.assertEqual(self.service.call("POST", "/v1/ai/write", write, self.token), (200, answer))
        self.script = lambda handler, _: handler.whole("no sé")
        self.assert_refused(502, self.service.call("POST", "/v1/ai/write", write, self.token))
        self.script = lambda handler, _: handler.whole("Hola, por favor.")
        transform = {"instruction": "hazlo más amable", "selection": "hola"}
        self.assertEqual(self.service.call("POST", "/v1/ai/transform", transform, self.token),
                         (200, {"texto": "Hola, por favor."}))
        asked = len(self.model.requests)
        transform["instruction"] = "en mayúsculas"
        self.assertEqual(self.service.call("POST", "/v1/ai/transform", transform, self.token), (200, {"texto": "HOLA"}))
        self.assertEqual(len(self.model.requests), asked)

    def test_a_model_that_trickles_is_left_before_the_desktop_gives_up(self):
        def trickling(handler, number):
            if number == 1:
                return handler.fail(503)
            handler.begin_stream()
            while not self.model.broken.is_set():
                handler.chunk(" ")
                time.sleep(0.1)

        self.script = trickling
        started = time.monotonic()
        write = {"transcript": "hola marta", "appName": "Correo", "tone": "profesional", "allowAsk": True}
        self.assert_refused(502, self.service.call("POST", "/v1/ai/write", write, self.token))
        self.assertLess(time.monotonic() - started, 19)
        self.assertTrue(self.model.broken.wait(BOUND))

    def test_it_stops_when_answers_under_way_have_ended(self):
        go_on = threading.Event()

        def script(handler, _):
            handler.begin_stream()
            handler.text("uno")
            go_on.wait(BOUND)
            handler.text("dos")
            handler.done()

        self.script = script
        idle = socket.create_connection(("127.0.0.1", self.service.port), BOUND)
        with self.open_stream() as connection, idle:
            seen = b""
            while b"uno" not in seen:
                seen += connection.recv(65536)
            self.service.process.send_signal(signal.SIGTERM)
            wait_until(lambda: "event=stopping" in self.service.log(), "stopping")
            with self.assertRaises(ConnectionRefusedError):
                socket.create_connection(("127.0.0.1", self.service.port), BOUND)
            self.assertEqual(idle.recv(1), b"")
            go_on.set()
            while piece := connection.recv(65536):
                seen += piece
        self.assertTrue(seen.endswith(b"0\r\n\r\n") and b"dos" in seen, seen)
        self.assertEqual(self.service.process.wait(BOUND), 0)


    def test_what_takes_longer_than_it_may_is_cut_at_the_end(self):
        def script(handler, _):
            handler.begin_stream()
            while not self.model.broken.is_set():
                handler.text("x")
                time.sleep(0.01)

        self.script = script
        service = self.start(STOP_SECONDS="0", MODEL_URL=self.model.url, MODEL="small")
        self.service, self.token = service, service.sign_in()
        with self.open_stream() as connection:
            while b"data: " not in connection.recv(65536):
                pass
            self.assertEqual(service.stop(), 0)
            seen = b""
            while piece := connection.recv(65536):
                seen += piece
        self.assertFalse(seen.endswith(b"0\r\n\r\n"), "a cut answer looks whole")


class Tls(unittest.TestCase):
    def setUp(self):
        holder = tempfile.TemporaryDirectory()
        self.addCleanup(holder.cleanup)
        self.certificate = make_certificate(Path(holder.name))
        self.script = lambda handler, _: handler.whole(json.dumps({"accion": "x", "titulo": "", "texto": "Hola."}))

    def model(self, tls=None) -> Model:
        model = Model(lambda handler, number: self.script(handler, number), tls)
        self.addCleanup(model.server_close)
        self.addCleanup(model.shutdown)
        return model

    def test_it_answers_over_tls_and_keeps_the_connection_while_it_watches_it(self):
        model = self.model()
        service = Service(BINARY, MODEL_URL=model.url, MODEL="small", **self.certificate)
        self.addCleanup(service.stop)
        token = service.sign_in()
        write = json.dumps({"transcript": "hola", "appName": "x", "tone": "neutral", "allowAsk": False})
        connection = service.connect()
        sockets = set()
        for _ in range(20):
            connection.request("POST", "/v1/ai/write", write, {"authorization": f"Bearer {token}"})
            answer = connection.getresponse()
            self.assertEqual((answer.status, json.loads(answer.read())["texto"]), (200, "Hola."))
            sockets.add(connection.sock.fileno() if connection.sock else None)
        self.assertEqual(len(sockets - {None}), 1)

        def endless(handler, _):
            handler.begin_stream()
            while not model.broken.is_set():
                handler.text("x")
                time.sleep(0.01)

        self.script = endless
        connection.request("POST", "/v1/ai/ask", json.dumps(QUESTION), {"authorization": f"Bearer {token}"})
        answer = connection.getresponse()
        self.assertTrue(answer.read(6).startswith(b"data: "))
        answer.close()
        connection.close()
        self.assertTrue(model.broken.wait(BOUND))
        self.assertEqual(service.call("GET", "/healthz")[0], 200)

    def test_a_model_that_nobody_vouches_for_is_told_nothing(self):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(self.certificate["TLS_CERTIFICATE"], self.certificate["TLS_KEY"])
        model = self.model(context)
        address = model.url.replace("http://127.0.0.1", "https://localhost")
        for extra, status, asked in (({}, 502, 0), ({"SSL_CERT_FILE": self.certificate["TLS_CERTIFICATE"]}, 200, 1)):
            service = Service(BINARY, MODEL_URL=address, MODEL="small", extra=extra)
            write = {"transcript": "hola", "appName": "x", "tone": "neutral", "allowAsk": False}
            answer = service.call("POST", "/v1/ai/write", write, service.sign_in())
            service.stop()
            self.assertEqual((answer[0], len(model.requests)), (status, asked))


class Hostile(Started):
    def status(self, answer: bytes) -> bytes:
        return answer.split(b"\r\n")[0]

    def test_requests_that_are_none_hurt_nobody(self):
        token = self.service.sign_in()
        authorized = b"authorization: Bearer " + token.encode() + b"\r\n"
        head = b"POST /v1/ai/ask HTTP/1.1\r\nhost: x\r\n"
        cases = [
            (b"GET /v1/../healthz HTTP/1.1\r\nhost: x\r\n\r\n", b"404"),
            (b"GET //healthz HTTP/1.1\r\nhost: x\r\n\r\n", b"404"),
            (b"GET /v1/sessions/../me HTTP/1.1\r\nhost: x\r\n" + authorized + b"\r\n", b"404"),
            (b"BREW /healthz HTTP/1.1\r\nhost: x\r\n\r\n", b"405"),
            (b"GET /v1/auth/verify HTTP/1.1\r\nhost: x\r\n\r\n", b"405"),
            (b"nonsense\r\n\r\n", b"400"),
            (head + authorized + b"content-length: 5\r\ncontent-length: 6\r\n\r\n{}", b"400"),
            (head + authorized + b"content-length: 2\r\ntransfer-encoding: chunked\r\n\r\n{}", b"400"),
            (head + authorized + b"content-length: -1\r\n\r\n{}", b"400"),
            (head + authorized + b"transfer-encoding: chunked\r\n\r\nzz\r\n", b"400"),
            (head + authorized + b"content-length: 999999999999\r\n\r\n", b"413"),
            (head + b"content-length: 20000000\r\n\r\n{", b"401"),
            (b"POST /v1/auth/verify HTTP/1.1\r\nhost: x\r\ncontent-length: 5000\r\n\r\n", b"413"),
            (b"GET /healthz HTTP/1.1\r\nhost: x\r\n" + b"x-more: " + b"y" * 1000000 + b"\r\n\r\n", b"431"),
            (b"GET /healthz HTTP/1.1\r\nhost: x\r\n" + b"a: b\r\n" * 100000 + b"\r\n", b"431"),
            (b"GET /healthz HTTP/1.1\r\nhost: x\r\norigin: https://example.org\r\n\r\n", b"403"),
        ]
        for request, status in cases:
            with self.subTest(request[:80]):
                self.assertIn(status, self.status(self.service.raw(request, until=b"\r\n\r\n")))
        # Shorter than it says: there is nothing to answer.
        self.assertEqual(self.service.raw(head + authorized + b"content-length: 99\r\n\r\n{}"), b"")
        self.assertEqual(self.service.call("GET", "/healthz"), (200, {"ok": True}))

    def test_headers_without_end_are_cut_off(self):
        sent = 0
        with socket.create_connection(("127.0.0.1", self.service.port), BOUND) as connection:
            connection.sendall(b"GET / HTTP/1.1\r\n")
            try:
                while sent < 2**30:
                    connection.sendall(b"a: " + b"b" * 65536 + b"\r\n")
                    sent += 65536
            except (ConnectionResetError, BrokenPipeError, TimeoutError):
                pass
        self.assertLess(sent, 2**30)
        self.assertEqual(self.service.call("GET", "/healthz")[0], 200)

    def test_connections_that_say_nothing_slow_nobody_and_end(self):
        held = [socket.create_connection(("127.0.0.1", self.service.port), BOUND) for _ in range(200)]
        for connection in held[:100]:
            connection.sendall(b"GET /healthz HT")
        started = time.monotonic()
        self.assertEqual(self.service.call("GET", "/healthz")[0], 200)
        self.assertLess(time.monotonic() - started, 2)
        for connection in held:
            self.assertEqual(connection.recv(1), b"")
            connection.close()

    def test_requests_on_one_connection_are_answered_in_turn(self):
        request = b"GET /healthz HTTP/1.1\r\nhost: x\r\n\r\n"
        answer = self.service.raw(request * 3)
        self.assertEqual(answer.count(b'{"ok":true}'), 3)
        token = self.service.sign_in().encode()
        old = self.service.raw(b"POST /v1/ai/ask HTTP/1.0\r\nauthorization: Bearer " + token +
                               b"\r\ncontent-length: 34\r\n\r\n" + b'{"question":"Hola?","appName":"x"} ', until=b"}\n\n")
        self.assertRegex(old, rb"(?s)^HTTP/1.1 200 OK\r\n.*\r\n\r\ndata: \{[^\n]*\}\n\n$")
        large = b'{"question": "x", "appName": "' + b"y" * 3_000_000 + b'"}'
        status, _ = self.service.call("POST", "/v1/ai/ask", large, self.service.sign_in(), {"Expect": "100-continue"})
        self.assertEqual(status, 200)


class Local(unittest.TestCase):
    def setUp(self):
        self.secret = secrets.token_hex(32)
        ours, theirs = os.pipe()
        os.write(theirs, self.secret.encode() + b"\n")
        self.parent = theirs
        self.service = Service(BINARY, options=["--local-secret-fd", str(ours)], pass_fds=[ours])
        os.close(ours)
        self.addCleanup(self.service.holder.cleanup)

    def end(self):
        os.close(self.parent)
        self.assertEqual(self.service.process.wait(BOUND), 0)

    def call(self, path: str, body=None, **headers: str):
        headers = {"host": f"127.0.0.1:{self.service.port}"} | headers
        return self.service.call("POST" if body is not None else "GET", path, body, headers=headers)

    def test_the_user_of_this_computer_signs_in_with_the_secret(self):
        self.assertEqual(self.call("/v1/auth/request-code", {"email": LOCAL, "lang": "es"}), (200, {"ok": True}))
        for email, code, status in ((LOCAL, self.secret, 200), (LOCAL, self.secret, 200), (LOCAL, "123456", 403),
                                    (LOCAL, "", 403), ("ana@example.org", self.secret, 403)):
            self.assertEqual(self.call("/v1/auth/verify", {"email": email, "code": code, "device": "pc"})[0], status)
        # Somebody else of this computer who tries keeps nobody out.
        for _ in range(100):
            self.call("/v1/auth/verify", {"email": LOCAL, "code": secrets.token_hex(32), "device": "pc"})
        answer = self.call("/v1/auth/verify", {"email": LOCAL, "code": self.secret, "device": "pc"})
        self.assertEqual(answer[1]["profile"], {"email": LOCAL})
        self.assertEqual(self.service.mails(), [])
        process = f"/proc/{self.service.process.pid}"
        for name in ("environ", "cmdline"):
            with open(f"{process}/{name}", "rb") as file:
                self.assertNotIn(self.secret.encode(), file.read())
        self.assertNotIn(self.secret, self.service.log())
        self.end()

    def test_pages_in_a_browser_are_refused(self):
        port = self.service.port
        self.assertEqual(self.call("/healthz", host=f"localhost:{port}")[0], 200)
        self.assertEqual(self.call("/healthz", host=f"[::1]:{port}")[0], 200)
        for host in ("evil.example", f"evil.example:{port}", "127.0.0.1", "localhost:1", ""):
            self.assertEqual(self.call("/healthz", host=host)[0], 403)
        self.assertEqual(self.call("/healthz", origin="null")[0], 403)
        self.assertEqual(self.call("/healthz", origin=f"http://127.0.0.1:{port}")[0], 403)
        self.end()

    def test_without_the_secret_the_address_is_nobodys(self):
        self.end()
        service = Service(BINARY)
        self.assertEqual(service.call("POST", "/v1/auth/request-code", {"email": LOCAL})[0], 200)
        self.assertEqual(service.call("POST", "/v1/auth/verify", {"email": LOCAL, "code": ""})[0], 403)
        self.assertEqual(service.mails(), [])
        self.assertEqual(service.stop(), 0)


class Starting(unittest.TestCase):
    def run_with(self, *options: str, **settings: str) -> subprocess.CompletedProcess:
        environment = {"HOME": "/nonexistent"} | {f"DORIX_SERVICE_{name}": value for name, value in settings.items()}
        return subprocess.run([BINARY, *options], env=environment, capture_output=True, text=True, timeout=BOUND)

    def test_every_fault_of_the_settings_is_told_at_once(self):
        wrong = self.run_with("--check", LISTEN="0.0.0.0:80", DATABASE="mysql:x", MAIL="pigeon", MODEL_URL="ftp://x",
                              CONNECTIONS="0", TLS_KEY="/x")
        self.assertEqual(wrong.returncode, 3)
        for name in ("LISTEN", "DATABASE", "MAIL", "MODEL_URL", "CONNECTIONS", "TLS_KEY"):
            self.assertIn(f"DORIX_SERVICE_{name}", wrong.stderr)
        self.assertEqual(self.run_with("--check", DATABASE="sqlite:/x", MAIL="notification").returncode, 0)
        self.assertEqual(self.run_with("--nonsense").returncode, 2)
        told = self.run_with("--help")
        self.assertEqual(told.returncode, 0)
        self.assertIn("DORIX_SERVICE_SESSION_DAYS", told.stdout)
        with socket.create_server(("127.0.0.1", 0)) as taken:
            listen = f"127.0.0.1:{taken.getsockname()[1]}"
            with tempfile.TemporaryDirectory() as folder:
                ended = self.run_with(LISTEN=listen, DATABASE=f"sqlite:{folder}/x", MAIL="notification")
            self.assertEqual(ended.returncode, 1, ended.stderr)


unittest.main()
