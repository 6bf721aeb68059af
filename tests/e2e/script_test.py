#!/usr/bin/python3
"""A script fails where it should, and says in which line. Takes the program's path."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

sys.dont_write_bytecode = True
DEMO = Path(__file__).resolve().parents[2] / "tools/demo"
sys.path.insert(0, str(DEMO))

from outcome import contains, inserted, sounds_like  # noqa: E402

BINARY = ""
TIMEOUT = 50.0


class ScriptTest(unittest.TestCase):
    def play(self, text: str) -> tuple[int, str]:
        """The exit status and what was complained of, the script called "s"."""
        with tempfile.TemporaryDirectory(prefix="dorix-script-") as folder:
            script = Path(folder, "s")
            script.write_text(text)
            done = subprocess.run([DEMO / "demo.py", "--binary", BINARY, "--output", folder, "--script", script],
                                  stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                  timeout=TIMEOUT)
            return done.returncode, done.stderr.replace(str(script), "s").partition("\n")[0]

    def test_a_faulty_line_is_told_before_anything_starts(self):
        for text, complaint in {
            "app mousepad\n\n# no\nsing la": "demo: s:4: there is no step \"sing\"; there are settings, app, ",
            "say": "demo: s:1: the step is: say SENTENCE",
            "tap\nsettings appLanguage es": "demo: s:2: settings stand before the first step",
            "# nothing\n": "demo: s: the script has no steps",
            "expect hud\n": "demo: s:1: what may be expected is typed, route, hud, message",
        }.items():
            with self.subTest(text):
                status, told = self.play(text)
                self.assertEqual(status, 2, told)
                self.assertTrue(told.startswith(complaint), told)

    def test_the_first_step_that_does_not_work_ends_the_script(self):
        status, told = self.play("app mousepad\nkey a b\nsilent\nexpect hud listening processing done\napp gimp\n")
        self.assertEqual(status, 1)
        self.assertRegex(told, r"^demo: s:4: expect: expected hud listening processing done \(.*I didn.t hear you")

    def test_words_are_compared_as_a_person_would(self):
        said = "please send me the new numbers"
        self.assertTrue(sounds_like(said, "Please send me the new members."))
        self.assertFalse(sounds_like(said, "Please find them in the news."))
        self.assertFalse(sounds_like(said, ""))
        self.assertTrue(contains("We will, be there.", "will be there"))
        self.assertFalse(contains("We will be there.", "ill be there"))

    def test_what_was_inserted_is_found_wherever_the_cursor_was(self):
        self.assertEqual(inserted("ab", "abc."), "c.")
        self.assertEqual(inserted("One. Two.", "One. And. Two."), "And. ")
        self.assertEqual(inserted("aa", "aaa"), "a")
        self.assertEqual(inserted("same", "same"), "")
        self.assertEqual(inserted("replaced.", "by this."), "by this.")


if __name__ == "__main__":
    BINARY = Path(sys.argv.pop(1)).resolve(strict=True)
    unittest.main(verbosity=2)
