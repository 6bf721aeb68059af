#!/usr/bin/python3
"""A dictation into a real text editor, on a desktop of its own.

Prints what was typed, the milliseconds from letting the key go to the text standing in the editor, whether the
clipboard is what it was, and where the pictures of the desktop lie: one while DORIX listens, one afterwards. The exit status is 0 only when words were typed
and the clipboard is intact.
"""

import argparse
import json
import os
import shlex
import signal
import subprocess
import sys
import threading
import time
from pathlib import Path

sys.dont_write_bytecode = True
HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[1]
sys.path[:0] = [str(HERE), str(HERE.parent / "desktop")]

from keyboard import Keyboard  # noqa: E402
from supervision import supervised  # noqa: E402
from virtual_desktop import DesktopError, VirtualDesktop  # noqa: E402
from voice import seconds_of, speak, synthesise  # noqa: E402

SENTENCE = "please send me the new numbers before the meeting on monday"
READY = b"DORIX: listo"
START_TIMEOUT = 60.0  # loading the recogniser's model dominates, on a cold disk
TEXT_TIMEOUT = 30.0
LEAD = 0.35  # seconds from the key to the first word: past the hold threshold
TAIL = 0.3  # from the last word to letting go
PICTURE_AT = 0.8  # of the length of the speech
TAP = 0.1  # well below what makes a press of the hot key a hold
CLIPBOARD_BACK = 1.0  # after the text: DORIX gives the application 0.45 s to read the clipboard, then restores it


class DemoError(Exception):
    """The demo could not be played; the text says why."""


class Demo:
    def __init__(self, options: argparse.Namespace, desktop: VirtualDesktop):
        self._options = options
        self._desktop = desktop
        self._log = options.output / "dorix.log"
        self._keyboard = Keyboard(desktop.env["DISPLAY"])

    def play(self) -> bool:
        words = self._desktop.directory / "words.wav"
        synthesise(self._options.say, words)
        clipboard_before = self._fill_clipboard()
        editor = self._open_editor()
        dorix = self._start_dorix()

        spoken = self._dictate_hands_free if self._options.hands_free else self._dictate
        let_go = spoken(words)
        stood = editor.await_insertion(let_go, TEXT_TIMEOUT)
        time.sleep(CLIPBOARD_BACK)
        changes = difference(clipboard_before, self._read_clipboard())
        typed = editor.text().strip()
        self._take_picture(self._options.screenshot.with_stem(self._options.screenshot.stem + "-after"))

        print(f"typed: {one_line(typed)}")
        print(f"key-up to text: {self._latency(let_go, stood)}")
        print(f"clipboard: {changes or 'unchanged'}")
        print(f"screenshot: {self._options.screenshot}", flush=True)
        if dorix.poll() is not None:
            raise DemoError(f"DORIX ended with status {dorix.returncode}")
        return any(character.isalnum() for character in typed) and not changes

    def tell_log(self) -> None:
        if self._log.exists():
            print(f"DORIX's log, {self._log}, ends:", file=sys.stderr)
            for line in self._log.read_text(errors="replace").splitlines()[-20:]:
                print(f"  {line}", file=sys.stderr)

    def _fill_clipboard(self) -> dict:
        owner = self._desktop.spawn([str(HERE / "clipboard.py"), "own"], stdout=subprocess.PIPE)
        if owner.stdout.readline() != b"ready\n":
            raise DemoError("the clipboard could not be filled")
        return self._read_clipboard()

    def _read_clipboard(self) -> dict:
        reader = self._desktop.spawn([str(HERE / "clipboard.py"), "read"], stdout=subprocess.PIPE)
        try:
            return json.loads(reader.communicate(timeout=20)[0])
        except (subprocess.TimeoutExpired, ValueError) as error:
            raise DemoError("the clipboard could not be read") from error

    def _open_editor(self):
        from editor import Editor, EditorError  # needs the desktop's environment from its first line

        try:
            return Editor(self._desktop)
        except EditorError as error:
            raise DemoError(str(error)) from error

    def _start_dorix(self) -> subprocess.Popen:
        settings = Path(self._desktop.env["XDG_CONFIG_HOME"], "dorix/defaults.json")
        settings.parent.mkdir()
        settings.write_text(json.dumps({"appLanguage": "en", "language": "en-US"}))
        with open(self._log, "wb") as log:
            dorix = self._desktop.spawn([str(self._options.binary)], stdin=subprocess.DEVNULL, stdout=log, stderr=log)
        deadline = time.monotonic() + START_TIMEOUT
        while READY not in self._log.read_bytes():
            if dorix.poll() is not None:
                raise DemoError(f"DORIX ended with status {dorix.returncode} before it was ready")
            if time.monotonic() > deadline:
                raise DemoError(f"DORIX was not ready within {START_TIMEOUT:.0f} s")
            time.sleep(0.02)
        return dorix

    def _dictate(self, words: Path) -> float:
        self._keyboard.press("Alt_R")
        time.sleep(LEAD)
        self._speak(words)
        time.sleep(TAIL)
        let_go = time.monotonic()
        self._keyboard.release("Alt_R")
        return let_go

    def _dictate_hands_free(self, words: Path) -> float:
        self._keyboard.press("Alt_L")
        self._keyboard.press("space")
        time.sleep(TAP)
        self._keyboard.release("space")
        self._keyboard.release("Alt_L")
        time.sleep(LEAD)
        self._speak(words)
        return time.monotonic()

    def _speak(self, words: Path) -> None:
        """The picture is taken late enough in the speech for some of the words to be understood."""
        picture = threading.Timer(PICTURE_AT * seconds_of(words), self._take_picture, [self._options.screenshot])
        picture.start()
        speak(self._desktop, words)
        picture.join()

    def _latency(self, since: float, stood: float | None) -> str:
        milliseconds = "none" if stood is None else f"{(stood - since) * 1000:.0f}"
        return milliseconds + (" (from the end of speech)" if self._options.hands_free else "")

    def _take_picture(self, picture: Path) -> None:
        status = self._desktop.spawn(["import", "-window", "root", str(picture)]).wait()
        if status != 0:
            raise DemoError(f"no picture could be written to {picture}")


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


