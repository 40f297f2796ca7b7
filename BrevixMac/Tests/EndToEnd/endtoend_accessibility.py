# SPDX-License-Identifier: GPL-3.0-or-later
"""Every screen as a screen reader is told of it over the accessibility bus: what there is, in which state, where Tab leads,
and what is announced."""
import os
import subprocess

import desktop_driver as desk
import screen_reader
from scenario import LIBRARY, LINES

PICKER, PALETTE, SETTINGS, NEW_PROMPT, NEW_SKILL = "Brevix", "Prompt Picker", "Brevix Settings", "New Prompt", "New Skill"
ITEMS = len(LIBRARY["prompts"]) + len(LIBRARY["skills"])
LINE_WITH_ONE_VARIABLE = next(prompt for prompt in LIBRARY["prompts"] if prompt["text"].count("{{") == 1)


def lines(text):
    return [line.strip() for line in text.strip().split("\n")]


SETTINGS_CARDS = lines("""
    panel: Account
    label: Account
    label: Signed in
    label: Local Library · local@localhost
    push button: Sign Out
    panel: General
    label: General
    label: Open at login
    label: Start Brevix automatically after you sign in to your Mac.
    check box: Open at login
    label: Menu bar icon
    label: Keep Brevix visible in the macOS menu bar.
    check box: Menu bar icon, checked
    panel: Shortcut
    label: Shortcut
    label: Global shortcut
    label: Default is ⇧⌘P
    label: ⌘ is the Super key, ⌥ the Alt key.
    push button: Record Shortcut
    push button: Reset
    panel: Insertion
    label: Insertion
    label: Preferred method
    label: Choose how Brevix places text into the focused field.
    radio button: Hybrid, checked
    radio button: Accessibility
    radio button: Clipboard Paste
    radio button: Copy Only
    panel: System Access
    label: System Access
    label: Accessibility
    label: Required to read the focused text field and insert directly.
    label: Granted
    push button: Open Settings
    label: Keyboard event posting
    label: Required for clipboard paste fallback.
    label: Granted
    push button: Open Settings
    label: Permission status
    push button: Re-check
    panel: Updates
    label: Updates
    label: Automatic updates
    label: Brevix checks for updates in the background.
    label: This build names no update feed. Your distribution's updates apply.
    push button: Check Now, disabled
    panel: Advanced
    label: Advanced
    label: Bundle ID
    label: Bundle ID: app.brevix.Brevix
    label: Firebase Project
    label: Firebase Project: brevix-local
    label: Logical Library App ID
    label: Logical Library App ID: brevix-app-local
    label: Sync
    label: Sync: Updated TIME
    label: Focused App
    label: Focused App: Mousepad
    label: Focused Role
    label: Focused Role: AXTextArea
    label: Diagnostics
    push button: Copy Diagnostics
    push button: Show
    """)
SETTINGS_ORDER = ["Sign Out", "Open at login", "Menu bar icon", "Record Shortcut", "Reset", "Hybrid", "Open Settings",
                  "Open Settings", "Re-check", "Copy Diagnostics", "Show"]

PROMPT_EDITOR = lines("""
    frame: Brevix
    push button: Back
    label: New Prompt
    label: Create and save a prompt without leaving the menu bar.
    push button: Open in Window
    label: Title
    text: Title, single line, editable
    label: Category
    push button: Category: Writing
    push button: New Category
    label: Prompt Text
    push button: Optimize
    text: Prompt Text, multi-line, editable
    label: Use {{variable}} to create dynamic fields.
    text: Variable name, single line, editable
    push button: Insert, disabled
    label: Preview
    text: Preview, multi-line, read-only
    push button: Cancel
    push button: Save Prompt, disabled
    """)
NEW_CATEGORY = lines("""
    panel: New Category
    text: Category name, single line, editable
    panel: Category color
    radio button: Purple, checked
    radio button: Blue
    radio button: Green
    radio button: Pink
    radio button: Orange
    radio button: Red
    push button: Create, disabled
    """)
