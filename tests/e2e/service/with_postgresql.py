#!/usr/bin/python3
"""Runs a command with a PostgreSQL server of its own, whose socket lies in the folder DORIX_TEST_POSTGRESQL, and ends
the server with it. Exits with 77 where none is installed.

    with_postgresql.py COMMAND...
"""

import os
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

SKIPPED = 77
USER = "postgres"


def programs() -> Path | None:
    found = sorted(Path("/usr/lib/postgresql").glob("*/bin/initdb"), key=lambda path: int(path.parts[4]))
    return found[-1].parent if found else None


def as_server() -> list[str]:
    """The server refuses to run as root."""
    if os.geteuid() != 0:
        return []
    return ["setpriv", f"--reuid={USER}", f"--regid={USER}", "--clear-groups"]


def main() -> int:
    if (folder := programs()) is None:
        print("skipped: PostgreSQL is not installed")
        return SKIPPED
    with tempfile.TemporaryDirectory() as holder:
        os.chmod(holder, 0o755)
        if os.geteuid() == 0:
            shutil.chown(holder, USER)
        run = lambda *command: subprocess.run([*as_server(), *command], check=True, stdout=subprocess.DEVNULL)
        run(folder / "initdb", "-D", f"{holder}/data", "-U", "dorix", "-A", "trust", "-E", "UTF8", "--locale=C")
        control = [folder / "pg_ctl", "-D", f"{holder}/data", "-w", "-l", f"{holder}/log"]
        run(*control, "-o", f"-c listen_addresses='' -k {holder} -c fsync=off -c max_connections=200", "start")
        try:
            environment = os.environ | {"DORIX_TEST_POSTGRESQL": holder, "PATH": f"{folder}:{os.environ['PATH']}"}
            return subprocess.run(sys.argv[1:], env=environment).returncode
        finally:
            run(*control, "-m", "immediate", "stop")


sys.exit(main())
