# SPDX-License-Identifier: GPL-3.0-or-later
"""What was captured at the hotkey is not there any more when the text is to be placed: nothing is typed anywhere."""
import os

import desktop_driver as desk
import scenario
import x_display
from scenario import LINES


class TheFieldOfTheHotkey(scenario.Scenario):
    def open_fields(self, kind):
        """A program that changes as soon as its user leaves it for the picker."""
        program, window = self.open_window("QtFields", os.environ["QT_FIELDS"], kind, "first", dy=0.25)
        desk.field(program.pid)
        return program, window

    def texts_of(self, program):
        texts = []

        def collect(node):
            if desk.is_editable(node):
                texts.append(node.text)
            return False
        desk.find(desk.application(program.pid), collect)
        return texts

    def expect_refusal(self):
        self.wait_for_message("Brevix couldn't reactivate QtFields. Copy instead.")
        self.assertIn("Copy Prompt Instead", self.picker_says())

    def test_another_field_of_the_same_window_gets_nothing(self):
        _, content = self.own_rich_clipboard()
        program, _ = self.open_fields("two")
        self.insert_lines()
        self.expect_refusal()
        self.assert_clipboard_is(content)
        self.assertEqual(self.texts_of(program), ["first", ""])

    def test_another_window_of_the_same_program_gets_nothing(self):
        _, content = self.own_rich_clipboard()
        program, window = self.open_fields("closing")
        desk.keys("super+shift+p")
        picker = desk.wait_for("the picker", desk.panel)
        # The new window takes the focus; the user goes on in the picker.
        desk.wait_for("the other window", lambda: window not in desk.windows("QtFields") and desk.windows("QtFields"))
        desk.activate(picker)
        desk.type_text(LINES["title"])
        desk.wait_for("the prompt", lambda: self.selected_title() == LINES["title"], 5, 0.03)
        desk.keys("Return")
        self.expect_refusal()
        self.assert_clipboard_is(content)
        self.assertEqual(self.texts_of(program), ["first", ""])

    def test_a_field_that_takes_back_foreign_changes_gets_a_paste(self):
        _, content = self.own_rich_clipboard()
        program, _ = self.open_fields("resetting")
        expected = self.insert_lines()
        # Taking back a change has put its caret to the beginning.
        desk.wait_for_text(desk.field(program.pid), expected + "first")
        self.assert_clipboard_is(content)


class HeldKeys(scenario.Scenario):
    defaults = {"preferredInsertionMethod": b'"clipboardPaste"'}

    def setUp(self):
        super().setUp()
        self.display = x_display.Display()
        self.editor, self.window = self.open_window("mousepad", "mousepad", "--disable-server")
        self.field = desk.field(self.editor.pid)

    def test_a_paste_waits_until_the_user_lets_go(self):
        self.find(LINES)
        self.display.press("Return")
        self.display.set_key("Shift_L", True)
        self.brevix_is_waiting()
        self.assertEqual(self.field.text, "")
        self.display.set_key("Shift_L", False)
        desk.wait_for_text(self.field, LINES["text"])
        desk.wait_for("all keys to be up", lambda: not self.display.pressed_keys())

    def test_a_user_who_switches_windows_with_a_key_held_gets_nothing_typed_anywhere(self):
        _, content = self.own_rich_clipboard()
        other, other_window = self.open_window("featherpad", "featherpad", "--standalone")
        other_field = desk.field(other.pid)
        desk.activate(self.window)
        self.find(LINES)
        self.display.press("Return")
        self.display.set_key("Alt_L", True)
        self.brevix_is_waiting()
        desk.activate(other_window)
        self.display.set_key("Alt_L", False)
        self.wait_for_message("Brevix couldn't reactivate Mousepad. Copy instead.")
        self.assert_clipboard_is(content)
        self.assertEqual((self.field.text, other_field.text), ("", ""))
        self.assertEqual(self.display.pressed_keys(), [])

    def brevix_is_waiting(self):
        """The text is on the clipboard and the target has the focus: only the held key holds the chord back."""
        desk.wait_for("the paste to begin", lambda: "x-kde-passwordManagerHint" in desk.clipboard_types(), 5)
        desk.wait_for("the target to be active", lambda: desk.active_window() == self.window)


if __name__ == "__main__":
    scenario.main()
