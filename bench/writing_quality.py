#!/usr/bin/python3
"""How near the writing engines come to what a careful person would have typed.

    bench/writing_quality.py [--build build/release] [--engine basic --engine rules] [--by language --by tone]
    bench/writing_quality.py --engine model --model-url http://127.0.0.1:11434/v1 --model NAME
    bench/writing_quality.py --engine rules --show 20

Dictations and texts are in tests/corpus/writing. The engines: `basic` is the program's own, `rules` the service without
a model, `model` the service with the OpenAI-compatible model that is named (its key in DORIX_SERVICE_MODEL_KEY). The
service is the real one, started in a folder of its own. The figures:

- word errors: words wrong, missing or too many, of those of the text, without the small words that bind it together;
- fillers left: sounds, filling words and words said twice that remain, of those that a person leaves out;
- punctuation, capitals: F1 over the marks (line breaks and list markers among them) and the capitals of the words that
  both texts have; what stands at words that only one has is missing or too much;
- faithfulness: the share of the words written that were said. Greetings, closings and the signature count as said.

Where a text may be written in several ways, the one that is nearest to the engine's counts.
"""

import argparse
import itertools
import json
import os
import re
import subprocess
import sys
import unicodedata
from collections import Counter
from dataclasses import dataclass, field
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
CORPUS = ROOT / "tests/corpus/writing"
sys.path.insert(0, str(ROOT / "tests/e2e/service"))

LANGUAGES = ("es", "en")
PARTS = ("development", "held-out")
OPENING, CLOSING = "¿¡«“\"([", ",.;:!?…»”\")]"
MARKER = re.compile(r"-|[-•*]|\d+[.)]")
CHOICE = re.compile(r"\{([^{}]*)\}")
LONGEST_JOIN = 4  # words said that make one name of a program: "get user name by id"

SMALL_WORDS = {
    "es": set("a al con de del e el en es ha he la las le les lo los me mi nos o os para por que se si su sus te tu u un "
              "una unas unos y ya".split()),
    "en": set("a an and are as at be by for from has have he i in is it its of on or our she so that the their they "
              "this to was we were will with you your".split()),
}
FILLERS = {
    "es": ["eh", "ehm", "em", "mmm", "este", "bueno", "pues", "vale", "o sea", "a ver", "en plan", "mira", "nada"],
    "en": ["um", "uh", "er", "like", "you know", "i mean", "so", "okay", "well", "basically", "yeah"],
}
GREETINGS = set("hola saludo saludos gracias buenos buenas querido querida estimado estimada atentamente cordialmente "
                "hi hello dear regards thanks".split())


@dataclass
class Item:
    id: str
    part: str
    language: str
    tone: str
    app: str
    said: str
    texts: list[str]


@dataclass
class Word:
    text: str
    marks: Counter  # what stands at it, and before it

    @property
    def key(self) -> str:
        return self.text.lower().replace("’", "'")

    def cost_against(self, other: "Word") -> int:
        return 0 if (self.text, self.marks) == (other.text, other.marks) else 1 if self.key == other.key else 2


def variants(text: str) -> list[str]:
    """All the texts that "a {b|c} d" stands for."""
    pieces = CHOICE.split(text)
    choices = [piece.split("|") if i % 2 else [piece] for i, piece in enumerate(pieces)]
    return ["".join(choice) for choice in itertools.product(*choices)]


def corpus() -> list[Item]:
    items = []
    for language in LANGUAGES:
        for line in (CORPUS / f"{language}.jsonl").read_text(encoding="utf-8").splitlines():
            row = json.loads(line)
            items.append(Item(row["id"], row["part"], language, row["tone"], row["app"], row["said"],
                              variants(row["text"])))
    return items


def words_of(text: str) -> list[Word]:
    words: list[Word] = []
    waiting: Counter = Counter()  # marks for the next word
    for number, line in enumerate(filter(str.strip, text.split("\n"))):
        if number > 0:
            waiting["line"] += 1
        for at, token in enumerate(line.split()):
            if at == 0 and MARKER.fullmatch(token):
                waiting["item"] += 1
                continue
            word = token.lstrip(OPENING)
            opening = token[:len(token) - len(word)]
            bare = word.rstrip(CLOSING)
            closing = word[len(bare):]
            if bare:
                words.append(Word(bare, waiting + Counter(opening) + Counter(closing)))
                waiting = Counter()
            elif words:  # marks that stand by themselves
                words[-1].marks.update(opening + closing)
    return words


