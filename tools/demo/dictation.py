"""One dictation into an editor, with a full clipboard beside it."""

import json
import subprocess
import threading
import time
from pathlib import Path
from typing import Callable

from dorix import Dorix
from editor import Editor
from failure import DemoError
from user import HOLD_KEY, WRITE_CHORD, User
from virtual_desktop import VirtualDesktop
from voice import seconds_of, synthesise

CLIPBOARD = Path(__file__).resolve().with_name("clipboard.py")

TEXT_TIMEOUT = 30.0
PICTURE_AT = 0.8  # of the length of the speech: late enough for some of the words to be understood
CLIPBOARD_BACK = 1.0  # after the text: DORIX gives the application 0.45 s to read the clipboard, then restores it


class Dictation:
    def __init__(self, desktop: VirtualDesktop, screenshot: Path, hands_free: bool):
        self._desktop = desktop
        self._screenshot = screenshot
        self._hands_free = hands_free
        self._user = User(desktop)

    def play(self, sentence: str, start_dorix: Callable[[], Dorix]) -> bool:
        """Prints what came of it; whether words were typed and the clipboard is what it was."""
        words = self._desktop.directory / "words.wav"
        synthesise(sentence, words)
        clipboard_before = self._fill_clipboard()
        editor = Editor(self._desktop)
        dorix = start_dorix()
        session = dorix.session()

        let_go = self._speak(words)
        stood = editor.await_insertion(let_go, TEXT_TIMEOUT)
        time.sleep(CLIPBOARD_BACK)
        changes = difference(clipboard_before, self._read_clipboard())
        typed = editor.text().strip()
        self._desktop.screenshot(self._screenshot.with_stem(self._screenshot.stem + "-after"))

        print("session:", session)
        print("typed:", typed.replace("\n", "\\n"))
        print(f"key-up to text: {self._latency(let_go, stood)}")
        print(f"clipboard: {changes or 'unchanged'}")
        print(f"screenshot: {self._screenshot}", flush=True)
        dorix.check_running()
        return any(character.isalnum() for character in typed) and not changes and "@" in session

    def _fill_clipboard(self) -> dict:
        owner = self._desktop.spawn([str(CLIPBOARD), "own"], stdout=subprocess.PIPE)
        if owner.stdout.readline() != b"ready\n":
            raise DemoError("the clipboard could not be filled")
        return self._read_clipboard()

    def _read_clipboard(self) -> dict:
        reader = self._desktop.spawn([str(CLIPBOARD), "read"], stdout=subprocess.PIPE)
        try:
            return json.loads(reader.communicate(timeout=20)[0])
        except (subprocess.TimeoutExpired, ValueError) as error:
            raise DemoError("the clipboard could not be read") from error

    def _speak(self, words: Path) -> float:
        picture = threading.Timer(PICTURE_AT * seconds_of(words), self._desktop.screenshot, [self._screenshot])
        picture.start()
        speak = self._user.tap_and_speak if self._hands_free else self._user.hold_and_speak
        let_go = speak(WRITE_CHORD if self._hands_free else HOLD_KEY, words)
        picture.join()
        return let_go

    def _latency(self, since: float, stood: float | None) -> str:
        milliseconds = "none" if stood is None else f"{(stood - since) * 1000:.0f}"
        return milliseconds + (" (from the end of speech)" if self._hands_free else "")


def difference(before: dict, after: dict) -> str:
    """What changed on the clipboard, target by target; empty when nothing did."""
    told = [f"{target} is gone" for target in before if target not in after]
    told += [f"{target} is new" for target in after if target not in before]
    for target in before.keys() & after.keys():
        was, now = before[target], after[target]
        if was != now:
            field = next(field for field in ("size", "type", "format", "sha256") if was[field] != now[field])
            told.append(f"{target}: {field} {was[field]} became {now[field]}")
    return "; ".join(sorted(told))
