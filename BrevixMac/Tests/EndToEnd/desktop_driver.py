# SPDX-License-Identifier: GPL-3.0-or-later
"""Drives a real X desktop from outside, as a user and as an independent reader.

Input goes through xdotool (XTEST), reading back through the accessibility bus, xclip and files; nothing here shares code
with the application under test. Everything waits on conditions with a deadline.
"""
import os
import pathlib
import re
import signal
import subprocess
import tempfile
import time

from gi.repository import Gio, GLib

PANEL_CLASS = "brevix"


class Failure(Exception):
    """A condition did not come true in time."""


def wait_for(what, condition, deadline=8.0, interval=0.01):
    """Polls condition() until it is truthy and returns its value."""
    end = time.monotonic() + deadline
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise Failure(f"gave up after {deadline:g} s waiting for {what}")
        time.sleep(interval)


def output(*command, input=None, timeout=10):
    """Standard output of a command; empty when it fails."""
    done = subprocess.run(command, input=input, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=timeout)
    return done.stdout if done.returncode == 0 else b""


def without_memory():
    """Folders in which a target finds nothing of an earlier run, such as an unsaved text to be restored."""
    folder = tempfile.mkdtemp(dir=os.environ["HOME"])
    # Xfce's terminal asks before it takes several lines; a user of Brevix would have answered that once for all.
    terminal = pathlib.Path(folder) / "config/xfce4/terminal/terminalrc"
    terminal.parent.mkdir(parents=True)
    terminal.write_text("[Configuration]\nMiscShowUnsafePasteDialog=FALSE\n")
    kinds = ("CONFIG", "DATA", "CACHE", "STATE")
    return {"GSETTINGS_BACKEND": "memory", **{f"XDG_{kind}_HOME": f"{folder}/{kind.lower()}" for kind in kinds}}


class Program:
    """A started program that is ended with the test."""

    def __init__(self, *command, env=None, stdin=None, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL):
        self.process = subprocess.Popen(command, env={**os.environ, **(env or {})}, stdin=stdin, stdout=stdout,
                                        stderr=stderr, start_new_session=True)

    @property
    def pid(self):
        return self.process.pid

    def is_running(self):
        return self.process.poll() is None

    def stop(self, timeout=5):
        if self.is_running():
            try:
                os.killpg(self.pid, signal.SIGCONT)
                os.killpg(self.pid, signal.SIGTERM)
                self.process.wait(timeout)
            except (ProcessLookupError, subprocess.TimeoutExpired):
                try:
                    os.killpg(self.pid, signal.SIGKILL)
                except ProcessLookupError:
                    pass
                self.process.wait()
        return self.process.returncode


# Windows and input

def windows(wm_class, visible=True):
    options = ["--onlyvisible"] if visible else []
    found = output("xdotool", "search", *options, "--class", wm_class).split()
    return [int(window) for window in found]


def window_geometry(window):
    text = output("xdotool", "getwindowgeometry", "--shell", str(window)).decode()
    values = dict(line.split("=") for line in text.split() if "=" in line)
    return tuple(int(values.get(key, 0)) for key in ("X", "Y", "WIDTH", "HEIGHT"))


def wait_for_window(wm_class, deadline=15):
    return wait_for(f"a window of {wm_class}", lambda: windows(wm_class), deadline)[-1]


def active_window():
    text = output("xprop", "-root", "_NET_ACTIVE_WINDOW").decode()
    found = re.search(r"0x[0-9a-f]+", text)
    return int(found.group(), 16) if found else 0


def activate(window):
    subprocess.run(["xdotool", "windowactivate", str(window)], check=False, stderr=subprocess.DEVNULL)
    wait_for("the window to be active", lambda: active_window() == window)


def click(x, y):
    subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "1"], check=True)


def click_into(window, dx=0.5, dy=0.6):
    """Clicks into a window at a fraction of its size and waits until it is active."""
    x, y, width, height = window_geometry(window)
    click(int(x + width * dx), int(y + height * dy))
    wait_for("the clicked window to be active", lambda: active_window() == window)


