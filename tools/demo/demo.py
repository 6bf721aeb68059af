#!/usr/bin/python3
"""DORIX used on a desktop of its own: one dictation into a real text editor, or the steps of a script.

A dictation prints whose session DORIX has with its service, what was typed, the milliseconds from letting the key go to the text standing in the editor, whether
the clipboard is what it was, and where the pictures of the desktop lie: one while DORIX listens, one afterwards. The
exit status is 0 only when there is a session, words were typed and the clipboard is intact.

A script prints what came of each step. The exit status is 0 only when every step did what it should; the first that did
not ends it. docs/demo-scripts.md tells how to write one.
"""

import argparse
import os
import shlex
import signal
import subprocess
import sys
import time
from pathlib import Path

sys.dont_write_bytecode = True
HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[1]
sys.path[:0] = [str(HERE), str(HERE.parent / "desktop")]

import spanish_speech  # noqa: E402
from dorix import Dorix  # noqa: E402
from failure import DemoError  # noqa: E402
from outcome import ASKED  # noqa: E402
from script import read_script  # noqa: E402
from supervision import supervised  # noqa: E402
from virtual_desktop import DesktopError, VirtualDesktop  # noqa: E402

SENTENCE = "please send me the new numbers before the meeting on monday"
SETTINGS = {"appLanguage": "en", "language": "en-US"}
SKIPPED = 77  # the exit status
LOG_END = 20  # lines
FAILURES = (DemoError, DesktopError, subprocess.CalledProcessError)


def play_dictation(options: argparse.Namespace, desktop: VirtualDesktop) -> bool:
    from dictation import Dictation

    dictation = Dictation(desktop, options.screenshot, options.hands_free)
    return dictation.play(options.say, lambda: Dorix(desktop, options.binary, options.log, SETTINGS))


def start_model_server(desktop: VirtualDesktop) -> str:
    """Gives its address; it ends with the desktop, and keeps there what it is asked."""
    server = desktop.spawn([str(HERE / "model_server.py"), str(desktop.directory / ASKED)], stdin=subprocess.DEVNULL,
                           stdout=subprocess.PIPE, text=True)
    return f"http://127.0.0.1:{server.stdout.readline().strip()}"


def play_script(options: argparse.Namespace, desktop: VirtualDesktop) -> bool:
    from player import Player

    script = options.script
    if script.is_spanish:
        spanish_speech.install(Path(desktop.env["XDG_DATA_HOME"]))
    settings = SETTINGS | script.settings
    if script.has_model_server:
        settings["modelServer"] = start_model_server(desktop)
    for name, text in script.documents.items():
        document = Path(desktop.env["HOME"], "Documents", name)
        document.parent.mkdir(parents=True, exist_ok=True)
        document.write_text(text + "\n", encoding="utf-8")
    if script.has_service_model:
        desktop.env |= {"DORIX_SERVICE_MODEL_URL": start_model_server(desktop) + "/v1", "DORIX_SERVICE_MODEL": "stand-in",
                        "DORIX_SERVICE_MODEL_PICTURES": "yes"}
    player = Player(desktop, Dorix(desktop, options.binary, options.log, settings), options.output)
    began = time.monotonic()
    for step in script.steps:
        print(step, flush=True)
        try:
            for line in player.play(step):
                print(f"  {line}", flush=True)
        except FAILURES as error:
            raise script.failure(step.line, f"{step.name}: {error}") from error
    done = [step for step in script.steps if step.name not in ("expect", "screenshot")]
    print(f"{len(done)} things done in {time.monotonic() - began:.0f} s", flush=True)
    return True


def play(options: argparse.Namespace, desktop: VirtualDesktop) -> bool:
    try:
        well = play_script(options, desktop) if options.script else play_dictation(options, desktop)
    except FAILURES as error:
        print(f"demo: {error}", file=sys.stderr)
        well = False
    if not well:
        tell_log(options.log)
    return well


def tell_log(log: Path) -> None:
    if log.exists():
        print(f"DORIX's log, {log}, ends:", file=sys.stderr)
        for line in log.read_text(errors="replace").splitlines()[-LOG_END:]:
            print(f"  {line}", file=sys.stderr)


def keep(desktop: VirtualDesktop, output: Path) -> None:
    """Leaves the desktop up until a signal ends it."""
    names = ("DISPLAY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "PULSE_SERVER")
    environment = output / "desktop.env"
    environment.write_text("".join(f"export {name}={shlex.quote(desktop.env[name])}\n" for name in names))
    display = desktop.env["DISPLAY"]
    print(f"""
The desktop stays up on display {display} until Ctrl-C. From another terminal:
  source {environment}
  import -window root now.png                                    a picture of it
  xdotool keydown Alt_R                                          hold the key (keyup lets it go)
  paplay --device=mic --latency-msec=100 words.wav               speak
  x11vnc -localhost -display {display}                                  watch it, where x11vnc is installed""", flush=True)
    while True:
        signal.pause()


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="./run --demo", description=__doc__, allow_abbrev=False,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--script", metavar="FILE", type=Path, help="the steps to play")
    parser.add_argument("--say", metavar="SENTENCE", default=SENTENCE, help="the words to speak, in English")
    parser.add_argument("--hands-free", action="store_true",
                        help="tap Alt+Space and let silence end the dictation, instead of holding the key")
    parser.add_argument("--keep", action="store_true", help="leave the desktop up afterwards, until Ctrl-C")
    parser.add_argument("--screenshot", metavar="PATH", type=Path, help="where to write the picture of the desktop")
    parser.add_argument("--binary", metavar="PATH", type=Path, default=ROOT / "build/release/src/app/dorix",
                        help="the DORIX to start")
    parser.add_argument("--output", metavar="FOLDER", type=Path, default=ROOT / "build/demo",
                        help="where the log and the pictures go")
    options = parser.parse_args()
    if not options.say.strip():
        parser.error("the sentence is empty")
    if options.script:
        if options.say != SENTENCE or options.hands_free or options.screenshot:
            parser.error("a script tells itself what is said, how, and of what pictures are taken")
        try:
            options.script = read_script(options.script)
        except DemoError as error:
            parser.exit(2, f"demo: {error}\n")
        if options.script.is_spanish and not spanish_speech.folder():
            parser.exit(SKIPPED, f"demo: skipped, as {spanish_speech.VARIABLE} names no Spanish speech\n")
    if not os.access(options.binary, os.X_OK):
        parser.error(f"there is no program {options.binary}")
    options.output.mkdir(parents=True, exist_ok=True)
    options.output = options.output.resolve()
    options.binary = options.binary.resolve()
    options.log = options.output / "dorix.log"
    options.screenshot = (options.screenshot or options.output / "screenshot.png").absolute()
    return options


def main() -> int:
    options = arguments()

    def body(directory: Path) -> int:
        try:
            with VirtualDesktop(directory) as desktop:
                os.environ.clear()
                os.environ.update(desktop.env)
                well = play(options, desktop)
                if options.keep:
                    keep(desktop, options.output)
        except DesktopError as error:
            print(f"demo: {error}", file=sys.stderr)
            return 1
        return 0 if well else 1

    return supervised(body)


if __name__ == "__main__":
    sys.exit(main())
