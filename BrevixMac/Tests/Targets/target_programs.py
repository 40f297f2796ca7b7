# SPDX-License-Identifier: GPL-3.0-or-later
"""Real programs with a text field each: how to start them, put text into them and read them independently of Brevix."""
import http.server
import json
import os
import pathlib
import shutil
import signal
import sys
import tempfile
import threading
import time

import desktop_driver as desk
from gi.repository import GLib

HERE = pathlib.Path(__file__).parent


class Target:
    """One field of a running program. Subclasses say how it is read."""

    wm_class = ""
    command = ()
    environment = {}
    click = (0.5, 0.6)
    is_single_line = False
    is_password = False
    is_terminal = False
    paste = "ctrl+v"

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(dir=os.environ["HOME"]))
        self.program = None
        self.window = None

    def is_installed(self):
        return shutil.which(self.command[0]) is not None

    def prepare(self):
        """Files the program needs; gives further arguments."""
        return ()

    def open(self):
        known = set(desk.windows(self.wm_class))
        arguments = self.prepare()
        self.program = desk.Program(*self.command, *arguments, env={**desk.without_memory(), **self.environment})
        self.window = desk.wait_for(f"a window of {self.wm_class}",
                                    lambda: [each for each in desk.windows(self.wm_class) if each not in known], 60)[-1]
        desk.activate(self.window)
        self.find_field()
        self.focus()
        self.clear()

    def focus(self):
        desk.activate(self.window)
        desk.click_into(self.window, *self.click)

    def find_field(self):
        pass

    def close(self):
        if self.program:
            self.program.stop()
        shutil.rmtree(self.folder, ignore_errors=True)

    def pids(self):
        return [self.program.pid]

    # What the field holds

    def read(self):
        raise NotImplementedError

    def length(self):
        """Something cheap that equals length_of() of what read() gives."""
        return len(self.read())

    def length_of(self, text):
        return len(text)

    def when_holding(self, expected, deadline):
        """The moment at which the field was seen to hold the text; raises when it does not in time."""
        seen = []

        def holds():
            try:
                if self.length() != self.length_of(expected):
                    return False
                seen[:] = [time.monotonic()]
                return self.read() == expected
            except GLib.Error:
                return False
        try:
            desk.wait_for("the text", holds, deadline, 0.002)
        except desk.Failure:
            raise desk.Failure(f"the field holds {shortened(self.read())}, not {shortened(expected)}") from None
        return seen[0]

    def when_seen(self, expected, deadline):
        """The same where it can be seen without touching the program; as much of it as can."""
        return self.when_holding(expected, deadline)

    # What is in the field before an insertion

    def clear(self):
        if self.length() == 0:
            return
        desk.keys("ctrl+a", "Delete")
        desk.wait_for("the empty field", lambda: self.length() == 0, 15)

    def put(self, text, behind="", selected=""):
        """Fills the empty field by its own paste, then moves the caret back and selects."""
        desk.copy_text(text)
        desk.keys(self.paste)
        self.when_holding(text, 20)
        move = ["Left"] * len(behind) + ["shift+Left"] * len(selected)
        if move:
            desk.keys(*move)


def shortened(text):
    return repr(text) if len(text) < 200 else f"{text[:60]!r}… ({len(text)} characters) …{text[-60:]!r}"


class AccessibleTarget(Target):
    """Read over the accessibility bus, by another client than Brevix."""

    matches = staticmethod(desk.is_editable)
    offsets_are_utf16 = False

    def find_field(self):
        self.field = desk.field(self.program.pid, self.matches, 60)

    def read(self):
        return self.field.text

    def length(self):
        return self.field.character_count

    def length_of(self, text):
        return len(text.encode("utf-16-le")) // 2 if self.offsets_are_utf16 else len(text)


# Documents of more than a screen are not accessible as a whole.
LONG = 3000


def is_multi_line(node):
    return desk.is_editable(node) and node.has(desk.MULTI_LINE)


class Mousepad(AccessibleTarget):
    name, toolkit, field_kind = "Mousepad", "GTK 3", "editor"
    package = "mousepad"
    wm_class, command = "mousepad", ("mousepad", "--disable-server")
    matches = staticmethod(is_multi_line)


