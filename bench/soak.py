#!/usr/bin/python3
"""A long stretch of use: dictations, clicks, drags, menus, other languages and themes, over and over. Not part of the
test run.

    bench/soak.py [--binary PATH] [--minutes N]

Fails when a dictation is not typed, a drag does not move the icon, or the icon does not say its name in the language
and show its disc in the theme that was chosen; when the log gains a line, when a file descriptor stays open, or when the
memory that is the program's own has grown by more than MAY_GROW since the first rounds.
"""

import argparse
import json
import os
import subprocess
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(ROOT / "tools/demo"), str(ROOT / "tools/desktop")]

from dorix import Dorix  # noqa: E402
from supervision import supervised  # noqa: E402
from user import HOLD_KEY, User  # noqa: E402
from virtual_desktop import VirtualDesktop  # noqa: E402
from voice import synthesise  # noqa: E402

WARM_UP = 3  # rounds until caches are filled
MAY_GROW = 8.0  # MiB
DICTATE = {"es": "para dictar", "en": "to dictate"}  # in the icon's name
DISC = {True: "#1C1D21", False: "#FFFFFF"}  # by whether the theme is dark
SENTENCES = ("we will be there at ten", "please send me the new numbers", "the train was late this morning")


class Soak:
    def __init__(self, desktop: VirtualDesktop, binary: Path, editor):
        self._desktop = desktop
        self._editor = editor
        config = Path(desktop.env["XDG_CONFIG_HOME"])
        self._settings = config / "dorix/defaults.json"
        self._theme = config / "gtk-3.0/settings.ini"
        self._theme.parent.mkdir(parents=True, exist_ok=True)
        self._user = User(desktop)
        self._dorix = Dorix(desktop, binary, desktop.log("dorix"), {"language": "en-US", "hintShownCount": 3})
        self.log = self._dorix.log
        self._words = []
        for number, sentence in enumerate(SENTENCES):
            self._words.append(desktop.directory / f"words{number}.wav")
            synthesise(sentence, self._words[-1])

    def own_memory(self) -> float:
        rollup = Path(f"/proc/{self._dorix.pid}/smaps_rollup").read_text()
        fields = dict(line.split(":", 1) for line in rollup.splitlines()[1:])
        return sum(int(fields[name].split()[0]) for name in ("Private_Clean", "Private_Dirty")) / 1024

    def open_files(self) -> int:
        return len(os.listdir(f"/proc/{self._dorix.pid}/fd"))

    def play(self, number: int) -> bool:
        """One round; whether all came of it that should."""
        left, dark, language = number % 2 == 0, number % 3 == 0, "es" if number % 4 < 2 else "en"
        self._user.tap(HOLD_KEY)
        time.sleep(0.2)
        self._choose(language, dark)
        self._drag(left)  # the program reads what others have set when it has something to write itself
        moved = (self._dorix.icon_centre()[0] < 640) == left
        self._menu()
        worded = DICTATE[language] in self._icon_name()
        coloured = self._disc() == DISC[dark]
        typed = self._dictate(self._words[number % len(self._words)])
        if not (moved and worded and coloured and typed):
            print(f"round {number}: moved {moved}, worded {worded}, coloured {coloured}, typed {typed}", flush=True)
        return moved and worded and coloured and typed

    def _choose(self, language: str, dark: bool) -> None:
        self._replace(self._settings, json.dumps({**json.loads(self._settings.read_text()), "appLanguage": language}))
        self._replace(self._theme, f"[Settings]\ngtk-application-prefer-dark-theme={int(dark)}\n")

    @staticmethod
    def _replace(file: Path, text: str) -> None:
        new = file.with_suffix(".new")
        new.write_text(text)
        new.rename(file)

    def _icon_name(self) -> str:
        """What a screen reader says of the icon."""
        from accessibility import Atspi, showing

        buttons = (node for node in showing(self._dorix.pid) if node.get_role() == Atspi.Role.PUSH_BUTTON)
        return next((button.get_name() for button in buttons), "")

    def _disc(self) -> str:
        """The colour beside the mark."""
        x, y = self._dorix.icon_centre()
        pixel = self._desktop.spawn(["import", "-window", "root", "-crop", f"1x1+{x - 18}+{y}", "-depth", "8", "txt:-"],
                                    stdout=subprocess.PIPE, text=True).communicate()[0]
        return pixel.split()[-2]

    def _drag(self, left: bool) -> None:
        x, y = self._dorix.icon_centre()
        to = 100 if left else 1180
        self._user.mouse(f"mousemove {x} {y} mousedown 1", f"mousemove {x - 20} {y - 20} sleep 0.05",
                         f"mousemove {to} {y - 5} sleep 0.05 mouseup 1 sleep 0.3")

    def _menu(self) -> None:
        x, y = self._dorix.icon_centre()
        self._user.mouse(f"mousemove {x} {y} click 3 sleep 0.3 key Down sleep 0.1 key Escape sleep 0.1",
                         f"click 1 sleep 0.1 mousemove 640 400 sleep 0.2")

    def _dictate(self, words: Path) -> bool:
        let_go = self._user.hold_and_speak(HOLD_KEY, words)
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
        rounds, missed, first, half = 0, 0, (0.0, 0), 0.0
        while (left := end - time.monotonic()) > 0:
            missed += not use.play(rounds)
            rounds += 1
            if rounds == WARM_UP:
                first = use.own_memory(), use.open_files()
            if not half and left < options.minutes * 30:
                half = use.own_memory()
        grown, files = use.own_memory() - first[0], use.open_files() - first[1]
        lines = use.log().removeprefix(quiet)
        print(f"rounds: {rounds}\nrounds that failed: {missed}\n"
              f"own memory: {first[0]:.1f} MiB, grown by {grown:.1f}, by {use.own_memory() - half:.1f} since half-time\n"
              f"open files: {first[1]}, grown by {files}\nlog lines: {len(lines.splitlines())}\n{lines}", end="")
        return 1 if missed or lines or files > 0 or grown > MAY_GROW else 0


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--binary", type=Path, default=ROOT / "build/release/src/app/dorix")
    parser.add_argument("--minutes", type=float, default=30)
    options = parser.parse_args()
    options.binary = options.binary.resolve()
    return supervised(lambda directory: soak(directory, options))


sys.exit(main())
