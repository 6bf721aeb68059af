#!/usr/bin/python3
"""The history's panel under the hands of a user, and as a screen reader hears it, with a window manager and without
one. Takes the program's path, and whether there is a window manager: wm or no-wm."""

import contextlib
import json
import os
import sqlite3
import subprocess
import sys
import time
import unittest
from pathlib import Path

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tools/demo"), str(ROOT / "tools/desktop")]

from supervision import supervised  # noqa: E402
from virtual_desktop import VirtualDesktop  # noqa: E402

BINARY = ""
READY = b"DORIX: listo"
START_TIMEOUT = 60.0  # loading the recogniser's model dominates, on a cold disk
PATIENCE = 5.0
ICON = (1230, 750)
ELSEWHERE = (1100, 100)
TRANSIENT = "org.nspasteboard.TransientType"

SCHEMA = """CREATE TABLE history (id TEXT PRIMARY KEY, kind TEXT NOT NULL, app TEXT NOT NULL, bundle_id TEXT,
    title TEXT NOT NULL, created_at REAL NOT NULL, query TEXT NOT NULL, answer TEXT NOT NULL, meta TEXT)"""
ITEMS = (  # id, kind, title, what was said, what was written
    ("1", "dictado", "Salgo ya", "eh salgo ya", "Salgo ya."),
    ("2", "dictado", "El camión llega tarde", "el camion llega tarde", "El camión llega tarde."),
    ("3", "busqueda", "Lo de Marta", "busca lo de Marta", "## Marta\n\nFirma el **jueves**."),
)


def fill_history(folder: Path) -> None:
    folder.mkdir(parents=True)
    with contextlib.closing(sqlite3.connect(folder / "dorix.sqlite")) as database, database:
        database.execute(SCHEMA)
        for age, (identifier, kind, title, query, answer) in enumerate(ITEMS):
            database.execute("INSERT INTO history VALUES (?,?,'Notas',NULL,?,?,?,?,NULL)",
                             (identifier, kind, title, time.time() - age, query, answer))


def nodes(node):
    """All that shows of the tree below the node."""
    if node is None or not node.get_state_set().contains(Atspi.StateType.SHOWING):
        return
    yield node
    for index in range(node.get_child_count()):
        yield from nodes(node.get_child_at_index(index))


class PanelTest(unittest.TestCase):
    desktop: VirtualDesktop

    def setUp(self):
        env = self.desktop.env
        fill_history(Path(env["XDG_DATA_HOME"], "DORIX"))
        settings = Path(env["XDG_CONFIG_HOME"], "dorix/defaults.json")
        settings.parent.mkdir(parents=True)
        settings.write_text(json.dumps({"appLanguage": "es", "onboardingDone": True, "hintShownCount": 9}))
        from editor import Editor  # needs the desktop's environment from its first line

        # Where no window manager does it.
        self.desktop.spawn(["xdotool", "search", "--sync", "--onlyvisible", "--class", "mousepad", "windowfocus"])
        self.editor = Editor(self.desktop)
        log = self.desktop.log("dorix")
        with open(log, "wb") as out:
            self.program = self.desktop.spawn([BINARY], stdout=out, stderr=out)
        self.wait(lambda: READY in log.read_bytes(), START_TIMEOUT)

    def wait(self, condition, seconds: float = PATIENCE):
        deadline = time.monotonic() + seconds
        while True:
            try:
                if value := condition():
                    return value
            except GLib.Error:
                pass  # what was looked at has just gone
            self.assertLess(time.monotonic(), deadline, [str(name) for name in self.shown()])
            time.sleep(0.02)

    def shown(self) -> list[tuple[str, str]]:
        """Role and name of all that the program shows."""
        applications = Atspi.get_desktop(0)
        found = []
        for index in range(applications.get_child_count()):
            application = applications.get_child_at_index(index)
            if application and application.get_name() == "dorix":
                found += [(node.get_role_name(), node.get_name()) for node in nodes(application)]
        return found

    def rows(self) -> list[str]:
        return [name.split(",")[0] for role, name in self.shown() if role == "list item"]

    def is_open(self) -> bool:
        return ("panel", "Historial") in self.shown()

    def xdotool(self, *arguments: str) -> str:
        return subprocess.run(["xdotool", *arguments], capture_output=True, text=True, check=True).stdout.strip()

    def click(self, at: tuple[int, int]) -> None:
        self.xdotool("mousemove", str(at[0]), str(at[1]), "click", "1")

    def key(self, *keys: str) -> None:
        self.xdotool("key", *keys)

    def focus(self) -> str:
        return self.xdotool("getwindowfocus", "getwindowname")

    def clipboard(self, *options: str) -> str:
        return subprocess.run(["xclip", "-o", "-selection", "clipboard", *options], capture_output=True, text=True,
                              check=False).stdout

    def open_panel(self) -> None:
        self.click(ICON)
        self.wait(self.is_open)
        self.wait(lambda: self.focus() == "DORIX")

    def assert_closed_and_focus_back(self) -> None:
        self.wait(lambda: "Mousepad" in self.focus())
        self.wait(lambda: not self.is_open())

    def test_the_panel(self):
        # One after the other in one program, as a day goes.
        self.use_the_keyboard()
        self.use_the_mouse()
        self.start_again()

    def use_the_keyboard(self):
        self.open_panel()
        self.assertEqual(self.rows(), ["Dictado: Salgo ya", "Dictado: El camión llega tarde", "Búsqueda: Lo de Marta"])

        self.xdotool("type", "camion")
        self.wait(lambda: self.rows() == ["Dictado: El camión llega tarde"])
        self.key("Down", "ctrl+c")
        self.wait(lambda: self.clipboard() == "El camión llega tarde.")
        self.assertNotIn(TRANSIENT, self.clipboard("-t", "TARGETS"))
        self.wait(lambda: ("push button", "Copiado") in self.shown())

        self.key("Tab", "Delete")
        self.wait(lambda: ("notification", "1 elemento borrado") in self.shown())
        self.wait(lambda: not self.rows())
        self.key("ctrl+z")
        self.wait(lambda: self.rows() == ["Dictado: El camión llega tarde"])

        self.key("ctrl+f", "BackSpace")
        self.wait(lambda: len(self.rows()) == 3)
        self.key("Tab", "End")
        self.wait(lambda: ("paragraph", "Firma el jueves.") in self.shown())
        self.key("Return")
        self.assert_closed_and_focus_back()
        self.wait(lambda: "Firma el jueves." in self.editor.text())

        self.open_panel()
        self.key("Escape")
        self.assert_closed_and_focus_back()

    def use_the_mouse(self):
        self.open_panel()
        self.click(ICON)
        self.assert_closed_and_focus_back()
        self.open_panel()
        self.click((int(ICON[0]) - 600, 330))  # within the panel
        self.assertTrue(self.is_open())
        self.click(ELSEWHERE)
        self.wait(lambda: not self.is_open())

    def start_again(self):
        subprocess.run([BINARY], check=True, timeout=PATIENCE)
        self.wait(self.is_open)
        self.assertIsNone(self.program.poll())


def main() -> int:
    def body(directory: Path) -> int:
        with VirtualDesktop(directory, window_manager=sys.argv[2] == "wm", sound=None) as desktop:
            os.environ.clear()
            os.environ.update(desktop.env)
            PanelTest.desktop = desktop
            return 0 if unittest.main(argv=sys.argv[:1], exit=False, verbosity=2).result.wasSuccessful() else 1

    return supervised(body)


if __name__ == "__main__":
    BINARY = str(Path(sys.argv[1]).resolve())
    sys.exit(main())
