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

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tools/demo"), str(ROOT / "tools/desktop")]

from dorix import Dorix  # noqa: E402
from supervision import supervised  # noqa: E402
from user import User  # noqa: E402
from virtual_desktop import VirtualDesktop  # noqa: E402

BINARY = ""
WINDOW_MANAGER = True
PATIENCE = 5.0
ELSEWHERE = (1100, 100)
TRANSIENT = "org.nspasteboard.TransientType"

SCHEMA = """CREATE TABLE history (id TEXT PRIMARY KEY, kind TEXT NOT NULL, app TEXT NOT NULL, bundle_id TEXT,
    title TEXT NOT NULL, created_at REAL NOT NULL, query TEXT NOT NULL, answer TEXT NOT NULL, meta TEXT)"""
ITEMS = (  # id, kind, title, what was said, what was written
    ("1", "dictado", "Salgo ya", "eh salgo ya", "Salgo ya."),
    ("2", "dictado", "El camión llega tarde", "el camion llega tarde", "El camión llega tarde."),
    ("3", "busqueda", "Lo de Marta", "busca lo de Marta",
     "## Marta\n\nHay [un contrato](https://velmar.example).\n\nFirma el **jueves**."),
)


def fill_history(folder: Path) -> None:
    folder.mkdir(parents=True)
    with contextlib.closing(sqlite3.connect(folder / "dorix.sqlite")) as database, database:
        database.execute(SCHEMA)
        for age, (identifier, kind, title, query, answer) in enumerate(ITEMS):
            database.execute("INSERT INTO history VALUES (?,?,'Notas',NULL,?,?,?,?,NULL)",
                             (identifier, kind, title, time.time() - age, query, answer))