PROMPT_WINDOW = lines("""
    frame: New Prompt
    label: New Prompt
    label: Create a reusable Brevix prompt with variables, categories, and AI optimization.
    label: Title
    text: Title, single line, editable
    label: Category
    push button: Category: Writing
    push button: New Category
    label: Prompt Text
    push button: Optimize with AI
    text: Prompt Text, multi-line, editable
    label: Variables
    label: Use {{variable}} in the prompt text to create dynamic fields.
    text: Variable name, single line, editable
    push button: Insert Variable, disabled
    label: Preview
    text: Preview, multi-line, read-only
    push button: Cancel
    push button: Create Prompt, disabled
    """)
SKILL_EDITOR = lines("""
    frame: New Skill
    label: New Skill
    label: Save reusable instructions for Claude, ChatGPT, Codex, Antigravity, or any focused text field.
    label: Skill Name
    text: Skill Name, single line, editable
    label: Skill Instructions
    push button: Import .txt/.md
    label: Paste a skill, or import a plain text / Markdown file.
    text: Skill Instructions, multi-line, editable
    label: 0 words • 0 lines
    label: Preview
    label: Untitled
    label: Skill
    text: Preview, multi-line, read-only
    panel: V3 Scope
    label: V3 Scope
    label: Skills are create-only in this native Mac build. They sync to your user library and can be copied or inserted from the menu bar picker.
    push button: Cancel
    push button: Create Skill, disabled
    """)


