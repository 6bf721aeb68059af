#!/usr/bin/python3
"""Ten minutes of keys at random, held, tapped and let go in any order, while keyboards come and go, another program takes
the keyboard for itself and the screen is locked and unlocked.

    bench/random_presses.py [--binary PATH] [--minutes N] [--seed N]

Fails when DORIX ends, when a key is down at the end that nobody holds, when the processor is not at rest then, when the
memory that is the program's own has grown by more than MAY_GROW since the first quarter, or when holding the key does not
bring up the HUD any more.
"""

import argparse
import ctypes
import os
import random
import shutil
import subprocess
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(ROOT / "bench"), str(ROOT / "tools/demo"), str(ROOT / "tools/desktop")]

from dorix import Dorix  # noqa: E402
from killed import KeyState  # noqa: E402
from keyboard import Keyboard  # noqa: E402
from supervision import supervised  # noqa: E402
from virtual_desktop import VirtualDesktop  # noqa: E402
from waiting import wait_until  # noqa: E402

KEYS = ("Alt_R", "Alt_R", "Alt_R", "Alt_L", "Control_L", "Control_R", "Shift_L", "Shift_R", "Super_L", "space", "Escape",
        "a", "v", "c", "z", "1", "F5", "Return", "Tab", "Left", "Caps_Lock")
LOCKERS = (["xtrlock"], ["i3lock", "--nofork"])
MAY_GROW = 8.0  # MiB
REST = 30.0  # seconds
QUARTERS = 4
SETTINGS = {"appLanguage": "en", "language": "en-US", "onboardingDone": True, "hintShownCount": 9}


class Grabber:
    """Another program that takes the keyboard for itself."""

    def __init__(self, display: str):
        self._x11 = ctypes.CDLL("libX11.so.6")
        self._x11.XOpenDisplay.restype = ctypes.c_void_p
        self._x11.XDefaultRootWindow.restype = ctypes.c_ulong
        self._display = ctypes.c_void_p(self._x11.XOpenDisplay(display.encode()))
        self._root = ctypes.c_ulong(self._x11.XDefaultRootWindow(self._display))

    def grab(self) -> None:
        now, asynchronous = ctypes.c_ulong(0), 1
        self._x11.XGrabKeyboard(self._display, self._root, 0, asynchronous, asynchronous, now)
        self._x11.XSync(self._display, 0)

    def release(self) -> None:
        self._x11.XUngrabKeyboard(self._display, ctypes.c_ulong(0))
        self._x11.XSync(self._display, 0)


class Chance:
    def __init__(self, desktop: VirtualDesktop, dorix: Dorix, seed: int):
        self._desktop = desktop
        self._dorix = dorix
        self._random = random.Random(seed)
        self._keyboard = Keyboard(desktop.env["DISPLAY"])
        self._grabber = Grabber(desktop.env["DISPLAY"])
        self._held: list[str] = []
        self._lockers = [locker for locker in LOCKERS if shutil.which(locker[0])]
        self.done: dict[str, int] = {}

    def act(self) -> None:
        acts = {self._press: 40, self._let_go: 40, self._wait: 12, self._click: 3, self._plug: 2, self._grab: 2,
                self._lock: 1}
        act = self._random.choices(list(acts), list(acts.values()))[0]
        act()
        self.done[act.__name__.strip("_")] = self.done.get(act.__name__.strip("_"), 0) + 1
        time.sleep(self._random.uniform(0, 0.12))

    def let_all_go(self) -> None:
        while self._held:
            self._keyboard.release(self._held.pop())

    def _press(self) -> None:
        key = self._random.choice(KEYS)
        if key not in self._held:
            self._keyboard.press(key)
            self._held.append(key)

    def _let_go(self) -> None:
        if self._held:
            self._keyboard.release(self._held.pop(self._random.randrange(len(self._held))))

    def _wait(self) -> None:
        time.sleep(self._random.uniform(0.2, 0.8))

    def _click(self) -> None:
        x, y = self._random.choice([(1230, 750), (400, 300), (1100, 100), (700, 400)])
        self._run("xdotool", "mousemove", str(x), str(y), "click", self._random.choice("123"))

    def _plug(self) -> None:
        """A keyboard comes, is there for a moment, and goes."""
        self._run("xinput", "create-master", "other")
        self._press()
        self._let_go()
        self._run("xinput", "remove-master", "other pointer")

    def _grab(self) -> None:
        self._grabber.grab()
        for _ in range(4):
            self._press()
            self._let_go()
        self._grabber.release()

    def _lock(self) -> None:
        if not self._lockers:
            return
        locker = self._desktop.spawn(self._random.choice(self._lockers), stdout=subprocess.DEVNULL,
                                     stderr=subprocess.DEVNULL)
        time.sleep(0.5)
        for _ in range(6):
            self._press()
            self._let_go()
        locker.kill()
        locker.wait()

    def _run(self, *command: str) -> None:
        self._desktop.spawn(list(command), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).wait()


