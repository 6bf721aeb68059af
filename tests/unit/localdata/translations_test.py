#!/usr/bin/python3
"""Every text that is translated has a row in the table of translations, or the user reads Spanish among the English."""

import re
import unittest
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[3] / "src"
TABLE = SOURCE / "localdata/TranslationTable.cpp"
# Their texts are translated where they are asked for.
NAMES = [
    SOURCE / name
    for name in (
        "localdata/HistoryItem.cpp",
        "localdata/PushToTalkKey.cpp",
        "panel/PanelSections.cpp",
        "recogniser/server/ServerFailure.cpp",
        "writing/ServerPolisher.cpp",
    )
]
ENGLISH_ALREADY = {"Ask Screen", "Ask Selection"}

LITERAL = r'"(?:[^"\\\n]|\\.)*"'
TEXT = re.compile(rf"{LITERAL}(?:\s*{LITERAL})*")
# Up to the parenthesis that closes the call; those inside go no deeper than two.
CALL = re.compile(rf"\b(?:tr|word|named)\(((?:{LITERAL}|[^()\"]|\((?:{LITERAL}|[^()\"]|\([^()]*\))*\))*)\)")


def texts(source: str) -> list[str]:
    """The literals, adjacent ones as one."""
    return ["".join(piece[1:-1] for piece in re.findall(LITERAL, text)) for text in TEXT.findall(source)]


class TranslationsTest(unittest.TestCase):
    def test_every_text_has_a_row(self):
        rows = {texts(row)[0] for row in re.findall(r"^    \{.*?\},$", TABLE.read_text(), re.MULTILINE | re.DOTALL)}
        self.assertGreater(len(rows), 400)
        translated = {}
        for file in SOURCE.rglob("*.cpp"):
            for call in CALL.findall(file.read_text()):
                translated |= dict.fromkeys(texts(call), file)
        self.assertGreater(len(translated), 50)
        for file in NAMES:
            translated |= {text: file for text in texts(file.read_text()) if re.match(r"\W*[A-ZÁÉÍÓÚ]\w", text)}
        missing = {text: file.name for text, file in translated.items() if text not in rows | ENGLISH_ALREADY}
        self.assertEqual(missing, {})


if __name__ == "__main__":
    unittest.main(verbosity=2)
