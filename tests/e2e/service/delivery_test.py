#!/usr/bin/python3
"""Codes reach people through a mail server and through the desktop's notifications.

    delivery_test.py BINARY
"""

import os
import re
import socketserver
import subprocess
import sys
import threading
import unittest

sys.dont_write_bytecode = True

from harness import Service, wait_until  # noqa: E402

BINARY = sys.argv.pop(1)
NOTIFICATIONS = """
import sys
from gi.repository import Gio, GLib
node = Gio.DBusNodeInfo.new_for_xml('''<node><interface name="org.freedesktop.Notifications"><method name="Notify">
<arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/>
<arg type="s" direction="in"/><arg type="as" direction="in"/><arg type="a{sv}" direction="in"/>
<arg type="i" direction="in"/><arg type="u" direction="out"/></method></interface></node>''')
def called(bus, sender, path, interface, method, arguments, invocation):
    print(arguments.unpack()[4].replace(chr(10), " "), flush=True)
    invocation.return_value(GLib.Variant("(u)", (1,)))
def acquired(bus, name):
    bus.register_object("/org/freedesktop/Notifications", node.interfaces[0], called, None, None)
Gio.bus_own_name(Gio.BusType.SESSION, "org.freedesktop.Notifications", 0, acquired,
                 lambda *a: print("ready", flush=True), None)
GLib.MainLoop().run()
"""


class MailServer(socketserver.ThreadingTCPServer):
    """Takes mail; turns the first of `refusals` away, and for good who is called nobody."""

    allow_reuse_address = True
    daemon_threads = True

    def __init__(self, refusals: int):
        super().__init__(("127.0.0.1", 0), MailHandler)
        self.refusals = refusals
        self.turned_away = 0
        self.mails: list[tuple[list[str], str]] = []
        threading.Thread(target=self.serve_forever, daemon=True).start()


class MailHandler(socketserver.StreamRequestHandler):
    def say(self, line: str):
        self.wfile.write(line.encode() + b"\r\n")

    def handle(self):
        self.say("220 here")
        envelope = []
        for raw in self.rfile:
            line = raw.decode().rstrip("\r\n")
            verb = line[:4].upper()
            if verb in ("MAIL", "RCPT"):
                envelope.append(line)
            if verb == "MAIL" and self.server.refusals > 0:
                self.server.refusals -= 1
                self.say("451 later")
            elif verb == "RCPT" and "nobody@" in line:
                self.server.turned_away += 1
                self.say("550 nobody of that name")
            elif verb == "DATA":
                self.say("354 go on")
                text = "".join(iter(lambda: self.rfile.readline().decode(), ".\r\n"))
                self.server.mails.append((envelope, text))
                self.say("250 taken")
            elif verb == "QUIT":
                return self.say("221 bye")
            else:
                self.say("250 fine")


class DeliveryTest(unittest.TestCase):
    def test_a_mail_server_gets_the_code_also_when_it_was_busy(self):
        server = MailServer(refusals=1)
        self.addCleanup(server.server_close)
        self.addCleanup(server.shutdown)
        service = Service(BINARY, MAIL=f"smtp://127.0.0.1:{server.server_address[1]}", MAIL_FROM="dorix@example.org")
        self.addCleanup(service.stop)
        service.call("POST", "/v1/auth/request-code", {"email": "ana@example.org", "lang": "es"})
        [(envelope, text)] = wait_until(lambda: server.mails, "the mail")
        self.assertEqual(envelope, ["MAIL FROM:<dorix@example.org>", "RCPT TO:<ana@example.org>"])
        code = re.search(r"es (\d{6})\r\n", text).group(1)
        body = {"email": "ana@example.org", "code": code, "device": "pc"}
        self.assertEqual(service.call("POST", "/v1/auth/verify", body)[0], 200)
        self.assertIn("event=mail-failure", service.log())
        service.call("POST", "/v1/auth/request-code", {"email": "nobody@example.org", "lang": "es"})
        wait_until(lambda: "dorix_service_mails_failed_total 1" in service.call("GET", "/metrics")[1], "given up")
        self.assertEqual(server.turned_away, 1)
        self.assertNotIn("ana@", service.log())
        self.assertNotIn("nobody", service.log())

    def test_a_desktop_shows_the_code(self):
        bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], stdout=subprocess.PIPE,
                               text=True)
        self.addCleanup(self.end, bus)
        address = {"DBUS_SESSION_BUS_ADDRESS": bus.stdout.readline().strip()}
        shown = subprocess.Popen(["/usr/bin/python3", "-c", NOTIFICATIONS], env=os.environ | address,
                                 stdout=subprocess.PIPE, text=True)
        self.addCleanup(self.end, shown)
        self.assertEqual(shown.stdout.readline(), "ready\n")
        service = Service(BINARY, MAIL="notification", extra=address)
        self.addCleanup(service.stop)
        service.call("POST", "/v1/auth/request-code", {"email": "ana@example.org", "lang": "en"})
        code = re.search(r"is (\d{6})", shown.stdout.readline()).group(1)
        body = {"email": "ana@example.org", "code": code, "device": "pc"}
        self.assertEqual(service.call("POST", "/v1/auth/verify", body)[0], 200)

    def end(self, process: subprocess.Popen):
        process.kill()
        process.wait()
        process.stdout.close()


unittest.main()