class Zenity(AccessibleTarget):
    name, toolkit, field_kind = "Zenity", "GTK 3", "line"
    package = "zenity"
    wm_class, command = "zenity", ("zenity", "--entry", "--entry-text=")
    is_single_line = True
    click = (0.5, 0.5)


class GnomeTextEditor(AccessibleTarget):
    name, toolkit, field_kind = "GNOME Text Editor", "GTK 4", "editor"
    package = "gnome-text-editor"
    wm_class, command = "gnome-text-editor", ("gnome-text-editor", "--standalone", "--ignore-session")
    matches = staticmethod(is_multi_line)


class FeatherPad(AccessibleTarget):
    name, toolkit, field_kind = "FeatherPad", "Qt 5", "editor"
    package = "featherpad"
    wm_class, command = "featherpad", ("featherpad", "--standalone")
    matches = staticmethod(is_multi_line)
    offsets_are_utf16 = True


class KWrite(AccessibleTarget):
    name, toolkit, field_kind = "KWrite", "Qt 5, own text engine", "editor"
    package = "kwrite"
    wm_class, command = "kwrite", ("kwrite",)
    matches = staticmethod(is_multi_line)
    offsets_are_utf16 = True

    def prepare(self):
        file = self.folder / "text.txt"
        file.write_text("")
        return (str(file),)


class FocusWriter(AccessibleTarget):
    name, toolkit, field_kind = "FocusWriter", "Qt 6", "editor"
    package = "focuswriter"
    wm_class, command = "focuswriter", ("focuswriter",)
    matches = staticmethod(is_multi_line)
    offsets_are_utf16 = True

    def prepare(self):
        file = self.folder / "text.txt"
        file.write_text("")
        return (str(file),)


class Writer(AccessibleTarget):
    name, toolkit, field_kind = "LibreOffice Writer", "LibreOffice", "document"
    package = "libreoffice-writer"
    wm_class = "libreoffice-writer"
    command = ("soffice", "--writer", "--norestore", "--nologo")
    environment = {"SAL_USE_VCLPLUGIN": "gtk3"}
    offsets_are_utf16 = True

    def prepare(self):
        settings = self.folder / "profile/user/registrymodifications.xcu"
        settings.parent.mkdir(parents=True)
        items = [("/org.openoffice.Office.Common/Misc", "ShowTipOfTheDay"),
                 ("/org.openoffice.Office.Common/Misc", "FirstRun"),
                 ("/org.openoffice.Office.Common/AutoCorrect", "ChangeUnderlineWeight")]
        settings.write_text(
            '<?xml version="1.0" encoding="UTF-8"?>\n<oor:items xmlns:oor="http://openoffice.org/2001/registry">'
            + "".join(f'<item oor:path="{path}"><prop oor:name="{name}" oor:op="fuse"><value>false</value></prop></item>'
                      for path, name in items) + "</oor:items>")
        return (f"-env:UserInstallation=file://{self.folder}/profile",)

    @staticmethod
    def matches(node):
        return node.role == "document text"

    def find_field(self):
        desk.wait_for("the program's process", lambda: self.pids(), 30, 0.1)
        self.field = desk.wait_for("the document", lambda: self.document(), 60, 0.2)

    def document(self):
        for pid in self.pids():
            root = desk.application(pid)
            found = root and desk.find(root, self.matches)
            if found:
                return found
        return None

    def pids(self):
        """The program that is started only starts another."""
        found = []
        for entry in pathlib.Path("/proc").iterdir():
            try:
                if entry.name.isdigit() and os.getpgid(int(entry.name)) == self.program.pid:
                    found.append(int(entry.name))
            except (ProcessLookupError, PermissionError):
                continue
        return found

    # Only what is on screen is accessible, and its objects come and go while the text moves.

    def read(self):
        while True:
            try:
                return "\n".join(node.text for node in self.field.children if node.is_text())
            except GLib.Error:
                time.sleep(0.02)

    def length(self):
        return self.length_of(self.read())

    def when_seen(self, expected, deadline):
        if len(expected) < LONG:
            return super().when_seen(expected, deadline)
        desk.wait_for("the end of the text", lambda: self.read().endswith(expected[-40:]), deadline)
        return time.monotonic()

    def when_holding(self, expected, deadline):
        if len(expected) < LONG:
            return super().when_holding(expected, deadline)
        found = self.copied()
        if found != expected:
            raise desk.Failure(f"the document holds {shortened(found)}, not {shortened(expected)}")
        return time.monotonic()

    def copied(self):
        desk.copy_text("nothing was copied")
        desk.keys("ctrl+a", "ctrl+c")
        desk.wait_for("the copy", lambda: desk.clipboard().get("UTF8_STRING") != b"nothing was copied", 10)
        return desk.clipboard()["UTF8_STRING"].decode()


