"""What came of a step: what was typed and where, which road the words took, what the HUD showed."""

import re
from dataclasses import dataclass, field
from difflib import SequenceMatcher
from os.path import commonprefix
from textwrap import shorten

HEARD_WELL = 0.6  # of the words, in their order; the recogniser mistakes one now and then
ASKED = "asked.jsonl"  # what a language model was asked, in the desktop's folder
ANSWER_SHOWN = 100  # characters
MESSAGES = ("done", "info", "error", "learned")


@dataclass
class Outcome:
    typed: str = ""
    events: list[dict] = field(default_factory=list)
    remembered: list[dict] = field(default_factory=list)

    def route(self) -> str:
        """Where the utterance went; nothing when there was none."""
        routes = [event["route"] for event in self.events if "route" in event]
        if not routes and any("busy" in event for event in self.events):
            routes.append("none")
        return ", ".join(routes)

    def phases(self) -> list[str]:
        """What the HUD showed, one after the other; a message that went by itself has not to be told."""
        shown = [event for event in self.events if "hud" in event]
        if len(shown) > 1 and shown[-1]["hud"] == "hidden" and shown[-2]["hud"] in MESSAGES:
            shown.pop()
        return [event["hud"] for event in shown]

    def messages(self) -> list[str]:
        return [event["text"] for event in self.events if event.get("text")]

    def lines(self) -> list[str]:
        told = [("typed", self.typed.replace("\n", "\\n")), ("route", self.route()),
                ("hud", ", ".join(self.phases())), ("message", " / ".join(self.messages()))]
        told += [("history", f"{item['kind']}, {item['app']}") for item in self.remembered]
        told += [("answer", shorten(item["answer"], ANSWER_SHOWN)) for item in self.remembered
                 if item["answer"] != self.typed.strip()]
        return [f"{name}: {value}" for name, value in told if value]


def inserted(before: str, after: str) -> str:
    """What was inserted in one place to make `after` of `before`; all of `after` when something was replaced, as nobody
    can tell then where the new text begins."""
    start = len(commonprefix([before, after]))
    end = len(before) - start
    if end and not after.endswith(before[start:]):
        return after
    return after[start:len(after) - end]


def words(text: str) -> list[str]:
    return re.findall(r"[\w']+", text.casefold())


def sounds_like(spoken: str, text: str) -> bool:
    return SequenceMatcher(None, words(spoken), words(text), autojunk=False).ratio() >= HEARD_WELL


def contains(text: str, wanted: str) -> bool:
    """Whether the words that are wanted stand in the text, one after the other."""
    return f" {' '.join(words(wanted))} " in f" {' '.join(words(text))} "
