#!/usr/bin/python3
"""Spanish, where its model and recordings are at hand: in the folder that DORIX_TEST_SPEECH names.

    tools/demo/spanish_speech.py DATA    installs the model there, as XDG_DATA_HOME names it
"""

import json
import os
import shutil
import sys
from pathlib import Path

from failure import DemoError

VARIABLE = "DORIX_TEST_SPEECH"
MODEL = {
    "id": "pocketsphinx-es",
    "engine": "pocketsphinx",
    "kind": "embedded",
    "languages": ["es"],
    "files": {"acoustic": "model", "dictionary": "dict", "language": "es.lm.bin"},
    "parameters": {"topn": 16, "wip": 0.3},
}


def folder() -> Path | None:
    return Path(os.environ[VARIABLE]) if os.environ.get(VARIABLE) else None


def install(data: Path) -> None:
    """As a user does by hand; `data` is where programs keep what is the user's."""
    into = data / "DORIX/models" / MODEL["id"]
    shutil.copytree(folder(), into, ignore=shutil.ignore_patterns("speech", "tools"))
    for copied in (into, into / "model"):
        copied.chmod(0o755)  # they may come from where nobody writes
    (into / "model.json").write_text(json.dumps(MODEL))


def recording(name: str) -> tuple[Path, str]:
    """Its sound and its words."""
    sound = folder() / "speech" / f"{name}.wav"
    try:
        return sound, sound.with_suffix(".txt").read_text(encoding="utf-8").strip()
    except OSError as error:
        raise DemoError(f"there is no such recording: {error}") from error


if __name__ == "__main__":
    if len(sys.argv) != 2 or not folder():
        sys.exit(__doc__)
    install(Path(sys.argv[1]))
