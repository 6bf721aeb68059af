#!/usr/bin/python3
"""Fails when a dependency arrow turns round, when a file includes what its target does not link, or when a header of
an operating system or a toolkit enters a portable room.

The rooms of src/ are listed from the ground up; a target links, and a file includes, only what stands in a lower row.
Of the angle-bracket includes, portable rooms get the C++ standard library and the libraries named here.

    layering_test.py targets.json    as the configuration of a build wrote it
"""

import json
import re
import sys
from pathlib import Path, PurePosixPath

ROOT = Path(__file__).resolve().parents[2]

# Rooms in one row do not know each other.
ROWS = [
    ["base"],
    ["sqlite", "platform", "recognition"],
    ["localdata", "reading", "routing"],
    ["context", "permissions"],
    ["cloud", "download", "modelserver"],
    ["writing"],
    ["memory"],
    ["assistant"],
    ["actions"],
    ["learning"],
    ["speech"],
    ["meeting"],
    ["dictation"],
    ["overlay"],
    ["panel"],
    ["card", "onboarding", "settings"],
    ["watchdog"],
    ["shell", "views"],
    ["app"],
]
RANK = {room: rank for rank, row in enumerate(ROWS) for room in row}

# The adapters know the ports, and each other; the mains put everything together.
ADAPTERS = "linux"
ADAPTERS_KNOW = {"base", "platform"}
ADAPTER_ROWS = [
    ["loop", "log", "grants"],
    ["files", "jail", "xdg", "keeper"],
    ["apps", "recent"],
    ["process", "dbus", "qt"],
    ["appearance", "atspi", "cld2", "curl", "pulse", "secret", "speechd", "x11"],
    ["desktop"],
]
ADAPTER_RANK = {room: rank for rank, row in enumerate(ADAPTER_ROWS) for room in row}
MAINS = "app"
# The companion service is a program of its own, which shares the bottom with the desktop's; its ai/ is portable.
SERVICE = "service"
SERVICE_KNOWS = {"base"}
# So is the recogniser, which shares what the two say to each other as well, and shuts itself in.
RECOGNISER = "recogniser"
RECOGNISER_KNOWS = {"base", "recognition", "linux"}
# And the reader of documents.
READER = "reader"
READER_KNOWS = {"base", "reading", "linux"}
TOOLKIT_ROOMS = {ADAPTERS, "views", MAINS}

LIBRARIES = {
    "base": r"nlohmann/json\.hpp|openssl/evp\.h|unicode/.*\.h",
    "context": r"turbojpeg\.h",
    "sqlite": r"sqlite3\.h",
    "memory": r"hwy/.*\.h",
    "panel": r"md4c\.h",
    "reader/archive": r"archive(_entry)?\.h",
    "reader/program": r"(fcntl|poll|sched|turbojpeg|unistd|linux/ioprio|sys/.*|unicode/.*)\.h",
    "reader/text": r"pugixml\.hpp|unicode/.*\.h",
    "recogniser": r"(dlfcn|fcntl|poll|unistd|sys/.*)\.h",
    "recogniser/program": r"(sys/.*|unistd)\.h",
    "recogniser/pocketsphinx": r"pocketsphinx\.h|sphinxbase/.*\.h",
    "recogniser/server": r"curl/curl\.h",
    "recogniser/sherpa": r"(dlfcn|malloc)\.h",
    "recogniser/unpack": r"archive(_entry)?\.h|(fcntl|unistd)\.h",
    "routing": r"re2/re2\.h|unicode/u(char|tf8)\.h",
    "speech": r"samplerate\.h",
    "service": r"boost/.*|(sys/.*|fcntl|poll|unistd)\.h",
    "service/accounts": r"openssl/.*",
    "service/api": r"boost/.*",
    "service/http": r"boost/.*|sys/.*\.h",
    "service/mail": r"curl/curl\.h|systemd/sd-bus\.h|(fcntl|unistd)\.h",
    "service/model": r"boost/.*",
    "service/net": r"boost/.*",
    "service/storage": r"sqlite3\.h|libpq-fe\.h|(fcntl|unistd)\.h",
}
STANDARD_HEADER = re.compile(r"^[a-z_0-9]+$")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def room_of(path: str) -> str:
    """Of a path below src/."""
    return path.split("/")[0]


