# SPDX-License-Identifier: GPL-3.0-or-later
"""What the end-to-end tests share: a running Brevix, its library, and targets that are ended with each test."""
import json
import os
import pathlib
import subprocess
import unittest

import desktop_driver as desk

LIBRARY = json.loads(
    (pathlib.Path(__file__).parents[2] / "Sources/BrevixMac/Resources/starter-library.json").read_text())

# A single line with two variables, and several lines with none.
LINE = next(prompt for prompt in LIBRARY["prompts"] if "\n" not in prompt["text"])
LINES = next(prompt for prompt in LIBRARY["prompts"] if "{{" not in prompt["text"] and "\n" in prompt["text"])
SKILL = LIBRARY["skills"][0]

WOMAN = "\U0001f469\u200d\U0001f680"    # one character of three code points, seven UTF-16 units… and 11 bytes
ACUTE = "e\u0301"                        # one character of two code points


def names_of(prompt):
    names = []
    for piece in prompt["text"].split("{{")[1:]:
        name = piece.split("}}")[0]
        if name not in names:
            names.append(name)
    return names


class Scenario(unittest.TestCase):
    """One Brevix for all tests of a class, fresh targets for each."""

    brevix = None
    brevix_arguments = ()
    defaults = {}

    @classmethod
    def setUpClass(cls):
        cls.start_brevix()

    @classmethod
    def start_brevix(cls):
        desk.Brevix.write_defaults(**cls.defaults)
        cls.brevix = desk.Brevix(os.environ["BREVIX"], *cls.brevix_arguments, first_start=True)
        cls.brevix.wait_until_ready()
        desk.wait_for("the library", lambda: cls.is_library_there(), 10)

    @classmethod
    def is_library_there(cls):
        return (pathlib.Path(os.environ["HOME"]) / ".local/share/brevix/cloud").exists()

    @classmethod
    def tearDownClass(cls):
        code = cls.brevix.stop()
        log = cls.brevix.log_path.read_text()
        if code != 0 or log.strip():
            raise AssertionError(f"Brevix ended with {code} and said:\n{log}")

    def setUp(self):
        self.programs = []

    def tearDown(self):
        if any(error for _, error in getattr(self._outcome, "errors", []) if error):
            folder = pathlib.Path(os.environ.get("BREVIX_FAILURES", "/tmp")) if "BREVIX_FAILURES" in os.environ else None
            if folder:
                folder.mkdir(parents=True, exist_ok=True)
                desk.screenshot(folder / f"{self.id()}.png")
        if desk.panel():
            desk.keys("Escape")
            desk.keys("Escape")
        for program in reversed(self.programs):
            program.stop()

    def start(self, *command, **options):
        program = desk.Program(*command, env=desk.without_memory(), **options)
        self.programs.append(program)
        return program

    def open_window(self, wm_class, *command, dx=0.5, dy=0.6, **options):
        """Starts a program, waits for its window and clicks into it."""
        known = set(desk.windows(wm_class))
        program = self.start(*command, **options)
        window = desk.wait_for(f"a window of {wm_class}",
                               lambda: [each for each in desk.windows(wm_class) if each not in known], 20)[-1]
        desk.activate(window)
        desk.click_into(window, dx, dy)
        return program, window

    # Brevix, by keyboard

    def choose(self, item):
        """Hotkey, search, Return."""
        self.find(item)
        desk.keys("Return")

    def find(self, item):
        """Hotkey and search: the item is the selected one then."""
        self.brevix.press_hotkey()
        desk.type_text(item["title"])
        desk.wait_for(f"{item['title']} in the picker", lambda: self.selected_title() == item["title"], 5, 0.03)

    def selected_title(self):
        root = desk.application(self.brevix.pid)
        found = root and desk.find(root, lambda node: node.role == "list item" and node.has(desk.SELECTED))
        return found.name.split("\n")[0].split(",")[0] if found else None

    def picker_says(self):
        texts = []

        def collect(node):
            texts.append(node.name)
            return False
        root = desk.application(self.brevix.pid)
        if root:
            desk.find(root, collect)
        return "\n".join(texts)

    def wait_for_message(self, message):
        desk.wait_for(f"the message {message!r}", lambda: message in self.picker_says(), 8, 0.05)

    def fill_and_continue(self, prompt, values):
        desk.wait_for("the form", lambda: "Fill Variables" in self.picker_says(), 5, 0.03)
        for index, name in enumerate(names_of(prompt)):
            if index:
                desk.keys("Tab")
            self.enter(values[name])
        desk.keys("Return")

    def enter(self, text):
        """Enters text as a user can: typed where keys have it, pasted where they do not."""
        if text.isascii():
            desk.type_text(text)
            return
        desk.copy_text(text)
        desk.keys("ctrl+v")

    def insert_line(self, **values):
        """Inserts the one-line prompt with values; gives the text that must arrive."""
        values = dict(zip(names_of(LINE), values.values() or ["ten", "bread"]))
        self.choose(LINE)
        self.fill_and_continue(LINE, values)
        return desk.rendered(LINE["text"], values)

    def insert_lines(self):
        self.choose(LINES)
        return LINES["text"]

    # Clipboards

    def own_rich_clipboard(self):
        """A clipboard of several types by another program; gives its content."""
        owner = self.start(os.environ["CLIPBOARD_OWNER"], stdout=subprocess.PIPE)
        owner.process.stdout.readline()
        desk.wait_for("the owner's types", lambda: "application/x-kept" in desk.clipboard_types())
        return owner, desk.clipboard()

    def assert_clipboard_is(self, expected):
        desk.wait_for("the clipboard to be as it was", lambda: desk.clipboard() == expected, 12)


def main():
    unittest.main(verbosity=2)
