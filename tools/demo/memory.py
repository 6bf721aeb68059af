#!/usr/bin/python3
"""The memory, shown: makes a home with documents, lets DORIX index them, and asks for a passage, for a file by its name
and for what was done of late, in Spanish and in English.

    tools/demo/memory.py [--binary PATH] [--lab PATH]

DORIX begins to index a minute after its start. It is asked by dorix-lab, over the file that it has made.
"""

import argparse
import json
import os
import sqlite3
import subprocess
import sys
import time
from contextlib import closing
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tools/demo"), str(ROOT / "tools/desktop")]

from dorix import Dorix  # noqa: E402
from failure import DemoError  # noqa: E402
from supervision import supervised  # noqa: E402
from virtual_desktop import VirtualDesktop  # noqa: E402
from waiting import wait_until  # noqa: E402

PATIENCE = 120.0
DOCUMENTS = {
    "Documents/obra/presupuesto marta.txt":
        "Presupuesto para Marta.\n\nLa reforma de la cocina cuesta 4.200 euros, con el suelo y sin los muebles.\n",
    "Documents/carta.rtf":
        r"{\rtf1\ansi\ansicpg1252 Querida vecina: la reuni\'f3n de la comunidad se celebra el jueves a las siete.}",
    "Desktop/lease.md": "# Lease\n\nThe tenant gives notice three months before the lease ends, in writing.\n",
    "Downloads/contraseñas.txt": "password: hunter2, que no debe leer nadie, tampoco con más texto alrededor.\n",
    "Música/Canción del ñandú.mp3": "",
}
INDEXED = 3
# What is asked, in which language, and what the best answer is and says.
QUESTIONS = (
    ("es", "busca cuánto cuesta la reforma de la cocina", "presupuesto marta.txt", "4.200 euros"),
    ("es", "¿cuándo se celebra la reunión de la comunidad?", "carta.rtf", "el jueves a las siete"),
    ("es", "encuentra la cancion del nandu", "Canción del ñandú.mp3", "Archivo encontrado por su nombre en "),
    ("en", "when does the tenant give notice", "lease.md", "three months before"),
    ("en", "find the file called presupuesto marta", "presupuesto marta.txt", "4.200 euros"),
)


def make_home(home: Path) -> None:
    for name, text in DOCUMENTS.items():
        file = home / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text)


def indexed(database: Path) -> int:
    try:
        with closing(sqlite3.connect(f"file:{database}?mode=ro", uri=True)) as memory:
            return memory.execute("SELECT count(*) FROM docs WHERE kind = 'file'").fetchone()[0]
    except sqlite3.Error:
        return 0


def note_activity(database: Path, document: Path) -> None:
    """As if the user had written in it for ten minutes."""
    with closing(sqlite3.connect(database, timeout=10)) as memory:
        now = time.time()
        memory.executemany("INSERT INTO activity(ts, app, bundle, title, document) VALUES (?, 'Editor', NULL, ?, ?)",
                           [(now - ago, document.name, str(document)) for ago in (600, 300)])
        memory.commit()


class Lab:
    def __init__(self, binary: Path, data: Path, home: Path):
        self._binary, self._data, self._home = binary, data, home

    def ask(self, language: str, query: str) -> dict:
        line = json.dumps({"data": str(self._data), "home": str(self._home), "query": query, "limit": 8,
                           "language": language})
        told = subprocess.run([self._binary, "recall"], input=line, capture_output=True, text=True).stdout
        answer = json.loads(told)
        if "error" in answer:
            raise DemoError(answer["error"])
        return answer


def show(lab: Lab) -> None:
    for language, query, title, text in QUESTIONS:
        hits = lab.ask(language, query)["hits"]
        print(f"{language}: {query}")
        for hit in hits[:3]:
            print(f"    {hit['title']}: {' '.join(hit['text'].split())[:90]}")
        if not hits or hits[0]["title"] != title or text not in hits[0]["text"]:
            raise DemoError(f"expected {title} with “{text}”")
        if any("hunter2" in hit["text"] for hit in hits):
            raise DemoError("a file that is to be left alone was read")
    for language in ("es", "en"):
        recap = lab.ask(language, "")["recap"]
        print(f"{language}: the recap\n    {recap.strip()}")
        if "- Editor: «presupuesto marta.txt» [" not in recap:
            raise DemoError("the recap does not tell of the document")


def demonstrate(desktop: VirtualDesktop, binary: Path, lab: Path) -> None:
    home = Path(desktop.env["HOME"])
    data = Path(desktop.env["XDG_DATA_HOME"], "DORIX")
    make_home(home)
    dorix = Dorix(desktop, binary, desktop.log("dorix"), {"hintShownCount": 9})
    began = time.monotonic()
    database = data / "memory.sqlite"
    wait_until(lambda: indexed(database) >= INDEXED or dorix.check_running(), PATIENCE)
    print(f"{indexed(database)} documents indexed {time.monotonic() - began:.0f} s after the start")
    if indexed(database) != INDEXED:
        raise DemoError(f"expected {INDEXED}")
    note_activity(database, home / "Documents/obra/presupuesto marta.txt")
    show(Lab(lab, data, home))


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--binary", type=Path, default=ROOT / "build/release/src/app/dorix")
    parser.add_argument("--lab", type=Path, default=ROOT / "build/release/tools/lab/dorix-lab")
    options = parser.parse_args()

    def run(directory: Path) -> int:
        with VirtualDesktop(directory) as desktop:
            os.environ.clear()
            os.environ.update(desktop.env)
            try:
                demonstrate(desktop, options.binary, options.lab)
            except DemoError as error:
                print(f"memory.py: {error}", file=sys.stderr)
                return 1
        return 0

    return supervised(run)


sys.exit(main())
