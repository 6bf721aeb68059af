"""A real text editor in the virtual desktop, watched over accessibility."""

import subprocess
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

from virtual_desktop import VirtualDesktop  # noqa: E402

START_TIMEOUT = 20.0
SETTLED = 0.3  # seconds without a change after which the text is taken to be complete
POLL = 0.002


class EditorError(Exception):
    pass


class Editor:
    """Build it with the desktop's environment in `os.environ`: the accessibility library looks there only."""

    def __init__(self, desktop: VirtualDesktop):
        self._last_insertion: float | None = None
        Atspi.init()
        Atspi.set_timeout(1000, 5000)
        self._listener = Atspi.EventListener.new(self._inserted)
        self._listener.register("object:text-changed:insert")
        with open(desktop.log("mousepad"), "wb") as log:
            self._process = desktop.spawn(["mousepad", "--disable-server"], stdout=log, stderr=log)
        self._field = self._focused_field()

    def text(self) -> str:
        return Atspi.Text.get_text(self._field, 0, -1)

    def await_insertion(self, since: float, timeout: float) -> float | None:
        """The moment at which the text stood in full, nothing if none was inserted after `since`."""
        deadline = time.monotonic() + timeout
        while time.monotonic() < deadline:
            _run_events()
            last = self._last_insertion
            if last is not None and last > since and time.monotonic() - last > SETTLED:
                return last
            time.sleep(POLL)
        return None

    def _inserted(self, event) -> None:
        if event.source == self._field:
            self._last_insertion = time.monotonic()

    _field = None

    def _focused_field(self):
        deadline = time.monotonic() + START_TIMEOUT
        while time.monotonic() < deadline and self._process.poll() is None:
            _run_events()
            try:
                if field := _find_focused_text(Atspi.get_desktop(0)):
                    return field
            except GLib.Error:
                pass  # an application that is still starting answers late
            time.sleep(0.02)
        raise EditorError("the editor did not open")


def _find_focused_text(node):
    if node.get_role() == Atspi.Role.TEXT and node.get_state_set().contains(Atspi.StateType.FOCUSED):
        return node
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        if child and (found := _find_focused_text(child)):
            return found
    return None


def _run_events() -> None:
    context = GLib.MainContext.default()
    while context.iteration(False):
        pass
