#!/usr/bin/python3
"""The Debian package in a clean Debian: installed by apt with what it depends on, used, put in place of itself, and taken
away again, after which nothing is left but the user's data.

    sudo tests/packaging/package_test.py [DEB]      by default the one that ./package has made

Only root can make a clean root; without that, or without mmdebstrap, the test is skipped. The roots and the packages from
the mirror are kept for a week, in ~/.cache/dorix-package-test.
"""

import os
import shutil
import subprocess
import sys
import time
import unittest
from pathlib import Path
from typing import Sequence

sys.dont_write_bytecode = True
PROJECT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(PROJECT / "tools/desktop"))

import clean_root  # noqa: E402
from clean_root import APART, MOUNT_SYSTEM, add_user, make_root  # noqa: E402
from supervision import spawn, supervised  # noqa: E402

SUITE = "bookworm"
USER = "someone"
HOME = f"/home/{USER}"
SKIPPED = 77  # the exit status
WEEK = 7 * 24 * 3600  # seconds; by then the mirror no longer has some of what apt was told of

# What the demo starts and looks through, as far as DORIX does not bring it.
DESKTOP = (
    "xvfb", "openbox", "pulseaudio", "pulseaudio-utils", "libglib2.0-bin", "procps", "at-spi2-core", "python3",
    "python3-gi", "gir1.2-atspi-2.0", "gir1.2-gtk-3.0", "libx11-6", "libxtst6", "mousepad", "flite", "xclip", "xdotool",
    "imagemagick", "fonts-dejavu-core",
)

# Nothing is written to the kept root: what changes goes into folders of the test.
ENTER = f"""\
set -e
kept=$1 changes=$2 archives=$3 project=$4 deb=$5
shift 5
ip link set lo up
root=$changes/root
mount -t overlay overlay -o "lowerdir=$kept,upperdir=$changes/upper,workdir=$changes/work" "$root"
{MOUNT_SYSTEM}mount -t tmpfs -o mode=1777 tmpfs "$root/tmp"
mkdir -p "$root/mnt/project" "$root/mnt/deb"
mount --bind "$archives" "$root/var/cache/apt/archives"
mount --bind -o ro "$project" "$root/mnt/project"
mount --bind -o ro "$deb" "$root/mnt/deb"
exec chroot "$root" "$@"
"""
AS_USER = ("setpriv", "--reuid", USER, "--regid", USER, "--init-groups", "--reset-env")
APT = ("env", "DEBIAN_FRONTEND=noninteractive", "apt-get", "--yes", "--quiet", "--no-install-recommends",
       "-o", "Dpkg::Use-Pty=0", "-o", "APT::Sandbox::User=root")

# Starts DORIX on a bus of its own with nothing else around, until it is ready, and ends it. Prints its log.
RUN_BRIEFLY = """
dbus-run-session -- sh -c '
    dorix >"$HOME/log" 2>&1 &
    for wait in $(seq 300); do
        grep -q "^DORIX: listo$" "$HOME/log" && break
        sleep 0.1
    done
    sleep 3
    kill $! && wait $!
    status=$?
    cat "$HOME/log"
    exit $status'
"""

EVERY_FILE = "find / -xdev \\( -path /proc -o -path /sys -o -path /dev -o -path /mnt \\) -prune -o -print"
USERS_FILES = f"cd {HOME} && find . -type f -exec sha256sum {{}} + | sort"
# What apt, dpkg and the system keep for themselves.
OTHERS = ("/var/lib/dpkg/", "/var/lib/apt/", "/var/cache/", "/var/log/", "/tmp/", "/run/")


def cache() -> Path:
    return Path(os.environ.get("XDG_CACHE_HOME") or Path.home() / ".cache", "dorix-package-test")


