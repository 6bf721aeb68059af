"""The user: presses keys and speaks, both at the pace of a person."""

import subprocess
import time
from pathlib import Path

from keyboard import Keyboard
from virtual_desktop import VirtualDesktop
from voice import speak

HOLD_KEY = ("Alt_R",)
WRITE_CHORD = ("Alt_L", "space")
ASK_CHORD = ("Alt_L", "Shift_L", "space")

LEAD = 0.35  # seconds from the key to the first word: past the hold threshold
TAIL = 0.3  # from the last word to letting go
TAP = 0.1  # well below what makes a press a hold


class User:
    def __init__(self, desktop: VirtualDesktop):
        self._desktop = desktop
        self._keyboard = Keyboard(desktop.env["DISPLAY"])

    def hold_and_speak(self, keys: tuple[str, ...], words: Path) -> float:
        """Gives the moment of letting go."""
        self._keyboard.press(*keys)
        time.sleep(LEAD)
        speak(self._desktop, words)
        time.sleep(TAIL)
        let_go = time.monotonic()
        self._keyboard.release(*keys)
        return let_go

    def press_and_hold(self, keys: tuple[str, ...]) -> None:
        self._keyboard.press(*keys)

    def let_go(self, keys: tuple[str, ...]) -> None:
        self._keyboard.release(*keys)

    def hold(self, keys: tuple[str, ...], seconds: float) -> None:
        """Without a word."""
        self._keyboard.press(*keys)
        time.sleep(seconds)
        self._keyboard.release(*keys)

    def tap(self, keys: tuple[str, ...]) -> None:
        self.hold(keys, TAP)

    def tap_and_speak(self, keys: tuple[str, ...], words: Path) -> float:
        """Gives the moment at which the last word has been heard."""
        self.tap(keys)
        time.sleep(LEAD)
        speak(self._desktop, words)
        return time.monotonic()

    def press(self, *chords: str) -> None:
        """One chord after another, as "ctrl+f"."""
        self._run("xdotool", "key", "--delay", "50", *chords)

    def type(self, text: str) -> None:
        self._run("xdotool", "type", "--delay", "30", "--", text)

    def click(self, x: int, y: int) -> None:
        self._run("xdotool", "mousemove", str(x), str(y), "sleep", "0.1", "click", "1")

    def mouse(self, *steps: str) -> None:
        """Steps in the words of xdotool."""
        self._run("xdotool", *" ".join(steps).split())

    def _run(self, *command: str) -> None:
        status = self._desktop.spawn(list(command)).wait()
        if status != 0:
            raise subprocess.CalledProcessError(status, command[0])