# Browsers: the page itself tells what its field holds

PAGE = """<!doctype html><meta charset="utf-8"><title>Field</title>
<style>body{{margin:0}} #f{{position:fixed;inset:0;width:100%;height:100%;box-sizing:border-box;font:18px sans-serif;
white-space:pre-wrap;overflow:auto}} input#f{{white-space:nowrap}}</style>
{field}
<script>
const field = document.getElementById("f");
let number = 0;
const tell = () => fetch("/value/{key}/" + ++number, {{method: "POST", body: field.value ?? field.innerText}});
field.addEventListener("input", tell);
{script}
field.focus();
tell();
</script>"""

FIELDS = {
    "line": '<input id="f" value="">',
    "multi-line": '<textarea id="f"></textarea>',
    "rich": '<div id="f" contenteditable></div>',
    "password": '<input id="f" type="password">',
}


class Pages:
    """A web server whose pages report each change of their field."""

    _shared = None

    @classmethod
    def shared(cls):
        cls._shared = cls._shared or cls()
        return cls._shared

    def __init__(self):
        pages = self
        self.pages = {}
        self.values = {}

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                page = pages.pages.get(self.path.strip("/"))
                self.send_response(200 if page else 404)
                self.send_header("Content-Type", "text/html; charset=utf-8")
                self.end_headers()
                self.wfile.write((page or "").encode())

            def do_POST(self):
                body = self.rfile.read(int(self.headers.get("Content-Length", 0))).decode()
                _, _, key, number = self.path.split("/")
                if int(number) > pages.values.get(key, (0,))[0]:
                    pages.values[key] = (int(number), body, time.monotonic())
                self.send_response(204)
                self.end_headers()

            def log_message(self, *_):
                pass

        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        threading.Thread(target=self.server.serve_forever, daemon=True).start()

    def add(self, field, script=""):
        key = f"page{len(self.pages)}"
        self.pages[key] = PAGE.format(field=field, key=key, script=script)
        return key, f"http://127.0.0.1:{self.server.server_port}/{key}"


class BrowserTarget(Target):
    kind = "multi-line"
    field_kind = "multi-line"
    script = ""

    def page_address(self):
        self.key, address = Pages.shared().add(FIELDS[self.kind], self.script)
        return address

    def find_field(self):
        desk.wait_for("the page", lambda: self.key in Pages.shared().values, 60, 0.05)

    def read(self):
        # A rich field ends with a line break of its own.
        value = Pages.shared().values[self.key][1]
        return value[:-1] if self.kind == "rich" and value.endswith("\n") else value

    def when_holding(self, expected, deadline):
        super().when_holding(expected, deadline)
        return Pages.shared().values[self.key][2]


def as_root(*flags):
    return flags if os.geteuid() == 0 else ()


class Chromium(BrowserTarget):
    name, toolkit = "Chromium", "Chromium, accessibility on"
    package = "chromium"
    wm_class = "chromium"
    command = ("chromium", "--no-first-run", "--disable-gpu", "--disable-quic", "--disable-background-networking",
               "--disable-component-update", "--disable-sync", "--password-store=basic", "--disable-dev-shm-usage",
               "--window-size=900,700", "--window-position=40,60", *as_root("--no-sandbox"))
    flags = ("--force-renderer-accessibility",)

    def prepare(self):
        return (*self.flags, f"--user-data-dir={self.folder}/profile", f"--app={self.page_address()}")


class PlainChromium(Chromium):
    name, toolkit = "Chromium as installed", "Chromium, accessibility off"
    flags = ()


