#!/usr/bin/python3
"""What DORIX delivers on other desktops than that of its tests, one cell of a table after the other.

    tools/compatibility/compatibility.py [--binary PATH] [--only WORD] [--install] [--output FILE]

Each cell is a desktop of its own. In the keyboards' ones a sentence is dictated; in the others an item of the history is
inserted again, with letters that no keyboard has all of. What the application got is compared with that sign for sign,
and the clipboard, which holds an image and files, byte for byte with what it was. In those of the documents a file is
opened, and what DORIX notes of it is looked at. A cell whose program is not installed is left out, unless --install
gets it from the distribution. The table goes to FILE.
"""

import argparse
import json
import os
import shutil
import sqlite3
import subprocess
import sys
import time
import traceback
from contextlib import closing
from dataclasses import dataclass, field
from pathlib import Path
from typing import Callable

sys.dont_write_bytecode = True
HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[1]
sys.path[:0] = [str(HERE), str(ROOT / "tools/demo"), str(ROOT / "tools/desktop")]

import documents  # noqa: E402
import targets  # noqa: E402
from dorix import Dorix  # noqa: E402
from failure import DemoError  # noqa: E402
from supervision import supervised  # noqa: E402
from user import User  # noqa: E402
from virtual_desktop import DesktopError, VirtualDesktop  # noqa: E402
from voice import speak, synthesise  # noqa: E402
from waiting import wait_until  # noqa: E402

CLIPBOARD = ROOT / "tools/demo/clipboard.py"
TEXT = "¿Qué tal, Íñigo? «Ça va» – 10 €, ñandú."
SENTENCE = "we will be there at ten"
RIGHT_OPTION = "108"  # its key code: the layouts call the key by many names
SCHEMA = """CREATE TABLE history (id TEXT PRIMARY KEY, kind TEXT NOT NULL, app TEXT NOT NULL, bundle_id TEXT,
    title TEXT NOT NULL, created_at REAL NOT NULL, query TEXT NOT NULL, answer TEXT NOT NULL, meta TEXT)"""
TOLD_TIMEOUT = 10.0
ARRIVAL = 2.0  # seconds for the text to be read and the clipboard to come back
CELL_TIMEOUT = 150


@dataclass
class Cell:
    name: str
    program: str = ""  # without it the cell is left out
    package: str = ""
    target: Callable[[VirtualDesktop], object] = targets.mousepad
    window_manager: list[str] | None = None  # in place of the desktop's own; [] for none
    keyboard: list[str] | None = None
    beside: list[str] = field(default_factory=list)  # runs from before the clipboard is filled
    extension: str = ""  # of the document that is opened
    show: Callable[[VirtualDesktop, Path], object] | None = None  # opens it


APPLICATIONS = [
    Cell("Mousepad", "mousepad"),
    Cell("gedit", "gedit", "gedit", lambda d: targets.Accessible(d, "gedit", ["gedit", "--standalone"])),
    Cell("Geany", "geany", "geany", lambda d: targets.Accessible(d, "geany", ["geany", "-i", "-t"])),
    Cell("FeatherPad (Qt)", "featherpad", "featherpad",
         lambda d: targets.Accessible(d, "featherpad", ["featherpad", "--standalone"])),
    Cell("LibreOffice Writer", "soffice", "libreoffice-writer libreoffice-gtk3",
         lambda d: targets.office(d, "--writer")),
    Cell("LibreOffice, start page", "soffice", "libreoffice-writer libreoffice-gtk3", targets.office),
    Cell("Chromium, a field", "chromium", "chromium", targets.chromium),
    Cell("Chromium, no field", "chromium", "chromium", lambda d: targets.chromium(d, field=False)),
    Cell("Firefox, a field", "firefox-esr", "firefox-esr", targets.firefox),
    Cell("Firefox, no field", "firefox-esr", "firefox-esr", lambda d: targets.firefox(d, field=False)),
    Cell("gvim, inserting", "gvim", "vim-gtk3", lambda d: targets.Vim(d, inserting=True)),
    Cell("gvim, normal mode", "gvim", "vim-gtk3", lambda d: targets.Vim(d, inserting=False)),
    Cell("Emacs", "emacs", "emacs-gtk", targets.emacs),
    Cell("Tk text", "wish", "tk", targets.tk),
    Cell("xterm", "xterm", "xterm", lambda d: targets.Terminal(d, "xterm", "xterm", "-e")),
    Cell("Xfce Terminal", "xfce4-terminal", "xfce4-terminal",
         lambda d: targets.Terminal(d, "xfce4-terminal", "xfce4-terminal", "--disable-server", "-x")),
    Cell("kitty", "kitty", "kitty", lambda d: targets.Terminal(d, "kitty", "kitty")),
    Cell("st", "st", "stterm", lambda d: targets.Terminal(d, "st-256color", "st", "-e")),
    Cell("Empty desktop", target=targets.Nothing),
]