def own_memory(pid: int) -> float:
    """In MiB; without the pages of files, which are its own or not as other programs read them too."""
    rollup = Path(f"/proc/{pid}/smaps_rollup").read_text()
    return next(int(line.split()[1]) for line in rollup.splitlines() if line.startswith("Private_Dirty:")) / 1024


def ticks(pid: int) -> int:
    fields = Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return int(fields[11]) + int(fields[12])


def phases(dorix: Dorix) -> list[str]:
    return [event["hud"] for event in dorix.events() if "hud" in event]


def come_to_rest(desktop: VirtualDesktop, dorix: Dorix) -> None:
    """Ends what the presses have begun, such as a dictation without a key held."""
    for _ in range(3):
        desktop.spawn(["xdotool", "key", "Escape"]).wait()
        time.sleep(1)
    if not wait_until(lambda: phases(dorix)[-1:] in ([], ["hidden"]), 20):
        print(f"the HUD shows {phases(dorix)[-1]}")
    time.sleep(5)


def hears(desktop: VirtualDesktop, dorix: Dorix) -> bool:
    since = len(dorix.events())
    keyboard = Keyboard(desktop.env["DISPLAY"])
    keyboard.press("Alt_R")
    heard = wait_until(lambda: any(event.get("hud") == "listening" for event in dorix.events(since)), 3)
    keyboard.release("Alt_R")
    return heard


def press_on(directory: Path, options: argparse.Namespace) -> int:
    with VirtualDesktop(directory) as desktop:
        os.environ.clear()
        os.environ.update(desktop.env)
        from editor import Editor  # needs the desktop's environment from its first line

        Editor(desktop)
        dorix = Dorix(desktop, options.binary, desktop.log("dorix"), SETTINGS)
        chance = Chance(desktop, dorix, options.seed)
        memory = []
        for _ in range(QUARTERS):
            until = time.monotonic() + options.minutes * 60 / QUARTERS
            while time.monotonic() < until:
                chance.act()
                dorix.check_running()
            memory.append(own_memory(dorix.pid))
        chance.let_all_go()
        come_to_rest(desktop, dorix)
        down = KeyState(desktop.env["DISPLAY"]).down()
        again = hears(desktop, dorix)
        come_to_rest(desktop, dorix)
        before = ticks(dorix.pid)
        time.sleep(REST)
        spent, grown = ticks(dorix.pid) - before, own_memory(dorix.pid) - memory[0]
        dorix.check_running()
        print(f"did {chance.done}\nkeys down at the end: {down or 'none'}\nthe hold key is heard: {again}\n"
              f"own memory after each quarter: {', '.join(f'{amount:.1f}' for amount in memory)} MiB, "
              f"grown by {grown:.1f} since the first\n"
              f"ticks of the processor in {REST:.0f} s of rest: {spent}\nlog:\n{dorix.log()}", end="")
        return 1 if down or not again or grown > MAY_GROW or spent > 2 else 0


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--binary", type=Path, default=ROOT / "build/release/src/app/dorix")
    parser.add_argument("--minutes", type=float, default=10)
    parser.add_argument("--seed", type=int, default=1)
    options = parser.parse_args()
    options.binary = options.binary.resolve(strict=True)
    return supervised(lambda directory: press_on(directory, options))


if __name__ == "__main__":
    sys.exit(main())