def keys(*combinations):
    subprocess.run(["xdotool", "key", "--clearmodifiers", *combinations], check=True)


def type_text(text):
    subprocess.run(["xdotool", "type", "--clearmodifiers", "--delay", "2", text], check=True)


def screenshot(path):
    subprocess.run(["import", "-silent", "-window", "root", str(path)], check=False)


# Reading fields back: asked of the programs each time, nothing is remembered

EDITABLE, FOCUSABLE, FOCUSED, MULTI_LINE, SELECTED = 7, 11, 12, 17, 23

_ACCESSIBLE = "org.a11y.atspi.Accessible"
_TEXT = "org.a11y.atspi.Text"
_bus = None


def accessibility_bus():
    global _bus
    if _bus is None:
        session = Gio.bus_get_sync(Gio.BusType.SESSION)
        address = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None, 0, 5000)
        flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
        _bus = Gio.DBusConnection.new_for_address_sync(address.unpack()[0], flags, None, None)
    return _bus


class Node:
    """An element of a program's accessible tree."""

    def __init__(self, owner, path):
        self.owner, self.path = owner, path

    def _call(self, interface, method, arguments=None, timeout=1000):
        return accessibility_bus().call_sync(self.owner, self.path, interface, method, arguments, None, 0,
                                              timeout).unpack()

    def _property(self, interface, name):
        arguments = GLib.Variant("(ss)", (interface, name))
        return self._call("org.freedesktop.DBus.Properties", "Get", arguments)[0]

    @property
    def name(self):
        return self._property(_ACCESSIBLE, "Name")

    @property
    def role(self):
        return self._call(_ACCESSIBLE, "GetRoleName")[0]

    @property
    def attributes(self):
        return self._call(_ACCESSIBLE, "GetAttributes")[0]

    @property
    def children(self):
        return [Node(*child) for child in self._call(_ACCESSIBLE, "GetChildren")[0]]

    def has(self, state):
        low, high = self._call(_ACCESSIBLE, "GetState")[0]
        return bool((high << 32 | low) >> state & 1)

    def is_text(self):
        return _TEXT in self._call(_ACCESSIBLE, "GetInterfaces")[0]

    @property
    def extents(self):
        """x, y, width and height on the screen."""
        return self._call("org.a11y.atspi.Component", "GetExtents", GLib.Variant("(u)", (0,)))[0]

    def press(self):
        """Clicks the middle with the pointer."""
        x, y, width, height = self.extents
        click(x + width // 2, y + height // 2)

    @property
    def character_count(self):
        return self._property(_TEXT, "CharacterCount")

    @property
    def text(self):
        return self._call(_TEXT, "GetText", GLib.Variant("(ii)", (0, self.character_count)))[0]

    @property
    def pid(self):
        answer = accessibility_bus().call_sync("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                                "GetConnectionUnixProcessID", GLib.Variant("(s)", (self.owner,)), None,
                                                0, 1000)
        return answer.unpack()[0]


def application(pid):
    """The accessible application with this process identifier; None when there is none."""
    root = Node("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
    for child in root.children:
        try:
            if child.pid == pid:
                return child
        except GLib.Error:
            continue
    return None


def find(node, matches, depth=40):
    """The first node below, in document order, that matches; None when there is none. Menus are passed over."""
    try:
        if matches(node):
            return node
        if depth == 0 or node.role in ("menu bar", "menu"):
            return None
        for child in node.children[:400]:
            found = find(child, matches, depth - 1)
            if found is not None:
                return found
    except GLib.Error:
        return None
    return None


def is_editable(node):
    return node.has(EDITABLE) and node.is_text()


def field(pid, matches=is_editable, deadline=15):
    """The first field of a program that matches, once it is there."""
    def search():
        root = application(pid)
        return root and find(root, matches)
    return wait_for(f"a field of process {pid}", search, deadline, 0.05)


def text_of(node):
    return node.text


def wait_for_text(node, expected, deadline=5):
    """Waits until the field holds exactly this text; says what it holds otherwise."""
    try:
        wait_for("the text", lambda: text_of(node) == expected, deadline)
    except Failure:
        raise Failure(f"the field holds {text_of(node)!r}, not {expected!r}") from None


# The clipboard, by another program

_LISTED = {"TARGETS", "MULTIPLE", "TIMESTAMP", "SAVE_TARGETS"}


def clipboard_types():
    listed = output("xclip", "-selection", "clipboard", "-o", "-t", "TARGETS").decode().split("\n")
    return sorted(target for target in listed if target and target not in _LISTED)


def clipboard():
    """Every type of the clipboard with its bytes."""
    return {target: output("xclip", "-selection", "clipboard", "-o", "-t", target) for target in clipboard_types()}


def copy_text(text):
    subprocess.run(["xclip", "-selection", "clipboard", "-i"], input=text.encode(), check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    wait_for("the clipboard", lambda: clipboard().get("UTF8_STRING") == text.encode())


# Brevix

def is_brevix_running():
    reply = output("gdbus", "call", "--session", "-d", "org.freedesktop.DBus", "-o", "/org/freedesktop/DBus",
                   "-m", "org.freedesktop.DBus.NameHasOwner", "app.brevix.Brevix")
    return b"true" in reply


def panel():
    """The picker's window, when it is on screen."""
    # A search is broken off when any window vanishes while it runs, so one that finds nothing proves nothing.
    for _ in range(3):
        found = [window for window in windows(PANEL_CLASS) if window_geometry(window)[2] >= 500]
        if found:
            return found[-1]
    return None


def tray_icon():
    """The icon in the tray, when it is there."""
    found = [window for window in windows(PANEL_CLASS) if 0 < window_geometry(window)[2] <= 48]
    return found[-1] if found else None


class Brevix(Program):
    """A running Brevix with a local library."""

    library_options = ["--local"]
    domain = "brevix-local"

    def __init__(self, binary, *arguments, log=None, first_start=False, env=None):
        self.binary = binary
        self.log_path = log or pathlib.Path(tempfile.mkdtemp()) / "brevix.log"
        if not first_start:
            self.write_defaults()
        self.log = open(self.log_path, "wb")
        super().__init__(binary, *self.library_options, *arguments, stderr=self.log, env=env)

    @classmethod
    def defaults_path(cls):
        return pathlib.Path(os.environ["HOME"]) / f".config/{cls.domain}/defaults.plist"

    @classmethod
    def write_defaults(cls, **values):
        """Settings of a user who has been here before."""
        import plistlib
        cls.defaults_path().parent.mkdir(parents=True, exist_ok=True)
        cls.defaults_path().write_bytes(plistlib.dumps({"hotkeyTipDismissed": True, **values}))

    def wait_until_ready(self):
        wait_for("Brevix on the bus", lambda: is_brevix_running() or not self.is_running())
        if not self.is_running():
            raise Failure(f"Brevix ended with {self.process.returncode}: {self.log_path.read_text()}")
        # The panel is made last; from then on the hotkey works.
        wait_for("Brevix to have made its panel",
                 lambda: [each for each in windows(PANEL_CLASS, visible=False) if window_geometry(each)[2] >= 500])

    def press_hotkey(self):
        """Presses the hotkey as a user would and waits until the picker takes typing."""
        keys("super+shift+p")
        window = wait_for("the picker", panel)
        wait_for("the picker to have the focus", lambda: active_window() == window)
        return window

    @staticmethod
    def wait_until_closed(deadline=5):
        wait_for("the picker to close", lambda: panel() is None, deadline)


def rendered(text, values):
    """A prompt's text with its variables filled, computed independently of the application."""
    for name, value in values.items():
        text = text.replace("{{" + name + "}}", value)
    return text
