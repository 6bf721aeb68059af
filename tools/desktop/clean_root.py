"""Clean roots of a Debian release, to try in them what has to work on a machine that has nothing yet. Root alone can make
them."""

import shlex
import subprocess
import sys
from pathlib import Path
from typing import Sequence

from supervision import spawn

# A root is mounted upon in a mount namespace of its own, below the first process of a process namespace of its own:
# outside of them nothing is ever mounted in it, so that removing it reaches nothing else, and the mounts end with that
# process, however it comes to die. It stays root, because a process that changes its user outlives its parent.
APART = ["unshare", "--mount", "--propagation", "private", "--pid", "--fork", "--kill-child", "--"]

# Shell that mounts into "$root" what programs expect of a running system.
MOUNT_SYSTEM = """\
mount -t proc proc "$root/proc"
mount -t sysfs -o ro sysfs "$root/sys"
mount -t devpts -o newinstance,ptmxmode=0666,mode=0620,gid=5 devpts "$root/dev/pts"
mount -t tmpfs -o mode=1777 tmpfs "$root/dev/shm"
mount -t tmpfs -o mode=0755 tmpfs "$root/run"
"""


class Failure(Exception):
    """A root could not be made."""


def run(*command: str | Path) -> None:
    if spawn([*map(str, command)], at_death="KILL", stdin=subprocess.DEVNULL, stdout=sys.stderr).wait() != 0:
        raise Failure(f"this failed: {shlex.join(map(str, command))}")


def output(*command: str | Path) -> str:
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout.strip()


def mirror() -> str:
    """Where this machine has its own packages from."""
    targets = output("apt-get", "indextargets", "--format", "$(REPO_URI)", "Created-By: Packages", "Origin: Debian",
                     "Label: Debian", "Component: main")
    if not targets:
        raise Failure("apt knows no mirror of Debian here; is it set up, and was `apt-get update` run?")
    return targets.splitlines()[0]


def make_root(root: Path, suite: str, packages: Sequence[str]) -> None:
    """A root with apt and `packages`, and nothing that is only recommended."""
    # In a namespace as well, for what mmdebstrap mounts meanwhile.
    run(*APART, "mmdebstrap", "--variant=apt", f"--include={','.join(packages)}", suite, root, mirror())
    run("cp", "/etc/hosts", root / "etc/hosts")


def add_user(root: Path, name: str, uid: int) -> None:
    run("chroot", root, "useradd", "--create-home", "--uid", str(uid), "--shell", "/bin/bash", name)
