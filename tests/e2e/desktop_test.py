#!/usr/bin/python3
"""The virtual desktop offers what it promises and leaves nothing behind, however it ends."""

import os
import shutil
import signal
import subprocess
import time
import unittest
from pathlib import Path

WITH_DESKTOP = Path(__file__).resolve().parents[2] / "tools/desktop/with-desktop"

# Detached from everything and deaf to SIGTERM, as a badly behaved application's helper may be.
STUBBORN = "setsid sh -c 'trap \"\" TERM; while :; do sleep 1000; done' </dev/null >/dev/null 2>&1 & "
TELL_AND_WAIT = "echo $XDG_RUNTIME_DIR; read line"


def survivors(runtime: str) -> list[str]:
    """The processes that have the desktop's address in their environment."""
    mark = f"XDG_RUNTIME_DIR={runtime}".encode()
    found = []
    for entry in Path("/proc").iterdir():
        try:
            if entry.name.isdigit() and mark in (entry / "environ").read_bytes().split(b"\0"):
                found.append((entry / "cmdline").read_text().replace("\0", " "))
        except OSError:
            continue
    return found


def children(pid: int) -> list[int]:
    return [int(child) for child in Path(f"/proc/{pid}/task/{pid}/children").read_text().split()]


def run(*arguments: str) -> tuple[int, str]:
    done = subprocess.run([WITH_DESKTOP, *arguments], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    return done.returncode, done.stdout


class DesktopTest(unittest.TestCase):
    def start(self, script: str) -> subprocess.Popen:
        process = subprocess.Popen([WITH_DESKTOP, "sh", "-c", script + TELL_AND_WAIT], stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, text=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stdin.close)
        self.addCleanup(process.terminate)
        self.runtime = process.stdout.readline().strip()
        self.assertTrue(self.runtime)
        self.addCleanup(shutil.rmtree, Path(self.runtime).parent, ignore_errors=True)
        self.assertGreater(len(survivors(self.runtime)), 5)
        return process

    def assert_ended(self):
        self.assert_soon_false(lambda: survivors(self.runtime))

    def assert_nothing_left(self):
        self.assert_ended()
        self.assert_soon_false(lambda: Path(self.runtime).exists())

    def assert_soon_false(self, condition):
        deadline = time.monotonic() + 10
        while value := condition():
            self.assertLess(time.monotonic(), deadline, value)
            time.sleep(0.02)

    def test_a_command_finds_what_it_asked_for_and_gives_its_status(self):
        self.assertEqual(run("sh", "-c", "xdotool getdisplaygeometry && pactl get-default-source && "
                             "gdbus introspect --session --dest org.a11y.Bus --object-path /org/a11y/bus | "
                             "grep -q GetAddress && exit 7"), (7, "1280 800\nvirtmic\n"))
        self.assertEqual(run("--no-wm", "--no-sound", "--no-a11y", "sh", "-c",
                             "pactl info || gdbus wait --session --timeout 1 --activate org.a11y.Bus org.a11y.Bus || "
                             "exit 3"), (3, ""))

    def test_nothing_is_left_after_the_command(self):
        process = self.start(STUBBORN)
        process.stdin.close()
        self.assertEqual(process.wait(20), 1)
        self.assert_nothing_left()

    def test_nothing_is_left_after_a_signal(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with self.subTest(number.name):
                process = self.start(STUBBORN)
                process.send_signal(number)
                self.assertEqual(process.wait(20), 128 + number)
                self.assert_nothing_left()

    def test_nothing_is_left_when_either_half_is_killed(self):
        for half in ("front", "inner"):
            with self.subTest(half):
                process = self.start(STUBBORN)
                os.kill(process.pid if half == "front" else children(process.pid)[0], signal.SIGKILL)
                process.wait(20)
                self.assert_nothing_left()

    def test_nothing_goes_on_when_both_halves_are_killed_at_once(self):
        process = self.start("mousepad --disable-server & "
                             "xdotool search --sync --onlyvisible --class mousepad >/dev/null; ")
        inner = children(process.pid)[0]
        process.send_signal(signal.SIGSTOP)  # so that it cannot act on the other one's death
        os.kill(inner, signal.SIGKILL)
        process.kill()
        process.wait(20)
        self.assert_ended()


if __name__ == "__main__":
    unittest.main(verbosity=2)
