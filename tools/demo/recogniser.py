"""The process in which DORIX recognises speech, and the accidents that befall it."""

import os
import signal
import threading
from pathlib import Path

from failure import DemoError
from processes import child_of

NAME = "dorix-recognise"  # the kernel keeps fifteen letters
ACCIDENTS = {"killed": signal.SIGKILL, "stopped": signal.SIGSTOP}


def recogniser_of(dorix: int) -> int | None:
    """The one that works for that process."""
    return child_of(dorix, NAME)


def has_ended(process: int) -> bool:
    try:
        state = Path(f"/proc/{process}/stat").read_text().rpartition(") ")[2]
    except (FileNotFoundError, ProcessLookupError):
        return True
    return state.startswith("Z")  # nobody has asked how


class Accident:
    """Befalls the recogniser some seconds from now."""

    def __init__(self, dorix: int, what: str, seconds: float):
        self._dorix = dorix
        self._what = what
        self._struck: int | None = None
        self._timer = threading.Timer(seconds, self._strike)
        self._timer.start()

    def _strike(self) -> None:
        self._struck = recogniser_of(self._dorix)
        if self._struck is not None:
            os.kill(self._struck, ACCIDENTS[self._what])

    def outcome(self) -> str:
        """What came of it; another one must be at work by now."""
        self._timer.join()
        now = recogniser_of(self._dorix)
        if self._struck is None or now in (None, self._struck):
            raise DemoError(f"the recogniser was to be {self._what}: it was {self._struck} and is {now}")
        return f"recogniser: {self._struck} {self._what}, {now} in its place"
