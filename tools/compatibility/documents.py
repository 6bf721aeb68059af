"""Applications with a document open, and what DORIX notes of it."""

import sqlite3
import subprocess
import time
import zipfile
from contextlib import closing
from pathlib import Path

import targets
from dorix import Dorix
from virtual_desktop import VirtualDesktop
from waiting import wait_until

NAME = "Informe año"
TEXT = "Presupuesto de la obra."
NOTED_TIMEOUT = 10.0
SETTLE = 1.5  # seconds for a window to be in front
LOOKS = 3  # the list of recent files is read behind the first one
ODT = """<?xml version="1.0" encoding="UTF-8"?>
<office:document-content xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0"
 xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0" office:version="1.2">
<office:body><office:text><text:p>{}</text:p></office:text></office:body></office:document-content>"""
MANIFEST = """<?xml version="1.0" encoding="UTF-8"?>
<manifest:manifest xmlns:manifest="urn:oasis:names:tc:opendocument:xmlns:manifest:1.0">
<manifest:file-entry manifest:full-path="/" manifest:media-type="application/vnd.oasis.opendocument.text"/>
<manifest:file-entry manifest:full-path="content.xml" manifest:media-type="text/xml"/></manifest:manifest>"""


def write_document(folder: Path, extension: str) -> Path:
    file = folder / f"{NAME}.{extension}"
    file.parent.mkdir(parents=True, exist_ok=True)
    if extension == "odt":
        with zipfile.ZipFile(file, "w") as archive:
            archive.writestr("mimetype", "application/vnd.oasis.opendocument.text")
            archive.writestr("content.xml", ODT.format(TEXT))
            archive.writestr("META-INF/manifest.xml", MANIFEST)
    elif extension == "pdf":
        file.write_bytes(pdf())
    elif extension == "html":
        file.write_text(f"<!DOCTYPE html><meta charset=utf-8><title>Obra</title><p>{TEXT}")
    else:
        file.write_text(TEXT + "\n")
    return file


def pdf() -> bytes:
    """A page with a line of text."""
    stream = f"BT /F1 18 Tf 72 700 Td ({TEXT}) Tj ET".encode("latin-1")
    objects = [b"<< /Type /Catalog /Pages 2 0 R >>", b"<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
               b"<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents 4 0 R"
               b" /Resources << /Font << /F1 5 0 R >> >> >>",
               b"<< /Length %d >>\nstream\n%s\nendstream" % (len(stream), stream),
               b"<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"]
    out, places = b"%PDF-1.4\n", []
    for number, each in enumerate(objects, 1):
        places.append(len(out))
        out += b"%d 0 obj\n%s\nendobj\n" % (number, each)
    table = b"".join(b"%010d 00000 n \n" % place for place in places)
    return out + b"xref\n0 %d\n0000000000 65535 f \n%strailer\n<< /Size %d /Root 1 0 R >>\nstartxref\n%d\n%%%%EOF\n" % (
        len(objects) + 1, table, len(objects) + 1, len(out))


class DocumentTrial:
    """Looks twice at the same window: with the desktop's list of recent files, and without."""

    def __init__(self, desktop: VirtualDesktop, binary: Path, extension: str, show):
        self._desktop = desktop
        self._binary = binary
        self._extension = extension
        self._show = show
        self._list = Path(desktop.env["XDG_DATA_HOME"], "recently-used.xbel")

    def result(self) -> tuple[str, str, str]:
        """The title and the document that were noted, and the document without the list."""
        file = write_document(Path(self._desktop.env["HOME"], "Documentos"), self._extension)
        settings = {"appLanguage": "en", "language": "en-US", "onboardingDone": True, "hintShownCount": 9,
                    "memoryFolders": []}
        self._dorix = Dorix(self._desktop, self._binary, self._desktop.log("dorix"), settings)
        beside = targets.Target(self._desktop, "xterm", ["xterm", "-title", "beside"])
        self._show(self._desktop, file)
        window = self._active()
        other = self._window_of(beside)
        title, document = self._noted(window, other)
        self._list.unlink(missing_ok=True)
        self._list.mkdir()  # nobody writes it again
        _, alone = self._noted(window, other)
        self._dorix.check_running()
        return title.replace(self._desktop.env["HOME"], "/home/ana"), judged(document, file), judged(alone, file)

    def _active(self) -> str:
        return self._tool("getactivewindow")

    def _window_of(self, target: targets.Target) -> str:
        return self._tool("search", "--onlyvisible", "--pid", str(target.process.pid)).split()[-1]

    @staticmethod
    def _tool(*words: str) -> str:
        return subprocess.run(["xdotool", *words], capture_output=True, text=True, check=True).stdout.strip()

    def _noted(self, window: str, other: str) -> tuple[str, str | None]:
        """The last of what is noted while it comes to the front some times; what is the same is noted once."""
        since = time.time()
        for _ in range(LOOKS):
            for each in (other, window):
                self._tool("windowactivate", "--sync", each)
                time.sleep(SETTLE)
        if not wait_until(lambda: self._rows(since), NOTED_TIMEOUT):
            raise LookupError("nothing was noted")
        return self._rows(since)[-1]

    def _rows(self, since: float) -> list[tuple[str, str | None]]:
        store = Path(self._desktop.env["XDG_DATA_HOME"], "DORIX/memory.sqlite")
        with closing(sqlite3.connect(f"file:{store}?mode=ro", uri=True)) as database:
            asked = "SELECT title, document FROM activity WHERE ts >= ? AND title <> 'beside' ORDER BY ts"
            return database.execute(asked, (since,)).fetchall()


def judged(document: str | None, file: Path) -> str:
    if document is None:
        return "none"
    return "the right one" if document == str(file) else f"**another: {document}**"


def opened(name: str, *command: str, **environment: str):
    """An application that is given the document at the end of its command."""
    return lambda desktop, file: targets.Accessible(desktop, name, [*command, str(file)], **environment)


def in_office(desktop: VirtualDesktop, file: Path) -> targets.Target:
    return targets.office(desktop, str(file))


def in_browser(start):
    return lambda desktop, file: start(desktop, address=file.as_uri())


def a_page(start):
    return lambda desktop, _file: start(desktop)


def in_terminal(desktop: VirtualDesktop, file: Path) -> targets.Target:
    return targets.Target(desktop, "XTerm", ["xterm", "-e", "less", str(file)])