def pairs_between(expected: list[Word], written: list[Word]) -> tuple[int, list[tuple[Word | None, Word | None]]]:
    """The cheapest way from one to the other: its cost, and which words go with which. None: with nothing."""
    rows = [[2 * j for j in range(len(written) + 1)]]
    for i, word in enumerate(expected, 1):
        row = [2 * i]
        for j, other in enumerate(written, 1):
            same = rows[i - 1][j - 1] + word.cost_against(other)
            row.append(min(same, rows[i - 1][j] + 2, row[j - 1] + 2))
        rows.append(row)
    pairs: list[tuple[Word | None, Word | None]] = []
    i, j = len(expected), len(written)
    while i or j:
        if i and j and rows[i][j] == rows[i - 1][j - 1] + expected[i - 1].cost_against(written[j - 1]):
            i, j = i - 1, j - 1
            pairs.append((expected[i], written[j]))
        elif i and rows[i][j] == rows[i - 1][j] + 2:
            i -= 1
            pairs.append((expected[i], None))
        else:
            j -= 1
            pairs.append((None, written[j]))
    return rows[-1][-1], pairs[::-1]


def errors_between(expected: list[str], written: list[str]) -> int:
    row = list(range(len(written) + 1))
    for i, word in enumerate(expected, 1):
        diagonal, row[0] = row[0], i
        for j, other in enumerate(written, 1):
            diagonal, row[j] = row[j], min(row[j] + 1, row[j - 1] + 1, diagonal + (word != other))
    return row[-1]


def fillers_in(words: list[Word], language: str) -> Counter:
    keys = [word.key for word in words]
    found = Counter(f"{a} {a}" for a, b in zip(keys, keys[1:]) if a == b and a.isalpha())
    for filler in FILLERS[language]:
        phrase = filler.split()
        found[filler] += sum(keys[at:at + len(phrase)] == phrase for at in range(len(keys)))
    return found


def fold(text: str) -> str:
    return "".join(c for c in unicodedata.normalize("NFD", text.casefold()) if unicodedata.category(c) != "Mn")


def letter_runs(text: str) -> list[str]:
    return re.findall(r"[^\W\d_]+", fold(text))


def invented(written: list[Word], said: str) -> list[str]:
    """The words that nobody said. What holds a digit is left to the word errors."""
    runs = letter_runs(said)
    known = {"".join(runs[at:at + count]) for at in range(len(runs)) for count in range(1, LONGEST_JOIN + 1)}
    names = [word for word in written if not any(c.isdigit() for c in word.text)]
    return [word.text for word in names if any(run not in known | GREETINGS for run in letter_runs(word.text))]


@dataclass
class Hits:
    """What is there and should be, is there and should not, and is missing."""
    right: int = 0
    extra: int = 0
    missing: int = 0

    def add(self, expected: Counter, written: Counter):
        right = sum((expected & written).values())
        self.right += right
        self.extra += sum(written.values()) - right
        self.missing += sum(expected.values()) - right

    @property
    def f1(self) -> float:
        return 2 * self.right / (2 * self.right + self.extra + self.missing or 1)


@dataclass
class Score:
    words: int = 0
    errors: int = 0
    fillers: int = 0
    left: int = 0
    written: int = 0
    invented: int = 0
    marks: Hits = field(default_factory=Hits)
    capitals: Hits = field(default_factory=Hits)

    def add(self, item: Item, text: str):
        written = words_of(text)
        tries = [(pairs_between(words_of(variant), written), words_of(variant)) for variant in item.texts]
        (_, pairs), expected = min(tries, key=lambda each: each[0][0])
        content = [[word.key for word in words if word.key not in SMALL_WORDS[item.language]]
                   for words in (expected, written)]
        self.words += len(content[0])
        self.errors += errors_between(*content)
        kept = fillers_in(expected, item.language)
        self.fillers += (fillers_in(words_of(item.said), item.language) - kept).total()
        self.left += (fillers_in(written, item.language) - kept).total()
        self.written += len(written)
        self.invented += len(invented(written, item.said))
        for one, other in pairs:
            self.marks.add(one.marks if one else Counter(), other.marks if other else Counter())
            self.capitals.add(*(Counter(word.text for word in (each,) if word and word.text != word.key)
                                for each in (one, other)))

    @property
    def word_errors(self) -> float:
        return self.errors / (self.words or 1)

    @property
    def fillers_left(self) -> float:
        return self.left / (self.fillers or 1)

    @property
    def faithfulness(self) -> float:
        return 1 - self.invented / (self.written or 1)

    def row(self) -> str:
        return (f"{100 * self.word_errors:.1f} % | {100 * self.fillers_left:.0f} % | {self.marks.f1:.2f} | "
                f"{self.capitals.f1:.2f} | {self.faithfulness:.3f}")


