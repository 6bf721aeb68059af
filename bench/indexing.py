#!/usr/bin/python3
"""The index of the memory beside recollindex (package recollcmd) on the same documents, in one run: from nothing, and
with nothing changed. DORIX gives way to all others when it indexes; beside programs that do not, the second figure of it is
the one to compare.

    bench/indexing.py [--binary PATH] [--pdfs N] [--mixed N] [--rounds N]

The documents are made here: PDFs of five pages, and text, Markdown, CSV, JSON, Word, OpenDocument and rich text of one
to five pages, with words of Zipf's frequencies.
"""

import argparse
import io
import json
import random
import shutil
import subprocess
import sys
import tempfile
import time
import zipfile
import zlib
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
VOCABULARY = 30_000
WORDS_OF_PAGE = 350
WORD = "http://schemas.openxmlformats.org/wordprocessingml/2006/main"
OFFICE = "urn:oasis:names:tc:opendocument:xmlns:office:1.0"
TEXT = "urn:oasis:names:tc:opendocument:xmlns:text:1.0"


class Words:
    def __init__(self):
        self.random = random.Random(1)
        syllables = ["ca", "me", "ti", "lo", "ru", "sa", "ne", "pi", "do", "lu", "ción", "men", "tor", "ñe", "ara", "ist"]
        self.vocabulary = ["".join(self.random.choices(syllables, k=self.random.randint(2, 4))) for _ in range(VOCABULARY)]
        self.weights = [1 / rank for rank in range(1, VOCABULARY + 1)]

    def page(self) -> list[str]:
        """Lines of ten words."""
        words = self.random.choices(self.vocabulary, self.weights, k=WORDS_OF_PAGE)
        return [" ".join(words[at:at + 10]) for at in range(0, len(words), 10)]

    def pages(self, count: int) -> list[list[str]]:
        return [self.page() for _ in range(count)]


def pdf(pages: list[list[str]]) -> bytes:
    objects = [b"<< /Type /Catalog /Pages 2 0 R >>", b"",
               b"<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >>"]
    kids = []
    for lines in pages:
        shown = b"".join(b"(" + line.encode("cp1252") + b") Tj T*\n" for line in lines)
        content = zlib.compress(b"BT /F1 10 Tf 50 790 Td 12 TL\n" + shown + b"ET")
        objects.append(b"<< /Length %d /Filter /FlateDecode >>\nstream\n" % len(content) + content + b"\nendstream")
        objects.append(b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents %d 0 R "
                       b"/Resources << /Font << /F1 3 0 R >> >> >>" % len(objects))
        kids.append(b"%d 0 R" % len(objects))
    objects[1] = b"<< /Type /Pages /Kids [" + b" ".join(kids) + b"] /Count %d >>" % len(kids)
    out = io.BytesIO()
    out.write(b"%PDF-1.4\n")
    places = []
    for number, body in enumerate(objects, 1):
        places.append(out.tell())
        out.write(b"%d 0 obj\n" % number + body + b"\nendobj\n")
    table = out.tell()
    out.write(b"xref\n0 %d\n0000000000 65535 f \n" % (len(objects) + 1))
    for place in places:
        out.write(b"%010d 00000 n \n" % place)
    out.write(b"trailer << /Size %d /Root 1 0 R >>\nstartxref\n%d\n%%%%EOF\n" % (len(objects) + 1, table))
    return out.getvalue()


def zipped(parts: dict[str, str]) -> bytes:
    out = io.BytesIO()
    with zipfile.ZipFile(out, "w") as archive:
        for name, text in parts.items():
            archive.writestr(name, text, zipfile.ZIP_STORED if name == "mimetype" else zipfile.ZIP_DEFLATED)
    return out.getvalue()


def docx(lines: list[str]) -> bytes:
    body = "".join(f"<w:p><w:r><w:t>{line}</w:t></w:r></w:p>" for line in lines)
    kind = "application/vnd.openxmlformats-officedocument.wordprocessingml.document.main+xml"
    return zipped({
        "[Content_Types].xml": '<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">'
                               f'<Override PartName="/word/document.xml" ContentType="{kind}"/></Types>',
        "word/document.xml": f'<w:document xmlns:w="{WORD}"><w:body>{body}</w:body></w:document>'})


