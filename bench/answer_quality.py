#!/usr/bin/python3
"""How many questions about a small collection of documents the service answers without a model.

    bench/answer_quality.py [--build build/release] [--part development] [--show]

Documents and questions are in tests/corpus/answers. The service is the real one, started in a folder of its own, and is
asked as the program asks it: with eight documents as hits of the memory, the right one among them and otherwise those
that share most words with the question, in an order that has nothing to do with the question. The figures:

- sentence: the first quotation holds the answer, and is of the right document;
- source: the first quotation is of the right document;
- cited: any of the quotations holds the answer, and is of the right document;
- none: of the questions that no document answers, those that are told so.
"""

import argparse
import json
import random
import re
import sys
import unicodedata
from collections import Counter
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
CORPUS = ROOT / "tests/corpus/answers"
sys.path.insert(0, str(ROOT / "tests/e2e/service"))

LANGUAGES = ("es", "en")
PARTS = ("development", "held-out")
HITS = 8
BEGINNING = 5  # letters of a word that its other forms share
QUOTATION = re.compile(r"(?:- )?[«“](.*)[»”] — (.*?) ?\[(\d+)\]")


@dataclass
class Item:
    id: str
    part: str
    question: str
    document: str | None
    answer: str | None

    @property
    def language(self) -> str:
        return self.id[:2]


@dataclass
class Outcome:
    sentence: bool = False
    source: bool = False
    cited: bool = False
    none: bool = False


def questions() -> list[Item]:
    return [Item(**json.loads(line)) for language in LANGUAGES
            for line in (CORPUS / f"{language}.jsonl").read_text(encoding="utf-8").splitlines()]


def documents() -> dict[str, str]:
    return {path.name: path.read_text(encoding="utf-8") for path in sorted((CORPUS / "documents").iterdir())}


def beginnings(text: str) -> set[str]:
    folded = "".join(c for c in unicodedata.normalize("NFD", text.casefold()) if unicodedata.category(c) != "Mn")
    return {word[:BEGINNING] for word in re.findall(r"[a-z0-9]{4,}", folded)}


def hits_for(item: Item, texts: dict[str, str]) -> list[str]:
    """The names of the documents that the question comes with."""
    asked = beginnings(item.question)
    others = sorted((name for name in texts if name != item.document),
                    key=lambda name: (-len(asked & beginnings(name + " " + texts[name])), name))
    names = [item.document] if item.document else []
    names += others[:HITS - len(names)]
    random.Random(item.id).shuffle(names)
    return names


def check(item: Item, texts: dict[str, str]):
    """That the corpus says what it means."""
    if item.document and item.answer not in texts[item.document]:
        raise SystemExit(f"{item.id}: {item.answer!r} is not in {item.document}")


def outcome_of(item: Item, names: list[str], events: list[dict]) -> Outcome:
    if item.document is None:
        return Outcome(none=events[0]["type"] == "error")
    quotations = [QUOTATION.fullmatch(line) for event in events for line in event.get("text", "").splitlines()]
    found = [(item.answer in match[1], names[int(match[3]) - 1] == item.document) for match in quotations if match]
    return Outcome(sentence=found[:1] == [(True, True)], source=bool(found) and found[0][1], cited=(True, True) in found)


def ask_all(binary: Path, items: list[Item], show: bool = False) -> list[Outcome]:
    from harness import Service
    texts = documents()
    service = Service(str(binary))
    try:
        token = service.sign_in()
        outcomes = []
        for item in items:
            check(item, texts)
            names = hits_for(item, texts)
            memory = [{"n": n, "title": name, "text": texts[name]} for n, name in enumerate(names, 1)]
            events = service.events({"question": item.question, "appName": "Memoria", "memory": memory}, token)
            outcomes.append(outcome_of(item, names, events))
            right = outcomes[-1].none if item.document is None else outcomes[-1].sentence
            if show and not right and item.part == PARTS[0]:
                print(f"{item.id} {item.question}\n  {item.document}: {item.answer}\n  {events[0]}\n")
        return outcomes
    finally:
        service.stop()


def counts_of(items: list[Item], outcomes: list[Outcome]) -> Counter:
    counts = Counter()
    for item, outcome in zip(items, outcomes, strict=True):
        counts["answered" if item.document else "unanswered"] += 1
        counts.update({name: int(value) for name, value in vars(outcome).items()})
    return counts


def print_table(items: list[Item], outcomes: list[Outcome]):
    print("| Part | Language | Questions | Sentence | Source | Cited | None |\n|---|---|---|---|---|---|---|")
    for part in PARTS:
        for language in (*LANGUAGES, None):
            chosen = [(item, outcome) for item, outcome in zip(items, outcomes, strict=True)
                      if item.part == part and language in (None, item.language)]
            if not chosen:
                continue
            counts = counts_of(*map(list, zip(*chosen)))
            answered = counts["answered"]
            print(f"| {part} | {language or 'both'} | {len(chosen)} | {counts['sentence']} of {answered} | "
                  f"{counts['source']} of {answered} | {counts['cited']} of {answered} | "
                  f"{counts['none']} of {counts['unanswered']} |")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=Path, default=ROOT / "build/release")
    parser.add_argument("--part", choices=PARTS, help="the other one is not even asked")
    parser.add_argument("--show", action="store_true", help="the questions of the development part that are answered wrong")
    options = parser.parse_args()
    items = [item for item in questions() if options.part in (None, item.part)]
    print_table(items, ask_all(options.build / "src/service/dorix-service", items, options.show))


if __name__ == "__main__":
    main()
