#!/usr/bin/python3
"""The program starts whatever is missing or damaged around it, ends when it is asked to and leaves no process behind.
Takes the program's path."""

import contextlib
import json
import os
import select
import shutil
import signal
import subprocess
import sys
import threading
import time
import unittest
from http.server import BaseHTTPRequestHandler, HTTPServer
from pathlib import Path

sys.dont_write_bytecode = True
TOOLS = Path(__file__).resolve().parents[2] / "tools"
sys.path[:0] = [str(TOOLS / "demo"), str(TOOLS / "desktop")]

from dorix import READY, START_TIMEOUT  # noqa: E402
from supervision import processes_in  # noqa: E402
from waiting import wait_until  # noqa: E402

WITH_DESKTOP = TOOLS / "desktop/with-desktop"
BINARY = ""

END_TIMEOUT = 3.0

BARE = ("--no-wm", "--no-sound", "--no-a11y")

# The desktop outlasts the program, until the test has looked at what is left.
SCRIPT = """
folder=$XDG_CONFIG_HOME/dorix
mkdir -p "$folder"
defaults=$folder/defaults.json
{preparation}
"$0" >"$XDG_RUNTIME_DIR/dorix.log" 2>&1 &
echo $! "$XDG_RUNTIME_DIR"
wait $!
status=$?
read -r looked
exit $status
"""


