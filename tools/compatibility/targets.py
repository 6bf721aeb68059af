"""Applications to dictate into, each with its own way of telling what it got."""

import http.server
import subprocess
import threading
import time
from pathlib import Path

from virtual_desktop import VirtualDesktop
from waiting import wait_until

START_TIMEOUT = 60.0
SETTLE = 1.5  # seconds from a window to the cursor in it

TK = """
pack [text .field]
bind .field <<Modified>> {
    set file [open [lindex $argv 0] w]
    fconfigure $file -encoding utf-8
    puts -nonewline $file [.field get 1.0 end-1c]
    close $file
    .field edit modified 0
}
focus .field
"""
NO_TIPS = """<?xml version="1.0"?><oor:items xmlns:oor="http://openoffice.org/2001/registry">
<item oor:path="/org.openoffice.Office.Common/Misc"><prop oor:name="ShowTipOfTheDay"><value>false</value></prop></item>
<item oor:path="/org.openoffice.Office.Common/Misc"><prop oor:name="FirstRun"><value>false</value></prop></item>
<item oor:path="/org.openoffice.Setup/Product"><prop oor:name="ooSetupLastVersion"><value>99</value></prop></item>
</oor:items>"""
FIREFOX = """user_pref("browser.aboutwelcome.enabled", false);
user_pref("browser.shell.checkDefaultBrowser", false);
user_pref("datareporting.policy.dataSubmissionEnabled", false);
user_pref("termsofuse.bypassNotification", true);
"""


class Target:
    """A window in front, which is known by a part of its class."""

    takes_text = True

    def __init__(self, desktop: VirtualDesktop, window: str, command: list[str], **environment: str):
        self.desktop = desktop
        with open(desktop.log(window), "wb") as log:
            self.process = desktop.spawn(command, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                                         env=desktop.env | environment)
        search = ["xdotool", "search", "--sync", "--onlyvisible", "--class", window, "windowfocus"]
        try:
            desktop.spawn(search).wait(START_TIMEOUT)
        except subprocess.TimeoutExpired:
            raise LookupError(f"no window of {window}") from None
        time.sleep(SETTLE)

    def text(self) -> str:
        raise NotImplementedError


class Writes(Target):
    """One that writes what it gets to a file, whose path stands for "{}" in the command."""

    def __init__(self, desktop: VirtualDesktop, window: str, command: list[str], **environment: str):
        self.file = desktop.directory / f"{window}.txt"
        self.file.touch()
        super().__init__(desktop, window, [part.replace("{}", str(self.file)) for part in command], **environment)

    def text(self) -> str:
        return self.file.read_text(errors="replace")


class Terminal(Writes):
    def __init__(self, desktop: VirtualDesktop, window: str, *command: str):
        super().__init__(desktop, window, [*command, "sh", "-c", "stty -icanon -echo && exec cat >'{}'"])


class Accessible(Target):
    """One whose focused text is read as a screen reader reads it."""

    def __init__(self, desktop: VirtualDesktop, window: str, command: list[str], **environment: str):
        super().__init__(desktop, window, command, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", **environment)

    def text(self) -> str:
        from accessibility import Atspi, await_found, has, showing

        def focused():
            desktop = Atspi.get_desktop(0)
            for index in range(desktop.get_child_count()):
                application = desktop.get_child_at_index(index)
                if not application or application.get_name() in ("dorix", "DORIX"):
                    continue
                for node in showing(application.get_process_id()):
                    if has(node, Atspi.StateType.FOCUSED) and node.get_text_iface():
                        return node
            return None

        field = await_found(focused, 5.0)
        return Atspi.Text.get_text(field, 0, -1) if field else ""


class Page(Target):
    """A page in a browser, which sends what stands in its field to a server here; or what another address shows."""

    def __init__(self, desktop: VirtualDesktop, window: str, command: list[str], field: bool = True, address: str = ""):
        self.takes_text = field
        self._text = ""
        self._loaded = threading.Event()
        page = self
        body = "<textarea autofocus oninput=\"fetch('/', {method: 'POST', body: this.value})\"></textarea>"

        class Server(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                self.send_response(200)
                self.send_header("Content-Type", "text/html; charset=utf-8")
                self.end_headers()
                self.wfile.write((body if field else "<p>Texto</p>").encode())
                page._loaded.set()

            def do_POST(self):
                page._text = self.rfile.read(int(self.headers["Content-Length"])).decode()
                self.send_response(204)
                self.end_headers()

            def log_message(self, *_arguments):
                pass

        server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Server)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        super().__init__(desktop, window, [*command, address or f"http://127.0.0.1:{server.server_address[1]}/"])
        if not address and not self._loaded.wait(START_TIMEOUT):
            raise LookupError(f"{window} did not load the page")
        time.sleep(SETTLE)

    def text(self) -> str:
        return self._text


class Nothing:
    """The desktop, with no window in front."""

    takes_text = False

    def __init__(self, _desktop: VirtualDesktop):
        pass

    def text(self) -> str:
        return ""


class Vim(Writes):
    def __init__(self, desktop: VirtualDesktop, inserting: bool):
        write = "autocmd TextChanged,TextChangedI * silent! call writefile(getline(1, '$'), '{}', 'b')"
        super().__init__(desktop, "gvim", ["gvim", "-f", "-n", "--clean", "-c", write,
                                           *(["-c", "startinsert"] if inserting else [])])


def emacs(desktop: VirtualDesktop) -> Target:
    keep = "(add-hook 'after-change-functions (lambda (&rest _) (write-region nil nil \"{}\" nil 'silent)))"
    return Writes(desktop, "emacs", ["emacs", "-Q", "--eval", "(switch-to-buffer \"field\")", "--eval",
                                     "(set-buffer-file-coding-system 'utf-8)", "--eval",
                                     "(setq coding-system-for-write 'utf-8)", "--eval", keep])


def tk(desktop: VirtualDesktop) -> Target:
    source = desktop.directory / "field.tcl"
    source.write_text(TK)
    return Writes(desktop, "Field", ["wish", str(source), "-name", "field", "--", "{}"])


def office(desktop: VirtualDesktop, *arguments: str) -> Target:
    user = desktop.directory / "office/user"
    user.mkdir(parents=True)
    (user / "registrymodifications.xcu").write_text(NO_TIPS)
    target = Accessible(desktop, "libreoffice", ["soffice", "--norestore", "--nologo",
                                                 f"-env:UserInstallation=file://{user.parent}", *arguments],
                        SAL_USE_VCLPLUGIN="gtk3")
    time.sleep(3 * SETTLE)
    if not arguments:
        target.takes_text = False
    return target


def chromium(desktop: VirtualDesktop, field: bool = True, address: str = "") -> Target:
    return Page(desktop, "chromium", ["chromium", "--no-sandbox", "--no-first-run", "--disable-gpu",
                                      "--password-store=basic", f"--user-data-dir={desktop.directory}/chromium"], field,
                address)


def firefox(desktop: VirtualDesktop, field: bool = True, address: str = "") -> Target:
    profile = desktop.directory / "firefox"
    profile.mkdir()
    (profile / "user.js").write_text(FIREFOX)
    return Page(desktop, "firefox", ["firefox-esr", "--profile", str(profile), "--no-remote"], field, address)


def mousepad(desktop: VirtualDesktop) -> Target:
    return Accessible(desktop, "mousepad", ["mousepad", "--disable-server"])
