#!/usr/bin/python3
"""What the programs are linked with is named in the settings and in the package's copyright: used_software_test.py PROGRAM..."""

import re
import subprocess
import sys
import unittest
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[2]
# By the beginning of a library's name.
NAMES = {
    "libQt6": "Qt", "libarchive": "libarchive", "libcrypto": "OpenSSL", "libcurl": "curl", "libgio": "GLib",
    "libglib": "GLib", "libgobject": "GLib", "libhwy": "Highway", "libicu": "ICU", "libmd4c": "MD4C",
    "libpocketsphinx": "PocketSphinx", "libpq": "libpq", "libpugixml": "pugixml", "libpulse": "PulseAudio",
    "libcld2": "Compact Language Detector 2", "libre2": "RE2", "libsamplerate": "libsamplerate", "libseccomp": "libseccomp", "libsecret": "libsecret",
    "libsphinxbase": "PocketSphinx", "libsqlite3": "SQLite", "libssl": "OpenSSL", "libsystemd": "libsystemd",
    "libturbojpeg": "libjpeg-turbo", "libxcb": "XCB", "libxkbcommon": "xkbcommon",
}
# The compiler's own, and what Qt draws by elsewhere.
SYSTEM = re.compile(r"lib(c|m|gcc_s|stdc\+\+|clang_rt.*|asan|tsan|ubsan|GLX|OpenGL)\.so|ld-linux")


class UsedSoftwareTest(unittest.TestCase):
    programs: list[str]

    def test_what_is_linked_is_named(self):
        told = subprocess.run(["readelf", "--dynamic", *self.programs], check=True, capture_output=True, text=True).stdout
        libraries = {name for name in re.findall(r"\(NEEDED\).*\[(.*)\]", told) if not SYSTEM.match(name)}
        self.assertGreater(len(libraries), 10)
        for place in ("src/settings/UsedSoftware.cpp", "packaging/debian/copyright"):
            text = (PROJECT / place).read_text()
            unnamed = {library for library in libraries if next(
                (name for start, name in NAMES.items() if library.startswith(start)), library) not in text}
            self.assertEqual(unnamed, set(), place)


if __name__ == "__main__":
    UsedSoftwareTest.programs = sys.argv[1:]
    unittest.main(argv=sys.argv[:1], verbosity=2)
