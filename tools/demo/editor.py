"""A real text editor in the virtual desktop, watched over accessibility."""

import time

from accessibility import Atspi, await_found, has, run_events, showing
from applications import START_TIMEOUT, TargetApplication
from failure import DemoError
from virtual_desktop import VirtualDesktop

SETTLED = 0.3  # seconds without a change after which the text is taken to be complete
POLL = 0.002


class Editor(TargetApplication):
    def __init__(self, desktop: VirtualDesktop):
        self._field = None
        self._last_insertion: float | None = None
        self._listener = Atspi.EventListener.new(self._inserted)
        self._listener.register("object:text-changed:insert")
        super().__init__(desktop, "mousepad", ["mousepad", "--disable-server"], (20, 40))
        self._field = await_found(self._focused_field, START_TIMEOUT)
        if not self._field:
            raise DemoError("the editor did not open")

    def text(self) -> str:
        return Atspi.Text.get_text(self._field, 0, -1)

    def await_insertion(self, since: float, timeout: float) -> float | None:
        """The moment at which the text stood in full, nothing if none was inserted after `since`."""
        deadline = time.monotonic() + timeout
        while time.monotonic() < deadline:
            run_events()
            last = self._last_insertion
            if last is not None and last > since and time.monotonic() - last > SETTLED:
                return last
            time.sleep(POLL)
        return None

    def _inserted(self, event) -> None:
        if event.source == self._field:
            self._last_insertion = time.monotonic()

    def _focused_field(self):
        return next((node for node in showing(self.pid)
                     if node.get_role() == Atspi.Role.TEXT and has(node, Atspi.StateType.FOCUSED)), None)