def odt(lines: list[str]) -> bytes:
    body = "".join(f"<text:p>{line}</text:p>" for line in lines)
    return zipped({
        "mimetype": "application/vnd.oasis.opendocument.text",
        "content.xml": f'<office:document-content xmlns:office="{OFFICE}" xmlns:text="{TEXT}">'
                       f"<office:body><office:text>{body}</office:text></office:body></office:document-content>"})


def rtf(lines: list[str]) -> bytes:
    text = "\\par\n".join("".join(c if ord(c) < 128 else f"\\'{ord(c):02x}" for c in line) for line in lines)
    return ("{\\rtf1\\ansi\\ansicpg1252\\deff0 " + text + "}").encode("ascii")


MIXED = {
    "txt": lambda lines: "\n".join(lines).encode(),
    "md": lambda lines: ("# " + "\n\n".join(lines)).encode(),
    "csv": lambda lines: "\n".join(line.replace(" ", ",") for line in lines).encode(),
    "json": lambda lines: json.dumps({"lines": lines}, ensure_ascii=False, indent=1).encode(),
    "docx": docx,
    "odt": odt,
    "rtf": rtf,
}


def make_documents(folder: Path, pdfs: int, mixed: int) -> None:
    words = Words()
    folder.mkdir()
    for number in range(pdfs):
        (folder / f"informe {number}.pdf").write_bytes(pdf(words.pages(5)))
    kinds = list(MIXED)
    for number in range(mixed):
        extension = kinds[number % len(kinds)]
        where = folder / f"carpeta {number // 100}"
        where.mkdir(exist_ok=True)
        lines = sum(words.pages(words.random.randint(1, 5)), [])
        (where / f"nota {number}.{extension}").write_bytes(MIXED[extension](lines))


def size_of(path: Path) -> int:
    files = path.rglob("*") if path.is_dir() else path.parent.glob(path.name + "*")
    return sum(file.stat().st_size for file in files if file.is_file() and ".history" not in file.name)


def timed(command: list, **options) -> float:
    began = time.monotonic()
    done = subprocess.run(command, capture_output=True, text=True, errors="replace", **options)
    if done.returncode != 0:
        sys.exit(f"{command[0]}: {done.stderr[-2000:]}")
    return time.monotonic() - began


def tell(name: str, cold: list[float], unchanged: list[float], size: int) -> None:
    print(f"{name}: cold {min(cold):.2f} s, unchanged {min(unchanged):.2f} s, index {size / 1e6:.1f} MB", flush=True)


def ours(binary: Path, documents: Path, place: Path, rounds: int) -> None:
    for how, manner in (("idle", []), ("as other programs", ["--as-others"])):
        cold, unchanged = [], []
        for number in range(rounds):
            database = place / f"memory-{number}{''.join(manner)}.sqlite"
            cold.append(timed([binary, documents, database, *manner]))
            unchanged.append(timed([binary, documents, database, *manner]))
        tell(f"DORIX, {how}", cold, unchanged, size_of(database))


def recoll(documents: Path, place: Path, rounds: int) -> None:
    if not shutil.which("recollindex"):
        print("recollindex is not installed (recollcmd)")
        return
    cold, unchanged = [], []
    for number in range(rounds):
        settings = place / f"recoll-{number}"
        settings.mkdir()
        (settings / "recoll.conf").write_text(f"topdirs = {documents}\nthrQSizes = -1 -1 -1\n")
        cold.append(timed(["recollindex", "-c", settings]))
        unchanged.append(timed(["recollindex", "-c", settings]))
    tell("recollindex", cold, unchanged, size_of(settings / "xapiandb"))


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--binary", type=Path, default=ROOT / "build/release/bench/index_bench")
    parser.add_argument("--pdfs", type=int, default=1000)
    parser.add_argument("--mixed", type=int, default=5000)
    parser.add_argument("--rounds", type=int, default=2)
    options = parser.parse_args()
    with tempfile.TemporaryDirectory() as directory:
        place = Path(directory)
        for name, pdfs, mixed in (("PDFs", options.pdfs, 0), ("mixed", 0, options.mixed)):
            documents = place / f"documents-{name}"
            make_documents(documents, pdfs, mixed)
            print(f"{pdfs + mixed} {name}, {size_of(documents) / 1e6:.1f} MB")
            for take in (ours, recoll):
                work = place / f"{name}-{take.__name__}"
                work.mkdir()
                take(*([options.binary] if take is ours else []), documents, work, options.rounds)
    return 0


if __name__ == "__main__":
    sys.exit(main())
