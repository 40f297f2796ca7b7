# SPDX-License-Identifier: GPL-3.0-or-later
"""The main job on a virtual desktop: from the hotkey to the text in the field.

usage: demo.py BREVIX OUTPUT_FOLDER

Prints every step with its time, leaves numbered screenshots, and ends with 1 when the text is not where it belongs.
"""
import json
import pathlib
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).parent))
import desktop_driver as desk  # noqa: E402

LIBRARY = pathlib.Path(__file__).parents[2] / "Sources/BrevixMac/Resources/starter-library.json"
SEARCH = "follow"
VALUES = ["Maria", "the pricing page", "a call on Friday?", "Ann"]
BEFORE = "Notes for today\n\n"
KEPT = "Something I copied earlier, with an emoji \U0001f331"


class Demo:
    def __init__(self, folder):
        self.folder = folder
        self.folder.mkdir(parents=True, exist_ok=True)
        for old in self.folder.glob("*.png"):
            old.unlink()
        self.step_start = time.monotonic()
        self.count = 0

    def step(self, title, picture=None):
        elapsed = (time.monotonic() - self.step_start) * 1000
        print(f"  {elapsed:7.0f} ms  {title}", flush=True)
        if picture:
            self.count += 1
            desk.screenshot(self.folder / f"{self.count:02d}-{picture}.png")
        self.step_start = time.monotonic()


def chosen_prompt():
    """The prompt that the search is expected to find first: its title begins with the search text."""
    prompts = json.loads(LIBRARY.read_text())["prompts"]
    return next(prompt for prompt in prompts if prompt["title"].lower().startswith(SEARCH))


def variable_names(text):
    names = []
    for piece in text.split("{{")[1:]:
        name = piece.split("}}")[0].strip()
        if name not in names:
            names.append(name)
    return names


def perform(demo, binary, programs):
    prompt = chosen_prompt()
    names = variable_names(prompt["text"])
    values = dict(zip(names, VALUES + ["value"] * len(names)))

    brevix = desk.Brevix(binary, first_start=True)
    programs.append(brevix)
    brevix.wait_until_ready()
    demo.step("Brevix runs with its local library")
    desk.wait_for("the picker of a first start", desk.panel)
    demo.step("the first start shows the picker", "first-start")

    editor = desk.Program("mousepad", "--disable-server")
    programs.append(editor)
    window = desk.wait_for_window("mousepad")
    desk.activate(window)
    desk.click_into(window)
    brevix.wait_until_closed()
    desk.type_text(BEFORE.replace("\n", "\r"))
    field = desk.field(editor.pid)
    desk.wait_for_text(field, BEFORE)
    demo.step("clicked into the editor and typed two lines", "editor")
    desk.copy_text(KEPT)
    before = desk.clipboard()
    demo.step(f"copied something: {len(before)} types on the clipboard")

    brevix.press_hotkey()
    demo.step("pressed the hotkey: the picker has the focus", "picker")
    desk.type_text(SEARCH)
    time_out = 3
    desk.wait_for("the search text in the picker", lambda: SEARCH in picker_texts(brevix.pid), time_out, 0.05)
    demo.step(f"searched for \"{SEARCH}\"", "search")
    desk.keys("Return")
    if names:
        desk.wait_for("the form", lambda: "Fill Variables" in picker_texts(brevix.pid), time_out, 0.05)
        for index, name in enumerate(names):
            if index:
                desk.keys("Tab")
            desk.type_text(values[name])
        demo.step(f"filled {len(names)} variables", "variables")
        desk.keys("Return")
    desk.wait_for_text(field, BEFORE + desk.rendered(prompt["text"], values))
    demo.step("pressed Return: an independent reader finds exactly the rendered text in the editor")
    brevix.wait_until_closed()
    desk.wait_for("the focus to be back in the editor", lambda: desk.active_window() == window)
    demo.step("the picker is gone and the editor has the focus", "inserted")
    after = desk.clipboard()
    if after != before:
        raise desk.Failure(f"the clipboard changed from {before} to {after}")
    demo.step("the clipboard is as it was")
    paste_into_terminal(demo, brevix, programs, before)


def paste_into_terminal(demo, brevix, programs, before):
    """The same into a program without accessibility, where only a paste can work."""
    received = demo.folder / "terminal.txt"
    received.unlink(missing_ok=True)
    terminal = desk.Program("xterm", "-e", "sh", "-c", f"cat > '{received.resolve()}'")
    programs.append(terminal)
    window = desk.wait_for_window("xterm")
    desk.activate(window)
    desk.click_into(window)
    demo.step("started a terminal, which accessibility cannot reach")
    brevix.press_hotkey()
    skill = json.loads(LIBRARY.read_text())["skills"][0]
    desk.type_text(skill["title"])
    desk.wait_for("the search text", lambda: skill["title"] in picker_texts(brevix.pid), 3, 0.05)
    demo.step(f"searched for \"{skill['title']}\"", "search-skill")
    desk.keys("Return")
    brevix.wait_until_closed()
    desk.wait_for("the focus to be back in the terminal", lambda: desk.active_window() == window)
    desk.keys("Return", "ctrl+d")
    desk.wait_for("the pasted text in the terminal",
                  lambda: received.exists() and received.read_text().rstrip("\n") == skill["text"].rstrip("\n"))
    demo.step("pasted into the terminal: the program in it received exactly the text", "terminal")
    desk.wait_for("the clipboard to be as it was", lambda: desk.clipboard() == before, 10)
    demo.step("the clipboard is as it was")


def picker_texts(pid):
    """Everything the picker says to a screen reader."""
    root = desk.application(pid)
    texts = []

    def collect(node):
        texts.append(node.name)
        if node.is_text():
            texts.append(node.text)
        return False
    if root is not None:
        desk.find(root, collect)
    return "\n".join(texts)


def main():
    binary, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    demo = Demo(folder)
    programs = []
    print("The main job on a virtual desktop:")
    try:
        perform(demo, binary, programs)
    except (desk.Failure, OSError) as problem:
        desk.screenshot(folder / "failure.png")
        print(f"FAILED: {problem}", file=sys.stderr)
        return 1
    finally:
        for program in reversed(programs):
            program.stop()
    print(f"Done. Screenshots are in {folder}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
