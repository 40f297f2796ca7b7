# SPDX-License-Identifier: GPL-3.0-or-later
"""The settings' window by the keyboard: another shortcut, another method of insertion, and start at login."""
import os
import pathlib
import subprocess
import unittest

import desktop_driver as desk
import scenario
import screen_reader

BREVIX = os.environ["BREVIX"]
AUTOSTART = pathlib.Path(os.environ["HOME"]) / ".config/autostart/app.brevix.Brevix.desktop"


def settings_window():
    found = desk.output("xdotool", "search", "--onlyvisible", "--name", "^Brevix Settings$").split()
    return int(found[-1]) if found else None


class Settings(screen_reader.ScreenReader):
    def setUp(self):
        super().setUp()
        done = subprocess.run([BREVIX, "settings"], capture_output=True, text=True, timeout=20)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        window = desk.wait_for("the settings' window", settings_window)
        desk.wait_for("the settings to have the focus", lambda: desk.active_window() == window)

    def close(self):
        desk.keys("Escape")
        desk.wait_for("the settings to close", lambda: settings_window() is None)

    def says(self, text):
        return desk.wait_for(f"{text!r} in the settings", lambda: text in self.picker_says(), 8, 0.05)

    def test_1_a_new_shortcut_is_recorded_by_keys_and_opens_the_picker(self):
        self.tab_to("Record Shortcut")
        desk.keys("space")
        self.says("Press Shortcut...")
        desk.keys("alt+F4")    # the window manager holds this one; while recording it must not close the window
        self.says("⌥Key 118")
        self.assertIsNotNone(settings_window())
        self.says("Record Shortcut")

        self.tab_to("Record Shortcut")
        desk.keys("space")
        self.says("Press Shortcut...")
        desk.keys("ctrl+alt+k")
        self.says("⌃⌥K")
        self.close()

        desk.keys("ctrl+alt+k")
        window = desk.wait_for("the picker", desk.panel)
        desk.wait_for("the picker to have the focus", lambda: desk.active_window() == window)
        desk.keys("Escape")
        self.brevix.wait_until_closed()
        desk.keys("super+shift+p")
        desk.wait_for("the old shortcut to do nothing", lambda: desk.panel() is None)

    def test_2_copy_only_copies_and_pastes_nothing(self):
        self.tab_to("Hybrid")
        desk.keys("Down", "Down", "Down")
        desk.wait_for("Copy Only to be chosen", lambda: self.focused() == "Copy Only")
        self.close()

        editor, _ = self.open_window("mousepad", "mousepad", "--disable-server")
        text = desk.field(editor.pid)
        subprocess.run([BREVIX, "toggle"], check=True, timeout=20)
        window = desk.wait_for("the picker", desk.panel)
        desk.wait_for("the picker to have the focus", lambda: desk.active_window() == window)
        desk.type_text(scenario.LINES["title"])
        desk.wait_for("the prompt", lambda: self.selected_title() == scenario.LINES["title"], 5, 0.03)
        desk.keys("Return")
        desk.wait_for("the copy", lambda: desk.clipboard().get("UTF8_STRING") == scenario.LINES["text"].encode())
        self.assertEqual(desk.text_of(text), "")

    def test_3_start_at_login_writes_and_removes_the_autostart_entry(self):
        self.tab_to("Open at login")
        desk.keys("space")
        desk.wait_for("the autostart entry", AUTOSTART.exists)
        entry = AUTOSTART.read_text()
        self.assertIn(f"Exec={BREVIX} --local\n", entry)
        self.assertIn("X-GNOME-Autostart-enabled=true\n", entry)
        desk.keys("space")
        desk.wait_for("the entry to be gone", lambda: not AUTOSTART.exists())
        self.close()


if __name__ == "__main__":
    scenario.main()
