#!/usr/bin/python3
"""The walk with curl in docs/service.md can be walked: its commands are run as they stand there, and what the page says
comes of them comes of them.

    walk_test.py BINARY
"""

import re
import subprocess
import sys
from pathlib import Path

sys.dont_write_bytecode = True

from harness import BOUND, Service  # noqa: E402

ROOT = Path(__file__).resolve().parents[3]
MARK = "-- end of a step --"
EXPECTED = "#> "


def steps() -> list[list[str]]:
    """The indented blocks of the section."""
    page = (ROOT / "docs/service.md").read_text(encoding="utf-8")
    section = page.split("## A walk with curl\n", 1)[1].split("\n## ", 1)[0]
    blocks = re.findall(r"(?:^    .*\n)+", section, re.MULTILINE)
    return [[line[4:] for line in block.splitlines()] for block in blocks]


def script_of(walk: list[list[str]]) -> str:
    commands = ["set -euo pipefail"]
    for step in walk:
        commands += [line for line in step if not line.startswith(EXPECTED)] + [f"echo; echo '{MARK}'"]
    return "\n".join(commands)


def main() -> int:
    walk = steps()
    assert len(walk) >= 6, walk
    service = Service(sys.argv[1])
    try:
        environment = {"PATH": "/usr/bin:/bin", "DORIX": f"http://127.0.0.1:{service.port}",
                       "OUTBOX": str(service.folder / "outbox")}
        done = subprocess.run(["bash", "-c", script_of(walk)], env=environment, capture_output=True, text=True,
                              timeout=3 * BOUND)
    finally:
        service.stop()
    print(done.stdout, done.stderr)
    assert done.returncode == 0
    outputs = done.stdout.split(MARK)
    for step, output in zip(walk, outputs):
        for line in step:
            if line.startswith(EXPECTED):
                assert line.removeprefix(EXPECTED) in output, f"{line}\n{output}"
    return 0


sys.exit(main())
