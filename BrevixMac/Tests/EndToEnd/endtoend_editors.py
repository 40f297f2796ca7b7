# SPDX-License-Identifier: GPL-3.0-or-later
"""The editors as a user has them: a prompt in a new category from the panel, a skill from a Markdown file, and a draft
that outlives a killed program."""
import os
import pathlib
import signal
import unittest

import desktop_driver as desk
import scenario
import screen_reader

TITLE = "Weekly summary"
TEXT = "Summarise the week for {{reader}} in five lines."
SKILL_NAME = "Release Note Rules"
SKILL = f"# {SKILL_NAME}\n\nWrite for users.\nOne line for each change.\n"
DRAFT = "Half a thought that must not be lost"


class Editors(screen_reader.ScreenReader):
    def open_new(self, entry):
        self.brevix.press_hotkey()
        self.click("New")
        self.click(entry)

    def test_1_a_prompt_in_a_new_category_is_created_in_the_panel_and_inserted(self):
        self.open_new("New Prompt")
        self.text_field("Title")
        desk.type_text(TITLE)
        self.click("New Category")
        desk.wait_for("the name field", lambda: self.text_field("Category name").has(desk.FOCUSED))
        desk.type_text("Reports")
        desk.keys("Return")
        self.wait_for_message('Created category "Reports".')
        self.assertEqual(self.node("Category: Reports").name, "Category: Reports")
        self.click("Prompt Text", is_field=True)
        desk.type_text(TEXT)
        desk.wait_for_text(self.text_field("Preview"), TEXT)
        desk.keys("ctrl+s")
        self.text_field("Search prompts or skills")
        desk.keys("Escape")
        self.brevix.wait_until_closed()

        editor, _ = self.open_window("mousepad", "mousepad")
        field = desk.field(editor.pid)
        prompt = {"title": TITLE, "text": TEXT}
        self.choose(prompt)
        self.fill_and_continue(prompt, {"reader": "the board"})
        desk.wait_for_text(field, TEXT.replace("{{reader}}", "the board"))

    def test_2_a_skill_is_imported_from_a_file_and_inserted(self):
        path = pathlib.Path(os.environ["HOME"]) / "release-notes.md"
        path.write_text(SKILL)
        self.open_new("New Skill")
        window = desk.wait_for("the editor's window", lambda: self.editor_window("New Skill"))
        desk.wait_for("the editor to have the focus", lambda: desk.active_window() == window)
        self.click("Import .txt/.md")
        chooser = desk.wait_for("the file chooser", lambda: self.editor_window("Import Skill"))
        desk.wait_for("the chooser to have the focus", lambda: desk.active_window() == chooser)
        desk.type_text(str(path))
        desk.keys("Return")
        self.wait_for_message("Imported release-notes.md")
        self.assertEqual(self.text_field("Skill Name").text, SKILL_NAME)
        self.assertEqual(self.text_field("Skill Instructions").text, SKILL)
        desk.wait_for("the editor to have the focus again", lambda: desk.active_window() == window)
        desk.keys("ctrl+s")
        desk.wait_for("the window to close", lambda: not self.editor_window("New Skill"))

        editor, _ = self.open_window("mousepad", "mousepad")
        field = desk.field(editor.pid)
        self.choose({"title": SKILL_NAME})
        desk.wait_for_text(field, SKILL)

    def editor_window(self, title):
        found = desk.output("xdotool", "search", "--onlyvisible", "--name", f"^{title}$").split()
        return int(found[-1]) if found else None

    def test_3_a_draft_outlives_a_killed_program(self):
        self.open_new("New Prompt")
        self.text_field("Title")
        desk.type_text(DRAFT)
        drafts = pathlib.Path(os.environ["HOME"]) / ".local/share/brevix-local/drafts"
        desk.wait_for("the draft on disk",
                      lambda: any(DRAFT in each.read_text() for each in drafts.glob("*.json")), 3)
        os.kill(self.brevix.pid, signal.SIGKILL)
        self.brevix.process.wait()
        type(self).start_brevix()
        self.open_new("New Prompt")
        desk.wait_for_text(self.text_field("Title"), DRAFT)
        self.node("Draft restored")
        self.click("Cancel")
        self.text_field("Search prompts or skills")


if __name__ == "__main__":
    scenario.main()
