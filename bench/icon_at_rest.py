#!/usr/bin/python3
"""What the icon costs: from process start to its first frame, the memory, and a minute of idleness.

    bench/icon_at_rest.py [--binary PATH] [--seconds N]
"""

import argparse
import os
import subprocess
import sys
import threading
import time
from pathlib import Path
from typing import Callable

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(ROOT / "tools/desktop")]

from supervision import supervised  # noqa: E402
from virtual_desktop import VirtualDesktop  # noqa: E402

FRAME = "Frame rendered"
TELL_FRAMES = {"QT_LOGGING_RULES": "qt.scenegraph.time.renderloop=true", "QT_FORCE_STDERR_LOGGING": "1"}
READY = "DORIX: ready"
SETTLE = 5.0  # seconds after the program is ready


def prepare(desktop: VirtualDesktop) -> None:
    """The hint of the first runs draws and wakes up, by a timer of its own."""
    defaults = Path(desktop.env["XDG_CONFIG_HOME"], "dorix/defaults.json")
    defaults.parent.mkdir()
    defaults.write_text('{"onboardingDone": true, "hintShownCount": 3}')


class Program:
    """DORIX, with the moments at which it wrote its lines."""

    def __init__(self, desktop: VirtualDesktop, binary: Path):
        self._start = time.monotonic()
        self._process = desktop.spawn([str(binary)], env={**desktop.env, **TELL_FRAMES},
                                      stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        self._lines: list[tuple[float, str]] = []
        threading.Thread(target=self._listen, daemon=True).start()

    def age(self) -> float:
        return time.monotonic() - self._start

    def end(self) -> None:
        self._process.terminate()
        self._process.wait()

    def _listen(self) -> None:
        for line in self._process.stderr:
            self._lines.append((self.age(), line))

    def count(self, text: str, since: float = 0.0) -> int:
        return sum(text in line for moment, line in list(self._lines) if moment >= since)

    def first(self, text: str) -> float:
        while self._process.poll() is None:
            for moment, line in list(self._lines):
                if text in line:
                    return moment
            time.sleep(0.005)
        raise SystemExit(f"the program ended with status {self._process.returncode}")

    def wake_ups(self) -> int:
        tasks = Path(f"/proc/{self._process.pid}/task")
        return sum(int(line.split()[1]) for task in tasks.iterdir()
                   for line in (task / "status").read_text().splitlines() if line.startswith("voluntary_ctxt"))

    def memory(self, name: str) -> float:
        rollup = Path(f"/proc/{self._process.pid}/smaps_rollup").read_text()
        return next(int(line.split()[1]) / 1024 for line in rollup.splitlines() if line.startswith(name + ":"))


def measure(desktop: VirtualDesktop, options: argparse.Namespace) -> None:
    program = Program(desktop, options.binary)
    print(f"process start to the icon's first frame: {program.first(FRAME) * 1000:.0f} ms")
    print(f"process start to the recogniser ready: {program.first(READY) * 1000:.0f} ms")
    time.sleep(SETTLE)
    print(f"memory: {program.memory('Pss'):.0f} MiB proportional, {program.memory('Rss'):.0f} MiB resident")
    frames, wake_ups = program.count(FRAME), program.wake_ups()
    time.sleep(options.seconds)
    print(f"in {options.seconds:.0f} s of idleness: {program.count(FRAME) - frames} frames, "
          f"{program.wake_ups() - wake_ups} wake-ups")


def on_a_desktop(measuring: Callable[[VirtualDesktop], None]) -> int:
    """Measures on a virtual desktop that is ready for it; the exit status."""

    def body(directory: Path) -> int:
        with VirtualDesktop(directory) as desktop:
            os.environ.clear()
            os.environ.update(desktop.env)
            prepare(desktop)
            measuring(desktop)
        return 0

    return supervised(body)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0], allow_abbrev=False)
    parser.add_argument("--binary", type=Path, default=ROOT / "build/release/src/app/dorix")
    parser.add_argument("--seconds", type=float, default=60)
    options = parser.parse_args()
    options.binary = options.binary.resolve()
    return on_a_desktop(lambda desktop: measure(desktop, options))


if __name__ == "__main__":
    sys.exit(main())
