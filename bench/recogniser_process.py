#!/usr/bin/python3
"""What the recogniser's own process costs and spares: memory beside CopyQ and KeePassXC, and the time from letting the
key go to the text, with the process there and with one that this very key starts.

    bench/recogniser_process.py [--binary PATH] [--dictations N] [--cold N]

All programs stand on one desktop. Memory is proportional, of each process. Each dictation is a short sentence, in English,
into an editor.
"""

import argparse
import os
import statistics
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(ROOT / "bench"), str(ROOT / "tools/demo"), str(ROOT / "tools/desktop")]

from beside import SETTLE, Program  # noqa: E402
from dorix import Dorix  # noqa: E402
from recogniser import recogniser_of  # noqa: E402
from supervision import processes_in, supervised  # noqa: E402
from user import HOLD_KEY, User  # noqa: E402
from virtual_desktop import VirtualDesktop  # noqa: E402
from voice import synthesise  # noqa: E402
from waiting import wait_until  # noqa: E402

SENTENCE = "we will be there at ten"
TEXT_TIMEOUT = 30.0
BETWEEN = 1.0  # seconds, until the clipboard is back
MOST_UNTYPED = 10  # for want of sound, where the machine is very busy


def proportional(pid: int) -> float:
    """MiB."""
    rollup = Path(f"/proc/{pid}/smaps_rollup").read_text()
    return next(int(line.split()[1]) / 1024 for line in rollup.splitlines() if line.startswith("Pss:"))


class Bench:
    def __init__(self, desktop: VirtualDesktop, binary: Path):
        from editor import Editor  # needs the desktop's environment from its first line

        self.untyped = 0
        self._desktop = desktop
        self._user = User(desktop)
        self._editor = Editor(desktop)
        self._words = desktop.directory / "words.wav"
        synthesise(SENTENCE, self._words)
        self._dorix = Dorix(desktop, binary, desktop.log("dorix"), {"language": "en-US", "hintShownCount": 3})

    def dictate(self) -> float:
        """Milliseconds from letting the key go to the text."""
        let_go = self._user.hold_and_speak(HOLD_KEY, self._words)
        stood = self._editor.await_insertion(let_go, TEXT_TIMEOUT)
        if stood is None:
            self.untyped += 1
            if self.untyped > MOST_UNTYPED:
                raise SystemExit(f"nothing was typed:\n{self._dorix.log()}")
            return self.dictate()
        time.sleep(BETWEEN)
        return (stood - let_go) * 1000

    def dictate_cold(self) -> float:
        pid = recogniser_of(self._dorix.pid)
        if pid is not None:
            os.kill(pid, 9)
            wait_until(lambda: recogniser_of(self._dorix.pid) is None, TEXT_TIMEOUT)
        return self.dictate()

    def tell_memory(self, when: str) -> None:
        found = {"the program": self._dorix.pid, "its recogniser": recogniser_of(self._dorix.pid)}
        for pid, line in processes_in(self._desktop.runtime).items():
            if "--watchdog" in line:
                found["its watchdog"] = pid
            if line and Path(line.split()[0]).name == "dorix-service":
                found["its service"] = pid
        told = ", ".join(f"{name} {proportional(pid):.1f}" for name, pid in found.items() if pid)
        print(f"{when}: {told} MiB", flush=True)


def tell_times(name: str, milliseconds: list[float]) -> None:
    ordered = sorted(milliseconds)
    at = ordered[min(len(ordered) - 1, int(len(ordered) * 0.95))]
    print(f"{name}: median {statistics.median(ordered):.0f} ms, 95 % {at:.0f} ms, worst {ordered[-1]:.0f} ms, "
          f"of {len(ordered)}", flush=True)


def measure(desktop: VirtualDesktop, options: argparse.Namespace) -> None:
    others = [Program(desktop, "CopyQ", ["copyq", "--start-server", "hide"], "copyq"),
              Program(desktop, "KeePassXC", ["keepassxc"], "keepassxc")]
    for program in others:
        program.launch()
    bench = Bench(desktop, options.binary)
    time.sleep(SETTLE)
    bench.tell_memory("after the start")
    for program in others:
        print(f"{program.name}: {program.memory():.1f} MiB", flush=True)
    tell_times("key up to text, with the process there", [bench.dictate() for _ in range(options.dictations)])
    bench.tell_memory(f"after {options.dictations} dictations")
    print(f"not typed, and said once more: {bench.untyped}", flush=True)
    for program in others:
        print(f"{program.name}: {program.memory():.1f} MiB", flush=True)
    tell_times("key up to text, with a process that the key starts", [bench.dictate_cold() for _ in range(options.cold)])


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0], allow_abbrev=False)
    parser.add_argument("--binary", type=Path, default=ROOT / "build/release/src/app/dorix")
    parser.add_argument("--dictations", type=int, default=1000)
    parser.add_argument("--cold", type=int, default=20)
    options = parser.parse_args()
    options.binary = options.binary.resolve(strict=True)

    def body(directory: Path) -> int:
        with VirtualDesktop(directory) as desktop:
            os.environ.clear()
            os.environ.update(desktop.env)
            measure(desktop, options)
        return 0

    return supervised(body)


if __name__ == "__main__":
    sys.exit(main())