def library_home_of(path: str) -> str:
    """Whose libraries the file may use; the folders of the service, the recogniser and the reader have theirs each."""
    folders = path.split("/")[:-1]
    return "/".join(folders[:2]) if folders[0] in (SERVICE, RECOGNISER, READER) else folders[0]


def arrow_complaint(own: str, other: str) -> str | None:
    """Whether one room may know another."""
    if other == own or own == MAINS:
        return None
    if own == ADAPTERS:
        return None if other in ADAPTERS_KNOW else f"{own} knows the ports only"
    if own == RECOGNISER:
        return None if other in RECOGNISER_KNOWS else f"{own} shares {', '.join(sorted(RECOGNISER_KNOWS))} alone"
    if own == READER:
        return None if other in READER_KNOWS else f"{own} shares {', '.join(sorted(READER_KNOWS))} alone"
    if own == SERVICE:
        return None if other in SERVICE_KNOWS else f"{own} shares {', '.join(sorted(SERVICE_KNOWS))} alone"
    if other not in RANK or own not in RANK:
        return f"{other if other not in RANK else own} has no place in the order of rooms"
    return None if RANK[other] < RANK[own] else f"{other} is not below {own}"


def adapter_complaint(own: str, other: str) -> str | None:
    """The same for two folders of the adapters; paths below src/."""
    mine, others = own.split("/")[1], other.split("/")[1]
    if mine == others:
        return None
    if mine not in ADAPTER_RANK or others not in ADAPTER_RANK:
        return f"{mine if mine not in ADAPTER_RANK else others} has no place in the order of adapters"
    return None if ADAPTER_RANK[others] < ADAPTER_RANK[mine] else f"{others} is not below {mine}"


def room_complaint(own: str, other: str) -> str | None:
    """Whether a file or folder may know another; paths below src/."""
    if room_of(own) == room_of(other) == ADAPTERS:
        return adapter_complaint(own, other)
    return arrow_complaint(room_of(own), room_of(other))


def library_complaint(room: str, header: str) -> str | None:
    if room in TOOLKIT_ROOMS or STANDARD_HEADER.match(header) or re.fullmatch(LIBRARIES.get(room, "$^"), header):
        return None
    return f"{room} may not know <{header}>"


def owns_folder(target: dict) -> bool:
    """Several tests and tools share a folder; a library or one of the product's programs has it for itself."""
    return target["name"].startswith("dorix::") or target["folder"].startswith("src/")


class Targets:
    """What was configured: who owns which folder, and which folders each target sees."""

    def __init__(self, described: list[dict]):
        self.by_name = {target["name"]: target for target in described}
        self.owners = {}
        for target in described:
            if owns_folder(target):
                self.owners[target["folder"]] = target["name"]

    def owner_of(self, path: str) -> str | None:
        """The library in whose folder, or nearest below it, the file lies."""
        for folder in PurePosixPath(path).parents:
            if owner := self.owners.get(str(folder)):
                return owner
        return None

    def seen_by(self, name: str) -> set[str]:
        """The target, what it links, and what is passed on by those."""
        target = self.by_name[name]
        seen, waiting = {name}, [*target["public"], *target["private"]]
        while waiting:
            linked = waiting.pop()
            if linked in self.by_name and linked not in seen:
                seen.add(linked)
                waiting += self.by_name[linked]["public"]
        return seen

    def files_of(self, target: dict) -> list[Path]:
        folder = ROOT / target["folder"]
        files = [(folder / source).resolve() for source in target["sources"]]
        if owns_folder(target):
            headers = folder.rglob("*.h")
            files += [header for header in headers if self.owner_of(relative(header)) == target["name"]]
        return files


