"""DORIX in the virtual desktop: started with settings, followed in its log, its trace and its history."""

import json
import sqlite3
import subprocess
from contextlib import closing
from pathlib import Path

from failure import DemoError
from virtual_desktop import VirtualDesktop
from waiting import wait_until

READY = "DORIX: ready\n"
START_TIMEOUT = 60.0  # loading the recogniser's model dominates, on a cold disk
END_TIMEOUT = 5.0
SESSION_TIMEOUT = 10.0

DEFAULT_ICON_CENTRE = (1230, 750)
ICON_SIZE = 96  # with its clear margin
SCREEN_HEIGHT = 800


class Dorix:
    """Builds ready to be used, by somebody who has been through the first run unless the settings say otherwise. `log`
    gets what it writes."""

    def __init__(self, desktop: VirtualDesktop, binary: Path, log: Path, settings: dict):
        self._desktop = desktop
        self._binary = binary
        self._log = log
        self._trace = desktop.directory / "trace.jsonl"
        self._settings = Path(desktop.env["XDG_CONFIG_HOME"], "dorix/defaults.json")
        self._history = Path(desktop.env["XDG_DATA_HOME"], "DORIX/dorix.sqlite")
        self._settings.parent.mkdir()
        self._settings.write_text(json.dumps({"onboardingDone": True} | settings))
        self._start()

    @property
    def pid(self) -> int:
        return self._process.pid

    def restart(self) -> None:
        """Ends it as a logout does, and starts it anew."""
        self._process.terminate()
        try:
            status = self._process.wait(END_TIMEOUT)
        except subprocess.TimeoutExpired:
            raise DemoError(f"DORIX did not end within {END_TIMEOUT:.0f} s") from None
        if status != 0:
            raise DemoError(f"DORIX ended with status {status}")
        self._start()

    def _start(self) -> None:
        with open(self._log, "wb") as log:
            self._process = self._desktop.spawn([str(self._binary)], stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                                                env=self._desktop.env | {"DORIX_TRACE": str(self._trace)})
        wait_until(lambda: READY in self.log() or self._process.poll() is not None, START_TIMEOUT)
        self.check_running()
        if READY not in self.log():
            raise DemoError(f"DORIX was not ready within {START_TIMEOUT:.0f} s")

    def check_running(self) -> None:
        status = self._process.poll()
        if status is not None:
            raise DemoError(f"DORIX ended with status {status}")

    def log(self) -> str:
        return self._log.read_text(errors="replace")

    def icon_centre(self) -> tuple[int, int]:
        """Where the user left the icon; the origin is kept upwards from the bottom left."""
        origin = json.loads(self._settings.read_text()).get("iconOrigin")
        if not origin:
            return DEFAULT_ICON_CENTRE
        return int(origin[0]) + ICON_SIZE // 2, SCREEN_HEIGHT - int(origin[1]) - ICON_SIZE // 2

    def session(self) -> str:
        """Whose session it has with its service; it begins one by itself with that of this computer."""
        def profile() -> dict:
            return json.loads(self._settings.read_text()).get("profile", {})

        wait_until(lambda: profile(), SESSION_TIMEOUT)
        return profile().get("email", "none")

    def events(self, since: int = 0) -> list[dict]:
        """The trace, but for its first `since` events."""
        lines = self._trace.read_text().split("\n")[:-1]  # what follows the last line end is being written
        return [json.loads(line) for line in lines[since:]]

    def history(self) -> list[dict]:
        """What it remembers, newest first, as any program may read it."""
        with closing(sqlite3.connect(f"file:{self._history}?mode=ro", uri=True)) as database:
            database.row_factory = sqlite3.Row
            return [dict(row) for row in database.execute("SELECT * FROM history ORDER BY created_at DESC")]
