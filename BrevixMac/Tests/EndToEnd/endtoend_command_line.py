# SPDX-License-Identifier: GPL-3.0-or-later
"""The command line: start, second start, toggle, help, version, and what is said when something is missing."""
import os
import subprocess
import unittest

import desktop_driver as desk
import scenario

BREVIX = os.environ["BREVIX"]


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


if __name__ == "__main__":
    scenario.main()
