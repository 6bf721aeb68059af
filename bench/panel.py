#!/usr/bin/python3
"""What the history's panel costs: opening, filtering, scrolling, a long answer, memory, and standing open idly.

    bench/panel.py [--binary PATH] [--items N] [--seconds N]

Frame times are the toolkit's own, from the beginning of a frame to its pixels handed to the display.
"""

import argparse
import contextlib
import json
import os
import re
import sqlite3
import statistics
import subprocess
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = True
HERE = Path(__file__).resolve().parent
ROOT = HERE.parent
sys.path[:0] = [str(HERE), str(ROOT / "tools/desktop")]

from icon_at_rest import FRAME, READY, Program  # noqa: E402
from supervision import supervised  # noqa: E402
from virtual_desktop import VirtualDesktop  # noqa: E402

ICON = (1230, 750)
LIST = (700, 500)
DETAIL = (1000, 450)
WHEEL_DOWN = "5"
LONG_ANSWER = 400_000  # characters
SETTLE = 1.0
SCHEMA = """CREATE TABLE history (id TEXT PRIMARY KEY, kind TEXT NOT NULL, app TEXT NOT NULL, bundle_id TEXT,
    title TEXT NOT NULL, created_at REAL NOT NULL, query TEXT NOT NULL, answer TEXT NOT NULL, meta TEXT)"""


def fill_history(folder: Path, count: int) -> None:
    sentence = "El informe de **ventas** crece un 12 % respecto al trimestre anterior, y Ana lo revisa. "
    paragraph = sentence * 8 + "\n\n"
    folder.mkdir(parents=True)
    with contextlib.closing(sqlite3.connect(folder / "dorix.sqlite")) as database, database:
        database.execute(SCHEMA)
        for age in range(count):
            long = age == 0
            answer = paragraph * (LONG_ANSWER // len(paragraph) + 1) if long else f"{sentence}Semana {age}."
            database.execute("INSERT INTO history VALUES (?,?,'Notas',NULL,?,?,?,?,NULL)",
                             (str(age), "busqueda" if long else "dictado", f"Semana {age}: el informe de ventas",
                              time.time() - age * 600, "eh el informe de la semana", answer))


class Watched(Program):
    """The program, and what it drew since a moment."""

    def frames_since(self, moment: float) -> list[tuple[float, float]]:
        """When each was drawn, and the milliseconds that it took."""
        found = []
        for at, line in list(self._lines):
            if FRAME in line and at > moment and (took := re.search(r"in (\d+)ms", line)):
                found.append((at, float(took[1])))
        return found

    def now(self) -> float:
        return time.monotonic() - self._start

    def until_frame(self, act) -> float:
        """Milliseconds from the act to the first frame after it, which includes starting a process that acts."""
        began = self.now()
        act()
        while not (frames := self.frames_since(began)):
            if self.now() - began > 5:
                raise SystemExit("nothing was drawn")
            time.sleep(0.001)
        return (frames[0][0] - began) * 1000


def xdotool(*arguments: str) -> None:
    subprocess.run(["xdotool", *arguments], check=True)


def click() -> None:
    xdotool("click", "1")


def scroll(program: Watched, at: tuple[int, int], times: int) -> str:
    xdotool("mousemove", str(at[0]), str(at[1]))
    time.sleep(SETTLE)
    began = program.now()
    xdotool("click", "--repeat", str(times), "--delay", "16", WHEEL_DOWN)
    time.sleep(SETTLE)
    taken = [took for _, took in program.frames_since(began)]
    return f"median {statistics.median(taken):.0f} ms, worst {max(taken):.0f} ms, of {len(taken)} frames"


def measure(desktop: VirtualDesktop, options: argparse.Namespace) -> None:
    fill_history(Path(desktop.env["XDG_DATA_HOME"], "DORIX"), options.items)
    settings = Path(desktop.env["XDG_CONFIG_HOME"], "dorix/defaults.json")
    settings.parent.mkdir(parents=True)
    settings.write_text(json.dumps({"appLanguage": "es", "onboardingDone": True, "hintShownCount": 9}))
    program = Watched(desktop, options.binary)
    program.first(READY)
    xdotool("mousemove", str(ICON[0]), str(ICON[1]))
    time.sleep(3 * SETTLE)

    floor = statistics.median(timed(lambda: xdotool("mousemove_relative", "0", "0")) for _ in range(10))
    print(f"starting the process that clicks and types, part of the next figures: {floor:.0f} ms")
    before = program.memory("Pss")
    print(f"click to the panel's first frame, the first time: {program.until_frame(click):.0f} ms")
    time.sleep(SETTLE)
    print(f"memory: {before:.0f} MiB proportional before, {program.memory('Pss'):.0f} MiB with the panel up")
    again = []
    for _ in range(10):
        click()
        time.sleep(SETTLE)
        again.append(program.until_frame(click))
        time.sleep(SETTLE)
    print(f"click to the panel's first frame, again: median {statistics.median(again):.0f} ms, worst {max(again):.0f} ms")

    xdotool("key", "ctrl+f")
    time.sleep(SETTLE)
    keys = []
    for key in (*"informe", *["BackSpace"] * 7):
        keys.append(program.until_frame(lambda: xdotool("key", key)))  # noqa: B023
        time.sleep(0.3)
    print(f"key to the filtered list drawn: median {statistics.median(keys):.0f} ms, worst {max(keys):.0f} ms")

    print(f"frames while scrolling {options.items} items: {scroll(program, LIST, 200)}")
    xdotool("key", "Tab", "Home")
    time.sleep(SETTLE)
    began = program.now()
    xdotool("key", "Down")
    time.sleep(SETTLE)
    xdotool("key", "Home")
    time.sleep(SETTLE)
    shown = max(took for _, took in program.frames_since(began))
    print(f"worst frame when an answer of {LONG_ANSWER} characters comes up: {shown:.0f} ms")
    print(f"frames while scrolling it: {scroll(program, DETAIL, 200)}")

    time.sleep(3 * SETTLE)
    began, wake_ups = program.now(), program.wake_ups()
    time.sleep(options.seconds)
    print(f"in {options.seconds:.0f} s with the panel up and nothing to do: {len(program.frames_since(began))} frames, "
          f"{program.wake_ups() - wake_ups} wake-ups")


def timed(act) -> float:
    began = time.monotonic()
    act()
    return (time.monotonic() - began) * 1000


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0], allow_abbrev=False)
    parser.add_argument("--binary", type=Path, default=ROOT / "build/release/src/app/dorix")
    parser.add_argument("--items", type=int, default=2000)
    parser.add_argument("--seconds", type=float, default=30)
    options = parser.parse_args()
    options.binary = options.binary.resolve()

    def body(directory: Path) -> int:
        with VirtualDesktop(directory) as desktop:
            os.environ.clear()
            os.environ.update(desktop.env)
            measure(desktop, options)
        return 0

    return supervised(body)


if __name__ == "__main__":
    sys.exit(main())
