# SPDX-License-Identifier: GPL-3.0-or-later
"""The library, the palette and sharing, by keyboard, as the accessibility bus tells them."""
import os
import subprocess
import tempfile

import desktop_driver as desk
import scenario
import screen_reader
from scenario import LIBRARY, LINES

CONTROLS = ("push button", "text", "list", "list item", "label")
PALETTE = "Prompt Picker"


class ThePanel(screen_reader.ScreenReader):
    def setUp(self):
        super().setUp()
        _, self.window = self.open_window("Mousepad", "mousepad", "--disable-server")
        self.field = desk.field(self.programs[-1].pid)

    def tearDown(self):
        for _ in range(3):
            if desk.panel():
                desk.keys("Escape")
        super().tearDown()

    def lines(self, window_name):
        tree = desk.wait_for(f"the window {window_name}", lambda: self.tree(window_name))
        return [f"{role}: {name}" for role, name, _ in tree if role in CONTROLS]

    def open_library(self):
        self.brevix.press_hotkey()
        self.tab_to("View Library")
        desk.keys("Return")
        desk.wait_for("the library", lambda: "list: Filters" in self.lines("Brevix"), 5, 0.05)
        desk.keys("ctrl+a", "BackSpace")    # its search outlives the panel
        desk.wait_for("the whole library",
                      lambda: any(line.startswith("label: Full library") for line in self.lines("Brevix")), 5, 0.05)

    def open_palette(self):
        self.assertEqual(subprocess.run([os.environ["BREVIX"], "palette"], timeout=20).returncode, 0)
        return desk.wait_for("the palette", lambda: self.tree(PALETTE), 8, 0.05)

    def test_the_library_tells_its_filters_and_items(self):
        self.open_library()
        lines = self.lines("Brevix")
        prompts, skills = len(LIBRARY["prompts"]), len(LIBRARY["skills"])
        for expected in ("push button: Back", "push button: New Prompt", "push button: New Skill", "list: Filters",
                         f"list item: All Library Items, {prompts + skills} items",
                         f"list item: Prompts, {prompts} items", "text: Search All Library Items",
                         "list: Library items", "push button: Insert", "push button: Copy", "push button: Share",
                         f"label: Full library \u00b7 {prompts + skills} items"):
            self.assertIn(expected, lines)
        tree = self.tree("Brevix")
        self.assert_named(tree)
        selected = [name for role, name, node in tree if role == "list item" and node.has(desk.SELECTED)]
        self.assertEqual(len(selected), 2)    # the filter and the item
        self.assertTrue(selected[0].startswith("All Library Items"))
        self.assertEqual(self.focused(), "Search All Library Items")

    def test_an_item_of_the_library_is_inserted_by_keyboard(self):
        self.open_library()
        desk.type_text(LINES["title"])
        desk.wait_for("the item", lambda: any(line.startswith(f"list item: {LINES['title']}")
                                              for line in self.lines("Brevix")), 5, 0.05)
        desk.keys("Return")
        desk.wait_for_text(self.field, LINES["text"])
        self.brevix.wait_until_closed()
        self.brevix.press_hotkey()    # it opens where it was left
        desk.wait_for("the library", lambda: "list: Filters" in self.lines("Brevix"), 5, 0.05)
        desk.keys("Escape")
        desk.wait_for("the quick picker", lambda: "push button: View Library" in self.lines("Brevix"), 5, 0.05)

    def press_tray_icon(self):
        icon = desk.wait_for("the icon in the tray", desk.tray_icon)
        x, y, width, height = desk.window_geometry(icon)
        desk.click(x + width // 2, y + height // 2)

    def test_opened_from_the_tray_it_leaves_the_other_program_in_front_until_it_is_clicked(self):
        self.press_tray_icon()
        panel = desk.wait_for("the picker", desk.panel)
        desk.wait_for("the captured field", lambda: "Ready to insert into Mousepad" in self.picker_says(), 5, 0.05)
        self.assertEqual(desk.active_window(), self.window)
        desk.type_text("into mousepad")
        desk.wait_for_text(self.field, "into mousepad")
        self.assertEqual(desk.active_window(), self.window)

        search = desk.find(desk.application(self.brevix.pid),
                           lambda node: node.name.startswith("Search prompts") and node.has(screen_reader.SHOWING))
        search.press()
        desk.wait_for("the picker to have the focus", lambda: desk.active_window() == panel)
        desk.type_text(LINES["title"])
        desk.wait_for("the prompt", lambda: self.selected_title() == LINES["title"], 5, 0.03)
        self.assertEqual(desk.text_of(self.field), "into mousepad")

        self.press_tray_icon()
        self.brevix.wait_until_closed()
        desk.wait_for("the focus to be back", lambda: desk.active_window() == self.window)

    def test_the_palette_opens_from_the_command_line_over_the_captured_field(self):
        tree = self.open_palette()
        lines = self.lines(PALETTE)
        for expected in ("label: Prompt Picker", "text: Search prompts", "list: Categories",
                         f"list item: All Prompts, {len(LIBRARY['prompts'])} items", "list: Prompts",
                         "push button: Browse Library", "push button: Copy", "push button: Insert",
                         "push button: Share", "push button: Close"):
            self.assertIn(expected, lines)
        self.assertNotIn("label: No focused app captured", lines)
        self.assert_named(tree)
        desk.wait_for("the focus", lambda: self.focused() == "Search prompts", 5, 0.05)
        desk.type_text(LINES["title"])
        desk.wait_for("the match", lambda: "list item: Matches" in self.lines(PALETTE), 5, 0.05)
        desk.keys("Return")
        desk.wait_for_text(self.field, LINES["text"])
        desk.wait_for("the palette to close", lambda: self.tree(PALETTE) is None, 5, 0.05)
        desk.wait_for("the focus to be back", lambda: desk.active_window() == self.window)

    def test_browsing_the_library_from_the_palette(self):
        self.open_palette()
        desk.wait_for("the focus", lambda: self.focused() == "Search prompts", 5, 0.05)
        self.tab_to("Browse Library")
        desk.keys("Return")
        desk.wait_for("the library", lambda: "list: Filters" in self.lines("Brevix"), 5, 0.05)
        self.assertIsNone(self.tree(PALETTE))
        desk.keys("Escape", "Escape")
        self.brevix.wait_until_closed()

    def test_a_shared_prompt_can_be_read_in_a_browser(self):
        self.brevix.press_hotkey()
        desk.type_text(LINES["title"])
        desk.wait_for("the prompt", lambda: self.selected_title() == LINES["title"], 5, 0.03)
        self.tab_to("Share")
        desk.keys("Return")
        self.wait_for_message("Link copied to clipboard")
        link = desk.clipboard()["UTF8_STRING"].decode()
        self.assertRegex(link, r"^http://127\.0\.0\.1:\d+/public\?promptId=\S+$")
        page = self.page_at(link)
        for piece in [LINES["title"], *LINES["text"].split("\n")]:
            self.assertIn(piece.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;"), page)
        desk.wait_for("the banner to go by itself",
                      lambda: "push button: Dismiss" not in self.lines("Brevix"), 9, 0.1)

    @staticmethod
    def page_at(link):
        """The document that a browser makes of an address."""
        sandbox = ["--no-sandbox"] if os.geteuid() == 0 else []
        folder = tempfile.mkdtemp()
        return desk.output("chromium", "--headless", "--disable-gpu", "--no-first-run", *sandbox,
                           f"--user-data-dir={folder}", "--dump-dom", link, timeout=60).decode()


if __name__ == "__main__":
    scenario.main()
