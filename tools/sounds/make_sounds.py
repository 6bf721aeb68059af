#!/usr/bin/python3
"""Makes the sounds that a dictation begins and ends with: resources/sounds/Tink.wav and Pop.wav.

Both are struck tones that die away: Tink a bright one that rises by a fifth, Pop a soft one that falls.
"""

import math
import sys
import wave
from array import array
from pathlib import Path

RATE = 44_100
PEAK = 0.7  # of full scale
FADE_OUT = 0.01  # seconds
FOLDER = Path(__file__).resolve().parents[2] / "resources/sounds"


def tone(seconds: float, start: float, end: float, glide: float, decay: float, partials: dict[float, float],
         attack: float) -> list[float]:
    """A tone from `start` to `end` Hz, reached after about `glide` seconds, with overtones {multiple: strength}."""
    samples = []
    phase = 0.0
    for i in range(round(seconds * RATE)):
        t = i / RATE
        phase += 2 * math.pi * (end + (start - end) * math.exp(-t / glide)) / RATE
        # High overtones die sooner, as they do in anything that is struck.
        value = sum(strength * math.exp(-t * multiple / decay) * math.sin(multiple * phase)
                    for multiple, strength in partials.items())
        samples.append(value * min(1.0, t / attack) * min(1.0, (seconds - t) / FADE_OUT))
    return samples


def write(name: str, samples: list[float]) -> None:
    scale = PEAK * 32767 / max(abs(sample) for sample in samples)
    data = array("h", (round(sample * scale) for sample in samples))
    if sys.byteorder == "big":
        data.byteswap()
    with wave.open(str(FOLDER / f"{name}.wav"), "wb") as file:
        file.setnchannels(1)
        file.setsampwidth(2)
        file.setframerate(RATE)
        file.writeframes(data.tobytes())


def main() -> None:
    FOLDER.mkdir(parents=True, exist_ok=True)
    write("Tink", tone(0.16, 1175, 1760, glide=0.012, decay=0.045, partials={1: 1, 2: 0.35, 3.01: 0.15}, attack=0.002))
    write("Pop", tone(0.18, 880, 523, glide=0.03, decay=0.05, partials={1: 1, 2: 0.08}, attack=0.006))


if __name__ == "__main__":
    main()
