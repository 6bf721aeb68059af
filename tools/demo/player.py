"""Plays the steps of a script as a user would, and checks each."""

import time
from pathlib import Path
from typing import Callable

from applications import TargetApplication, Terminal
from dorix import Dorix
from editor import Editor
from failure import DemoError
from outcome import Outcome, contains, inserted, sounds_like
from script import Step
from user import ASK_CHORD, HOLD_KEY, WRITE_CHORD, User
from virtual_desktop import VirtualDesktop
from voice import synthesise
from waiting import wait_until

APPLICATIONS = {"mousepad": Editor, "xterm": Terminal}

PROCESSED_TIMEOUT = 30.0
HUD_TIMEOUT = 10.0  # longer than any message stays
ARRIVAL_TIMEOUT = 3.0  # from the paste to the text in the application
UNSEEN = 1.0  # seconds in which what must not happen would have happened


class Player:
    def __init__(self, desktop: VirtualDesktop, dorix: Dorix, output: Path):
        self._desktop = desktop
        self._dorix = dorix
        self._output = output
        self._user = User(desktop)
        self._targets: dict[str, TargetApplication] = {}
        self._front: TargetApplication | None = None
        self._outcome = Outcome()

    def play(self, step: Step) -> list[str]:
        """Gives what to tell of it."""
        action = getattr(self, step.name.replace("-", "_"))
        told = action(step.argument) if step.argument else action()
        self._dorix.check_running()
        return told or []

    # The applications

    def app(self, name: str) -> None:
        if name not in APPLICATIONS:
            raise DemoError(f"the applications are {' and '.join(APPLICATIONS)}")
        if name in self._targets:
            self._targets[name].bring_to_front()
        else:
            self._targets[name] = APPLICATIONS[name](self._desktop)
        self._front = self._targets[name]

    def key(self, chord: str) -> None:
        self._user.press(*chord.split())

    def restart(self) -> list[str]:
        known = self._dorix.history()
        self._dorix.restart()
        if self._dorix.history() != known:
            raise DemoError("the history is not what it was")
        return [f"history: {len(known)} items"]

    # Utterances

    def say(self, sentence: str) -> list[str]:
        return self._dictate(sentence, lambda words: self._user.hold_and_speak(HOLD_KEY, words))

    def say_hands_free(self, sentence: str) -> list[str]:
        return self._dictate(sentence, lambda words: self._user.tap_and_speak(WRITE_CHORD, words))

    def ask(self, question: str) -> list[str]:
        words = self._synthesise(question)
        self._observe(lambda: self._until_processed(lambda: self._user.hold_and_speak(ASK_CHORD, words)))
        return self._told_untyped()

    def silent(self) -> list[str]:
        self._observe(lambda: self._until_processed(lambda: self._user.hold_in_silence(HOLD_KEY)))
        return self._told_untyped()

    def hold(self) -> None:
        self._await_hud("hidden")
        self._user.press_and_hold(HOLD_KEY)
        self._await_hud("listening")

    def escape(self) -> list[str]:
        """Drops the recording that `hold` began."""
        def escape() -> None:
            self._user.press("Escape")
            self._await_hud("hidden")
            self._user.let_go(HOLD_KEY)
            time.sleep(UNSEEN)

        self._watch(escape)
        return self._told_untyped()

    def tap(self) -> list[str]:
        def tap() -> None:
            self._user.tap(HOLD_KEY)
            time.sleep(UNSEEN)

        self._observe(tap)
        if self._outcome.phases():
            raise self._failure("a tap must show nothing")
        return self._told_untyped()

    def _dictate(self, sentence: str, speak: Callable[[Path], object]) -> list[str]:
        words = self._synthesise(sentence)
        self._observe(lambda: self._until_processed(lambda: speak(words)))
        outcome = self._outcome
        if not outcome.typed:
            raise self._failure("nothing was typed")
        if not sounds_like(sentence, outcome.typed):
            raise self._failure("what was typed is not what was said")
        if [item["answer"] for item in outcome.remembered] != [outcome.typed]:
            raise self._failure("the history does not hold what was typed")
        return outcome.lines()

    def _told_untyped(self) -> list[str]:
        if self._outcome.typed or self._outcome.remembered:
            raise self._failure("nothing should have been typed or remembered")
        return self._outcome.lines()

    def _synthesise(self, sentence: str) -> Path:
        words = self._desktop.directory / "words.wav"
        synthesise(sentence, words)
        return words

    def _until_processed(self, speak: Callable[[], object]) -> None:
        since = len(self._dorix.events())
        speak()

        def is_processed() -> bool:
            return [event["busy"] for event in self._dorix.events(since) if "busy" in event] == [True, False]

        if not wait_until(is_processed, PROCESSED_TIMEOUT):
            raise DemoError(f"DORIX did not deal with it within {PROCESSED_TIMEOUT:.0f} s")

    # What came of it

    def _observe(self, act: Callable[[], object]) -> None:
        """As `_watch`, when what the last step left on the screen has gone."""
        self._await_hud("hidden")
        self._watch(act)

    def _watch(self, act: Callable[[], object]) -> None:
        """Does what a step does to DORIX and the application in front, and keeps what came of it."""
        front = self._front_application()
        since = len(self._dorix.events())
        before = {target: target.text() for target in self._targets.values()}
        known = {item["id"] for item in self._dorix.history()}
        act()
        self._outcome = Outcome(events=self._dorix.events(since),
                                remembered=[item for item in self._dorix.history() if item["id"] not in known])
        self._outcome.typed = self._arrived(front, before[front])
        for target, text in before.items():
            if target is not front and target.text() != text:
                raise self._failure(f"the text went to {target.name}, not to {front.name}")

    def _arrived(self, target: TargetApplication, before: str) -> str:
        """What the application has got, when it should have got something: it takes its time."""
        if any(event.get("hud") == "done" for event in self._outcome.events):
            wait_until(lambda: target.text() != before, ARRIVAL_TIMEOUT)
            text = ""
            while text != (text := target.text()):
                time.sleep(0.1)
        return inserted(before, target.text())

    def _front_application(self) -> TargetApplication:
        if not self._front:
            raise DemoError("no application is open; open one first, as in: app mousepad")
        return self._front

    def _await_hud(self, phase: str) -> None:
        if not wait_until(lambda: self._hud() == phase, HUD_TIMEOUT):
            raise DemoError(f"the HUD shows {self._hud()}, not {phase}")

    def _hud(self) -> str:
        phases = [event["hud"] for event in self._dorix.events() if "hud" in event]
        return phases[-1] if phases else "hidden"

    def _failure(self, text: str) -> DemoError:
        told = "; ".join(self._outcome.lines())
        return DemoError(f"{text} ({told})" if told else text)

    # Expectations and pictures

    def expect(self, expectation: str) -> None:
        what, _, wanted = expectation.partition(" ")
        actual = {
            "typed": lambda: contains(self._outcome.typed, wanted),
            "route": lambda: self._outcome.route() == wanted,
            "hud": lambda: self._outcome.phases() == wanted.split(),
            "message": lambda: any(wanted in text for text in self._outcome.messages()),
        }
        if not actual[what]():
            raise self._failure(f"expected {expectation}")

    def screenshot(self, name: str) -> list[str]:
        picture = self._output / name
        self._desktop.screenshot(picture)
        return [f"screenshot: {picture}"]