WINDOW_MANAGERS = [
    Cell("Openbox", "openbox"),
    Cell("Xfwm4", "xfwm4", "xfwm4", window_manager=["xfwm4", "--compositor=off"]),
    Cell("i3", "i3", "i3-wm", window_manager=["i3", "-c", "/dev/null"]),
    Cell("IceWM", "icewm", "icewm", window_manager=["icewm"]),
    Cell("Marco", "marco", "marco mate-settings-daemon-common", window_manager=["marco", "--no-composite"]),
    Cell("Metacity", "metacity", "metacity", window_manager=["metacity", "--no-composite"]),
    Cell("none", window_manager=[]),
]

KEYBOARDS = [
    *(Cell(layout, keyboard=["-layout", layout]) for layout in ("us", "es", "de", "fr", "ru", "gr")),
    Cell("us, dvorak", keyboard=["-layout", "us", "-variant", "dvorak"]),
    Cell("de, neo", keyboard=["-layout", "de", "-variant", "neo"]),
    Cell("us, ctrl:swapcaps", keyboard=["-layout", "us", "-option", "ctrl:swapcaps"]),
    Cell("us, ctrl:swap_lalt_lctl", keyboard=["-layout", "us", "-option", "ctrl:swap_lalt_lctl"]),
    Cell("us, ctrl:nocaps", keyboard=["-layout", "us", "-option", "ctrl:nocaps"]),
]

CLIPBOARD_MANAGERS = [
    Cell("none"),
    Cell("Parcellite", "parcellite", "parcellite", beside=["parcellite"]),
    Cell("ClipIt", "clipit", "clipit", beside=["clipit"]),
    Cell("Xfce Clipman", "xfce4-clipman", "xfce4-clipman", beside=["xfce4-clipman"]),
    Cell("CopyQ", "copyq", "copyq", beside=["copyq"]),
    Cell("Diodon", "diodon", "diodon", beside=["diodon"]),
    Cell("GPaste", "/usr/libexec/gpaste/gpaste-daemon", "gpaste-2", beside=["/usr/libexec/gpaste/gpaste-daemon"]),
    Cell("autocutsel", "autocutsel", "autocutsel", beside=["autocutsel", "-selection", "CLIPBOARD"]),
    Cell("Klipper", "klipper", "plasma-workspace", beside=["klipper"]),
]

DOCUMENTS = [
    Cell("LibreOffice Writer", "soffice", "libreoffice-writer libreoffice-gtk3", extension="odt",
         show=documents.in_office),
    *(Cell(name, program, program, extension="pdf", show=documents.opened(program, program))
      for name, program in (("Evince", "evince"), ("qpdfview", "qpdfview"), ("zathura", "zathura"))),
    Cell("Mousepad", "mousepad", "mousepad", extension="txt",
         show=documents.opened("mousepad", "mousepad", "--disable-server")),
    Cell("gedit", "gedit", "gedit", extension="txt", show=documents.opened("gedit", "gedit", "--standalone")),
    Cell("Geany", "geany", "geany", extension="txt", show=documents.opened("geany", "geany", "-i", "-t")),
    Cell("FeatherPad (Qt)", "featherpad", "featherpad", extension="txt",
         show=documents.opened("featherpad", "featherpad", "--standalone")),
    Cell("Firefox, a file", "firefox-esr", "firefox-esr", extension="html",
         show=documents.in_browser(targets.firefox)),
    Cell("Firefox, a page", "firefox-esr", "firefox-esr", extension="html", show=documents.a_page(targets.firefox)),
    Cell("Chromium, a file", "chromium", "chromium", extension="html", show=documents.in_browser(targets.chromium)),
    Cell("Chromium, a page", "chromium", "chromium", extension="html", show=documents.a_page(targets.chromium)),
    Cell("xterm, less", "xterm", "xterm", extension="txt", show=documents.in_terminal),
]

GROUPS = {"Applications": APPLICATIONS, "Window managers": WINDOW_MANAGERS, "Keyboards": KEYBOARDS,
          "Clipboard managers": CLIPBOARD_MANAGERS, "Documents": DOCUMENTS}
DELIVERY = "| | Delivered | Clipboard | The HUD said |"
NOTED = "| | Title noted | Document noted | without the list of recent files |"