def kept_root(name: str, packages: tuple[str, ...]) -> Path:
    """A root with `packages` and a user, made when there is none yet or the last one is too old."""
    root = cache() / f"{SUITE}-{name}"
    stamp = root.with_suffix(".packages")
    wanted = " ".join(packages)
    if stamp.exists() and stamp.read_text() == wanted and time.time() - stamp.stat().st_mtime < WEEK:
        return root
    stamp.unlink(missing_ok=True)
    if root.exists():
        shutil.rmtree(root)
    root.parent.mkdir(parents=True, exist_ok=True)
    make_root(root, SUITE, packages)
    add_user(root, USER, 1000)
    clean_root.run("chroot", root, "apt-get", "update")
    stamp.write_text(wanted)
    return root


class Machine:
    """A machine that has just been set up, and what is done to it."""

    def __init__(self, scratch: Path, name: str, packages: tuple[str, ...], deb: Path):
        self._kept = kept_root(name, packages)
        self._changes = scratch / name
        self._deb = deb
        for folder in ("upper", "work", "root"):
            (self._changes / folder).mkdir(parents=True)
        self._archives = cache() / "archives"
        (self._archives / "partial").mkdir(parents=True, exist_ok=True)

    def run(self, *command: str, status: int = 0, network: Sequence[str] = ("--net",)) -> str:
        """What it prints, also to standard error. It is alone on its network, as the ports of this machine may be in use,
        unless that is given otherwise."""
        places = [self._kept, self._changes, self._archives, PROJECT, self._deb.parent]
        process = spawn([*APART[:-1], *network, "--", "bash", "-c", ENTER, "enter", *map(str, places), *command], at_death="KILL",
                        stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        told, _ = process.communicate()
        if process.returncode != status:
            raise AssertionError(f"{' '.join(command)} ended with status {process.returncode}:\n{told[-4000:]}")
        return told

    def run_as_user(self, *command: str) -> str:
        return self.run(*AS_USER, "bash", "-lc", 'cd && exec "$@"', "bash", *command)

    def install(self, deb: str) -> str:
        return self.run(*APT, "install", f"/mnt/deb/{deb}", network=())

    def files(self) -> set[str]:
        return set(self.run("sh", "-c", EVERY_FILE).splitlines())


def with_version(deb: Path, suffix: str, folder: Path) -> Path:
    """The same package under a later version."""
    contents = folder / "contents"
    subprocess.run(["dpkg-deb", "--raw-extract", deb, contents], check=True)
    control = contents / "DEBIAN/control"
    version = field(deb, "Version")
    control.write_text(control.read_text().replace(f"Version: {version}\n", f"Version: {version}{suffix}\n"))
    later = folder / f"later_{deb.name}"
    subprocess.run(["dpkg-deb", "--root-owner-group", "--build", contents, later], check=True, stdout=subprocess.DEVNULL)
    shutil.rmtree(contents)
    return later


def field(deb: Path, name: str) -> str:
    return subprocess.run(["dpkg-deb", "--field", deb, name], check=True, capture_output=True, text=True).stdout.strip()


class PackageTest(unittest.TestCase):
    scratch: Path
    deb: Path

    def machine(self, name: str, packages: tuple[str, ...]) -> Machine:
        folder = self.scratch / "debs"
        folder.mkdir(exist_ok=True)
        shutil.copy(self.deb, folder)
        with_version(self.deb, "+later", folder)
        return Machine(self.scratch, name, packages, folder / self.deb.name)

    def test_lintian_finds_nothing(self):
        if not shutil.which("lintian"):
            self.skipTest("lintian is not installed")
        told = subprocess.run(["lintian", "--allow-root", "--display-info", "--fail-on", "error,warning,info", self.deb],
                              capture_output=True, text=True, check=False)
        self.assertEqual((told.returncode, told.stdout), (0, ""), told.stderr)

    def test_has_no_scripts(self):
        names = subprocess.run(["dpkg-deb", "--ctrl-tarfile", self.deb], check=True, capture_output=True).stdout
        listed = subprocess.run(["tar", "-t"], input=names, check=True, capture_output=True).stdout.decode().split()
        self.assertLessEqual({Path(name).name for name in listed} - {""}, {"control", "md5sums", "triggers", "conffiles"})

    def test_brings_what_it_needs(self):
        machine = self.machine("bare", ("passwd",))
        machine.install(self.deb.name)
        for program in ("/usr/bin/dorix", "/usr/sbin/dorix-service", "/usr/libexec/dorix/dorix-reader",
                        "/usr/libexec/dorix/dorix-recogniser"):
            self.assertNotIn("not found", machine.run("ldd", program))
            for option in ("--version", "--help"):
                self.assertIn("dorix", machine.run("env", "-i", program, option))
            machine.run("env", "-i", program, "--no-such-option", status=2)
        self.assertIn("nothing is wrong", machine.run("dorix-service", "--check"))
        # Drawn, though nobody sees it: so the toolkit loads all that the windows are made of.
        log = machine.run_as_user("env", "QT_QPA_PLATFORM=offscreen", "LC_ALL=C.UTF-8", "sh", "-c", RUN_BRIEFLY)
        self.assertIn("DORIX: ready", log)
        self.assertNotIn("qml", log.lower())
        self.assertNotIn("is not installed", log)

    def test_comes_is_used_and_goes(self):
        machine = self.machine("desktop", DESKTOP)
        machine.install(self.deb.name)
        installed = machine.files()
        machine.run(*APT, "purge", "dorix")
        before = machine.files()  # with what it depends on
        self.assertEqual([file for file in before if "dorix" in file], [])
        self.assertGreater(len(installed - before), 30)

        machine.install(self.deb.name)
        print(machine.run_as_user("/mnt/project/tools/demo/demo.py", "--binary", "/usr/bin/dorix", "--output",
                                  f"{HOME}/demo"))
        machine.run_as_user("env", "QT_QPA_PLATFORM=offscreen", "sh", "-c", RUN_BRIEFLY)
        machine.install(f"later_{self.deb.name}")
        self.assertEqual(machine.run("dpkg-query", "--show", "--showformat=${Version}", "dorix"),
                         field(self.deb, "Version") + "+later")
        self.assertEqual(machine.run("dpkg", "--verify", "dorix"), "")
        machine.run_as_user("env", "QT_QPA_PLATFORM=offscreen", "sh", "-c", RUN_BRIEFLY)
        users = machine.run("sh", "-c", USERS_FILES)
        for data in ("dorix/defaults.json", "DORIX/dorix.sqlite"):
            self.assertIn(data, users)

        machine.run(*APT, "purge", "dorix")
        self.assertEqual(machine.run("sh", "-c", USERS_FILES), users)
        self.assertEqual([file for file in sorted(machine.files() - before) if not file.startswith((HOME, *OTHERS))], [])


def missing() -> str | None:
    """What the test cannot do without."""
    if os.geteuid() != 0:
        return "only root can make a clean root"
    for program in ("mmdebstrap", "unshare", "ip", "dpkg-deb"):
        if not shutil.which(program):
            return f"{program} is not installed"
    return None


def main() -> int:
    debs = sys.argv[1:] or sorted(map(str, PROJECT.glob("build/package/dorix_*.deb")))
    reason = missing() or (None if len(debs) == 1 else "there is no package; ./package makes it")
    if reason:
        print(f"package_test: skipped, as {reason}", file=sys.stderr)
        return SKIPPED
    # A root is too large for memory, where /tmp may be.
    os.environ.setdefault("TMPDIR", "/var/tmp")

    def body(scratch: Path) -> int:
        PackageTest.scratch = scratch
        PackageTest.deb = Path(debs[0]).resolve(strict=True)
        return 0 if unittest.main(argv=sys.argv[:1], exit=False, verbosity=2).result.wasSuccessful() else 1

    return supervised(body)


if __name__ == "__main__":
    sys.exit(main())
