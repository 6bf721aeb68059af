"""Plays the steps of a script as a user would, and checks each."""

import json
import os
import signal
import subprocess
import time
from pathlib import Path
from typing import Callable

from dorix import Dorix
from failure import DemoError
from outcome import ASKED, contains, sounds_like
from panel import Panel
from processes import child_of
from recogniser import ACCIDENTS, Accident
from script import Step
from spanish_speech import recording
from stage import Stage
from user import ASK_CHORD, HOLD_KEY, LEAD, WRITE_CHORD, User
from virtual_desktop import VirtualDesktop
from voice import seconds_of, synthesise
from waiting import wait_until

PROCESSED_TIMEOUT = 60.0  # a service that says nothing is waited for 20 s
FRONT_TIMEOUT = 3.0  # from the panel's end to the keyboard being the application's again
SERVICE_SIGNALS = {"stopped": signal.SIGSTOP, "continued": signal.SIGCONT}
ANSWER_TIMEOUT = 30.0
ANSWERED = ("assistantScreen", "assistantSelection", "recap", "search")  # the routes that end on the card
SILENCE = 1.5  # seconds of holding the key without a word
OPENED_TIMEOUT = 10.0  # another application starts
SPEECH_TIMEOUT = 10.0  # the speech server starts
UNSEEN = 1.0  # seconds in which what must not happen would have happened


