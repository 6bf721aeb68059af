"""What other applications show, read as a screen reader does.

Import it with the desktop's environment in `os.environ`: the library looks there only, and once.
"""

import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

POLL = 0.02

Atspi.init()
Atspi.set_timeout(1000, 5000)


def _application(pid: int):
    """The application of the process, nothing while it has not said that it is there."""
    desktop = Atspi.get_desktop(0)
    for index in range(desktop.get_child_count()):
        child = desktop.get_child_at_index(index)
        if child and child.get_process_id() == pid:
            return child
    return None


def showing(pid: int):
    """The elements of the process's windows that are on the screen, top down."""
    if application := _application(pid):
        yield from _showing_below(application)


def _showing_below(node):
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        if child and has(child, Atspi.StateType.SHOWING):
            yield child
            yield from _showing_below(child)


def has(node, *states) -> bool:
    held = node.get_state_set()
    return all(held.contains(state) for state in states)


def run_events() -> None:
    context = GLib.MainContext.default()
    while context.iteration(False):
        pass


def await_found(find, timeout: float):
    """What `find` gives as soon as it gives something, nothing when it does not within `timeout` seconds.

    An application that is starting, or whose windows come and go, answers late or not at all: that is no failure.
    """
    deadline = time.monotonic() + timeout
    while time.monotonic() < deadline:
        run_events()
        try:
            if found := find():
                return found
        except GLib.Error:
            pass
        time.sleep(POLL)
    return None
