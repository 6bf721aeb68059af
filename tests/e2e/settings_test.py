#!/usr/bin/python3
"""The settings under the hands of a user who has no mouse, and as a screen reader hears them. Takes the program's
path."""

import http.server
import json
import os
import sys
import threading
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
PATIENCE = 10.0
MODEL = "whisper-base"


class NoModels(http.server.BaseHTTPRequestHandler):
    """Answers whoever asks for a model with something else."""

    asked: list[str] = []

    def do_GET(self):  # noqa: N802
        self.asked.append(self.path)
        self.send_response(404)
        self.end_headers()

    def log_message(self, *_):
        pass


class SettingsTest(unittest.TestCase):
    desktop: VirtualDesktop

    def setUp(self):
        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), NoModels)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.addCleanup(server.shutdown)
        self.user = User(self.desktop)
        settings = {"appLanguage": "es", "onboardingDone": True, "hintShownCount": 9, "language": "es-ES",
                    "speechMirrors": {"https://": f"http://127.0.0.1:{server.server_port}/"}}
        self.dorix = Dorix(self.desktop, Path(BINARY), self.desktop.log("dorix"), settings)

    def settings(self) -> dict:
        return json.loads(Path(self.desktop.env["XDG_CONFIG_HOME"], "dorix/defaults.json").read_text())

    def nodes(self) -> list:
        from accessibility import showing

        return list(showing(self.dorix.pid))

    def shown(self) -> list[tuple[str, str]]:
        """Role and name of all that the program shows."""
        return [(node.get_role_name(), node.get_name()) for node in self.nodes()]

    def wait(self, condition):
        from accessibility import await_found

        self.assertTrue(await_found(condition, PATIENCE), self.shown())

    def is_checked(self, name: str) -> bool:
        from accessibility import Atspi, has

        return any(has(node, Atspi.StateType.CHECKED) for node in self.nodes() if node.get_name() == name)

    def test_the_settings(self):
        # One after the other in one program, as a day goes.
        self.open()
        self.hear_and_change()
        self.find()
        self.fail_to_install()
        self.close()

    def open(self):
        """From the icon's menu."""
        x, y = self.dorix.icon_centre()
        self.user.mouse(f"mousemove {x} {y}", "sleep 0.1", "click 3")
        self.wait(lambda: ("menu item", "Ajustes…") in self.shown())
        self.press_until("Down", lambda name: name == "Ajustes…")
        self.user.press("Return")
        self.wait(lambda: ("dialog", "Ajustes de DORIX") in self.shown())
        self.wait(lambda: ("page tab", "General") in self.shown())

    def hear_and_change(self):
        """Every stop of the keyboard is told by its role and its name, and works."""
        from accessibility import Atspi

        heard = []

        def focused(event):
            node = event.source
            if event.detail1 and node.get_process_id() == self.dorix.pid:
                heard.append((node.get_role_name(), node.get_name()))

        listener = Atspi.EventListener.new(focused)
        listener.register("object:state-changed:focused")
        self.go_to(heard, "Tecla para dictar")
        self.user.press("Down", "Down")
        self.wait(lambda: self.settings().get("pttKey") == "rightControl")
        self.wait(lambda: self.is_checked("Control derecha"))
        self.go_to(heard, "Sonidos al empezar y terminar")
        self.assertEqual(heard[-1][0], "check box")
        self.user.press("space")
        self.wait(lambda: self.settings().get("playSounds") is False)
        self.assertFalse(self.is_checked("Sonidos al empezar y terminar"))
        listener.deregister("object:state-changed:focused")
        # The key that was chosen reaches the settings.
        self.user.press_and_hold(("Control_R",))
        self.wait(lambda: any(name == "Control derecha: pulsada" for _, name in self.shown()))
        self.user.let_go(("Control_R",))
        self.wait(lambda: any(name == "Control derecha: suelta" for _, name in self.shown()))

    def go_to(self, heard: list, name: str) -> None:
        from accessibility import await_found

        for _ in range(30):
            before = len(heard)
            self.user.press("Tab")
            self.assertTrue(await_found(lambda: len(heard) > before, PATIENCE), heard)  # noqa: B023
            if heard[-1][1] == name:
                return
        self.fail(f"{name} is not among {heard}")

    def find(self):
        self.user.press("ctrl+f")
        self.user.type("accesibilidad")
        self.wait(lambda: not any(name == "Tecla para dictar" for _, name in self.shown()))
        self.wait(lambda: any(name.startswith("Accesibilidad (") for _, name in self.shown()))
        self.user.press("Escape")
        self.wait(lambda: any(name == "Tecla para dictar" for _, name in self.shown()))

    def fail_to_install(self):
        """A model that the server does not give is told at its place."""
        self.user.press("ctrl+f")
        self.user.type(MODEL)
        self.wait(lambda: any(name.endswith(", " + MODEL) for _, name in self.shown()))
        self.press_until("Tab", lambda name: name.endswith(", " + MODEL))
        self.user.press("Return")
        self.wait(lambda: any("El servidor no da el modelo" in name for _, name in self.shown()))
        self.assertTrue(NoModels.asked)

    def press_until(self, key: str, is_there) -> None:
        """Until the keyboard is at what has such a name."""
        for _ in range(10):
            self.user.press(key)
            if any(is_there(name) for name in self.focused_names()):
                return
        self.fail(f"{self.focused_names()} among {self.shown()}")

    def focused_names(self) -> list[str]:
        from accessibility import Atspi, has

        return [node.get_name() for node in self.nodes() if has(node, Atspi.StateType.FOCUSED)]

    def close(self):
        self.user.press("Escape", "Escape")
        self.wait(lambda: ("dialog", "Ajustes de DORIX") not in self.shown())
        self.dorix.check_running()
        self.dorix.restart()
        self.assertEqual(self.settings()["pttKey"], "rightControl")


def main() -> int:
    def body(directory: Path) -> int:
        with VirtualDesktop(directory, window_manager=True, sound=None) as desktop:
            os.environ.clear()
            os.environ.update(desktop.env)
            SettingsTest.desktop = desktop
            return 0 if unittest.main(argv=sys.argv[:1], exit=False, verbosity=2).result.wasSuccessful() else 1

    return supervised(body)


if __name__ == "__main__":
    BINARY = str(Path(sys.argv[1]).resolve())
    sys.exit(main())
