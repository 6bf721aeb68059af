"""Keeps the processes of a virtual desktop from outliving it.

Most of what a desktop runs is started by others (the bus starts services, applications start helpers) and detaches
itself, so remembering one's own children is not enough. The kernel helps in two ways: a "child subreaper" becomes the
parent of every orphan below it, so that all of them can be found through /proc; and a process can ask for a signal at
its parent's death, which covers the case in which nobody is left to clean up.
"""

import contextlib
import ctypes
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path
from typing import Callable

PR_SET_PDEATHSIG = 1
PR_SET_CHILD_SUBREAPER = 36

ENDING_SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)
PATIENCE = 1.0  # seconds between asking a process to end and ending it

_libc = ctypes.CDLL(None, use_errno=True)


def _prctl(option: int, value: int) -> None:
    if _libc.prctl(option, ctypes.c_ulong(value), 0, 0, 0) != 0:
        raise OSError(ctypes.get_errno(), "prctl")


def spawn(argv: list[str], *, at_death: str = "TERM", **options) -> subprocess.Popen:
    """Popen, with the signal `at_death` sent to the process when this one dies.

    Call it on the main thread only: the kernel takes the end of the calling thread for the parent's death. setpriv
    does between fork and exec what Python may not do safely once libraries have started threads.
    """
    return subprocess.Popen(["setpriv", "--pdeathsig", at_death, "--", *argv], **options)


def descendants() -> set[int]:
    """The living processes below this one; zombies do not count."""
    children: dict[int, list[int]] = {}
    for entry in os.listdir("/proc"):
        if not entry.isdigit():
            continue
        try:
            stat = Path("/proc", entry, "stat").read_text()
        except OSError:
            continue  # gone since the directory was listed
        state, parent = stat.rpartition(")")[2].split()[:2]  # the name before may hold blanks and brackets
        if state != "Z":
            children.setdefault(int(parent), []).append(int(entry))
    found: set[int] = set()
    frontier = [os.getpid()]
    while frontier:
        for pid in children.get(frontier.pop(), []):
            found.add(pid)
            frontier.append(pid)
    return found


def processes_in(runtime: Path) -> dict[int, str]:
    """The living processes that have this desktop's XDG_RUNTIME_DIR in their environment, with their command lines."""
    mark = f"XDG_RUNTIME_DIR={runtime}".encode()
    found = {}
    for entry in Path("/proc").iterdir():
        with contextlib.suppress(OSError):  # gone meanwhile
            if entry.name.isdigit() and mark in (entry / "environ").read_bytes().split(b"\0"):
                found[int(entry.name)] = (entry / "cmdline").read_text().replace("\0", " ")
    return found


def _reap() -> None:
    with contextlib.suppress(ChildProcessError):
        while os.waitpid(-1, os.WNOHANG)[0]:
            pass


def end_descendants() -> None:
    """Ends every process below this one: first asks, then kills. What they start meanwhile is ended as well."""
    for number in (signal.SIGTERM, signal.SIGKILL):
        told: set[int] = set()
        deadline = time.monotonic() + PATIENCE
        while living := descendants():
            for pid in living - told:
                with contextlib.suppress(ProcessLookupError):
                    os.kill(pid, number)
            told |= living
            if time.monotonic() > deadline:
                break
            _reap()
            time.sleep(0.01)
    _reap()


def supervised(body: Callable[[Path], int]) -> int:
    """Runs `body` in a child process and gives its exit status, when everything started below it has ended.

    `body` gets a fresh directory, removed at the end. Two processes because either may be killed outright: the other
    one then does the cleaning.
    """
    scratch = Path(tempfile.mkdtemp(prefix="dorix-desktop-"))
    _prctl(PR_SET_CHILD_SUBREAPER, 1)
    front = os.getpid()
    signal.pthread_sigmask(signal.SIG_BLOCK, ENDING_SIGNALS)  # until there is somebody to act on them
    child = os.fork()
    if child == 0:
        os._exit(_inner(body, scratch, front))

    def pass_on(number, _frame):
        # From a terminal, Ctrl-C has reached the child already; twice does no harm.
        with contextlib.suppress(ProcessLookupError):
            os.kill(child, number)

    _on_ending_signals(pass_on)
    signal.pthread_sigmask(signal.SIG_UNBLOCK, ENDING_SIGNALS)
    status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
    _on_ending_signals(signal.SIG_IGN)
    _clean(scratch)
    return status if status >= 0 else 128 - status


def _inner(body: Callable[[Path], int], scratch: Path, front: int) -> int:
    def interrupt(number, _frame):
        _on_ending_signals(signal.SIG_IGN)  # a second Ctrl-C must not interrupt the cleaning
        raise SystemExit(128 + number)

    status = 1
    try:
        try:
            _prctl(PR_SET_CHILD_SUBREAPER, 1)
            _prctl(PR_SET_PDEATHSIG, signal.SIGTERM)
            if os.getppid() != front:
                return 1
            _on_ending_signals(interrupt)
            signal.pthread_sigmask(signal.SIG_UNBLOCK, ENDING_SIGNALS)
            status = body(scratch)
        finally:
            _on_ending_signals(signal.SIG_IGN)
            _clean(scratch)
    except SystemExit as exit:
        status = exit.code if isinstance(exit.code, int) else 1
        if isinstance(exit.code, str):
            print(exit.code, file=sys.stderr)
    except BaseException:
        sys.excepthook(*sys.exc_info())
    sys.stdout.flush()
    sys.stderr.flush()
    return status


def _on_ending_signals(action) -> None:
    for number in ENDING_SIGNALS:
        signal.signal(number, action)


def _clean(scratch: Path) -> None:
    end_descendants()
    shutil.rmtree(scratch, ignore_errors=True)
