#!/usr/bin/python3
"""From letting the hold key go to the text in the editor, over several dictations.

    bench/key_up_to_text.py [--binary PATH] [--times N] [--index PATH]

Beside it, on the same kind of desktop, the floor: from pressing the paste chord by hand to the text in the editor. With
--index, which names index_bench, every other dictation is made while that indexes documents. It does not wait for the
dictation, which the index within the program does: what that costs is less.
"""

import argparse
import contextlib
import os
import re
import statistics
import subprocess
import sys
import tempfile
import threading
import time
from collections.abc import Iterator
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[1]
sys.path[:0] = [str(ROOT / "tools/demo"), str(ROOT / "tools/desktop"), str(ROOT / "bench")]

from indexing import make_documents  # noqa: E402
from keyboard import Keyboard  # noqa: E402
from supervision import supervised  # noqa: E402
from virtual_desktop import VirtualDesktop  # noqa: E402

SENTENCES = (
    "please send me the new numbers before the meeting on monday",
    "we will be there at ten",
    "the train was late so i missed the first part of the talk but the rest was very good",
)


def dictation(binary: Path, sentence: str) -> float:
    told = subprocess.run([ROOT / "tools/demo/demo.py", "--binary", binary, "--say", sentence],
                          capture_output=True, text=True, check=True).stdout
    return float(re.search(r"^key-up to text: (\d+)", told, re.MULTILINE)[1])


@contextlib.contextmanager
def running_index(binary: Path, documents: Path) -> Iterator[None]:
    """Has the documents indexed from nothing, over and over."""
    is_over = threading.Event()

    def keep_running() -> None:
        while not is_over.is_set():
            with tempfile.TemporaryDirectory() as place:
                index = subprocess.Popen([binary, documents, Path(place) / "memory.sqlite"], stdout=subprocess.DEVNULL)
                while index.poll() is None and not is_over.wait(0.1):
                    pass
                index.terminate()
                index.wait()

    thread = threading.Thread(target=keep_running)
    thread.start()
    try:
        time.sleep(1)
        yield
    finally:
        is_over.set()
        thread.join()


def compare(options: argparse.Namespace, documents: Path) -> None:
    """By turns, so that whatever else the machine does is in both figures."""
    for sentence in SENTENCES:
        alone, beside = [], []
        for _ in range(options.times):
            alone.append(dictation(options.binary, sentence))
            with running_index(options.index, documents):
                beside.append(dictation(options.binary, sentence))
        words = len(sentence.split())
        tell(f"dictation of {words} words", alone)
        tell(f"dictation of {words} words beside an index", beside)


def pastes(directory: Path, times: int) -> list[float]:
    with VirtualDesktop(directory) as desktop:
        os.environ.clear()
        os.environ.update(desktop.env)
        from editor import Editor  # needs the desktop's environment from its first line

        editor = Editor(desktop)
        keyboard = Keyboard(desktop.env["DISPLAY"])

        def chord(*keys: str) -> None:
            for key in keys:
                keyboard.press(key)
            for key in reversed(keys):
                keyboard.release(key)

        for letter in "reference":
            chord(letter)
        editor.await_insertion(0, 5)
        chord("Control_L", "a")
        chord("Control_L", "c")
        taken = []
        for _ in range(times):
            time.sleep(0.2)
            began = time.monotonic()
            chord("Control_L", "v")
            taken.append((editor.await_insertion(began, 5) - began) * 1000)
        return taken


def tell(name: str, milliseconds: list[float]) -> None:
    ordered = sorted(milliseconds)
    print(f"{name}: median {statistics.median(ordered):.0f} ms, worst {ordered[-1]:.0f} ms, of {len(ordered)}")


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--binary", type=Path, default=ROOT / "build/release/src/app/dorix")
    parser.add_argument("--times", type=int, default=4, help="how often each sentence is dictated")
    parser.add_argument("--index", type=Path, help="an index_bench, to be run beside every other dictation")
    options = parser.parse_args()
    if options.index:
        with tempfile.TemporaryDirectory() as place:
            documents = Path(place) / "documents"
            make_documents(documents, pdfs=300, mixed=1500)
            compare(options, documents)
        return 0
    for sentence in SENTENCES:
        words = len(sentence.split())
        tell(f"dictation of {words} words", [dictation(options.binary, sentence) for _ in range(options.times)])

    def reference(directory: Path) -> int:
        tell("paste by hand", pastes(directory, options.times * 3))
        return 0

    return supervised(reference)


sys.exit(main())
