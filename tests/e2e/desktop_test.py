#!/usr/bin/python3
"""The virtual desktop leaves nothing behind, however it ends."""

import os
import shutil
import signal
import subprocess
import sys
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
TOOLS = Path(__file__).resolve().parents[2] / "tools/desktop"
sys.path.insert(0, str(TOOLS))

from supervision import processes_in  # noqa: E402
from waiting import wait_until  # noqa: E402

WITH_DESKTOP = TOOLS / "with-desktop"
END_TIMEOUT = 10.0

# Detached from everything and deaf to SIGTERM, as a badly behaved application's helper may be.
STUBBORN = "setsid sh -c 'trap \"\" TERM; while :; do sleep 1000; done' </dev/null >/dev/null 2>&1 & "
TELL_AND_WAIT = "echo $XDG_RUNTIME_DIR; read line"


def children(pid: int) -> list[int]:
    return [int(child) for child in Path(f"/proc/{pid}/task/{pid}/children").read_text().split()]


class DesktopTest(unittest.TestCase):
    def start(self, script: str) -> subprocess.Popen:
        process = subprocess.Popen([WITH_DESKTOP, "sh", "-c", script + TELL_AND_WAIT], stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, text=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stdin.close)
        self.addCleanup(process.terminate)
        runtime = process.stdout.readline().strip()
        self.assertTrue(runtime)
        self.runtime = Path(runtime)
        self.addCleanup(shutil.rmtree, self.runtime.parent, ignore_errors=True)
        self.assertGreater(len(processes_in(self.runtime)), 5)
        return process

    def assert_nothing_left(self):
        self.assertTrue(wait_until(lambda: not processes_in(self.runtime), END_TIMEOUT), processes_in(self.runtime))
        self.assertTrue(wait_until(lambda: not self.runtime.exists(), END_TIMEOUT))

    def test_nothing_is_left_after_the_command_or_a_signal(self):
        for number in (None, signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with self.subTest(number):
                process = self.start(STUBBORN)
                if number:
                    process.send_signal(number)
                else:
                    process.stdin.close()
                self.assertEqual(process.wait(20), 128 + number if number else 1)
                self.assert_nothing_left()

    def test_nothing_is_left_when_either_half_is_killed(self):
        for half in ("front", "inner"):
            with self.subTest(half):
                process = self.start(STUBBORN)
                os.kill(process.pid if half == "front" else children(process.pid)[0], signal.SIGKILL)
                process.wait(20)
                self.assert_nothing_left()


if __name__ == "__main__":
    unittest.main(verbosity=2)