def relative(file: Path) -> str:
    return file.relative_to(ROOT).as_posix()


def included_file(including: str, header: str) -> str | None:
    """Where a quoted header lies, seen from the project's root; nothing for one that the build makes."""
    beside = PurePosixPath(including).parent / header
    for candidate in (str(beside), f"src/{header}", f"tests/{header}"):
        if (ROOT / candidate).is_file():
            return relative((ROOT / candidate).resolve())
    return None


def include_complaint(targets: Targets, name: str, including: str, header: str, seen: set[str]) -> str | None:
    included = included_file(including, header)
    if included is None:
        return None if "/embedded/" in header else f"there is no {header}"
    owner = targets.owner_of(included)
    if owner is None:
        # A helper that a test or a tool compiles itself.
        return None if not included.startswith("src/") else f"no target owns {included}"
    if owner not in seen:
        return f"{name} does not link {owner}, to which {header} belongs"
    if including.startswith("src/") and included.startswith("src/"):
        return room_complaint(including[4:], included[4:])
    return None


def complaints_about(targets: Targets, name: str) -> list[str]:
    target = targets.by_name[name]
    complaints = []
    if target["folder"].startswith("src/"):
        for linked in [*target["public"], *target["private"]]:
            other = targets.by_name.get(linked)
            if other and (wrong := room_complaint(target["folder"][4:], other["folder"][4:])):
                complaints.append(f"{name} links {linked}: {wrong}")
    seen = targets.seen_by(name)
    for file in targets.files_of(target):
        path = relative(file)
        for bracket, header in INCLUDE.findall(file.read_text(encoding="utf-8")):
            if bracket == '"':
                wrong = include_complaint(targets, name, path, header, seen)
            else:
                wrong = library_complaint(library_home_of(path[4:]), header) if path.startswith("src/") else None
            if wrong:
                complaints.append(f"{path}: {wrong}")
    return complaints


def check_itself(targets: Targets) -> None:
    """Seeded violations; a test that cannot fail is none."""
    assert arrow_complaint("base", "platform")
    assert arrow_complaint("localdata", "routing")
    assert arrow_complaint("views", "shell")
    assert arrow_complaint("linux", "dictation")
    assert arrow_complaint("service", "writing")
    assert arrow_complaint("cloud", "service")
    assert room_complaint("linux/dbus", "linux/desktop")
    assert room_complaint("linux/x11", "linux/pulse")
    for header in ("unistd.h", "QString", "X11/Xlib.h", "unicode/regex.h"):
        assert library_complaint("dictation", header), header

    def complaint(name: str, including: str, header: str) -> str | None:
        return include_complaint(targets, name, including, header, targets.seen_by(name))

    # Lower, but not linked; linked, but higher; of nobody.
    assert complaint("dorix::permissions", "src/permissions/X.cpp", "localdata/Language.h")
    assert complaint("dorix::shell", "src/shell/X.cpp", "watchdog/Watchdog.h")
    assert complaint("dorix::context", "src/context/X.cpp", "dictation/AppState.h")
    assert complaint("context_test", "tests/unit/context/X.cpp", "dictation/AppState.h")
    assert complaint("dorix::base", "src/base/X.cpp", "base/Nothing.h")
    assert not complaint("dorix::dictation", "src/dictation/X.cpp", "base/Log.h")
    upwards = {"name": "dorix::x", "folder": "src/context", "sources": [], "public": ["dorix::shell"], "private": []}
    assert complaints_about(Targets([*targets.by_name.values(), upwards]), "dorix::x")


def main() -> int:
    targets = Targets(json.loads(Path(sys.argv[1]).read_text(encoding="utf-8")))
    check_itself(targets)
    complaints = [wrong for name in targets.by_name for wrong in complaints_about(targets, name)]
    print("\n".join(complaints) or f"{len(targets.by_name)} targets in order")
    return 1 if complaints else 0


sys.exit(main())
