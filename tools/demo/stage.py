"""The applications on the desktop with DORIX among them, and what a step does to them."""

import time
from typing import Callable

from applications import TargetApplication, Terminal
from dorix import Dorix
from editor import Editor
from failure import DemoError
from outcome import Outcome, inserted
from practice import Practice
from virtual_desktop import VirtualDesktop
from waiting import wait_until

APPLICATIONS = {"mousepad": Editor, "xterm": Terminal}
OWN = "dorix"

HUD_TIMEOUT = 10.0  # longer than any message stays
ARRIVAL_TIMEOUT = 3.0  # from the paste to the text in the application


class Stage:
    def __init__(self, desktop: VirtualDesktop, dorix: Dorix):
        self.outcome = Outcome()  # of the last step that was observed
        self._desktop = desktop
        self._dorix = dorix
        self._targets: dict[str, TargetApplication | Practice] = {}
        self._front: TargetApplication | Practice | None = None

    def bring_to_front(self, name: str) -> None:
        """Opens it when it is not open yet."""
        if name in self._targets:
            self._targets[name].bring_to_front()
        elif name == OWN:
            self._targets[name] = Practice(self._desktop, self._dorix)
        elif name in APPLICATIONS:
            self._targets[name] = APPLICATIONS[name](self._desktop)
        else:
            raise DemoError(f"the applications are {', '.join(APPLICATIONS)} and {OWN}")
        self._front = self._targets[name]

    def front(self) -> TargetApplication | Practice:
        """The application that is in front, DORIX's own windows apart."""
        if not self._front:
            raise DemoError("no application is open; open one first, as in: app mousepad")
        return self._front

    def observe(self, act: Callable[[], object]) -> None:
        """As `watch`, when what the last step left on the screen has gone."""
        self.await_hud("hidden")
        self.watch(act)

    def watch(self, act: Callable[[], object]) -> None:
        """Does what a step does to DORIX and the application in front, and keeps what came of it."""
        front = self.front()
        since = len(self._dorix.events())
        before = {target: target.text() for target in self._targets.values()}
        known = {item["id"] for item in self._dorix.history()}
        act()
        self.outcome = Outcome(events=self._dorix.events(since),
                               remembered=[item for item in self._dorix.history() if item["id"] not in known])
        self.outcome.typed = self._arrived(front, before[front])
        for target, text in before.items():
            if target is not front and target.text() != text:
                raise self.failure(f"the text went to {target.name}, not to {front.name}")

    def _arrived(self, target: TargetApplication | Practice, before: str) -> str:
        """What the application has got, when it should have got something: it takes its time."""
        if any(event.get("hud") == "done" for event in self.outcome.events):
            wait_until(lambda: target.text() != before, ARRIVAL_TIMEOUT)
            text = ""
            while text != (text := target.text()):
                time.sleep(0.1)
        return inserted(before, target.text())

    def await_hud(self, phase: str) -> None:
        if not wait_until(lambda: self._hud() == phase, HUD_TIMEOUT):
            raise DemoError(f"the HUD shows {self._hud()}, not {phase}")

    def _hud(self) -> str:
        phases = [event["hud"] for event in self._dorix.events() if "hud" in event]
        return phases[-1] if phases else "hidden"

    def failure(self, text: str) -> DemoError:
        told = "; ".join(self.outcome.lines())
        return DemoError(f"{text} ({told})" if told else text)
