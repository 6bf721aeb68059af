#!/usr/bin/python3
"""How well the rules write, held at a floor, and that the scores of bench/writing_quality.py mean what they say.

    writing_quality_test.py FOLDER    of a build
"""

import sys
import unittest
from collections import Counter
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "bench"))
import writing_quality as quality  # noqa: E402

BUILD = Path(sys.argv.pop())


def score(text: str, said: str, *texts: str, language: str = "en") -> quality.Score:
    item = quality.Item("x", "development", language, "neutral", "", said, list(texts))
    return quality.score_of([item], [text])


class Scores(unittest.TestCase):
    def test_what_is_right_loses_nothing(self):
        text = "Hi Ana,\n\nIs it 8 %?\n- Milk\n- cd /var/log"
        perfect = score(text, text, text)
        self.assertEqual((perfect.errors, perfect.marks.f1, perfect.capitals.f1, perfect.invented), (0, 1, 1, 0))

    def test_what_is_wrong_shows_in_its_own_figure_alone(self):
        wanted = "Can you call Ana, please?"
        bare = score("can you call ana please", wanted, wanted)
        self.assertEqual((bare.errors, bare.marks, bare.capitals),
                         (0, quality.Hits(missing=2), quality.Hits(missing=2)))
        dropped = score("Can you Ana, please?", wanted, wanted)
        self.assertEqual((dropped.errors, dropped.marks.f1, dropped.capitals.f1), (1, 1, 1))
        added = score("Can you call Ana Ruiz, please?", wanted, wanted)
        self.assertEqual((added.errors, added.invented), (1, 1))

    def test_fillers_count_where_a_person_leaves_them_out(self):
        kept = score("I like like it um", "um I like like it um so", "I like it")
        self.assertEqual((kept.fillers, kept.left), (5, 3))

    def test_the_nearest_of_several_texts_counts(self):
        self.assertEqual(quality.variants("{a|} b{.|!}"), ["a b.", "a b!", " b.", " b!"])
        self.assertEqual(score("At 5.", "at five", *quality.variants("At {five|5}{.|}")).errors, 0)

    def test_names_made_of_what_was_said_are_not_invented(self):
        def invented(text, said):
            return quality.invented(quality.words_of(text), said)
        self.assertEqual(invented("getUserName in /var/log", "get user name in slash var slash log"), [])
        self.assertEqual(invented("Hola, Canción nueva", "cancion"), ["nueva"])


class Floor(unittest.TestCase):
    def test_rules_write_as_well_as_ever(self):
        items = quality.corpus()
        self.assertEqual(Counter((item.language, item.part) for item in items),
                         {(language, part): count for language in quality.LANGUAGES
                          for part, count in zip(quality.PARTS, (60, 40))})
        texts = quality.by_service(BUILD / "src/service/dorix-service", items)
        result = quality.score_of(items, texts)
        self.assertLessEqual(result.word_errors, 0.025)
        self.assertLessEqual(result.fillers_left, 0.04)
        self.assertGreaterEqual(result.marks.f1, 0.90)
        self.assertGreaterEqual(result.capitals.f1, 0.95)
        self.assertEqual(result.invented, 0)


if __name__ == "__main__":
    unittest.main()
