#!/usr/bin/python3
"""How soon after its start DORIX hears the hold key, and shows its icon.

    bench/start.py [--binary PATH] [--times N]

The key is pressed at a moment after the start of the process; it was heard if the HUD comes up. The earliest press that
is heard is found by halving, each time with a new process.
"""

import argparse
import statistics
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(ROOT / "tools/demo"), str(ROOT / "tools/desktop"), str(ROOT / "bench")]

from icon_at_rest import FRAME, READY, Program, on_a_desktop  # noqa: E402
from keyboard import Keyboard  # noqa: E402
from virtual_desktop import VirtualDesktop  # noqa: E402

KEY = "Alt_R"
LATEST = 0.6  # seconds
EXACT = 0.005
HOLD = 0.3  # from the press to the HUD
HUD_WITHIN = 0.4  # after that
FRAMES = 4  # that a HUD takes to fade in, at least


class Start:
    def __init__(self, desktop: VirtualDesktop, binary: Path):
        self._desktop = desktop
        self._binary = binary
        self._keyboard = Keyboard(desktop.env["DISPLAY"])
        self.icon: list[float] = []  # moments of the first frame

    def earliest_heard(self) -> float:
        low, high = 0.0, LATEST
        if not self._is_heard(high):
            raise SystemExit(f"the key is not heard {LATEST} s after the start")
        while high - low > EXACT:
            middle = (low + high) / 2
            if self._is_heard(middle):
                high = middle
            else:
                low = middle
        return high

    def _is_heard(self, pressed: float) -> bool:
        program = Program(self._desktop, self._binary)
        time.sleep(max(0.0, pressed - program.age()))
        self._keyboard.press(KEY)
        pressed = program.age()
        program.first(READY)
        time.sleep(max(0.0, pressed + HOLD + HUD_WITHIN - program.age()))
        self._keyboard.release(KEY)
        self.icon.append(program.first(FRAME))
        frames = program.count(FRAME, since=pressed + HOLD * 0.95)
        program.end()
        return frames >= FRAMES


def told(name: str, seconds: list[float]) -> str:
    return f"{name}: {statistics.median(seconds) * 1000:.0f} ms median, {max(seconds) * 1000:.0f} ms worst"


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0], allow_abbrev=False)
    parser.add_argument("--binary", type=Path, default=ROOT / "build/release/src/app/dorix")
    parser.add_argument("--times", type=int, default=5)
    options = parser.parse_args()
    options.binary = options.binary.resolve()

    def measuring(desktop: VirtualDesktop) -> None:
        start = Start(desktop, options.binary)
        heard = [start.earliest_heard() for _ in range(options.times)]
        print(told("process start to the hold key heard", heard))
        print(told("process start to the icon's first frame", start.icon))

    return on_a_desktop(measuring)


if __name__ == "__main__":
    sys.exit(main())