class Program:
    """The program in a desktop of its own, and what it starts. `preparation` is shell that runs before it; `within` is a
    command that runs the desktop."""

    def __init__(self, desktop: tuple[str, ...] = BARE, preparation: str = "", within: tuple[str, ...] = ()):
        self._desktop = subprocess.Popen(
            [*within, WITH_DESKTOP, *desktop, "sh", "-c", SCRIPT.format(preparation=preparation), BINARY],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self._pid, self._runtime = 0, Path()
        line = self._desktop.stdout.readline().split()
        if len(line) == 2:
            self._pid, self._runtime = int(line[0]), Path(line[1])

    def __enter__(self) -> "Program":
        return self

    def __exit__(self, *_exception) -> None:
        if self._desktop.poll() is None:
            self._desktop.terminate()  # ends everything in it
            self._desktop.wait(20)
        self._desktop.stdin.close()
        self._desktop.stdout.close()

    def log(self) -> str:
        try:
            return (self._runtime / "dorix.log").read_text(errors="replace")
        except OSError:
            return ""

    def is_running(self) -> bool:
        return not self.ends_within(0)

    def processes(self) -> list[int]:
        """The living processes that run the program's file in this desktop: itself, its watchdog, a second copy."""
        return self._running(BINARY)

    def services(self) -> list[int]:
        return self._running(BINARY.parents[1] / "service/dorix-service")

    def _running(self, executable: Path) -> list[int]:
        found = []
        for pid in processes_in(self._runtime):
            with contextlib.suppress(OSError):  # gone meanwhile
                if Path(os.readlink(f"/proc/{pid}/exe")) == executable:
                    found.append(pid)
        return found

    def send(self, number: signal.Signals) -> None:
        os.kill(self._pid, number)

    def ends_within(self, seconds: float) -> bool:
        try:
            handle = os.pidfd_open(self._pid)
        except ProcessLookupError:
            return True
        try:
            return bool(select.select([handle], [], [], seconds)[0])
        finally:
            os.close(handle)

    def environment(self) -> dict[str, str]:
        """Of the desktop, for what a user does in it."""
        entries = Path(f"/proc/{self._pid}/environ").read_bytes().decode().split("\0")
        return dict(entry.split("=", 1) for entry in entries if "=" in entry)

    def display(self) -> int:
        """The process of the display that the program draws on."""
        server, = self._running(Path(shutil.which("Xvfb")).resolve())
        return server

    def status(self) -> int:
        """What the program ended with; ends the desktop."""
        self._desktop.stdin.close()
        return self._desktop.wait(20)


class Service:
    """Stands in for the cloud service: knows every session at first, and none from the time that it is told to forget."""

    def __init__(self):
        self.authorizations: list[str] = []
        self.knows_session = True
        service = self

        class Handler(BaseHTTPRequestHandler):
            def do_GET(self):
                is_call = self.path.startswith("/v1/")  # and not only asked whether anybody is there
                if is_call:
                    service.authorizations.append(self.headers.get("Authorization", ""))
                body = b'{"email": "ana@example.es"}' if is_call else b'{"ok": true}'
                self.send_response(200 if service.knows_session or not is_call else 401)
                self.send_header("Content-Length", str(len(body)))
                self.end_headers()
                self.wfile.write(body)

            def log_message(self, *_):
                pass

        self._server = HTTPServer(("127.0.0.1", 0), Handler)
        self.url = f"http://127.0.0.1:{self._server.server_port}"
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    def close(self) -> None:
        self._server.shutdown()
        self._server.server_close()


class ProgramTest(unittest.TestCase):
    def assert_starts(self, program: Program) -> None:
        wait_until(lambda: READY in program.log() or not program.is_running(), START_TIMEOUT)
        self.assertIn(READY, program.log())

    def assert_ends(self, program: Program) -> None:
        program.send(signal.SIGTERM)
        self.assertTrue(program.ends_within(END_TIMEOUT), program.log())
        self.assertTrue(wait_until(lambda: not program.processes(), END_TIMEOUT), program.processes())
        self.assertEqual(program.status(), 0, program.log())

    def assert_runs(self, program: Program) -> None:
        self.assert_starts(program)
        time.sleep(0.5)  # what is tried in the background at the start has failed by now
        self.assertTrue(program.is_running(), program.log())
        self.assert_ends(program)

    def test_tells_its_version_and_help_without_starting(self):
        for program in (BINARY, BINARY.parents[1] / "service/dorix-service",
                        BINARY.parents[1] / "reader/dorix-reader", BINARY.parents[1] / "recogniser/dorix-recogniser"):
            for arguments, status, told in ((["--version"], 0, r"^dorix[a-z-]* [0-9.]+\n$"), (["--help"], 0, "dorix"),
                                            (["--no-such"], 2, "^$"), ([""], 2, "^$")):
                with self.subTest(program=program.name, arguments=arguments):
                    # No display, no bus, no home.
                    answer = subprocess.run([program, *arguments], env={}, capture_output=True, text=True, check=False,
                                            timeout=END_TIMEOUT)
                    self.assertEqual(answer.returncode, status, answer.stderr)
                    self.assertRegex(answer.stdout, told)
                    self.assertEqual(answer.stderr != "", status == 2)
        with open("/dev/full", "w") as full:
            self.assertEqual(subprocess.run([BINARY, "--help"], stdout=full, check=False).returncode, 1)

    def test_started_anew_from_its_menu(self):
        with Program(("--no-sound", "--no-a11y")) as program:
            self.assert_starts(program)
            before, environment = program.processes(), program.environment()
            # The icon, where it stands as long as nobody has moved it; the last entry but one.
            subprocess.run(["xdotool", *"mousemove 1230 750 click 3 sleep 0.5 key End key Up key Return".split()],
                           env=environment, check=True)
            self.assertTrue(program.ends_within(END_TIMEOUT), program.log())
            self.assertTrue(wait_until(lambda: len(program.processes()) == 2 and self.shows_icon(environment), 10.0),
                            program.processes())
            self.assertFalse(set(before) & set(program.processes()), "one of the first two has stayed")
            time.sleep(2.5)  # what a watchdog would take for a crash has come back by now
            after = program.processes()
            self.assertEqual(len(after), 2)
            main = min(after, key=os.getsid)
            self.assertEqual(os.getsid(main), main, "it belongs to nobody")
            os.kill(main, signal.SIGTERM)
            self.assertTrue(wait_until(lambda: not program.processes(), END_TIMEOUT), program.processes())
            defaults = Path(environment["XDG_CONFIG_HOME"], "dorix/defaults.json").read_text()
            self.assertNotIn("watchdogRelaunches", defaults)
            self.assertEqual(program.status(), 0, program.log())

    @staticmethod
    def shows_icon(environment: dict[str, str]) -> bool:
        return subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^DORIX$"], env=environment,
                              stdout=subprocess.DEVNULL, check=False).returncode == 0

    def test_a_display_that_goes_away_ends_it_for_good(self):
        with Program(BARE) as program:
            self.assert_starts(program)
            os.kill(program.display(), signal.SIGKILL)
            self.assertTrue(program.ends_within(END_TIMEOUT), program.log())
            time.sleep(2.5)  # longer than a watchdog would wait
            self.assertEqual(program.processes(), [])
            self.assertEqual(program.status(), 1, program.log())

    def test_alone_it_runs_a_service_of_its_own(self):
        with Program(BARE, preparation="export DORIX_TRACE=$XDG_RUNTIME_DIR/trace") as program:
            self.assert_starts(program)
            environment = program.environment()
            defaults = Path(environment["XDG_CONFIG_HOME"]) / "dorix/defaults.json"
            signed_in = wait_until(
                lambda: defaults.exists() and "local@dorix.localhost" in defaults.read_text(), 10.0)
            self.assertTrue(signed_in, program.log())
            service, = program.services()
            secrets = json.loads((Path(environment["XDG_DATA_HOME"]) / "DORIX/secrets.json").read_text())
            for pid in (*program.processes(), service):
                for what in ("cmdline", "environ"):
                    self.assertNotIn(secrets["session-token"], Path(f"/proc/{pid}/{what}").read_text())

            os.kill(service, signal.SIGKILL)
            self.assertTrue(wait_until(lambda: program.services() not in ([], [service]), 10.0), "it was not started again")
            program.send(signal.SIGKILL)
            service, = program.services() or [0]
            self.assertTrue(wait_until(lambda: service not in program.services(), 5.0), "it has outlived the program")
            self.assertTrue(wait_until(lambda: program.services(), 20.0), "the watchdog's has none")
            os.kill(min(program.processes(), key=os.getsid), signal.SIGTERM)
            self.assertTrue(wait_until(lambda: not program.processes() and not program.services(), END_TIMEOUT))

    def test_a_session_is_shown_to_nobody_but_the_service(self):
        token = "a-token-that-nobody-may-see"
        service = Service()
        self.addCleanup(service.close)
        preparation = f"""
            printf '%s' '{{"DORIXServerURL": "{service.url}"}}' >"$defaults"
            mkdir -p "$XDG_DATA_HOME/DORIX"
            printf '%s' '{{"session-token": "{token}"}}' >"$XDG_DATA_HOME/DORIX/secrets.json"
            export DORIX_TRACE=$XDG_RUNTIME_DIR/trace"""
        for knows_session in (True, False):
            service.knows_session = knows_session
            service.authorizations.clear()
            with self.subTest(knows_session=knows_session), Program(preparation=preparation) as program:
                self.assert_starts(program)
                self.assertTrue(wait_until(lambda: service.authorizations, 5.0), program.log())
                self.assertEqual(service.authorizations, [f"Bearer {token}"])
                environment = program.environment()
                defaults = Path(environment["XDG_CONFIG_HOME"]) / "dorix/defaults.json"
                secrets = Path(environment["XDG_DATA_HOME"]) / "DORIX/secrets.json"
                told = [defaults, Path(environment["DORIX_TRACE"])]
                if knows_session:
                    self.assertTrue(wait_until(lambda: "ana@example.es" in defaults.read_text(), 5.0))
                else:
                    self.assertTrue(wait_until(lambda: token not in secrets.read_text(), 5.0))
                    self.assertIn("Sign in to your DORIX account to continue.", told[1].read_text())
                for pid in program.processes():
                    told += [Path(f"/proc/{pid}/cmdline"), Path(f"/proc/{pid}/environ")]
                for text in [program.log(), *(file.read_text() for file in told)]:
                    self.assertNotIn(token, text)
                self.assert_ends(program)

    def test_without_parts_of_a_desktop(self):
        for missing in ((), ("--no-wm",), ("--no-sound",), ("--no-a11y",), BARE):
            with self.subTest(missing), Program(missing) as program:
                self.assert_runs(program)

    def test_without_what_every_desktop_has(self):
        for name, preparation in {
            "display": "unset DISPLAY",
            "display that is gone": "export DISPLAY=:4095",
            "session bus": "export DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent",
            # Nobody may create anything there, root neither.
            "writable home": "export HOME=/proc XDG_CONFIG_HOME=/proc/c XDG_DATA_HOME=/proc/d XDG_CACHE_HOME=/proc/e",
            "home": "unset HOME XDG_CONFIG_HOME XDG_DATA_HOME XDG_DATA_DIRS",
        }.items():
            with self.subTest(name), Program(preparation=preparation) as program:
                self.assert_runs(program)

    def test_on_a_disk_that_takes_nothing(self):
        own_mounts = ("unshare", "--map-root-user", "--mount")
        if subprocess.run([*own_mounts, "true"], stderr=subprocess.DEVNULL, check=False).returncode != 0:
            self.skipTest("no file system can be mounted here")
        folders = 'for folder in "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_CACHE_HOME" "$XDG_STATE_HOME" "$HOME"; do '
        for preparation, told in {
            'mount -t tmpfs -o size=64k none "$folder"; dd if=/dev/zero of="$folder/all" 2>/dev/null; done':
                "database or disk is full",
            'mount -t tmpfs none "$folder"; mount -o remount,ro "$folder"; done': "no se pudo abrir la base de datos",
        }.items():
            with self.subTest(told), Program(preparation=folders + preparation, within=own_mounts) as program:
                self.assert_starts(program)
                self.assertTrue(wait_until(lambda: told in program.log(), 5.0), program.log())  # noqa: B023
                self.assert_ends(program)

    def test_with_damaged_defaults(self):
        for name, preparation in {
            "half a file": """printf '{"language": "en-' >"$defaults\"""",
            "other types": """printf '{"language": [7], "appLanguage": {}, "onboardingDone": "x"}' >"$defaults\"""",
            "directory": 'mkdir "$defaults"',
            "FIFO": 'mkfifo "$defaults"',
            "FIFO of the toolkit's": 'mkdir "$XDG_CONFIG_HOME/gtk-3.0"; mkfifo "$XDG_CONFIG_HOME/gtk-3.0/settings.ini"',
            "file in the folder's place": 'rmdir "$folder" && touch "$folder"',
        }.items():
            with self.subTest(name), Program(preparation=preparation) as program:
                self.assert_runs(program)


if __name__ == "__main__":
    BINARY = Path(sys.argv.pop(1)).resolve(strict=True)
    unittest.main(verbosity=2)
