"""Speaks into the virtual microphone."""

import subprocess
import wave
from pathlib import Path

from virtual_desktop import VirtualDesktop


def synthesise(sentence: str, path: Path) -> None:
    # Of the voices in the distribution, the one that the recogniser understands word for word.
    subprocess.run(["flite", "-voice", "slt", "-t", sentence, "-o", str(path)], check=True)


def seconds_of(words: Path) -> float:
    with wave.open(str(words)) as sound:
        return sound.getnframes() / sound.getframerate()


def speak(desktop: VirtualDesktop, words: Path) -> None:
    """Returns when the last sample has been heard."""
    status = desktop.spawn(["paplay", "--device=mic", "--latency-msec=100", str(words)]).wait()
    if status != 0:
        raise subprocess.CalledProcessError(status, "paplay")
