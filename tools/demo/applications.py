"""The applications that are dictated into."""

import subprocess
from abc import ABC, abstractmethod

from failure import DemoError
from virtual_desktop import VirtualDesktop
from waiting import wait_until

START_TIMEOUT = 20.0


class TargetApplication(ABC):
    """An application with a cursor in it. Once it is built its window is in front."""

    def __init__(self, desktop: VirtualDesktop, name: str, command: list[str], place: tuple[int, int]):
        self.name = name
        self._desktop = desktop
        with open(desktop.log(name), "wb") as log:
            self._process = desktop.spawn(command, stdin=subprocess.DEVNULL, stdout=log, stderr=log)
        self.pid = self._process.pid
        self.bring_to_front()
        self._window("windowmove", *map(str, place))

    @abstractmethod
    def text(self) -> str:
        """All that stands in it."""

    def bring_to_front(self) -> None:
        """Does what a click into the taskbar does, and waits until the window has the keyboard."""
        self._window("windowactivate" if self._desktop.has_window_manager else "windowfocus")
        if not wait_until(self.is_in_front, START_TIMEOUT):
            raise DemoError(f"the window of {self.name} did not come to the front")

    def _window(self, *action: str) -> None:
        search = self._desktop.spawn(["xdotool", "search", "--sync", "--onlyvisible", "--class", self.name, *action])
        try:
            search.wait(START_TIMEOUT)
        except subprocess.TimeoutExpired:
            search.kill()
            raise DemoError(f"{self.name} shows no window") from None

    def is_in_front(self) -> bool:
        ask = self._desktop.spawn(["xdotool", "getwindowfocus", "getwindowpid"], stdout=subprocess.PIPE,
                                  stderr=subprocess.DEVNULL)
        return ask.communicate()[0].strip() == str(self.pid).encode()


class Terminal(TargetApplication):
    """A terminal in which a program reads what is typed, character by character."""

    def __init__(self, desktop: VirtualDesktop):
        self._received = desktop.directory / "terminal.txt"
        self._received.touch()
        reading = f"stty -icanon && exec cat >'{self._received}'"
        terminal = ["xterm", "-fa", "DejaVu Sans Mono", "-geometry", "60x20", "-e", "sh", "-c", reading]
        super().__init__(desktop, "xterm", terminal, (700, 40))

    def text(self) -> str:
        return self._received.read_text(errors="replace")
