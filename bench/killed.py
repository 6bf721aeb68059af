#!/usr/bin/python3
"""Kills DORIX at any moment of a dictation, over and over, and looks at what it leaves to the user.

    bench/killed.py [--binary PATH] [--times N] [--seed N]

Half of the moments lie anywhere between the start of the recording and the end of the message, the other half in the
two seconds after the key is let go, in which the clipboard is DORIX's for a while. Fails when the clipboard is neither
what the user had copied nor what was dictated, when a key is down that the user does not hold, when the settings or the
history of the next start are not those of before, or when a process stays that is not a keeper of the clipboard.
"""

import argparse
import contextlib
import ctypes
import json
import os
import random
import signal
import sqlite3
import subprocess
import sys
import threading
import time
from collections import Counter
from contextlib import closing
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(ROOT / "tools/demo"), str(ROOT / "tools/desktop")]

from dorix import READY, START_TIMEOUT  # noqa: E402
from keyboard import Keyboard  # noqa: E402
from supervision import processes_in, supervised  # noqa: E402
from virtual_desktop import VirtualDesktop  # noqa: E402
from voice import seconds_of, speak, synthesise  # noqa: E402
from waiting import wait_until  # noqa: E402

SENTENCE = "we will be there at ten"
WORDS = {"ten", "there"}  # one of them is heard
COPIED = "lo que el usuario había copiado"
SETTINGS = {"appLanguage": "en", "language": "en-US", "onboardingDone": True, "hintShownCount": 9}
KEY = "Alt_R"
LEAD = 0.4  # seconds from the key to the words
AFTER = 2.0  # from the last word to the end of it all
END_TIMEOUT = 20.0