def one_line(text: str) -> str:
    return text.replace("\n", "\\n")


def keep(desktop: VirtualDesktop, output: Path) -> None:
    """Leaves the desktop up until a signal ends it."""
    names = ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "PULSE_SERVER")
    environment = output / "desktop.env"
    environment.write_text("".join(f"export {name}={shlex.quote(desktop.env[name])}\n" for name in names))
    display = desktop.env["DISPLAY"]
    print(f"""
The desktop stays up on display {display} until Ctrl-C. From another terminal:
  source {environment}
  import -window root now.png                                    a picture of it
  xdotool keydown Alt_R                                          hold the key (keyup lets it go)
  paplay --device=mic --latency-msec=100 words.wav               speak
  x11vnc -localhost -display {display}                                  watch it, where x11vnc is installed""", flush=True)
    while True:
        signal.pause()


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="./run --demo", description=__doc__, allow_abbrev=False)
    parser.add_argument("--say", metavar="SENTENCE", default=SENTENCE, help="the words to speak, in English")
    parser.add_argument("--hands-free", action="store_true",
                        help="tap Alt+Space and let silence end the dictation, instead of holding the key")
    parser.add_argument("--keep", action="store_true", help="leave the desktop up afterwards, until Ctrl-C")
    parser.add_argument("--screenshot", metavar="PATH", type=Path, help="where to write the picture of the desktop")
    parser.add_argument("--binary", metavar="PATH", type=Path, default=ROOT / "build/release/src/shell/dorix",
                        help="the DORIX to start")
    parser.add_argument("--output", metavar="FOLDER", type=Path, default=ROOT / "build/demo",
                        help="where the log and, unless told otherwise, the picture go")
    options = parser.parse_args()
    if not options.say.strip():
        parser.error("the sentence is empty")
    if not os.access(options.binary, os.X_OK):
        parser.error(f"there is no program {options.binary}")
    options.output.mkdir(parents=True, exist_ok=True)
    options.output = options.output.resolve()
    options.binary = options.binary.resolve()
    options.screenshot = (options.screenshot or options.output / "screenshot.png").absolute()
    return options


def main() -> int:
    options = arguments()

    def body(directory: Path) -> int:
        try:
            with VirtualDesktop(directory) as desktop:
                os.environ.clear()
                os.environ.update(desktop.env)
                demo = Demo(options, desktop)
                try:
                    well = demo.play()
                except (DemoError, subprocess.CalledProcessError) as error:
                    print(f"demo: {error}", file=sys.stderr)
                    well = False
                if not well:
                    demo.tell_log()
                if options.keep:
                    keep(desktop, options.output)
        except DesktopError as error:
            print(f"demo: {error}", file=sys.stderr)
            return 1
        return 0 if well else 1

    return supervised(body)


if __name__ == "__main__":
    sys.exit(main())