class Trial:
    def __init__(self, desktop: VirtualDesktop, cell: Cell, binary: Path, dictates: bool):
        self._desktop = desktop
        self._cell = cell
        self._binary = binary
        self._dictates = dictates
        self._user = User(desktop)

    def result(self) -> tuple[str, str, str]:
        """What was delivered, what became of the clipboard, what the HUD said."""
        from dictation import difference  # needs the desktop's environment from its first line

        self._surround()
        before = self._fill_clipboard()
        target = self._cell.target(self._desktop)
        self._remember()
        settings = {"appLanguage": "en", "language": "en-US", "onboardingDone": True, "hintShownCount": 9}
        self._dorix = Dorix(self._desktop, self._binary, self._desktop.log("dorix"), settings)
        stood = target.text()
        since = len(self._dorix.events())
        wanted = self._dictate(since) if self._dictates else self._insert_again(since)
        wait_until(lambda: wanted in target.text(), ARRIVAL)
        time.sleep(ARRIVAL)
        said = " / ".join(event["text"] for event in self._dorix.events(since) if event.get("text")) or "nothing"
        changes = difference(before, self._read_clipboard())
        if changes and self._clipboard_text() == wanted:
            changes = "holds the text"
        self._dorix.check_running()
        return delivered(target, stood, wanted), changes or "intact", said

    def _surround(self) -> None:
        cell, desktop = self._cell, self._desktop
        if cell.keyboard:
            subprocess.run(["setxkbmap", *cell.keyboard], check=True)
        if cell.window_manager:
            self._start(cell.window_manager)
            named = ["xprop", "-root", "_NET_SUPPORTING_WM_CHECK"]
            if not wait_until(lambda: b"window id" in subprocess.run(named, capture_output=True).stdout, 20):
                raise LookupError("the window manager did not start")
            desktop.has_window_manager = True
        if cell.beside:
            self._start(cell.beside)
            time.sleep(3)  # nothing announces that they listen

    def _start(self, command: list[str]) -> None:
        with open(self._desktop.log(Path(command[0]).name), "wb") as log:
            self._desktop.spawn(command, stdin=subprocess.DEVNULL, stdout=log, stderr=log)

    def _remember(self) -> None:
        folder = Path(self._desktop.env["XDG_DATA_HOME"], "DORIX")
        folder.mkdir(parents=True)
        with closing(sqlite3.connect(folder / "dorix.sqlite")) as database, database:
            database.execute(SCHEMA)
            database.execute("INSERT INTO history VALUES ('1','dictado','Notas',NULL,?,?,?,?,NULL)",
                             (TEXT, time.time() - 60, TEXT, TEXT))

    def _insert_again(self, since: int) -> str:
        self._user.click(*self._icon())
        self._await(lambda: any(event.get("panelOpen") for event in self._dorix.events(since)), "no panel")
        focus = ["xdotool", "getwindowfocus", "getwindowname"]
        self._await(lambda: subprocess.run(focus, capture_output=True, check=False).stdout == b"DORIX\n",
                    "the panel did not get the keyboard")
        time.sleep(0.5)
        self._user.press("Down", "Return")
        self._await_told(since)
        return TEXT

    @staticmethod
    def _icon() -> tuple[int, int]:
        """Where a panel of the desktop's has pushed it."""
        asked = ["xdotool", "search", "--onlyvisible", "--name", "^DORIX$", "getwindowgeometry", "--shell"]
        told = subprocess.run(asked, capture_output=True, text=True, check=True).stdout
        place = dict(line.split("=") for line in told.splitlines())
        return int(place["X"]) + int(place["WIDTH"]) // 2, int(place["Y"]) + int(place["HEIGHT"]) // 2

    def _dictate(self, since: int) -> str:
        words = self._desktop.directory / "words.wav"
        synthesise(SENTENCE, words)
        subprocess.run(["xdotool", "keydown", RIGHT_OPTION], check=True)
        time.sleep(0.4)
        speak(self._desktop, words)
        time.sleep(0.3)
        subprocess.run(["xdotool", "keyup", RIGHT_OPTION], check=True)
        self._await_told(since)
        return self._dorix.history()[0]["answer"]

    def _await_told(self, since: int) -> None:
        self._await(lambda: any(event.get("text") for event in self._dorix.events(since)), "the HUD said nothing")

    @staticmethod
    def _await(condition: Callable[[], bool], otherwise: str) -> None:
        if not wait_until(condition, TOLD_TIMEOUT):
            raise LookupError(otherwise)

    def _fill_clipboard(self) -> dict:
        owner = self._desktop.spawn([str(CLIPBOARD), "own"], stdout=subprocess.PIPE)
        if owner.stdout.readline() != b"ready\n":
            raise LookupError("the clipboard could not be filled")
        time.sleep(ARRIVAL)  # a manager may take it over
        return self._read_clipboard()

    def _read_clipboard(self) -> dict:
        reader = self._desktop.spawn([str(CLIPBOARD), "read"], stdout=subprocess.PIPE)
        return json.loads(reader.communicate(timeout=20)[0])

    @staticmethod
    def _clipboard_text() -> str:
        return subprocess.run(["xclip", "-o", "-selection", "clipboard"], capture_output=True, text=True, timeout=10,
                              check=False).stdout


