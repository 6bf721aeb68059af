"""Waiting for a condition."""

import time
from typing import Callable


def wait_until(condition: Callable[[], object], seconds: float) -> bool:
    """Whether the condition came to hold within that time."""
    deadline = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > deadline:
            return False
        time.sleep(0.02)
    return True
