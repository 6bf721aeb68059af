#!/usr/bin/python3
"""Makes archives to unpack, most of them such that nobody should: make_archives.py FOLDER"""

import io
import sys
import tarfile
from pathlib import Path

folder = Path(sys.argv[1])
ONE = ("engine-1/lib/one.so", b"first" * 1000)
TWO = ("engine-1/lib/two.so", b"second" * 1000)


def entry(name, kind=tarfile.REGTYPE, target="", size=0):
    info = tarfile.TarInfo(name)
    info.type, info.linkname, info.size, info.mode = kind, target, size, 0o4777
    return info


def make(name, *members):
    """Members are a name with its bytes, or an entry without."""
    with tarfile.open(folder / (name + ".tar.bz2"), "w:bz2") as archive:
        for member in members:
            if isinstance(member, tarfile.TarInfo):
                archive.addfile(member)
            else:
                archive.addfile(entry(member[0], size=len(member[1])), io.BytesIO(member[1]))


make("good", entry("engine-1/lib", tarfile.DIRTYPE), ("engine-1/lib/other.so", b"x"), ("engine-1/bin/one.so", b"x"),
     ("/etc/lib-outside", b"x"), entry("engine-1/lib/link.so", tarfile.SYMTYPE, "/etc/passwd"), ONE, TWO)
make("leads-out", ("../../lib/one.so", ONE[1]), ("/tmp/lib/two.so", TWO[1]))
make("missing", ONE, ("engine-1/two.so", TWO[1]))
make("twice", ONE, TWO, ONE)
make("symbolic", entry(ONE[0], tarfile.SYMTYPE, "/etc/passwd"), TWO)
make("hard", TWO, entry(ONE[0], tarfile.LNKTYPE, TWO[0]))
make("pipe", TWO, entry(ONE[0], tarfile.FIFOTYPE))
make("large", ONE, ("engine-1/lib/two.so", bytes(200_000)))
make("bomb", ("engine-1/share/zeros", bytes(1_200_000_000)), ONE, TWO)
whole = (folder / "good.tar.bz2").read_bytes()
(folder / "cut.tar.bz2").write_bytes(whole[: len(whole) // 2])
(folder / "page.tar.bz2").write_bytes(b"<html>" * 1000)
