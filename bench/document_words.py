#!/usr/bin/python3
"""How much of a document's text its reader finds, in order.

    bench/document_words.py [--build build/release]

LibreOffice makes documents of tests/corpus/documents, which are read by the real reader process. The figures, of all
words of the source, runs of letters or of digits:

- found: those that stand in the text in the same order, those of the footnotes among themselves;
- more: those in the text beyond that, such as numbers of pages and notes.
"""

import argparse
import json
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
CORPUS = ROOT / "tests/corpus/documents"
FORMATS = ("docx", "odt", "rtf", "doc", "pdf")
WORD = re.compile(r"[^\W\d_]+|\d+")
TEXT = "{urn:oasis:names:tc:opendocument:xmlns:text:1.0}"
LEFT_OUT = {TEXT + "tracked-changes", TEXT + "note-citation"}
PARAGRAPHS = {TEXT + "p", TEXT + "h"}


@dataclass
class Source:
    """The words of a document, those of its notes apart."""

    body: list[str]
    notes: list[str]


def source_of(file: Path) -> Source:
    body, notes = [], []

    def gather(element: ElementTree.Element, into: list[str], inside: bool) -> None:
        if element.tag in LEFT_OUT:
            return
        into = notes if element.tag == TEXT + "note-body" else into
        inside = inside or element.tag in PARAGRAPHS
        if inside and element.text:
            into.append(element.text)
        for child in element:
            gather(child, into, inside)
            if inside and child.tail:
                into.append(child.tail)
        if element.tag in PARAGRAPHS:
            into.append("\n")

    gather(ElementTree.parse(file).getroot(), body, False)
    return Source(WORD.findall("".join(body)), WORD.findall("".join(notes)))


def in_order(wanted: list[str], found: list[str]) -> int:
    """The length of the longest sequence that both have."""
    row = [0] * (len(found) + 1)
    for word in wanted:
        before = 0
        for at, other in enumerate(found, 1):
            best = before + 1 if word == other else max(row[at], row[at - 1])
            before, row[at] = row[at], best
    return row[-1]


def make_documents(folder: Path, formats: tuple[str, ...] = FORMATS) -> None:
    """Of every source one document in each format."""
    for kind in formats:
        subprocess.run(["soffice", f"-env:UserInstallation=file://{folder}/profile", "--headless", "--convert-to", kind,
                        "--outdir", folder, *CORPUS.glob("*.fodt")], check=True, capture_output=True, timeout=120)


class Reader:
    """The real reader process, for as long as it is needed."""

    def __init__(self, build: Path):
        self._lab = subprocess.Popen([build / "tools/lab/dorix-lab", "extract"], stdin=subprocess.PIPE,
                                     stdout=subprocess.PIPE, text=True, bufsize=1)

    def __enter__(self) -> "Reader":
        return self

    def __exit__(self, *_) -> None:
        self._lab.communicate()

    def text(self, file: Path, limit: int = 400_000) -> str | None:
        """None where the document has none; "error: ..." where it was not read."""
        self._lab.stdin.write(json.dumps({"file": str(file), "limit": limit}) + "\n")
        answer = json.loads(self._lab.stdout.readline())
        return "error: " + answer["error"] if "error" in answer else answer["text"]


@dataclass
class Score:
    words: int
    found: int
    more: int


def score(source: Source, text: str) -> Score:
    words = WORD.findall(text)
    found = in_order(source.body, words) + in_order(source.notes, words)
    return Score(len(source.body) + len(source.notes), found, len(words) - found)


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=Path, default=ROOT / "build/release")
    options = parser.parse_args()
    print("| Document | Format | Words | Found in order | More |\n|---|---|---|---|---|")
    with tempfile.TemporaryDirectory() as scratch, Reader(options.build) as reader:
        folder = Path(scratch)
        make_documents(folder)
        for file in sorted(CORPUS.glob("*.fodt")):
            for kind in FORMATS:
                result = score(source_of(file), reader.text(folder / f"{file.stem}.{kind}") or "")
                print(f"| {file.stem} | {kind} | {result.words} | {result.found} "
                      f"({100 * result.found / result.words:.1f} %) | {result.more} |")
    return 0


if __name__ == "__main__":
    sys.exit(main())
