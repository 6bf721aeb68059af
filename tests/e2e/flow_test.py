#!/usr/bin/python3
"""Words that are said when nobody expects them: while the last ones are still being written, into a microphone that is
pulled out, when the program is told to end. None may be lost, and no half sentence typed; and nobody stays behind. Takes
the program's path."""

import json
import os
import signal
import sys
import threading
import time
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
ROOT = Path(__file__).resolve().parents[2]
sys.path[:0] = [str(ROOT / "tools/demo"), str(ROOT / "tools/desktop")]

from dorix import Dorix  # noqa: E402
from outcome import sounds_like  # noqa: E402
from recogniser import has_ended, recogniser_of  # noqa: E402
from supervision import supervised  # noqa: E402
from user import HOLD_KEY, LEAD, User  # noqa: E402
from virtual_desktop import VirtualDesktop  # noqa: E402
from voice import seconds_of, speak, synthesise  # noqa: E402
from waiting import wait_until  # noqa: E402

BINARY = ""
PATIENCE = 20.0
FIRST = "please send me the new numbers before the meeting on monday"
SECOND = "the train was late this morning"


class FlowTest(unittest.TestCase):
    desktop: VirtualDesktop

    def test_no_word_is_lost(self):
        # One after the other on one desktop, which takes the longest to start.
        from editor import Editor  # needs the desktop's environment from its first line

        self.editor = Editor(self.desktop)
        self.user = User(self.desktop)
        settings = {"appLanguage": "en", "language": "en-US", "hintShownCount": 9}
        self.dorix = Dorix(self.desktop, Path(BINARY), self.desktop.log("dorix"), settings)
        self.speak_before_the_last_text_is_written()
        self.end_while_an_utterance_is_processed()
        self.end_in_the_middle_of_a_sentence()
        self.press_escape_while_the_last_words_are_recognised()
        self.end_while_the_last_words_are_recognised()
        self.pull_the_microphone_out()

    def words(self, sentence: str) -> Path:
        path = self.desktop.directory / f"{len(sentence)}.wav"
        synthesise(sentence, path)
        return path

    def wait(self, condition):
        self.assertTrue(wait_until(condition, PATIENCE), f"{self.dorix.history()} {self.dorix.events()[-12:]}")

    def is_busy(self) -> bool:
        return ([event["busy"] for event in self.dorix.events() if "busy" in event] or [False])[-1]

    def remembered(self) -> dict:
        item = self.dorix.history()[0]
        return item | {"inserted": json.loads(item["meta"])["inserted"]}

    def speak_before_the_last_text_is_written(self):
        first, second = self.words(FIRST), self.words(SECOND)
        self.user.hold_and_speak(HOLD_KEY, first)
        self.user.hold_and_speak(HOLD_KEY, second)
        self.wait(lambda: len(self.dorix.history()) == 2 and not self.is_busy())
        self.wait(lambda: sounds_like(f"{FIRST} {SECOND}", self.editor.text()))
        began = [event["at"] for event in self.dorix.events() if event.get("hud") == "listening"]
        through = next(event["at"] for event in self.dorix.events() if event.get("busy") is False)
        if began[1] >= through:  # on a busy machine; the order of the texts holds all the same
            print("the second sentence began too late to overlap with the first", file=sys.stderr)
        said = [item["query"] for item in reversed(self.dorix.history())]
        self.assertTrue(sounds_like(FIRST, said[0]) and sounds_like(SECOND, said[1]), said)

    def end_while_an_utterance_is_processed(self):
        self.user.hold_and_speak(HOLD_KEY, self.words(FIRST))
        self.dorix.restart()
        self.assertEqual(len(self.dorix.history()), 3)
        self.assertTrue(sounds_like(FIRST, self.remembered()["query"]), self.remembered())

    def end_in_the_middle_of_a_sentence(self):
        before = self.editor.text()
        self.user.press_and_hold(HOLD_KEY)
        time.sleep(LEAD)
        speak(self.desktop, self.words(SECOND))
        self.dorix.restart()
        self.user.let_go(HOLD_KEY)
        self.assertEqual(len(self.dorix.history()), 4)
        self.assertTrue(sounds_like(SECOND, self.remembered()["query"]), self.remembered())
        self.assertFalse(self.remembered()["inserted"])
        self.assertEqual(self.editor.text(), before)

    def speak_to_a_recogniser_that_stops(self, sentence: str) -> int:
        """Lets the key go when it is at the last words; the recogniser."""
        recogniser = recogniser_of(self.dorix.pid)
        self.user.press_and_hold(HOLD_KEY)
        time.sleep(LEAD)
        speak(self.desktop, self.words(sentence))
        os.kill(recogniser, signal.SIGSTOP)
        self.user.let_go(HOLD_KEY)
        self.wait(self.is_busy)
        return recogniser

    def press_escape_while_the_last_words_are_recognised(self):
        known = len(self.dorix.history())
        recogniser = self.speak_to_a_recogniser_that_stops(FIRST)
        self.user.press("Escape")
        time.sleep(0.5)
        self.assertTrue(self.is_busy(), "it is the recording's, which is over")
        os.kill(recogniser, signal.SIGCONT)
        self.wait(lambda: len(self.dorix.history()) == known + 1 and not self.is_busy())
        self.assertTrue(sounds_like(FIRST, self.remembered()["query"]), self.remembered())
        self.assertTrue(self.remembered()["inserted"])

    def end_while_the_last_words_are_recognised(self):
        known = len(self.dorix.history())
        before = self.editor.text()
        recogniser = self.speak_to_a_recogniser_that_stops(FIRST)
        self.dorix.restart()
        self.assertTrue(wait_until(lambda: has_ended(recogniser), PATIENCE))
        self.assertEqual(len(self.dorix.history()), known + 1)
        # As far as they were understood.
        self.assertTrue(set(self.remembered()["query"].lower().split()) & set(FIRST.split()), self.remembered())
        self.assertFalse(self.remembered()["inserted"])
        self.assertEqual(self.editor.text(), before)

    def pull_the_microphone_out(self):
        known = len(self.dorix.history())
        before = self.editor.text()
        sentence = self.words(FIRST)
        self.user.press_and_hold(HOLD_KEY)
        time.sleep(LEAD)
        speaking = threading.Thread(target=speak, args=(self.desktop, sentence))
        speaking.start()
        time.sleep(0.6 * seconds_of(sentence))
        self.assertEqual(self.desktop.spawn(["pactl", "unload-module", "module-remap-source"]).wait(), 0)
        speaking.join()
        self.user.let_go(HOLD_KEY)
        self.wait(lambda: len(self.dorix.history()) == known + 1 and not self.is_busy())
        self.assertFalse(self.remembered()["inserted"])
        self.assertEqual(self.editor.text(), before, "half a sentence")
        messages = [event["text"] for event in self.dorix.events() if event.get("hud") == "error"]
        self.assertIn("I lost the microphone halfway through. What I heard is in the history.", messages)

        # Nobody speaks into the void: the next press says at once what is missing.
        self.user.press_and_hold(HOLD_KEY)
        self.wait(lambda: self.dorix.events()[-1].get("text") == "No microphone available.")
        self.user.let_go(HOLD_KEY)


def main() -> int:
    def body(directory: Path) -> int:
        with VirtualDesktop(directory) as desktop:
            os.environ.clear()
            os.environ.update(desktop.env)
            FlowTest.desktop = desktop
            return 0 if unittest.main(argv=sys.argv[:1], exit=False, verbosity=2).result.wasSuccessful() else 1

    return supervised(body)


if __name__ == "__main__":
    BINARY = str(Path(sys.argv[1]).resolve())
    sys.exit(main())