def by_basic(lab: Path, items: list[Item]) -> list[str]:
    asked = "".join(json.dumps({"transcript": item.said, "language": item.language}) + "\n" for item in items)
    answers = subprocess.run([lab, "polish-basic"], input=asked, text=True, capture_output=True, check=True).stdout
    return [json.loads(line)["text"] for line in answers.splitlines()]


def by_service(binary: Path, items: list[Item], **settings: str) -> list[str]:
    from harness import Service
    service = Service(str(binary), **settings)
    try:
        token = service.sign_in()
        texts = []
        for item in items:
            status, answer = service.call("POST", "/v1/ai/write", {
                "transcript": item.said, "appName": item.app, "tone": item.tone, "allowAsk": False}, token)
            if status != 200:
                raise SystemExit(f"{item.id}: the service answers {status}: {answer}")
            texts.append(answer["texto"])
        return texts
    finally:
        service.stop()


def texts_by(engine: str, options: argparse.Namespace, items: list[Item]) -> list[str]:
    if engine == "basic":
        return by_basic(options.build / "tools/lab/dorix-lab", items)
    settings = {}
    if engine == "model":
        key = os.environ.get("DORIX_SERVICE_MODEL_KEY")
        settings = {"MODEL_URL": options.model_url, "MODEL": options.model} | ({"MODEL_KEY": key} if key else {})
    return by_service(options.build / "src/service/dorix-service", items, **settings)


def score_of(items: list[Item], texts: list[str], wanted=lambda item: True) -> Score:
    score = Score()
    for item, text in zip(items, texts, strict=True):
        if wanted(item):
            score.add(item, text)
    return score


def print_table(engines: dict[str, list[str]], items: list[Item], by: str | None):
    print(f"| Engine | Part |{f' {by.capitalize()} |' if by else ''} Dictations | Word errors | Fillers left | "
          "Punctuation | Capitals | Faithfulness |")
    print("|---" * (9 if by else 8) + "|")
    groups = list(dict.fromkeys(getattr(item, by) for item in items)) if by else [None]
    for part, group, engine in itertools.product(PARTS, groups, engines):
        def wanted(item):
            return item.part == part and (not by or getattr(item, by) == group)
        count = sum(map(wanted, items))
        if count:
            name = f" {group} |" if by else ""
            print(f"| {engine} | {part} |{name} {count} | {score_of(items, engines[engine], wanted).row()} |")
    print()


def show_farthest(items: list[Item], texts: list[str], count: int):
    """Only of the part that rules may be made with."""
    far = []
    for item, text in zip(items, texts, strict=True):
        if item.part == PARTS[0]:
            cost, nearest = min((pairs_between(words_of(each), words_of(text))[0], each) for each in item.texts)
            far.append((cost, item, text, nearest))
    for cost, item, text, nearest in sorted(far, key=lambda each: -each[0])[:count]:
        print(f"{item.id} {item.tone} {cost}\n  said    {item.said}\n  written {text!r}\n  wanted  {nearest!r}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=Path, default=ROOT / "build/release")
    parser.add_argument("--engine", action="append", choices=("basic", "rules", "model"))
    parser.add_argument("--by", action="append", choices=("language", "tone"), default=[])
    parser.add_argument("--model-url")
    parser.add_argument("--model", default="")
    parser.add_argument("--part", choices=PARTS, help="the other one is not even written")
    parser.add_argument("--show", type=int, default=0, metavar="N",
                        help="the N dictations of the development part that are written worst")
    options = parser.parse_args()
    chosen = options.engine or ["basic", "rules"]
    if "model" in chosen and not options.model_url:
        parser.error("--engine model needs --model-url")
    items = [item for item in corpus() if options.part in (None, item.part)]
    engines = {engine: texts_by(engine, options, items) for engine in chosen}
    for by in (None, *options.by):
        print_table(engines, items, by)
    for engine, texts in engines.items():
        if options.show:
            print(f"## {engine}")
            show_farthest(items, texts, options.show)


if __name__ == "__main__":
    main()
