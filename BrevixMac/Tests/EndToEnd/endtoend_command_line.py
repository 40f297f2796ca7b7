# SPDX-License-Identifier: GPL-3.0-or-later
"""The command line: start, second start, toggle, help, version, and what is said when something is missing."""
import os
import pathlib
import sqlite3
import subprocess
import tempfile
import unittest

from gi.repository import Gio, GLib

import desktop_driver as desk
import scenario

BREVIX = os.environ["BREVIX"]
NAME = "app.brevix.Brevix"
CLOUD = pathlib.Path(os.environ["HOME"]) / ".local/share/brevix/cloud"


def run(*arguments, env=None, without=()):
    environment = {key: value for key, value in {**os.environ, **(env or {})}.items() if key not in without}
    return subprocess.run([BREVIX, *arguments], env=environment, capture_output=True, text=True, timeout=20)


class WithoutARunningInstance(unittest.TestCase):
    def test_version_and_help_need_no_display(self):
        version = run("--version", without=("DISPLAY",))
        self.assertEqual(version.returncode, 0)
        self.assertRegex(version.stdout, r"^brevix \d+\.\d+\.\d+\n$")
        help_text = run("--help", without=("DISPLAY",))
        self.assertEqual(help_text.returncode, 0)
        for word in ("--local", "toggle", "--version", "--help"):
            self.assertIn(word, help_text.stdout)

    def test_no_display_is_said_clearly(self):
        done = run("--local", without=("DISPLAY", "WAYLAND_DISPLAY"))
        self.assertEqual(done.returncode, 69)
        self.assertIn("no display", done.stderr)

    def test_an_unreachable_display_is_said_clearly(self):
        done = run("--local", env={"DISPLAY": ":7777"})
        self.assertEqual(done.returncode, 69)
        self.assertIn("cannot connect to X server", done.stderr)

    def test_a_library_that_cannot_be_opened_is_said_clearly(self):
        with tempfile.TemporaryDirectory() as folder:
            (pathlib.Path(folder) / "brevix/cloud/library.sqlite").mkdir(parents=True)
            done = run("--local", env={"XDG_DATA_HOME": folder})
        self.assertEqual(done.returncode, 69)
        self.assertRegex(done.stderr, r"brevix: the local library cannot be opened: \S+")

    def test_toggle_without_an_instance_is_said_clearly(self):
        done = run("toggle")
        self.assertEqual(done.returncode, 69)
        self.assertIn("Brevix is not running", done.stderr)

    def test_toggle_without_a_session_bus_is_said_clearly(self):
        done = run("toggle", env={"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"})
        self.assertEqual(done.returncode, 69)
        self.assertIn("D-Bus", done.stderr)

    def test_unknown_words_are_refused(self):
        for arguments in (["bogus"], ["--bogus"], ["toggle", "extra"]):
            with self.subTest(arguments):
                done = run(*arguments)
                self.assertEqual(done.returncode, 64)
                self.assertIn("brevix --help", done.stderr)


class WithARunningInstance(scenario.Scenario):
    def test_toggle_opens_and_closes_the_picker(self):
        self.assertEqual(run("toggle").returncode, 0)
        window = desk.wait_for("the picker", desk.panel)
        desk.wait_for("the picker to have the focus", lambda: desk.active_window() == window)
        self.assertEqual(run("toggle").returncode, 0)
        self.brevix.wait_until_closed()

    def test_a_second_start_shows_the_running_one(self):
        done = run("--local")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        desk.wait_for("the picker", desk.panel)

    def test_escape_closes_the_picker(self):
        self.brevix.press_hotkey()
        desk.keys("Escape")
        self.brevix.wait_until_closed()

    def test_a_click_elsewhere_closes_the_picker_and_one_inside_does_not(self):
        window = self.brevix.press_hotkey()
        x, y, width, height = desk.window_geometry(window)
        desk.click(x + width // 2, y + height - 150)
        self.assertIsNotNone(desk.panel())
        outside = (5, 700) if x > 100 else (1200, 700)
        desk.click(*outside)
        self.brevix.wait_until_closed()


class WhileTheLibraryIsOpened(unittest.TestCase):
    def test_what_is_asked_for_is_done_afterwards(self):
        first = desk.Brevix(BREVIX)
        first.wait_until_ready()
        self.assertEqual(first.stop(), 0)
        bus = Gio.bus_get_sync(Gio.BusType.SESSION, None)
        database = sqlite3.connect(CLOUD / "library.sqlite", isolation_level=None)
        database.execute("BEGIN IMMEDIATE")    # Brevix waits for this, two seconds at most
        brevix = desk.Brevix(BREVIX)
        self.addCleanup(brevix.stop)
        desk.wait_for("Brevix on the bus", lambda: self.call(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                             "NameHasOwner", NAME), interval=0.002)
        self.call(bus, NAME, "/app/brevix/Brevix", "Toggle")
        self.assertEqual(desk.windows(desk.PANEL_CLASS, visible=False), [])
        database.execute("ROLLBACK")
        desk.wait_for("the picker", desk.panel)
        self.assertEqual(brevix.stop(), 0)

    @staticmethod
    def call(bus, name, path, method, *arguments):
        parameters = GLib.Variant("(" + "s" * len(arguments) + ")", arguments)
        reply = bus.call_sync(name, path, name, method, parameters, None, 0, 2000, None).unpack()
        return reply[0] if reply else None


if __name__ == "__main__":
    scenario.main()
