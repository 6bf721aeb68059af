"""A desktop in a box: an X server, a window manager, a session bus with accessibility and a sound server with a
virtual microphone, all private to one run and gone at its end.

What an application in it hears is what is played to the sink "mic":

    paplay --device=mic --latency-msec=100 words.wav
"""

import os
import select
import socket
import subprocess
import time
from pathlib import Path
from typing import Callable, Sequence

from sound import PULSEAUDIO_SCRIPT, PIPEWIRE_DEVICES, WIREPLUMBER_CONFIG, SoundServer
from supervision import end_descendants, spawn

SCREEN = "1280x800x24"
START_TIMEOUT = 20.0  # seconds for each server; they take a tenth of one on an idle machine

# No directory of services: nothing that happens to be installed is started behind an application's back.
SESSION_BUS = """\
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <keep_umask/>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""

# No key bindings: the built-in ones take Alt+Space, which is DORIX's.
WINDOW_MANAGER = """\
<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew></focus>
  <keyboard/>
  <mouse><context name="Client"><mousebind button="Left" action="Press">
    <action name="Focus"/><action name="Raise"/>
  </mousebind></context></mouse>
  <applications><application type="normal"><decor>yes</decor></application></applications>
</openbox_config>
"""

# Whatever ties an application to the desktop that this one was started from.
FOREIGN = (
    "AT_SPI_BUS_ADDRESS", "DBUS_", "DESKTOP_", "DISPLAY", "GDK_", "GTK_", "LANG", "LC_", "NO_AT_BRIDGE",
    "PIPEWIRE_", "PULSE_", "QT_", "SESSION_MANAGER", "WAYLAND_", "XAUTHORITY", "XDG_", "XMODIFIERS",
)


class DesktopError(Exception):
    """A part of the desktop did not start or did not do its work; the text says which and what it wrote."""


class VirtualDesktop:
    """Use it in a `with` statement, below `supervision.supervised`. `env` is the whole environment for what runs in it.

    Leaving it ends every process below this one, whoever started it.
    """

    def __init__(self, directory: Path, *, window_manager: bool = True,
                 sound: SoundServer | None = SoundServer.INSTALLED, accessibility: bool = True):
        self.directory = directory
        self.logs = directory / "logs"
        self.runtime = directory / "run"
        self.has_window_manager = window_manager
        self._sound = sound
        self._accessibility = accessibility
        self.env = self._environment()

    def __enter__(self) -> "VirtualDesktop":
        for name in ("home", "config", "data", "cache", "state", "logs"):
            (self.directory / name).mkdir()
        self.runtime.mkdir(mode=0o700)
        try:
            self._start()
        except BaseException:
            end_descendants()
            raise
        return self

    def __exit__(self, *_exception) -> None:
        end_descendants()

    def spawn(self, argv: list[str], **options) -> subprocess.Popen:
        """Starts an application in the desktop, out of reach of the terminal's Ctrl-C unless told otherwise."""
        return spawn(argv, at_death="KILL", **{"env": self.env, "start_new_session": True, **options})

    def screenshot(self, picture: Path) -> None:
        status = self.spawn(["import", "-window", "root", str(picture)]).wait()
        if status != 0:
            raise DesktopError(f"no picture could be written to {picture}")

    def log(self, name: str) -> Path:
        """The file that the output of the application `name` goes to."""
        return self.logs / f"{name}.log"

    def _environment(self) -> dict[str, str]:
        env = {name: value for name, value in os.environ.items() if not name.startswith(FOREIGN)}
        env.update(
            HOME=str(self.directory / "home"),
            XDG_CONFIG_HOME=str(self.directory / "config"),
            XDG_DATA_HOME=str(self.directory / "data"),
            XDG_CACHE_HOME=str(self.directory / "cache"),
            XDG_STATE_HOME=str(self.directory / "state"),
            XDG_RUNTIME_DIR=str(self.runtime),
            XDG_SESSION_TYPE="x11",
            DBUS_SESSION_BUS_ADDRESS=f"unix:path={self.runtime}/bus",
            # Also where there is no sound server: the user's own must not be found.
            PULSE_SERVER=f"unix:{self.runtime}/pulse/native",
            GDK_BACKEND="x11",
            GIO_USE_VFS="local",
            GSETTINGS_BACKEND="memory",
            LC_ALL="C.UTF-8",
        )
        return env

    def _start(self) -> None:
        self.env["DISPLAY"] = self._start_display()
        starting = [self._start_bus()]
        if self._sound:
            starting.append(self._start_sound())
        if self.has_window_manager:
            starting.append(self._start_window_manager())
        for ready in starting:
            ready()
        if self._accessibility:
            self._start_accessibility()

    def _start_display(self) -> str:
        reader, writer = os.pipe()
        with os.fdopen(reader) as display:
            # -noreset: the server outlives its first client.
            server = self._serve("Xvfb", ["-displayfd", str(writer), "-screen", "0", SCREEN, "-nolisten", "tcp",
                                          "-noreset"], pass_fds=[writer])
            os.close(writer)
            readable = select.select([display], [], [], START_TIMEOUT)[0]
            number = display.readline().strip() if readable else ""
        if not number:
            raise self._failure(server, "Xvfb")
        return f":{number}"

    def _start_bus(self) -> Callable[[], None]:
        path = self.runtime / "bus"
        config = self.directory / "session.conf"
        config.write_text(SESSION_BUS.format(socket=path))
        server = self._serve("dbus-daemon", ["--nofork", "--nopidfile", "--nosyslog", f"--config-file={config}"])
        return lambda: self._await(server, "dbus-daemon", lambda: _listening(path))

    def _start_sound(self) -> Callable[[], None]:
        if self._sound.chosen() is SoundServer.PIPEWIRE:
            return self._start_pipewire()
        script = self.directory / "sound.pa"
        script.write_text(PULSEAUDIO_SCRIPT)
        server = self._serve("pulseaudio", ["-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no",
                                            "--log-target=stderr", "-F", str(script)])
        return lambda: self._await(server, "pulseaudio", lambda: _listening(self.runtime / "pulse/native"))

    def _start_pipewire(self) -> Callable[[], None]:
        for name, text in WIREPLUMBER_CONFIG.items():
            path = self.directory / "config/wireplumber" / name
            path.parent.mkdir(parents=True)
            path.write_text(text)
        server = self._serve("pipewire")

        def ready():
            self._await(server, "pipewire", lambda: _listening(self.runtime / "pipewire-0"))
            manager = self._serve("wireplumber")
            front = self._serve("pipewire-pulse")
            self._await(front, "pipewire-pulse", lambda: _listening(self.runtime / "pulse/native"))
            for command in PIPEWIRE_DEVICES:
                # The defaults can be set once the manager has settled in, which nothing announces.
                self._await(manager, "wireplumber", lambda: self._serve("pactl", command).wait() == 0)
        return ready

    def _start_window_manager(self) -> Callable[[], None]:
        config = self.directory / "openbox.xml"
        config.write_text(WINDOW_MANAGER)
        running = self.runtime / "openbox-runs"
        server = self._serve("openbox", ["--sm-disable", "--config-file", str(config),
                                         "--startup", f"touch {running}"])
        return lambda: self._await(server, "openbox", running.exists)

    def _start_accessibility(self) -> None:
        launcher = self._serve("/usr/libexec/at-spi-bus-launcher", ["--launch-immediately", "--a11y=1"])
        waiting = self._serve("gdbus", ["wait", "--session", "--timeout", str(int(START_TIMEOUT)), "org.a11y.Bus"])
        if waiting.wait() != 0:
            raise self._failure(launcher, "at-spi-bus-launcher")

    def _serve(self, program: str, arguments: Sequence[str] = (), **options) -> subprocess.Popen:
        """Starts a part of the desktop."""
        with open(self.log(os.path.basename(program)), "ab") as log:
            return spawn([program, *arguments], env=self.env, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                         start_new_session=True, **options)

    def _await(self, server: subprocess.Popen, name: str, ready: Callable[[], bool]) -> None:
        deadline = time.monotonic() + START_TIMEOUT
        while not ready():
            if server.poll() is not None or time.monotonic() > deadline:
                raise self._failure(server, name)
            time.sleep(0.005)

    def _failure(self, server: subprocess.Popen, name: str) -> DesktopError:
        status = server.poll()
        how = "is not ready" if status is None else f"ended with status {status}"
        return DesktopError(f"the virtual desktop cannot start: {name} {how}\n"
                            + self.log(name).read_text(errors="replace")[-2000:])


def _listening(path: Path) -> bool:
    with socket.socket(socket.AF_UNIX) as probe:
        return probe.connect_ex(str(path)) == 0