class PanelTest(unittest.TestCase):
    desktop: VirtualDesktop

    def setUp(self):
        env = self.desktop.env
        fill_history(Path(env["XDG_DATA_HOME"], "DORIX"))
        from editor import Editor  # needs the desktop's environment from its first line

        self.editor = Editor(self.desktop)
        self.user = User(self.desktop)
        settings = {"appLanguage": "es", "onboardingDone": True, "hintShownCount": 9}
        self.dorix = Dorix(self.desktop, Path(BINARY), self.desktop.log("dorix"), settings)

    def wait(self, condition):
        from accessibility import await_found

        self.assertTrue(await_found(condition, PATIENCE), self.shown())

    def shown(self) -> list[tuple[str, str]]:
        """Role and name of all that the program shows."""
        from accessibility import showing

        return [(node.get_role_name(), node.get_name()) for node in showing(self.dorix.pid)]

    def button(self) -> str:
        """The name of a button's role: "push button", or "button" since at-spi2-core 2.56."""
        from accessibility import Atspi

        return Atspi.Role.get_name(Atspi.Role.PUSH_BUTTON)

    def rows(self) -> list[str]:
        return [name.split(",")[0] for role, name in self.shown() if role == "list item"]

    def is_open(self) -> bool:
        return ("panel", "Historial") in self.shown()

    def focus(self) -> str:
        asked = ["xdotool", "getwindowfocus", "getwindowname"]
        return subprocess.run(asked, capture_output=True, text=True, check=True).stdout.strip()

    def clipboard(self, *options: str) -> str:
        return subprocess.run(["xclip", "-o", "-selection", "clipboard", *options], capture_output=True, text=True,
                              check=False).stdout

    def open_panel(self) -> None:
        self.user.click(*self.dorix.icon_centre())
        self.wait(self.is_open)
        self.wait(lambda: self.focus() == "DORIX")

    def assert_closed_and_focus_back(self) -> None:
        self.wait(lambda: "Mousepad" in self.focus())
        self.wait(lambda: not self.is_open())

    def test_the_panel(self):
        # One after the other in one program, as a day goes.
        self.hear_the_panel()
        self.use_the_keyboard()
        self.use_the_mouse()
        self.export_the_history()
        self.start_again()

    def hear_the_panel(self):
        """Every stop of the keyboard is told to who listens for it, by its role, its name and what explains it."""
        from accessibility import Atspi

        heard = []

        def focused(event):
            node = event.source
            if event.detail1 and node.get_process_id() == self.dorix.pid:
                heard.append((node.get_role_name(), node.get_name().split(",")[0], node.get_description()))

        listener = Atspi.EventListener.new(focused)
        listener.register("object:state-changed:focused")
        self.open_panel()
        self.go_round(heard, "document frame", "Habla. DORIX escribe.", "Pon el cursor en cualquier campo de texto")
        self.user.press("shift+Tab")
        self.wait(lambda: heard[-1][:2] == ("list", "Historial"))
        for title in ("Dictado: Salgo ya", "Dictado: El camión llega tarde", "Búsqueda: Lo de Marta"):
            self.user.press("Down")
            self.wait(lambda: heard[-1][:2] == ("list item", title))  # noqa: B023
        self.go_round(heard, "link", "un contrato")
        self.go_round(heard, self.button(), "Dictar")
        listener.deregister("object:state-changed:focused")
        self.user.press("Escape")
        self.assert_closed_and_focus_back()

    def go_round(self, heard: list, role: str, name: str, description: str = "") -> None:
        """Presses Tab until the keyboard is at what is called so."""
        from accessibility import await_found

        for _ in range(20):
            before = len(heard)
            self.user.press("Tab")
            self.assertTrue(await_found(lambda: len(heard) > before, PATIENCE), heard)  # noqa: B023
            if heard[-1][:2] == (role, name):
                self.assertTrue(heard[-1][2].startswith(description), heard[-1])
                return
        self.fail(f"{name} is not among {heard}")

    def use_the_keyboard(self):
        self.open_panel()
        self.assertEqual(self.rows(), ["Dictado: Salgo ya", "Dictado: El camión llega tarde", "Búsqueda: Lo de Marta"])

        self.user.type("camion")
        self.wait(lambda: self.rows() == ["Dictado: El camión llega tarde"])
        self.user.press("Down", "ctrl+c")
        self.wait(lambda: (self.button(), "Copiado") in self.shown())  # first, as it shows for a moment only
        self.wait(lambda: self.clipboard() == "El camión llega tarde.")
        self.assertNotIn(TRANSIENT, self.clipboard("-t", "TARGETS"))

        self.user.press("Tab", "Delete")
        self.wait(lambda: ("notification", "1 elemento borrado") in self.shown())
        self.wait(lambda: not self.rows())
        self.user.press("ctrl+z")
        self.wait(lambda: self.rows() == ["Dictado: El camión llega tarde"])

        self.user.press("ctrl+f", "BackSpace")
        self.wait(lambda: len(self.rows()) == 3)
        self.user.press("Tab", "End")
        self.wait(lambda: ("paragraph", "Firma el jueves.") in self.shown())
        self.user.press("Return")
        self.assert_closed_and_focus_back()
        self.wait(lambda: "Firma el jueves." in self.editor.text())

        self.open_panel()
        self.user.press("Escape")
        self.assert_closed_and_focus_back()

    def use_the_mouse(self):
        self.open_panel()
        self.user.click(*self.dorix.icon_centre())
        self.assert_closed_and_focus_back()
        self.open_panel()
        x, _ = self.dorix.icon_centre()
        self.user.click(x - 600, 330)  # within the panel
        self.assertTrue(self.is_open())
        self.user.click(*ELSEWHERE)
        self.wait(lambda: not self.is_open())
        if WINDOW_MANAGER:
            self.click_gives_the_keyboard()

    def click_gives_the_keyboard(self):
        terminal = self.desktop.spawn(["xterm", "-T", "Terminal", "-geometry", "20x5-20+20"], stderr=subprocess.DEVNULL)
        self.wait(lambda: self.focus() == "Terminal")
        self.activate_editor()
        self.open_panel()
        self.user.click(1200, 60)
        self.wait(lambda: not self.is_open())
        self.assertEqual(self.focus(), "Terminal", "not what had it before the panel")
        terminal.terminate()
        terminal.wait(PATIENCE)
        self.activate_editor()

    def activate_editor(self) -> None:
        subprocess.run(["xdotool", "search", "--onlyvisible", "--class", "mousepad", "windowactivate"], check=True)
        self.wait(lambda: "Mousepad" in self.focus())

    def export_the_history(self):
        # No portal asks where here, so that the files are named in the user's own folder.
        self.open_panel()
        folder = Path(self.desktop.env["HOME"])
        for keys, extension in ((["Down"], "md"), (["Down", "Down"], "json")):
            self.press_button("Más opciones")
            self.wait(lambda: ("menu item", "Exportar como JSON…") in self.shown())
            self.user.press(*keys, "Return")
            self.wait((folder / f"DORIX Historial.{extension}").exists)
        markdown = (folder / "DORIX Historial.md").read_text()
        for _, _, title, _, answer in ITEMS:
            self.assertIn(title, markdown)
            self.assertIn(answer.splitlines()[-1], markdown)
        exported = json.loads((folder / "DORIX Historial.json").read_text())
        self.assertEqual([(item["id"], item["kind"], item["title"], item["query"], item["answer"])
                          for item in exported["items"]], list(ITEMS))
        self.assertEqual((folder / "DORIX Historial.json").stat().st_mode & 0o077, 0, "the user's alone")
        self.user.press("Escape")
        self.assert_closed_and_focus_back()

    def press_button(self, name: str) -> None:
        """As a screen reader does it."""
        from accessibility import showing

        self.wait(lambda: any(node.do_action(0) for node in showing(self.dorix.pid) if node.get_name() == name))

    def start_again(self):
        subprocess.run([BINARY], check=True, timeout=PATIENCE)
        self.wait(self.is_open)
        self.dorix.check_running()


def main() -> int:
    def body(directory: Path) -> int:
        with VirtualDesktop(directory, window_manager=WINDOW_MANAGER, sound=None) as desktop:
            os.environ.clear()
            os.environ.update(desktop.env)
            PanelTest.desktop = desktop
            return 0 if unittest.main(argv=sys.argv[:1], exit=False, verbosity=2).result.wasSuccessful() else 1

    return supervised(body)


if __name__ == "__main__":
    BINARY = str(Path(sys.argv[1]).resolve())
    WINDOW_MANAGER = sys.argv[2] == "wm"
    sys.exit(main())
