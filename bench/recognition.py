#!/usr/bin/python3
"""What each recogniser makes of recordings whose words are known.

    bench/recognition.py FOLDER --language es [--lab PATH] [--no-realtime]

FOLDER holds WAV files and, beside each, its words in a .txt. Every model that is installed for the language hears them
all, one after the other, in one process of the recogniser, as it would a user. The table has

- the word error rate: words wrong, missing or too many, of those that were said. Case and punctuation do not count,
  accents do.
- the processor's time for a second of sound, loading included, from hearing the recordings all at once;
- the time from the end of a recording to its text, heard in real time and ended 50 ms after its last word;
- the proportional memory of the recogniser's process after the last recording.
"""

import argparse
import array
import contextlib
import json
import os
import re
import statistics
import subprocess
import sys
import tempfile
import wave
from dataclasses import dataclass, field
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
WORD = re.compile(r"[^\W_]+(?:['’][^\W_]+)*")
AFTER_LAST_WORD = 0.05  # seconds
QUIET = 0.02  # of the loudest sample


def words_of(text: str) -> list[str]:
    return WORD.findall(text.lower())


def errors_between(said: list[str], heard: list[str]) -> int:
    """The fewest words to replace, leave out or put in."""
    row = list(range(len(heard) + 1))
    for i, word in enumerate(said, 1):
        diagonal, row[0] = row[0], i
        for j, other in enumerate(heard, 1):
            diagonal, row[j] = row[j], min(row[j] + 1, row[j - 1] + 1, diagonal + (word != other))
    return row[-1]


def seconds_of(file: Path) -> float:
    with wave.open(str(file)) as sound:
        return sound.getnframes() / sound.getframerate()


def end_after_last_word(file: Path, into: Path) -> Path:
    """The recording as it is when the key is let go behind the last word. Of 16 bits a sample; others stay whole."""
    with wave.open(str(file)) as sound:
        if sound.getsampwidth() != 2:
            return file
        parameters = sound.getparams()
        samples = array.array("h", sound.readframes(sound.getnframes()))
    loudest = max(map(abs, samples), default=0)
    last = max((i for i, sample in enumerate(samples) if abs(sample) > QUIET * loudest), default=0)
    spare = int(AFTER_LAST_WORD * parameters.framerate)
    frames = last // parameters.nchannels + 1 + spare
    ended = into / file.name
    with wave.open(str(ended), "wb") as sound:
        sound.setparams(parameters)
        sound.writeframes(samples[:frames * parameters.nchannels].tobytes())
    return ended


class Lab:
    """dorix-lab, which recognises with one model from its start to its end."""

    def __init__(self, lab: Path, model: str, language: str):
        self._common = {"model": model, "language": language}
        self._process = subprocess.Popen([lab, "transcribe"], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

    def __enter__(self) -> "Lab":
        return self

    def __exit__(self, *_exception) -> None:
        self._process.stdin.close()
        self._process.wait()
        self._process.stdout.close()

    def transcribe(self, file: Path, realtime: bool) -> dict:
        line = json.dumps(self._common | {"file": str(file), "realtime": realtime})
        print(line, file=self._process.stdin, flush=True)
        answer = json.loads(self._process.stdout.readline())
        if "error" in answer:
            raise SystemExit(f"{file}: {answer['error']}")
        return answer

    def recogniser(self) -> Path:
        """Its process."""
        tasks = Path(f"/proc/{self._process.pid}/task").glob("*/children")
        child, = " ".join(task.read_text() for task in tasks).split()
        return Path("/proc", child)

    def processor_seconds(self) -> float:
        ticks = (self.recogniser() / "stat").read_text().rpartition(")")[2].split()[11:13]
        return sum(map(int, ticks)) / os.sysconf("SC_CLK_TCK")

    def memory(self) -> float | None:
        """In MiB, shared pages divided among those who share them; nothing where it may not be looked at."""
        with contextlib.suppress(PermissionError):
            pages = (self.recogniser() / "smaps_rollup").read_text()
            return int(re.search(r"^Pss:\s+(\d+)", pages, re.MULTILINE)[1]) / 1024
        return None


@dataclass
class Figures:
    words: int = 0
    errors: int = 0
    sound: float = 0
    computing: float = 0
    waits: list[float] = field(default_factory=list)
    memory: float | None = None

    def row(self, name: str) -> str:
        waits = [wait * 1000 for wait in self.waits]
        to_text = f"{statistics.median(waits):.0f}, {max(waits):.0f} ms" if waits else "–"
        memory = f"{self.memory:.0f} MiB" if self.memory is not None else "–"
        return (f"| {name} | {self.words} | {100 * self.errors / self.words:.1f} % "
                f"| {self.computing / self.sound:.2f} s | {to_text} | {memory} |")


def measure(lab: Path, model: str, language: str, recordings: list[Path], realtime: bool) -> Figures:
    figures = Figures()
    with Lab(lab, model, language) as recogniser:
        for recording in recordings:
            answer = recogniser.transcribe(recording, realtime=False)
            said = words_of(recording.with_suffix(".txt").read_text(encoding="utf-8"))
            errors = errors_between(said, words_of(answer["text"]))
            print(f"{model}: {recording.stem}: {errors} of {len(said)}: {answer['text']}", file=sys.stderr)
            figures.words += len(said)
            figures.errors += errors
            figures.sound += seconds_of(recording)
        figures.computing = recogniser.processor_seconds()
        figures.memory = recogniser.memory()
    if realtime:
        with tempfile.TemporaryDirectory() as folder, Lab(lab, model, language) as recogniser:
            for recording in recordings:
                ended = end_after_last_word(recording, Path(folder))
                figures.waits.append(recogniser.transcribe(ended, realtime=True)["seconds"])
    return figures


def installed(lab: Path, language: str) -> list[dict]:
    told = subprocess.run([lab, "models"], input="{}\n", capture_output=True, text=True, check=True).stdout
    return [model for model in json.loads(told)["models"]
            if any(language == known or language.startswith(known + "-") for known in model["languages"])]


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("folder", type=Path)
    parser.add_argument("--language", required=True, help="that is spoken: es, en-US")
    parser.add_argument("--lab", type=Path, default=ROOT / "build/release/tools/lab/dorix-lab")
    parser.add_argument("--no-realtime", action="store_true", help="without the times to the text, which take as long "
                        "as the recordings")
    options = parser.parse_args()
    recordings = sorted(file for file in options.folder.glob("*.wav") if file.with_suffix(".txt").exists())
    models = installed(options.lab, options.language)
    if not recordings or not models:
        what = "recordings with their words" if not recordings else f"model for {options.language}"
        print(f"there is no {what}", file=sys.stderr)
        return 1
    rows = [measure(options.lab, model["id"], options.language, recordings, not options.no_realtime)
            .row(f"{model['id']}, {model['engine']}") for model in models]
    print(f"{len(recordings)} recordings, load of the machine {os.getloadavg()[0]:.1f}\n")
    print("| Model, engine | Words | Errors | Processor for 1 s | End to text, median and worst | Memory |")
    print("|---|---|---|---|---|---|")
    print("\n".join(rows))
    return 0


if __name__ == "__main__":
    sys.exit(main())