class Victim:
    def __init__(self, desktop: VirtualDesktop, binary: Path):
        self._desktop = desktop
        self._binary = binary
        self._keyboard = Keyboard(desktop.env["DISPLAY"])
        self._keys = KeyState(desktop.env["DISPLAY"])
        self._settings = Path(desktop.env["XDG_CONFIG_HOME"], "dorix/defaults.json")
        self._settings.parent.mkdir()
        self._settings.write_text(json.dumps(SETTINGS))
        self._history = Path(desktop.env["XDG_DATA_HOME"], "DORIX/dorix.sqlite")
        self._words = desktop.directory / "words.wav"
        synthesise(SENTENCE, self._words)
        self.length = LEAD + seconds_of(self._words) + AFTER

    def round(self, moment: float, after_release: bool) -> tuple[str, list[str]]:
        """Kills it that many seconds after the key went down, or came up; what the clipboard holds, and what is amiss."""
        self._copy()
        process = self._start()
        known = self._rows()
        released = threading.Event()
        speaking = threading.Thread(target=self._dictate, args=[released])
        speaking.start()
        if after_release:
            released.wait()
        time.sleep(moment)
        process.kill()
        process.wait()
        speaking.join()
        time.sleep(0.3)
        amiss = []
        if down := self._keys.down():
            amiss.append(f"keys are down: {down}")
        holds = self._clipboard()
        if holds not in ("the user's", "the dictation"):
            amiss.append(f"the clipboard: {holds}")
        if left := self._end_the_rest():
            amiss.append(f"processes stay: {[command(pid) for pid in left]}")
        amiss += self._stores(known)
        return holds, amiss

    def _copy(self) -> None:
        copier = self._desktop.spawn(["xclip", "-i", "-selection", "clipboard"], stdin=subprocess.PIPE,
                                     stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        copier.communicate(COPIED.encode())

    def _clipboard(self) -> str:
        read = subprocess.run(["xclip", "-o", "-selection", "clipboard"], capture_output=True, text=True, timeout=10,
                              check=False)
        if read.returncode != 0 or not read.stdout:
            return "empty"
        if read.stdout == COPIED:
            return "the user's"
        return "the dictation" if WORDS & set(read.stdout.lower().strip(" .").split()) else repr(read.stdout)

    def _start(self) -> subprocess.Popen:
        """What the watchdog was just starting anew when it was ended may still be there, and take the start for its
        own: then once more."""
        log = self._desktop.log("dorix")
        for _ in range(3):
            with open(log, "wb") as out:
                process = self._desktop.spawn([str(self._binary)], stdin=subprocess.DEVNULL, stdout=out, stderr=out)
            wait_until(lambda: READY in log.read_text(errors="replace") or process.poll() is not None, START_TIMEOUT)  # noqa: B023
            if process.poll() is None and READY in log.read_text(errors="replace"):
                return process
            print(f"a start ended with status {process.poll()}", flush=True)
            self._end_the_rest()
        raise SystemExit(f"DORIX did not start:\n{log.read_text(errors='replace')}")

    def _dictate(self, released: threading.Event) -> None:
        self._keyboard.press(KEY)
        time.sleep(LEAD)
        speak(self._desktop, self._words)
        self._keyboard.release(KEY)
        released.set()

    def _end_the_rest(self) -> list[int]:
        """Ends the watchdog, and on a busy machine what it has started anew by then; gives what does not end."""
        deadline = time.monotonic() + END_TIMEOUT
        while (left := self._left()) and time.monotonic() < deadline:
            for pid in left:
                with contextlib.suppress(ProcessLookupError):
                    os.kill(pid, signal.SIGTERM)
            wait_until(lambda: not self._left(), 1.0)
        return left

    def _left(self) -> list[int]:
        return [pid for pid in processes_in(self._desktop.runtime) if self._is_ours(pid) and not keeps(pid)]

    def _is_ours(self, pid: int) -> bool:
        try:
            return Path(os.readlink(f"/proc/{pid}/exe")) == self._binary
        except OSError:
            return False

    def _rows(self) -> set[str]:
        with closing(sqlite3.connect(f"file:{self._history}?mode=ro", uri=True)) as database:
            return {row[0] for row in database.execute("SELECT id FROM history")}

    def _stores(self, known: set[str]) -> list[str]:
        amiss = []
        try:
            settings = json.loads(self._settings.read_text())
            if any(settings.get(key) != value for key, value in SETTINGS.items()):
                amiss.append(f"settings: {settings}")
        except ValueError as error:
            amiss.append(f"settings: {error}")
        with closing(sqlite3.connect(f"file:{self._history}?mode=ro", uri=True)) as database:
            check = database.execute("PRAGMA integrity_check").fetchone()[0]
        if check != "ok":
            amiss.append(f"history: {check}")
        rows = self._rows()
        if not known <= rows or len(rows) > len(known) + 1:
            amiss.append(f"history: {len(known)} items became {len(rows)}")
        return amiss


class KeyState:
    """Which keys the display believes to be down."""

    def __init__(self, display: str):
        self._x11 = ctypes.CDLL("libX11.so.6")
        self._x11.XOpenDisplay.restype = ctypes.c_void_p
        self._display = ctypes.c_void_p(self._x11.XOpenDisplay(display.encode()))

    def down(self) -> list[int]:
        keys = ctypes.create_string_buffer(32)
        self._x11.XQueryKeymap(self._display, keys)
        return [code for code in range(256) if keys.raw[code // 8] >> code % 8 & 1]


def command(pid: int) -> str:
    try:
        return Path(f"/proc/{pid}/cmdline").read_bytes().replace(b"\0", b" ").decode(errors="replace").strip()
    except OSError:
        return "gone"


def keeps(pid: int) -> bool:
    """Whether the process serves what is on the clipboard until the next copy."""
    return "clipboard" in command(pid)


def kill_often(directory: Path, options: argparse.Namespace) -> int:
    chance = random.Random(options.seed)
    with VirtualDesktop(directory) as desktop:
        os.environ.clear()
        os.environ.update(desktop.env)
        from editor import Editor  # needs the desktop's environment from its first line

        Editor(desktop)
        victim = Victim(desktop, options.binary)
        held, failed = Counter(), 0
        for number in range(options.times):
            after_release = number % 2 == 1
            moment = chance.uniform(0, AFTER) if after_release else chance.uniform(0.05, victim.length)
            holds, amiss = victim.round(moment, after_release)
            held[holds] += 1
            if amiss:
                failed += 1
                since = "up" if after_release else "down"
                print(f"round {number}, {moment:.3f} s after the key went {since}: {'; '.join(amiss)}", flush=True)
        print(f"killed {options.times} times, something amiss {failed} times; the clipboard held {dict(held)}")
        return 1 if failed else 0


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--binary", type=Path, default=ROOT / "build/release/src/app/dorix")
    parser.add_argument("--times", type=int, default=200)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    options.binary = options.binary.resolve(strict=True)
    return supervised(lambda directory: kill_often(directory, options))


if __name__ == "__main__":
    sys.exit(main())
