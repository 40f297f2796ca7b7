# SPDX-License-Identifier: GPL-3.0-or-later
"""Inserts into real programs of several toolkits and reads the text back by other means."""
import os
import pathlib
import subprocess
import tempfile

import desktop_driver as desk
import scenario
import x_display
from scenario import ACUTE, LINES, SKILL, WOMAN

EDITORS = {
    "a GTK 3 editor": ("mousepad", ["mousepad", "--disable-server"]),
    "a Qt editor": ("featherpad", ["featherpad", "--standalone"]),
}

UNDOING = {**EDITORS, "a GTK 4 editor": ("gnome-text-editor", ["gnome-text-editor", "--standalone", "--ignore-session"])}


class InsertionIntoEditors(scenario.Scenario):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.display = x_display.Display()

    def editors(self, editors=EDITORS):
        for name, (wm_class, command) in editors.items():
            with self.subTest(name):
                program, window = self.open_window(wm_class, *command)
                field = desk.field(program.pid, is_multi_line)
                try:
                    yield program, window, field
                finally:
                    program.stop()

    def put(self, field, text):
        """Puts a text into an editor by its own paste, so that no key map stands in the way."""
        desk.copy_text(text)
        desk.keys("ctrl+v")
        desk.wait_for_text(field, text)

    def test_text_lands_in_an_empty_field(self):
        for _, window, field in self.editors():
            expected = self.insert_lines()
            desk.wait_for_text(field, expected)
            self.brevix.wait_until_closed()
            desk.wait_for("the focus to be back", lambda: desk.active_window() == window)

    def test_text_lands_at_the_caret_in_the_middle_of_text(self):
        for _, _, field in self.editors():
            self.put(field, "before after")
            desk.keys(*["Left"] * len(" after"))
            expected = self.insert_line(count="seven", subject="caf" + ACUTE)
            desk.wait_for_text(field, "before" + expected + " after")

    def test_text_replaces_the_selection(self):
        for _, _, field in self.editors():
            self.put(field, "keep replace keep")
            desk.keys(*["Left"] * len(" keep"))
            desk.keys(*["shift+Left"] * len("replace"))
            expected = self.insert_lines()
            desk.wait_for_text(field, "keep " + expected + " keep")

    def test_positions_are_right_behind_emoji_and_combining_marks(self):
        for _, _, field in self.editors():
            text = f"{WOMAN}{ACUTE} x"
            self.put(field, text)
            desk.keys("Left")
            expected = self.insert_line(count=WOMAN, subject="na" + "i\u0308" + "ve")
            desk.wait_for_text(field, f"{WOMAN}{ACUTE} " + expected + "x")

    def test_typing_goes_on_behind_the_inserted_text(self):
        for _, window, field in self.editors():
            expected = self.insert_lines()
            desk.wait_for_text(field, expected)
            self.brevix.wait_until_closed()
            desk.wait_for("the focus to be back", lambda: desk.active_window() == window)
            desk.type_text("!")
            desk.wait_for_text(field, expected + "!")

    def test_undo_brings_the_text_back_after_a_direct_insertion(self):
        for _, window, field in self.editors(UNDOING):
            self.put(field, "before after")
            desk.keys(*["Left"] * len(" after"))
            owner = self.display.selection_owner()
            expected = self.insert_lines()
            desk.wait_for_text(field, "before" + expected + " after")
            self.brevix.wait_until_closed()
            self.assertEqual(self.display.selection_owner(), owner, "it was a paste")
            desk.wait_for("the focus to be back", lambda: desk.active_window() == window)
            desk.keys("ctrl+z")
            desk.wait_for_text(field, "before after")

    def test_the_clipboard_is_untouched_by_direct_insertion(self):
        for _, _, field in self.editors():
            owner, content = self.own_rich_clipboard()
            expected = self.insert_lines()
            desk.wait_for_text(field, expected)
            self.assert_clipboard_is(content)
            owner.stop()

    def test_a_skill_is_inserted_as_it_stands(self):
        for _, _, field in self.editors():
            self.choose(SKILL)
            desk.wait_for_text(field, SKILL["text"])

    def test_ctrl_return_copies_and_leaves_the_field_alone(self):
        for _, _, field in self.editors():
            self.put(field, "untouched")
            self.brevix.press_hotkey()
            desk.type_text(LINES["title"])
            desk.wait_for("the prompt", lambda: self.selected_title() == LINES["title"], 5, 0.03)
            desk.keys("ctrl+Return")
            self.wait_for_message("Prompt copied to clipboard.")
            desk.wait_for("the copy", lambda: desk.clipboard().get("UTF8_STRING") == LINES["text"].encode())
            desk.keys("Escape")
            self.brevix.wait_until_closed()
            self.assertEqual(desk.text_of(field), "untouched")


class InsertionIntoPretenders(scenario.Scenario):
    def test_a_widget_that_accepts_edits_and_does_nothing_gets_the_text_once_by_a_paste(self):
        _, content = self.own_rich_clipboard()
        program, _ = self.open_window("QtFields", os.environ["QT_FIELDS"], "deaf", "before ")
        field = desk.field(program.pid, is_multi_line)
        desk.keys("ctrl+End")
        expected = self.insert_lines()
        desk.wait_for_text(field, "before " + expected)
        self.brevix.wait_until_closed()
        self.assert_clipboard_is(content)
        self.assertEqual(desk.text_of(field), "before " + expected)


