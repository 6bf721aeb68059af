"""The field of DORIX's own in which a new user practises."""

import subprocess

from accessibility import Atspi, await_found, has, showing
from dorix import Dorix
from failure import DemoError
from virtual_desktop import VirtualDesktop

FIELD_TIMEOUT = 5.0


class Practice:
    """Stands among the applications: it has a name, a text, and the keyboard while its window is in front."""

    name = "DORIX"

    def __init__(self, desktop: VirtualDesktop, dorix: Dorix):
        self._desktop = desktop
        self._dorix = dorix
        if not await_found(self._field, FIELD_TIMEOUT):
            raise DemoError("there is no field of DORIX's own with the cursor in it")

    def text(self) -> str:
        """Nothing once the field has gone."""
        field = self._field()
        return Atspi.Text.get_text(field, 0, -1) if field else ""

    def bring_to_front(self) -> None:
        if not self.is_in_front():
            raise DemoError("the window of the first run is not in front")

    def is_in_front(self) -> bool:
        ask = self._desktop.spawn(["xdotool", "getwindowfocus", "getwindowpid"], stdout=subprocess.PIPE,
                                  stderr=subprocess.DEVNULL)
        return ask.communicate()[0].strip() == str(self._dorix.pid).encode()

    def _field(self):
        return next((node for node in showing(self._dorix.pid)
                     if has(node, Atspi.StateType.EDITABLE, Atspi.StateType.FOCUSED)), None)