class Firefox(BrowserTarget):
    name, toolkit = "Firefox ESR", "Gecko"
    package = "firefox-esr"
    wm_class = "firefox"
    command = ("firefox-esr", "--no-remote", "--new-instance")

    def prepare(self):
        profile = self.folder / "profile"
        profile.mkdir()
        settings = {"browser.shell.checkDefaultBrowser": False, "browser.startup.homepage_override.mstone": "ignore",
                    "datareporting.policy.dataSubmissionEnabled": False, "browser.aboutwelcome.enabled": False,
                    "toolkit.telemetry.reportingpolicy.firstRun": False, "trailhead.firstrun.didSeeAboutWelcome": True,
                    "app.update.enabled": False, "browser.tabs.warnOnClose": False, "signon.rememberSignons": False,
                    "browser.sessionstore.resume_from_crash": False, "termsofuse.bypassNotification": True,
                    "browser.preonboarding.enabled": False}
        (profile / "user.js").write_text(
            "".join(f"user_pref({json.dumps(name)}, {json.dumps(value)});\n" for name, value in settings.items()))
        return ("--profile", str(profile), self.page_address())


class Falkon(BrowserTarget):
    name, toolkit = "Falkon", "Qt WebEngine (Chromium inside Qt 5)"
    package = "falkon"
    wm_class = "falkon"
    command = ("falkon", "--no-remote", "--portable")
    environment = {"QTWEBENGINE_DISABLE_SANDBOX": "1" if os.geteuid() == 0 else "0",
                   "QTWEBENGINE_CHROMIUM_FLAGS": "--disable-gpu"}

    def prepare(self):
        return (self.page_address(),)


def with_kind(base, kind):
    return type(f"{base.__name__}_{kind}", (base,), {
        "kind": kind, "field_kind": kind, "is_single_line": kind in ("line", "password"),
        "is_password": kind == "password"})


# Terminals: a program in them writes down what it is given

class Terminal(Target):
    toolkit, field_kind = "terminal", "terminal"
    is_terminal = True

    def prepare(self):
        self.received = self.folder / "received"
        self.received.write_bytes(b"")
        self.start = 0
        return (sys.executable, str(HERE / "keep_input.py"), str(self.received))

    def find_field(self):
        desk.wait_for("the reader in the terminal", (self.folder / "received.ready").exists, 30)

    def read(self):
        return self.received.read_bytes()[self.start:].decode(errors="replace")

    def length(self):
        return self.received.stat().st_size - self.start

    def length_of(self, text):
        return len(text.encode())

    def clear(self):
        self.start = self.received.stat().st_size

    def put(self, text, behind="", selected=""):
        raise NotImplementedError


class XTerm(Terminal):
    name, toolkit, package = "xterm", "Xt", "xterm"
    wm_class, command = "xterm", ("xterm", "-e")


class Urxvt(Terminal):
    name, toolkit, package = "rxvt-unicode", "Xlib", "rxvt-unicode"
    # Its user is asked before several lines are pasted; here that was answered once for all.
    wm_class, command = "urxvt", ("urxvt", "-pe", "-confirm-paste", "-e")


class XfceTerminal(Terminal):
    name, toolkit, package = "Xfce Terminal", "GTK 3, VTE", "xfce4-terminal"
    wm_class, command = "xfce4-terminal", ("xfce4-terminal", "--disable-server", "-x")


class Konsole(Terminal):
    name, toolkit, package = "Konsole", "Qt 5", "konsole"
    wm_class, command = "konsole", ("konsole", "--separate", "-e")


BROWSER_FIELDS = ("multi-line", "line", "rich", "password")
ALL = [Mousepad, Zenity, GnomeTextEditor, FeatherPad, KWrite, FocusWriter, Writer,
       *[with_kind(browser, kind) for browser in (Chromium, Firefox) for kind in BROWSER_FIELDS],
       with_kind(Falkon, "multi-line"), with_kind(Falkon, "line"),
       with_kind(PlainChromium, "multi-line"), with_kind(PlainChromium, "password"),
       XTerm, Urxvt, XfceTerminal, Konsole]


def freeze(target):
    for pid in target.pids():
        os.kill(pid, signal.SIGSTOP)


def thaw(target):
    for pid in target.pids():
        os.kill(pid, signal.SIGCONT)
