#!/usr/bin/python3
"""A long stretch of use: dictations, clicks, drags and menus, over and over. Not part of the test run.

    tests/e2e/soak.py [--binary PATH] [--minutes N]

Fails when a dictation is not typed or a drag does not move the icon, when the log gains a line, when a file descriptor
stays open, or when the memory that is the program's own has grown by more than MAY_GROW since the first rounds.
"""

import argparse
import json
import os
import subprocess
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tools/demo"), str(ROOT / "tools/desktop")]

from keyboard import Keyboard  # noqa: E402
from supervision import supervised  # noqa: E402
from virtual_desktop import VirtualDesktop  # noqa: E402
from voice import speak, synthesise  # noqa: E402

READY = "DORIX: listo"
WARM_UP = 3  # rounds until caches are filled
MAY_GROW = 8.0  # MiB
SENTENCES = ("we will be there at ten", "please send me the new numbers", "the train was late this morning")


class Soak:
    def __init__(self, desktop: VirtualDesktop, binary: Path, editor):
        self._desktop = desktop
        self._editor = editor
        self._keyboard = Keyboard(desktop.env["DISPLAY"])
        self._log = desktop.log("dorix")
        settings = Path(desktop.env["XDG_CONFIG_HOME"], "dorix/defaults.json")
        settings.parent.mkdir(parents=True)
        settings.write_text(json.dumps({"language": "en-US", "hintShownCount": 3}))
        with open(self._log, "wb") as log:
            self._dorix = desktop.spawn([str(binary)], stdout=log, stderr=log)
        while READY not in self.log():
            time.sleep(0.05)
        self._words = []
        for number, sentence in enumerate(SENTENCES):
            self._words.append(desktop.directory / f"words{number}.wav")
            synthesise(sentence, self._words[-1])

    def log(self) -> str:
        return self._log.read_text(errors="replace")

    def own_memory(self) -> float:
        rollup = Path(f"/proc/{self._dorix.pid}/smaps_rollup").read_text()
        fields = dict(line.split(":", 1) for line in rollup.splitlines()[1:])
        return sum(int(fields[name].split()[0]) for name in ("Private_Clean", "Private_Dirty")) / 1024

    def open_files(self) -> int:
        return len(os.listdir(f"/proc/{self._dorix.pid}/fd"))

    def play(self, number: int) -> bool:
        """One round; whether the icon went where it was dragged and the dictation was typed."""
        left = number % 2 == 0
        self._tap()
        self._drag(left)
        moved = (self._icon()[0] < 640) == left
        self._menu()
        return self._dictate(self._words[number % len(self._words)]) and moved

    def _mouse(self, *steps: str) -> None:
        self._desktop.spawn(["xdotool", *" ".join(steps).split()]).wait()

    def _icon(self) -> tuple[int, int]:
        """The middle of the icon: where the settings say that it was left, or where it starts."""
        settings = json.loads(Path(self._desktop.env["XDG_CONFIG_HOME"], "dorix/defaults.json").read_text())
        if origin := settings.get("iconOrigin"):
            return int(origin[0]) + 48, 800 - int(origin[1]) - 48
        return 1230, 750

    def _drag(self, left: bool) -> None:
        x, y = self._icon()
        to = 100 if left else 1180
        self._mouse(f"mousemove {x} {y} mousedown 1", f"mousemove {x - 20} {y - 20} sleep 0.05",
                    f"mousemove {to} {y - 5} sleep 0.05 mouseup 1 sleep 0.3")

    def _menu(self) -> None:
        x, y = self._icon()
        self._mouse(f"mousemove {x} {y} click 3 sleep 0.3 key Down sleep 0.1 key Escape sleep 0.1",
                    f"click 1 sleep 0.1 mousemove 640 400 sleep 0.2")

    def _tap(self) -> None:
        self._keyboard.press("Alt_R")
        time.sleep(0.1)
        self._keyboard.release("Alt_R")
        time.sleep(0.2)

    def _dictate(self, words: Path) -> bool:
        self._keyboard.press("Alt_R")
        time.sleep(0.35)
        speak(self._desktop, words)
        time.sleep(0.3)
        let_go = time.monotonic()
        self._keyboard.release("Alt_R")
        typed = self._editor.await_insertion(let_go, 10) is not None
        time.sleep(2.2)  # until its message has gone
        return typed


def soak(directory: Path, options: argparse.Namespace) -> int:
    with VirtualDesktop(directory) as desktop:
        os.environ.clear()
        os.environ.update(desktop.env)
        from editor import Editor  # needs the desktop's environment from its first line

        use = Soak(desktop, options.binary, Editor(desktop))
        quiet = use.log()
        end = time.monotonic() + options.minutes * 60
        rounds, missed, first = 0, 0, (0.0, 0)
        while time.monotonic() < end:
            missed += not use.play(rounds)
            rounds += 1
            if rounds == WARM_UP:
                first = use.own_memory(), use.open_files()
        grown, files = use.own_memory() - first[0], use.open_files() - first[1]
        lines = use.log().removeprefix(quiet)
        print(f"rounds: {rounds}\nrounds that failed: {missed}\nown memory: {first[0]:.1f} MiB, grown by {grown:.1f}\n"
              f"open files: {first[1]}, grown by {files}\nlog lines: {len(lines.splitlines())}\n{lines}", end="")
        return 1 if missed or lines or files > 0 or grown > MAY_GROW else 0


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--binary", type=Path, default=ROOT / "build/release/src/shell/dorix")
    parser.add_argument("--minutes", type=float, default=30)
    options = parser.parse_args()
    options.binary = options.binary.resolve()
    return supervised(lambda directory: soak(directory, options))


sys.exit(main())