class Player:
    def __init__(self, desktop: VirtualDesktop, dorix: Dorix, output: Path):
        self._desktop = desktop
        self._dorix = dorix
        self._output = output
        self._user = User(desktop)
        self._stage = Stage(desktop, dorix)
        self._panel = Panel(dorix)
        self._accident = ""  # what is to befall the recogniser next
        self._query = ""  # the panel keeps it while it is closed
        self._listed: list[dict] = []

    def play(self, step: Step) -> list[str]:
        """Gives what to tell of it."""
        action = getattr(self, "play_recording" if step.name == "play" else step.name.replace("-", "_"))
        told = action(step.argument) if step.argument else action()
        self._dorix.check_running()
        return told or []

    # The applications

    def app(self, name: str) -> None:
        self._stage.bring_to_front(name)

    def type(self, text: str) -> None:
        self._user.type(text)

    def key(self, chord: str) -> None:
        self._user.press(*chord.split())

    def layout(self, arguments: str) -> None:
        if self._desktop.spawn(["setxkbmap", "-option", "", *arguments.split()]).wait() != 0:
            raise DemoError("there is no such layout")

    def restart(self) -> list[str]:
        known = self._dorix.history()
        self._dorix.restart()
        if self._dorix.history() != known:
            raise DemoError("the history is not what it was")
        self._query = ""
        return [f"history: {len(known)} items"]

    # Utterances

    def say(self, sentence: str) -> list[str]:
        return self._dictate(sentence, self._synthesise(sentence),
                             lambda words: self._user.hold_and_speak(HOLD_KEY, words))

    def play_recording(self, name: str) -> list[str]:
        sound, sentence = recording(name)
        return self._dictate(sentence, sound, lambda words: self._user.hold_and_speak(HOLD_KEY, words))

    def say_hands_free(self, sentence: str) -> list[str]:
        return self._dictate(sentence, self._synthesise(sentence),
                             lambda words: self._user.tap_and_speak(WRITE_CHORD, words))

    def ask(self, question: str) -> list[str]:
        return self._order(question, ASK_CHORD)

    def order(self, sentence: str) -> list[str]:
        return self._order(sentence, HOLD_KEY)

    def _order(self, sentence: str, keys: tuple[str, ...]) -> list[str]:
        words = self._synthesise(sentence)
        self._stage.observe(lambda: self._until_answered(lambda: self._user.hold_and_speak(keys, words)))
        outcome = self._stage.outcome
        if outcome.route() in ANSWERED and outcome.typed:
            raise self._stage.failure("an answer should not be typed")
        return outcome.lines()

    def _until_answered(self, speak: Callable[[], object]) -> None:
        since = len(self._dorix.events())
        known = len(self._dorix.history())
        self._until_processed(speak)

        def is_answered() -> bool:
            return any(event.get("card") in ("finished", "failed") for event in self._dorix.events(since))

        goes_to_card = any(event.get("route") in ANSWERED for event in self._dorix.events(since))
        if goes_to_card and not wait_until(is_answered, ANSWER_TIMEOUT):
            raise DemoError(f"no answer came within {ANSWER_TIMEOUT:.0f} s")
        if goes_to_card:  # where nothing was found, nothing is remembered
            wait_until(lambda: len(self._dorix.history()) > known, UNSEEN)

    def silent(self) -> list[str]:
        self._stage.observe(lambda: self._until_processed(lambda: self._user.hold(HOLD_KEY, SILENCE)))
        return self._told_untyped()

    def hold(self) -> None:
        self._stage.await_hud("hidden")
        self._user.press_and_hold(HOLD_KEY)
        self._stage.await_hud("listening")

    def escape(self) -> list[str]:
        """Drops the recording that `hold` began."""
        def escape() -> None:
            self._user.press("Escape")
            self._stage.await_hud("hidden")
            self._user.let_go(HOLD_KEY)
            time.sleep(UNSEEN)

        self._stage.watch(escape)
        return self._told_untyped()

    def tap(self) -> list[str]:
        def tap() -> None:
            self._user.tap(HOLD_KEY)
            time.sleep(UNSEEN)

        self._stage.observe(tap)
        if self._stage.outcome.phases():
            raise self._stage.failure("a tap must show nothing")
        return self._told_untyped()

    def recogniser(self, what: str) -> None:
        if what not in ACCIDENTS:
            raise DemoError(f"a recogniser may be {' or '.join(ACCIDENTS)}")
        self._accident = what

    def service(self, what: str) -> None:
        """Befalls the service of this computer, once DORIX has a session with it."""
        if what not in SERVICE_SIGNALS:
            raise DemoError(f"the service may be {' or '.join(SERVICE_SIGNALS)}")
        self._dorix.session()
        service = child_of(self._dorix.pid, "dorix-service")
        if service is None:
            raise DemoError("there is no service")
        os.kill(service, SERVICE_SIGNALS[what])

    def _dictate(self, sentence: str, words: Path, speak: Callable[[Path], object]) -> list[str]:
        accident = self._accident and Accident(self._dorix.pid, self._accident, LEAD + seconds_of(words) / 2)
        self._accident = ""
        self._stage.observe(lambda: self._until_processed(lambda: speak(words)))
        outcome = self._stage.outcome
        if not outcome.typed:
            raise self._stage.failure("nothing was typed")
        if not sounds_like(sentence, outcome.typed):
            raise self._stage.failure("what was typed is not what was said")
        # A blank may be put between what stood there and the text.
        if [item["answer"] for item in outcome.remembered] != [outcome.typed.removeprefix(" ")]:
            raise self._stage.failure("the history does not hold what was typed")
        return outcome.lines() + ([accident.outcome()] if accident else [])

    def _told_untyped(self) -> list[str]:
        if self._stage.outcome.typed or self._stage.outcome.remembered:
            raise self._stage.failure("nothing should have been typed or remembered")
        return self._stage.outcome.lines()

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

    # The panel

    def open_panel(self) -> list[str]:
        self._user.click(*self._dorix.icon_centre())
        return self._list("panel")

    def search(self, text: str) -> list[str]:
        self._query = text
        self._user.press("ctrl+f")
        self._user.type(text)
        return self._list("found")

    def _list(self, what: str) -> list[str]:
        self._listed = [item for item in self._dorix.history() if holds(item, self._query)]
        items = self._panel.await_items([item["title"] for item in self._listed])
        return [f"{what}: {len(items)} items", *(f"  {item}" for item in items)]

    def compose(self, question: str) -> list[str]:
        """In the open panel."""
        def send() -> None:
            known = len(self._dorix.history())
            self._user.click(*self._panel.composer())
            self._user.type(question)
            self._user.press("Return")
            if not wait_until(lambda: len(self._dorix.history()) > known, ANSWER_TIMEOUT):
                raise DemoError(f"no answer came within {ANSWER_TIMEOUT:.0f} s")

        self._stage.observe(send)
        return self._stage.outcome.lines()

    def reinsert(self) -> list[str]:
        """By the mouse: the first item of the list, then the button."""
        def press() -> None:
            self._user.click(*self._panel.first_item())
            self._user.click(*self._panel.insert_button())

        return self._reinsert(press)

    def reinsert_by_key(self) -> list[str]:
        def press() -> None:
            if not self._panel.is_first_selected():
                self._user.press("Down")
            self._user.press("Return")

        return self._reinsert(press)

    def _reinsert(self, press: Callable[[], None]) -> list[str]:
        if not self._listed:
            raise DemoError("the panel lists nothing to insert")

        def insert() -> None:
            press()
            self._panel.await_gone()
            self._stage.await_hud("done")

        self._stage.observe(insert)
        if self._stage.outcome.typed != self._listed[0]["answer"]:
            raise self._stage.failure("what was typed is not the item's text")
        return self._stage.outcome.lines()

    def press(self, button: str) -> None:
        self._user.click(*self._panel.button(button))

    def close_panel(self) -> None:
        self._user.press("Escape")
        self._panel.await_gone()
        if not wait_until(self._stage.front().is_in_front, FRONT_TIMEOUT):
            raise DemoError(f"{self._stage.front().name} did not get the keyboard back")

    # Expectations and pictures

    def expect(self, expectation: str) -> None:
        what, _, wanted = expectation.partition(" ")
        outcome = self._stage.outcome
        actual = {
            "answer": lambda: any(wanted in item["answer"] for item in outcome.remembered),
            "asked": lambda: wanted in self._asked(),
            "card": lambda: self._card() == wanted,
            "opened": lambda: wait_until(lambda: self._has_window(wanted), OPENED_TIMEOUT),
            "speaks": lambda: wait_until(lambda: self._speaks() == {wanted == "yes"}, SPEECH_TIMEOUT),
            "typed": lambda: contains(self._stage.outcome.typed, wanted),
            "route": lambda: self._stage.outcome.route() == wanted,
            "hud": lambda: self._stage.outcome.phases() == wanted.split(),
            "gap": lambda: outcome.typed.startswith(" ") == (wanted == "yes"),
            "panel": lambda: self._panel.comes_to_show(wanted),
            "engine": lambda: [json.loads(item["meta"]).get("engine") for item in self._stage.outcome.remembered] == [wanted],
            "window": lambda: self._panel.comes_to_show(wanted),
            "message": lambda: any(wanted in text for text in self._stage.outcome.messages()),
        }
        if not actual[what]():
            raise self._stage.failure(f"expected {expectation}")

    def _card(self) -> str:
        """What became of the last question."""
        return next((event["card"] for event in reversed(self._stage.outcome.events) if "card" in event), "none")

    def _has_window(self, title: str) -> bool:
        return self._desktop.spawn(["xdotool", "search", "--onlyvisible", "--name", title],
                                   stdout=subprocess.DEVNULL).wait() == 0

    def _speaks(self) -> set[bool]:
        """Whether DORIX says so, and whether it can be heard."""
        told = [event["speaking"] for event in self._dorix.events() if "speaking" in event]
        played = self._desktop.spawn(["pactl", "list", "short", "sink-inputs"], stdout=subprocess.PIPE).communicate()[0]
        return {bool(told and told[-1]), bool(played.strip())}

    def _asked(self) -> str:
        """What the language model was asked last."""
        record = self._desktop.directory / ASKED
        lines = record.read_text().splitlines() if record.exists() else []
        return json.dumps(json.loads(lines[-1])["messages"], ensure_ascii=False) if lines else ""

    def screenshot(self, name: str) -> list[str]:
        picture = self._output / name
        self._desktop.screenshot(picture)
        return [f"screenshot: {picture}"]


def holds(item: dict, text: str) -> bool:
    """Whether a search for the text finds the item; the texts are without accents."""
    return any(text.casefold() in item[field].casefold() for field in ("title", "query", "answer", "app"))
