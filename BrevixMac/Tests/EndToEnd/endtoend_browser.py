# SPDX-License-Identifier: GPL-3.0-or-later
"""Inserts into the fields of a page in Chromium and reads them back."""
import os
import pathlib
import tempfile
import urllib.parse

import desktop_driver as desk
import scenario
from scenario import ACUTE, LINES, WOMAN

PAGE = """<!doctype html><meta charset="utf-8"><title>Fields</title>
<style>body{{margin:0}} #f{{position:fixed;inset:0;width:100%;height:100%;box-sizing:border-box;font:20px sans-serif}}</style>
{field}
<script>
const field = document.getElementById("f");
field.focus();
field.oninput = () => {{ document.title = "=" + encodeURIComponent(field.value ?? field.innerText); }};
{script}
</script>"""

# An editor that keeps its text itself: the field only catches what the user does, and is emptied at each turn.
OWN_ENGINE = """
let model = "";
const show = added => { model += added; field.value = ""; document.title = "=" + encodeURIComponent(model); };
field.addEventListener("paste", event => { event.preventDefault(); show(event.clipboardData.getData("text/plain")); });
field.oninput = () => show(field.value);
"""

# The same drawn by the page: what looks like a field is a picture, and the keys go to a field of one pixel.
DRAWN = OWN_ENGINE + """
const canvas = document.getElementById("c");
document.addEventListener("click", () => field.focus());
const draw = () => {
  const pen = canvas.getContext("2d");
  pen.clearRect(0, 0, canvas.width, canvas.height);
  pen.font = "18px sans-serif";
  model.split("\\n").forEach((line, number) => pen.fillText(line, 10, 30 + 24 * number));
  requestAnimationFrame(draw);
};
draw();
"""

FIELDS = {
    "input": '<input id="f" value="">',
    "multi-line": '<textarea id="f" rows="12"></textarea>',
    "rich": '<div id="f" contenteditable></div>',
    "drawn": '<canvas id="c" width="800" height="500"></canvas><textarea id="f" style="width:1px;height:1px;'
             'padding:0;border:0;opacity:0"></textarea>',
    "password": '<input id="f" type="password">',
}

FLAGS = ["--no-first-run", "--disable-gpu", "--disable-quic", "--disable-background-networking",
         "--disable-component-update", "--disable-sync", "--password-store=basic", "--disable-dev-shm-usage",
         "--window-size=900,700", "--window-position=40,60"]


def is_page_field(node):
    """The field of the page, not the browser's own address field."""
    return (node.is_text() and node.has(desk.FOCUSABLE) and (node.has(desk.EDITABLE) or node.role == "password text")
            and node.attributes.get("id") == "f")


def value_in(window):
    """What the page itself says its field holds: it puts that into its title."""
    title = desk.output("xdotool", "getwindowname", str(window)).decode().strip()
    return urllib.parse.unquote(title[1:]) if title.startswith("=") else ""


def wait_for_value(window, expected):
    try:
        desk.wait_for("the value", lambda: value_in(window) == expected, 8)
    except desk.Failure:
        raise desk.Failure(f"the field holds {value_in(window)!r}, not {expected!r}") from None


class InsertionIntoABrowser(scenario.Scenario):
    extra_flags = ["--force-renderer-accessibility"]

    def open_page(self, kind, script=""):
        folder = pathlib.Path(tempfile.mkdtemp())
        page = folder / "page.html"
        page.write_text(PAGE.format(field=FIELDS[kind], script=script))
        sandbox = ["--no-sandbox"] if os.geteuid() == 0 else []
        program, window = self.open_window("chromium", "chromium", *FLAGS, *self.extra_flags, *sandbox,
                                           f"--user-data-dir={folder}/profile", f"--app=file://{page}", dy=0.9)
        desk.field(program.pid, is_page_field, 30)
        self.click_until_focused(program, window)
        return program, window

    @staticmethod
    def click_until_focused(program, window):
        """A browser that has just drawn its page may drop a click; its user clicks again."""
        def is_focused():
            field = desk.find(desk.application(program.pid), is_page_field)
            return field and field.has(desk.FOCUSED)
        for attempt in range(5):
            # The field fills the page, because bars that the browser shows above it come and go.
            desk.click_into(window, 0.5, 0.6)
            try:
                return desk.wait_for("the field to have the focus", is_focused, 3)
            except desk.Failure:
                if attempt == 4:
                    raise

    def test_text_lands_in_an_input_in_the_middle_of_text(self):
        _, window = self.open_page("input")
        desk.type_text("ab")
        wait_for_value(window, "ab")
        desk.keys("Left")
        _, content = self.own_rich_clipboard()
        expected = self.insert_line(count="seven", subject="bread")
        wait_for_value(window, "a" + expected + "b")
        self.assert_clipboard_is(content)

    def test_text_lands_in_a_multi_line_field_with_emoji(self):
        _, window = self.open_page("multi-line")
        expected = self.insert_line(count=WOMAN, subject="caf" + ACUTE)
        wait_for_value(window, expected)

    def test_text_replaces_the_selection_in_a_multi_line_field(self):
        _, window = self.open_page("multi-line")
        desk.type_text("keep replace")
        wait_for_value(window, "keep replace")
        desk.keys(*["shift+Left"] * len("replace"))
        expected = self.insert_lines()
        wait_for_value(window, "keep " + expected)

    def test_text_lands_once_in_an_editor_that_only_pretends_to_be_a_field(self):
        _, window = self.open_page("multi-line", OWN_ENGINE)
        desk.type_text("a")
        wait_for_value(window, "a")
        expected = self.insert_lines()
        wait_for_value(window, "a" + expected)

    def test_text_lands_once_in_an_editor_that_draws_its_text_itself(self):
        _, window = self.open_page("drawn", DRAWN)
        desk.type_text("a")
        wait_for_value(window, "a")
        _, content = self.own_rich_clipboard()
        expected = self.insert_lines()
        wait_for_value(window, "a" + expected)
        self.assert_clipboard_is(content)

    def test_text_lands_in_the_middle_of_rich_text(self):
        _, window = self.open_page("rich")
        desk.type_text("ab")
        wait_for_value(window, "ab")
        desk.keys("Left")
        expected = self.insert_line(count="seven", subject="bread")
        wait_for_value(window, "a" + expected + "b")

    def test_a_password_field_is_refused(self):
        program, _ = self.open_page("password")
        field = desk.field(program.pid, is_page_field)
        desk.type_text("secret")
        desk.wait_for("the bullets", lambda: field.character_count == 6)
        _, content = self.own_rich_clipboard()
        self.brevix.press_hotkey()
        self.wait_for_message("Password fields are not supported")
        desk.type_text(LINES["title"])
        desk.wait_for("the prompt", lambda: self.selected_title() == LINES["title"], 5, 0.03)
        desk.keys("Return")
        desk.keys("Escape")
        self.brevix.wait_until_closed()
        self.assert_clipboard_is(content)
        self.assertEqual(field.character_count, 6)


if __name__ == "__main__":
    scenario.main()
