#!/usr/bin/python3
"""Speaks everyday sentences into a folder, with their words beside them, for recognition.py.

    bench/english_sentences.py FOLDER
"""

import subprocess
import sys
from pathlib import Path

SENTENCES = (
    "please send the report to the whole team before noon",
    "i will be ten minutes late for the meeting this afternoon",
    "can you tell me where the nearest train station is",
    "we need to talk about the budget for next year",
    "thank you very much for your help with the project",
    "the weather is nice today and we should go for a walk",
    "remember to buy milk and bread on the way home",
    "she said that the new office will open in september",
    "let me know if you have any questions about the contract",
    "i think we should move the call to next friday morning",
    "my brother has lived in london for three years",
    "could you bring the keys when you come back from lunch",
    "the doctor can see you on tuesday at half past nine",
    "i have read your letter and i agree with every word",
    "there is a problem with the printer on the second floor",
    "they are going to paint the kitchen next weekend",
    "write down the name of the person who called",
    "the children want to see the animals in the park",
    "open the window and close the door behind you",
    "we have not received your payment for the last month",
    "our flight leaves at seven so we must get up early",
    "tell him that the price is too high for us",
    "the first part of the book was better than the rest",
    "i am looking forward to seeing you again",
)


def main() -> int:
    folder = Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    for number, sentence in enumerate(SENTENCES, 1):
        file = folder / f"en-{number:02}.wav"
        subprocess.run(["flite", "-voice", "slt", "-t", sentence, "-o", file], check=True)
        file.with_suffix(".txt").write_text(sentence + "\n", encoding="utf-8")
    return 0


if len(sys.argv) != 2:
    sys.exit(__doc__)
sys.exit(main())
