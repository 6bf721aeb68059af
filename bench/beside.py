#!/usr/bin/python3
"""DORIX beside CopyQ and KeePassXC on one desktop: the start, the memory, and a long time in which nothing happens.

    bench/beside.py [--binary PATH] [--minutes N] [--times N]

A start is from the process to its window on the screen, each program alone and N times. Then all of them stand on the
desktop at once. Memory is proportional, over all processes of a program; time of the processor is in ticks of 10 ms, and
wake-ups are the times that any thread gave up its processor to wait.
"""

import argparse
import os
import statistics
import subprocess
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(ROOT / "bench"), str(ROOT / "tools/desktop")]

from icon_at_rest import on_a_desktop  # noqa: E402
from supervision import processes_in  # noqa: E402
from virtual_desktop import VirtualDesktop  # noqa: E402
from waiting import wait_until  # noqa: E402

SETTLE = 20.0
WINDOW_TIMEOUT = 30.0


class Program:
    def __init__(self, desktop: VirtualDesktop, name: str, command: list[str], window: str):
        self.name = name
        self._desktop = desktop
        self._command = command
        self._window = window

    def launch(self) -> None:
        with open(self._desktop.log(self.name), "ab") as log:
            self._process = self._desktop.spawn(self._command, stdin=subprocess.DEVNULL, stdout=log, stderr=log)

    def start(self) -> float:
        """Milliseconds until its window shows, which includes asking for that."""
        began = time.monotonic()
        self.launch()
        if not wait_until(self._shows, WINDOW_TIMEOUT):
            raise SystemExit(f"{self.name} shows no window:\n{self._desktop.log(self.name).read_text(errors='replace')}")
        return (time.monotonic() - began) * 1000

    def _shows(self) -> bool:
        return subprocess.run(["xdotool", "search", "--onlyvisible", "--class", self._window],
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False).returncode == 0

    def end(self) -> None:
        for pid in self._pids():
            os.kill(pid, 15)
        wait_until(lambda: not self._pids(), WINDOW_TIMEOUT)
        self._process.wait()

    def _pids(self) -> list[int]:
        file = Path(self._command[0]).name
        return [pid for pid, line in processes_in(self._desktop.runtime).items()
                if line and Path(line.split()[0]).name == file]

    def memory(self) -> float:
        total = 0.0
        for pid in self._pids():
            rollup = Path(f"/proc/{pid}/smaps_rollup").read_text()
            total += next(int(line.split()[1]) / 1024 for line in rollup.splitlines() if line.startswith("Pss:"))
        return total

    def ticks(self) -> int:
        fields = [Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split() for pid in self._pids()]
        return sum(int(field[11]) + int(field[12]) for field in fields)

    def wake_ups(self) -> dict[str, int]:
        """Of each thread, since its beginning."""
        return {task.name: int(line.split()[1]) for pid in self._pids() for task in Path(f"/proc/{pid}/task").iterdir()
                for line in (task / "status").read_text().splitlines() if line.startswith("voluntary_ctxt")}


def measure(desktop: VirtualDesktop, options: argparse.Namespace) -> None:
    settings = Path(desktop.env["XDG_CONFIG_HOME"], "dorix/defaults.json")
    settings.parent.mkdir()
    settings.write_text('{"onboardingDone": true}')
    programs = [Program(desktop, "DORIX", [str(options.binary)], "dorix"),
                Program(desktop, "CopyQ", ["copyq", "--start-server", "show"], "copyq"),
                Program(desktop, "KeePassXC", ["keepassxc"], "keepassxc")]
    for program in programs:
        taken = []
        for _ in range(options.times):
            taken.append(program.start())
            time.sleep(1)
            program.end()
        print(f"{program.name}: window after {statistics.median(taken):.0f} ms median, {max(taken):.0f} ms worst", flush=True)
    for program in programs:
        program.start()
    time.sleep(SETTLE)
    before = [(program.ticks(), program.wake_ups()) for program in programs]
    time.sleep(options.minutes * 60)
    for program, (ticks, earlier) in zip(programs, before):
        wake_ups = sum(count - earlier.get(task, 0) for task, count in program.wake_ups().items())
        print(f"{program.name}: {program.memory():.0f} MiB proportional; in {options.minutes:g} minutes "
              f"{program.ticks() - ticks} ticks, {wake_ups} wake-ups", flush=True)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0], allow_abbrev=False)
    parser.add_argument("--binary", type=Path, default=ROOT / "build/release/src/app/dorix")
    parser.add_argument("--minutes", type=float, default=10)
    parser.add_argument("--times", type=int, default=5)
    options = parser.parse_args()
    options.binary = options.binary.resolve(strict=True)
    return on_a_desktop(lambda desktop: measure(desktop, options))


if __name__ == "__main__":
    sys.exit(main())