class InsertionIntoLineFields(scenario.Scenario):
    def answer_of(self, dialog, window):
        """Confirms a dialog that has the focus again; gives what it prints."""
        self.brevix.wait_until_closed()
        desk.wait_for("the focus to be back", lambda: desk.active_window() == window)
        desk.keys("Return")
        return dialog.process.communicate(timeout=10)[0].decode()

    def test_text_lands_in_a_gtk_entry_in_the_middle_of_text(self):
        dialog, window = self.open_window("zenity", "zenity", "--entry", "--entry-text=", dy=0.5,
                                          stdout=subprocess.PIPE)
        field = desk.field(dialog.pid)
        desk.type_text("ab")
        desk.wait_for_text(field, "ab")
        desk.keys("Left")
        expected = self.insert_line(count=WOMAN, subject=ACUTE)
        desk.wait_for_text(field, "a" + expected + "b")
        self.assertEqual(self.answer_of(dialog, window), "a" + expected + "b\n")

    def test_a_password_field_is_refused_and_the_clipboard_is_untouched(self):
        _, content = self.own_rich_clipboard()
        dialog, window = self.open_window("zenity", "zenity", "--password", dy=0.5, stdout=subprocess.PIPE)
        desk.type_text("secret")
        self.brevix.press_hotkey()
        self.wait_for_message("Password fields are not supported")
        desk.type_text(LINES["title"])
        desk.wait_for("the prompt", lambda: self.selected_title() == LINES["title"], 5, 0.03)
        desk.keys("Return")
        desk.keys("Escape")
        self.brevix.wait_until_closed()
        self.assert_clipboard_is(content)
        self.assertEqual(self.answer_of(dialog, window), "secret\n")


class InsertionIntoTerminals(scenario.Scenario):
    def received_by(self, wm_class, *terminal):
        """Pastes the first skill into a program in a terminal; gives what that program read."""
        folder = pathlib.Path(tempfile.mkdtemp())
        script = folder / "read.sh"
        script.write_text(f"#!/bin/sh\ncat > '{folder}/received'\ntouch '{folder}/done'\n")
        script.chmod(0o755)
        _, window = self.open_window(wm_class, *terminal, str(script))
        self.choose(SKILL)
        self.brevix.wait_until_closed()
        desk.wait_for("the focus to be back", lambda: desk.active_window() == window)
        desk.keys("Return", "ctrl+d")
        desk.wait_for("the end of input", (folder / "done").exists)
        return (folder / "received").read_text()

    def test_text_is_pasted_into_xterm_and_the_clipboard_is_given_back(self):
        _, content = self.own_rich_clipboard()
        received = self.received_by("xterm", "xterm", "-e")
        self.assertEqual(received.rstrip("\n"), SKILL["text"].rstrip("\n"))
        self.assert_clipboard_is(content)

    def test_text_is_pasted_into_a_vte_terminal_and_the_clipboard_is_given_back(self):
        _, content = self.own_rich_clipboard()
        received = self.received_by("xfce4-terminal", "xfce4-terminal", "--disable-server", "-x")
        self.assertEqual(received.rstrip("\n"), SKILL["text"].rstrip("\n"))
        self.assert_clipboard_is(content)


class PastingByChoice(scenario.Scenario):
    defaults = {"preferredInsertionMethod": b'"clipboardPaste"'}

    def test_every_type_of_the_clipboard_is_identical_after_a_paste(self):
        for wm_class, command in EDITORS.values():
            with self.subTest(wm_class):
                _, content = self.own_rich_clipboard()
                program, _ = self.open_window(wm_class, *command)
                field = desk.field(program.pid, is_multi_line)
                expected = self.insert_lines()
                desk.wait_for_text(field, expected)
                self.brevix.wait_until_closed()
                self.assert_clipboard_is(content)
                program.stop()

    def test_an_empty_clipboard_is_empty_again(self):
        owner, _ = self.own_rich_clipboard()
        owner.stop()  # whatever was there before, nobody owns it now
        program, _ = self.open_window("mousepad", "mousepad", "--disable-server")
        field = desk.field(program.pid, is_multi_line)
        expected = self.insert_lines()
        desk.wait_for_text(field, expected)
        self.assert_clipboard_is({})


class CopyingByChoice(scenario.Scenario):
    defaults = {"preferredInsertionMethod": b'"copiedOnly"'}

    def test_text_is_copied_and_nothing_is_inserted(self):
        program, window = self.open_window("mousepad", "mousepad", "--disable-server")
        field = desk.field(program.pid, is_multi_line)
        self.choose(LINES)
        self.brevix.wait_until_closed()
        desk.wait_for("the copy", lambda: desk.clipboard().get("UTF8_STRING") == LINES["text"].encode())
        desk.wait_for("the focus to be back", lambda: desk.active_window() == window)
        self.assertEqual(desk.text_of(field), "")


def is_multi_line(node):
    return desk.is_editable(node) and node.has(desk.MULTI_LINE)


if __name__ == "__main__":
    scenario.main()
