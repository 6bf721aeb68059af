#!/usr/bin/python3
"""Fails when a dependency arrow turns round or an operating system's header enters a portable folder.

The folders of src/ are listed from the ground up; a file may include what lies below its own folder. Of the
angle-bracket includes, portable folders get the C++ standard library and the libraries named here.
"""

import re
import sys
from pathlib import Path

SRC = Path(__file__).resolve().parents[2] / "src"

# Folders in one row do not know each other.
LAYERS = [
    ["base"],
    ["platform"],
    ["localdata", "routing"],
    ["dictation/context"],
    ["cloud"],
    ["writing"],
    ["memory"],
    ["assistant"],
    ["actions"],
    ["learning"],
    ["speech", "shell/permissions"],
    ["meeting"],
    ["dictation"],
    ["shell"],
    ["views"],
]
RANK = {folder: rank for rank, row in enumerate(LAYERS) for folder in row}

# What an operating system or a toolkit may enter, and what of ours it may include.
OUTSIDE = {"linux": {"base", "platform", "linux"}}
# The files that put all of it together, one for each process of the program.
COMPOSITION = {"shell/main.cpp", "shell/WatchdogProcess.cpp"}

LIBRARIES = {
    "base": [r"nlohmann/json\.hpp"],
    "base/sqlite": [r"sqlite3\.h"],
    "base/text": [r"unicode/.*\.h"],
    "routing": [r"re2/re2\.h", r"unicode/u(char|tf8)\.h"],
    "speech": [r"samplerate\.h"],
}
STANDARD_HEADER = re.compile(r"^[a-z_0-9]+$")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def folder_of(path: str) -> str:
    """The longest known folder that the path lies in."""
    known = [*RANK, *OUTSIDE]
    matches = [folder for folder in known if path.startswith(folder + "/")]
    return max(matches, key=len, default=path.split("/")[0])


def is_allowed_library(path: str, header: str) -> bool:
    if STANDARD_HEADER.match(header):
        return True
    return any(path.startswith(folder + "/") and re.fullmatch(pattern, header)
               for folder, patterns in LIBRARIES.items() for pattern in patterns)


def complaint(path: str, bracket: str, header: str) -> str | None:
    own = folder_of(path)
    if bracket == "<":
        free = own in OUTSIDE or own == "views" or path in COMPOSITION
        return None if free or is_allowed_library(path, header) else f"includes <{header}>"
    target = folder_of(header)
    if target == own or path in COMPOSITION:
        return None
    if own in OUTSIDE:
        return None if target in OUTSIDE[own] else f"includes {header}: {own} knows the ports only"
    if target not in RANK or own not in RANK:
        return f"includes {header}: {target} has no place in the order of folders"
    return None if RANK[target] < RANK[own] else f"includes {header}: {target} is not below {own}"


def main() -> int:
    complaints = []
    files = sorted(path for path in SRC.rglob("*") if path.suffix in {".h", ".cpp"})
    for file in files:
        path = file.relative_to(SRC).as_posix()
        for bracket, header in INCLUDE.findall(file.read_text(encoding="utf-8")):
            if found := complaint(path, bracket, header):
                complaints.append(f"src/{path} {found}")
    # The test itself must be able to fail.
    assert complaint("base/Log.cpp", '"', "platform/Workspace.h")
    assert complaint("localdata/X.cpp", '"', "routing/Y.h")
    assert complaint("linux/x11/X.cpp", '"', "dictation/AppState.h")
    for header in ("unistd.h", "QString", "X11/Xlib.h", "unicode/regex.h"):
        assert complaint("dictation/AppState.h", "<", header), header
    print("\n".join(complaints) or f"{len(files)} files in order")
    return 1 if complaints else 0


sys.exit(main())