def delivered(target, stood: str, wanted: str) -> str:
    got = target.text()
    if got.replace(stood, "", 1).strip("\n") == wanted or got.strip("\n") == wanted:
        return "exactly"
    if got == stood:
        return "nothing" if target.takes_text else "nothing, as there is no field"
    return f"**{got.strip()[:60]!r}**".replace("|", "\\|")


def tried(cell: Cell, binary: Path, dictates: bool, results: Path) -> int:
    """In a process of its own, below which everything ends with the cell."""

    def body(directory: Path) -> int:
        try:
            with VirtualDesktop(directory, window_manager=cell.window_manager is None) as desktop:
                os.environ.clear()
                os.environ.update(desktop.env)
                if cell.show:
                    columns = documents.DocumentTrial(desktop, binary, cell.extension, cell.show).result()
                else:
                    columns = Trial(desktop, cell, binary, dictates).result()
        except (LookupError, DemoError, DesktopError, subprocess.SubprocessError) as error:
            columns = (f"not tried: {error}", "", "")
        except Exception:
            traceback.print_exc()
            columns = ("not tried", "", "")
        results.write_text("\n".join(column.replace("\n", " ") for column in columns))
        return 0

    return supervised(body)


def row(cell: Cell, binary: Path, dictates: bool, results: Path) -> str:
    results.unlink(missing_ok=True)
    pid = os.fork()
    if pid == 0:
        os._exit(tried(cell, binary, dictates, results))
    os.waitpid(pid, 0)
    columns = results.read_text().split("\n") if results.exists() else ["not tried", "", ""]
    return f"| {cell.name} | {' | '.join(columns)} |"


def is_there(cell: Cell, install: bool) -> bool:
    if not cell.program or shutil.which(cell.program):
        return True
    if install and cell.package:
        subprocess.run(["apt-get", "install", "-y", "-qq", "--no-install-recommends", *cell.package.split()],
                       env=os.environ | {"DEBIAN_FRONTEND": "noninteractive"}, stdout=subprocess.DEVNULL, check=False)
    return bool(shutil.which(cell.program))


def head(binary: Path) -> str:
    release = next((line.split("=")[1].strip('"') for line in Path("/etc/os-release").read_text().splitlines()
                    if line.startswith("PRETTY_NAME=")), "")
    return f"""# Compatibility

What was tried, and what was seen, on {release}, in desktops without a screen. Made by

    tools/compatibility/compatibility.py --install

where it says how. "Delivered" compares what the application got with what was to be typed, sign for sign; "clipboard"
compares an image and a list of files that were there, byte for byte, with what is there two seconds later. What the HUD
said is in the words of the trace, which names the paste chord ⌘V. "Document noted" is the file of the window in front
that the activity remembers; in the last column the desktop's list of recent files was taken away, so that it is what
the application itself tells.
"""


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--binary", type=Path, default=ROOT / "build/release/src/app/dorix")
    parser.add_argument("--only", default="", help="cells or groups whose name holds this")
    parser.add_argument("--install", action="store_true", help="get what is missing from the distribution")
    parser.add_argument("--output", type=Path)
    options = parser.parse_args()
    options.binary = options.binary.resolve(strict=True)
    results = Path(f"/tmp/dorix-compatibility-{os.getpid()}")
    lines = [head(options.binary)]
    for group, cells in GROUPS.items():
        chosen = [cell for cell in cells if options.only.lower() in f"{group} {cell.name}".lower()]
        if not chosen:
            continue
        lines.append(f"## {group}\n\n{NOTED if cells is DOCUMENTS else DELIVERY}\n|---|---|---|---|")
        for cell in chosen:
            there = is_there(cell, options.install)
            lines.append(row(cell, options.binary, group == "Keyboards", results) if there else
                         f"| {cell.name} | not installed | | |")
            print(lines[-1], flush=True)
        lines.append("")
    results.unlink(missing_ok=True)
    if options.output:
        options.output.write_text("\n".join(lines))
    return 0


if __name__ == "__main__":
    sys.exit(main())