class Accessibility(screen_reader.ScreenReader):
    maxDiff = None

    def setUp(self):
        super().setUp()
        self.open_window("Mousepad", "mousepad", "--disable-server")

    def tearDown(self):
        for _ in range(4):
            if not self.windows():
                break
            desk.keys("Escape")
            desk.wait_for("the keys to be taken", lambda: True)
        super().tearDown()

    def wait_for_dump(self, window, expected):
        """Waits until exactly this is read out of a window."""
        try:
            desk.wait_for(f"the expected tree of {window}", lambda: self.dump(window) == expected, 8, 0.05)
        except desk.Failure:
            self.assertEqual(self.dump(window), expected)

    def assert_in_order(self, expected, found):
        """All of this is there, in this order; what the session's examination adds stands between."""
        rest = iter(found)
        self.assertEqual([line for line in expected if line not in rest], [], found)

    def wait_for_focus(self, name):
        desk.wait_for(f"{name!r} to have the focus", lambda: self.focused() == name, 8, 0.05)

    def run_command(self, command, window):
        self.assertEqual(subprocess.run([os.environ["BREVIX"], command], timeout=20).returncode, 0)
        desk.wait_for(f"the window {window}", lambda: self.tree(window), 8, 0.05)

    def choose_in_plus_menu(self, entry):
        self.brevix.press_hotkey()
        self.tab_to("New")
        desk.keys("space")
        self.node(entry)
        self.tab_to(entry)
        desk.keys("Return")

    def close(self, window):
        desk.keys("Escape")
        desk.wait_for(f"{window} to close", lambda: self.tree(window) is None, 5, 0.05)

    # The quick picker

    def test_the_quick_picker(self):
        self.brevix.press_hotkey()
        self.wait_for_focus("Search prompts or skills")
        found = self.dump(PICKER)
        for expected in ("frame: Brevix", "label: local@localhost", "push button: Settings",
                         "panel: Ready to insert into Mousepad", "text: Search prompts or skills, single line, editable",
                         "list: Prompts and skills", "push button: Insert Prompt", "push button: Copy", "push button: Share"):
            self.assertIn(expected, found)
        self.assert_named(self.tree(PICKER))
        self.assertEqual(self.tab_order(),
                         ["Search prompts or skills", "Insert Prompt", "Copy", "Share", "New", "View Library", "Settings...",
                          "Sign Out", "Quit", "Settings"])

    def test_moving_the_selection_is_announced_while_the_focus_stays_in_the_search_field(self):
        self.brevix.press_hotkey()
        self.wait_for_focus("Search prompts or skills")
        heard = screen_reader.Announcements(self.brevix.pid)
        desk.type_text(LINES["title"])
        desk.wait_for("the match", lambda: self.selected_title() == LINES["title"], 5, 0.03)
        desk.wait_for("the row to be announced",
                      lambda: any(name.startswith(LINES["title"]) for name in heard.named("StateChanged:selected")), 5, 0.05)
        self.assertEqual(self.focused(), "Search prompts or skills")
        desk.keys("ctrl+Return")
        desk.wait_for("the copy to be announced",
                      lambda: "Prompt copied to clipboard." in heard.named("Announcement", "StateChanged:showing"), 5, 0.05)

    def test_the_plus_menu_and_the_short_form(self):
        self.brevix.press_hotkey()
        self.tab_to("New")
        desk.keys("space")
        self.node("New Prompt")
        found = self.dump(PICKER)
        start = found.index("popup menu: New")
        self.assertEqual(found[start + 1:], ["push button: New Prompt", "push button: New Skill", "push button: Open Palette"])
        desk.keys("Escape")
        self.wait_for_focus("New")
        self.tab_to("Search prompts or skills")
        desk.type_text(LINE_WITH_ONE_VARIABLE["title"])
        desk.wait_for("the match", lambda: self.selected_title() == LINE_WITH_ONE_VARIABLE["title"], 5, 0.03)
        desk.keys("Return")
        self.node("Fill Variables")
        name = LINE_WITH_ONE_VARIABLE["text"].split("{{")[1].split("}}")[0]
        self.wait_for_focus(name)
        found = self.dump(PICKER)
        for expected in (f"text: {name}, single line, editable", "push button: Back", "push button: Continue",
                         "text: Search prompts or skills, disabled, single line, editable"):
            self.assertIn(expected, found)
        desk.keys("Escape")

    # The library

    def test_the_library(self):
        self.brevix.press_hotkey()
        self.tab_to("View Library")
        desk.keys("Return")
        self.wait_for_focus("Search All Library Items")
        found = self.dump(PICKER)
        for expected in ("frame: Brevix", "push button: Back", "label: Library", "push button: New Prompt",
                         "push button: New Skill", "list: Filters", f"list item: All Library Items, {ITEMS} items, selected",
                         f"list item: Skills, {len(LIBRARY['skills'])} items", "list item: Categories",
                         "text: Search All Library Items, single line, editable", "list: Library items",
                         f"label: Full library · {ITEMS} items"):
            self.assertIn(expected, found)
        self.assert_named(self.tree(PICKER))
        self.assertEqual(self.tab_order(),
                         ["Search All Library Items", "Insert", "Copy", "Share", "Back", "New Prompt", "New Skill", "Filters"])
        desk.keys("Escape")
        self.wait_for_focus("Search prompts or skills")

    # Settings

    def test_the_settings_window(self):
        self.run_command("settings", SETTINGS)
        self.wait_for_focus("Sign Out")
        self.assert_in_order([f"frame: {SETTINGS}", *SETTINGS_CARDS], self.dump(SETTINGS))
        self.assert_named(self.tree(SETTINGS))
        self.assert_in_order(SETTINGS_ORDER, self.tab_order())
        self.tab_to("Menu bar icon")
        desk.keys("space")
        desk.wait_for("the switch to say so", lambda: "check box: Menu bar icon" in self.dump(SETTINGS), 5, 0.05)
        desk.keys("space")
        desk.wait_for("the switch to say so", lambda: "check box: Menu bar icon, checked" in self.dump(SETTINGS), 5, 0.05)
        self.tab_to("Show")
        desk.keys("space")
        desk.wait_for("the diagnostics", lambda: any(line.startswith("label: Diagnostics") and line != "label: Diagnostics"
                                                     or line == "push button: Hide" for line in self.dump(SETTINGS)), 5, 0.05)
        self.close(SETTINGS)

    def test_the_settings_in_the_panel(self):
        self.brevix.press_hotkey()
        self.tab_to("Settings")
        desk.keys("Return")
        self.wait_for_focus("Back")
        self.assert_in_order([f"frame: {PICKER}", "push button: Back", "label: Settings",
                              "label: Return to the prompt picker when you're done.", *SETTINGS_CARDS], self.dump(PICKER))
        self.assert_in_order(["Back", *SETTINGS_ORDER], self.tab_order())
        desk.keys("Escape")
        self.wait_for_focus("Search prompts or skills")

    # The editors

    def test_the_prompt_editor_in_the_panel_and_in_a_window(self):
        self.choose_in_plus_menu("New Prompt")
        self.wait_for_focus("Title")
        self.wait_for_dump(PICKER, PROMPT_EDITOR)
        self.assertEqual(self.tab_order(),
                         ["Title", "Category: Writing", "New Category", "Optimize", "Prompt Text", "Variable name", "Preview",
                          "Cancel", "Back", "Open in Window"])
        self.tab_to("New Category")
        desk.keys("space")
        self.wait_for_focus("Category name")
        after = PROMPT_EDITOR.index("push button: New Category")
        self.wait_for_dump(PICKER, [*PROMPT_EDITOR[:after], "push button: Hide", *NEW_CATEGORY, *PROMPT_EDITOR[after + 1:]])
        self.assertEqual(self.press_and_wait("Tab").name, "Purple")
        self.assertEqual(self.press_and_wait("Right").name, "Blue")
        desk.wait_for("the colour to be chosen", lambda: "radio button: Blue, checked" in self.dump(PICKER), 5, 0.05)
        self.tab_to("Title")
        desk.type_text("From the panel")
        self.tab_to("Prompt Text")
        desk.type_text("For {{reader}}")
        desk.wait_for("the prompt to be complete", lambda: "push button: Save Prompt" in self.dump(PICKER), 5, 0.05)
        self.tab_to("Open in Window")
        desk.keys("Return")
        self.wait_for_focus("Title")
        desk.wait_for_text(self.text_field("Title"), "From the panel")
        desk.wait_for_text(self.text_field("Prompt Text"), "For {{reader}}")
        self.assertIsNone(self.tree(PICKER))
        desk.keys("Escape")    # which empties it
        desk.wait_for("the window to close", lambda: self.tree(NEW_PROMPT) is None, 5, 0.05)

    def test_the_prompt_window(self):
        self.choose_in_plus_menu("New Prompt")
        self.wait_for_focus("Title")
        self.tab_to("Open in Window")
        desk.keys("Return")
        desk.wait_for("the window", lambda: self.tree(NEW_PROMPT), 8, 0.05)
        self.wait_for_focus("Title")
        found = [line for line in self.dump(NEW_PROMPT) if "discarded" not in line.lower()]
        for expected in PROMPT_WINDOW:
            self.assertIn(expected, found)
        order = self.tab_order()
        self.assertEqual([name for name in order if name in ("Title", "Category: Writing", "New Category", "Prompt Text",
                                                             "Optimize with AI", "Variable name", "Preview", "Cancel")],
                         ["Title", "Category: Writing", "New Category", "Optimize with AI", "Prompt Text", "Variable name",
                          "Preview", "Cancel"])
        self.close(NEW_PROMPT)

    def test_the_skill_editor(self):
        self.choose_in_plus_menu("New Skill")
        self.wait_for_focus("Skill Name")
        self.wait_for_dump(NEW_SKILL, SKILL_EDITOR)
        self.assertEqual(self.tab_order(), ["Skill Name", "Import .txt/.md", "Skill Instructions", "Preview", "Cancel"])
        desk.type_text("Reviewer")
        self.tab_to("Skill Instructions")
        desk.type_text("Look twice.")
        desk.wait_for("the skill to be complete", lambda: "push button: Create Skill" in self.dump(NEW_SKILL), 5, 0.05)
        found = self.dump(NEW_SKILL)
        self.assertIn("label: 2 words • 1 lines", found)
        self.assertIn("label: Reviewer", found)
        self.close(NEW_SKILL)

    # The palette

    def test_the_palette(self):
        self.run_command("palette", PALETTE)
        self.wait_for_focus("Search prompts")
        found = self.dump(PALETTE)
        for expected in ("frame: Prompt Picker", "label: Prompt Picker", "label: Mousepad",
                         "text: Search prompts, single line, editable", "list: Categories",
                         f"list item: All Prompts, {len(LIBRARY['prompts'])} items, selected", "list: Prompts",
                         "text: Preview, multi-line, read-only", "push button: Browse Library", "push button: Close"):
            self.assertIn(expected, found)
        self.assert_named(self.tree(PALETTE))
        self.assertEqual(self.tab_order(),
                         ["Search prompts", "Categories", "Insert", "Copy", "Share", "Preview", "Browse Library", "Close",
                          "Share", "Copy", "Insert"])
        self.tab_to("Categories")
        desk.keys("Down")
        desk.wait_for("the category's button", lambda: "push button: Share Category" in self.dump(PALETTE), 5, 0.05)
        self.close(PALETTE)


if __name__ == "__main__":
    import scenario
    scenario.main()
