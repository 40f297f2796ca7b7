# SPDX-License-Identifier: GPL-3.0-or-later
"""Bad days: hung and dying programs, taken keys, damaged files, missing parts. Nothing of the user's may be lost."""
import os
import pathlib
import signal
import subprocess
import time

import desktop_driver as desk
import scenario
from scenario import LINES, SKILL

HOME = pathlib.Path(os.environ["HOME"])


class FaultyTargets(scenario.Scenario):
    def open_editor(self):
        program, window = self.open_window("mousepad", "mousepad", "--disable-server")
        return program, window, desk.field(program.pid)

    def test_a_target_that_dies_after_the_capture_is_reported_and_a_copy_is_offered(self):
        _, content = self.own_rich_clipboard()
        program, _, _ = self.open_editor()
        self.brevix.press_hotkey()
        os.kill(program.pid, signal.SIGKILL)
        program.process.wait()
        desk.type_text(LINES["title"])
        desk.wait_for("the prompt", lambda: self.selected_title() == LINES["title"], 5, 0.03)
        desk.keys("Return")
        self.wait_for_message("Brevix couldn't reactivate Mousepad. Copy instead.")
        self.assertIn("Copy Prompt Instead", self.picker_says())
        self.assert_clipboard_is(content)

    def test_a_hung_target_freezes_nothing_and_gets_the_text_at_most_once(self):
        _, content = self.own_rich_clipboard()
        program, _, field = self.open_editor()
        os.kill(program.pid, signal.SIGSTOP)
        start = time.monotonic()
        self.brevix.press_hotkey()
        self.assertLess(time.monotonic() - start, 3)
        desk.type_text(LINES["title"])
        desk.keys("Return")
        desk.wait_for("an outcome", lambda: desk.panel() is None or "Copy Prompt Instead" in self.picker_says(), 10, 0.05)
        os.kill(program.pid, signal.SIGCONT)
        self.assert_clipboard_is(content)
        desk.wait_for("the target to answer again",
                      lambda: desk.text_of(field) in ("", LINES["text"]) and self.is_settled(field), 5, 0.3)

    def is_settled(self, field):
        before = desk.text_of(field)
        return desk.clipboard_types() is not None and desk.text_of(field) == before


class FaultyClipboards(scenario.Scenario):
    defaults = {"preferredInsertionMethod": b'"clipboardPaste"'}

    def test_a_hung_clipboard_owner_loses_nothing(self):
        owner, content = self.own_rich_clipboard()
        program, _ = self.open_window("mousepad", "mousepad", "--disable-server")
        field = desk.field(program.pid)
        os.kill(owner.pid, signal.SIGSTOP)
        self.choose(LINES)
        desk.wait_for("the refusal", lambda: "couldn't save your clipboard" in self.picker_says(), 8, 0.05)
        os.kill(owner.pid, signal.SIGCONT)
        self.assert_clipboard_is(content)
        self.assertEqual(desk.text_of(field), "")

    def test_what_the_user_copies_meanwhile_stays(self):
        self.own_rich_clipboard()
        program, _ = self.open_window("mousepad", "mousepad", "--disable-server")
        field = desk.field(program.pid)
        expected = self.insert_lines()
        desk.wait_for_text(field, expected)
        desk.copy_text("copied meanwhile")
        self.quit()  # whatever was still to be restored would be now
        self.assertEqual(desk.clipboard().get("UTF8_STRING"), b"copied meanwhile")
        self.start_brevix()

    def quit(self):
        """Ends Brevix, which waits for the paste and for the clipboard."""
        self.brevix.process.send_signal(signal.SIGTERM)
        self.assertEqual(self.brevix.process.wait(15), 0)

    def test_quitting_in_the_middle_of_a_paste_lets_it_end_first(self):
        program, _ = self.open_window("mousepad", "mousepad", "--disable-server")
        field = desk.field(program.pid)
        self.choose(LINES)
        self.quit()
        desk.wait_for_text(field, LINES["text"])
        self.start_brevix()

    def test_quitting_while_a_hung_target_has_still_to_paste_waits_for_it(self):
        self.own_rich_clipboard()
        program, _ = self.open_window("mousepad", "mousepad", "--disable-server")
        field = desk.field(program.pid)
        self.find(LINES)
        os.kill(program.pid, signal.SIGSTOP)
        desk.keys("Return")
        self.brevix.wait_until_closed(8)
        self.brevix.process.send_signal(signal.SIGTERM)
        with self.assertRaises(subprocess.TimeoutExpired, msg="it must not take the text away"):
            self.brevix.process.wait(2)
        os.kill(program.pid, signal.SIGCONT)
        self.assertEqual(self.brevix.process.wait(15), 0)
        desk.wait_for_text(field, LINES["text"])
        self.start_brevix()

    def test_the_end_is_obeyed_while_the_picker_is_open(self):
        self.brevix.press_hotkey()
        self.brevix.process.send_signal(signal.SIGTERM)
        self.assertEqual(self.brevix.process.wait(5), 0)
        self.start_brevix()


class DamagedFiles(scenario.Scenario):
    def restart_after(self, damage):
        self.brevix.stop()
        damage()
        type(self).brevix = desk.Brevix(os.environ["BREVIX"], first_start=True)
        self.brevix.wait_until_ready()

    def test_damaged_settings_are_kept_aside_and_defaults_serve(self):
        path = desk.Brevix.defaults_path()
        self.restart_after(lambda: path.write_bytes(b"<plist>\x00 torn"))
        kept = list(path.parent.glob(path.name + ".damaged-*"))
        self.assertEqual([file.read_bytes() for file in kept], [b"<plist>\x00 torn"])
        self.brevix.press_hotkey()
        self.brevix.log_path.write_text("")  # the warning about the damaged file is meant to be there
        kept[0].unlink()

    def test_mistyped_settings_read_as_their_defaults(self):
        import plistlib
        values = {"preferredShortcut": "text", "preferredInsertionMethod": b'"bogus"', "recentPromptRecords": b"[{]",
                  "showMenuBarIcon": "false", "hotkeyTipDismissed": 7}
        self.restart_after(lambda: desk.Brevix.defaults_path().write_bytes(plistlib.dumps(values)))
        self.brevix.press_hotkey()

    def test_a_damaged_library_file_is_kept_aside_and_the_picker_still_opens(self):
        cloud = HOME / ".local/share/brevix/cloud"

        def damage():
            for file in cloud.iterdir():
                if file.suffix != ".key" and "key" not in file.name:
                    file.write_bytes(b"not a database" * 400)
        self.restart_after(damage)
        self.brevix.press_hotkey()
        self.assertTrue([file for file in cloud.iterdir() if "damaged" in file.name])
        self.brevix.log_path.write_text("")


class ATakenHotkey(scenario.Scenario):
    @classmethod
    def setUpClass(cls):
        cls.holder = desk.Program(os.environ["HOTKEY_HOLDER"], stdout=subprocess.PIPE)
        cls.holder.process.stdout.readline()
        super().setUpClass()

    @classmethod
    def tearDownClass(cls):
        super().tearDownClass()
        cls.holder.stop()

    def test_the_picker_says_so_and_the_command_line_still_opens_it(self):
        desk.keys("super+shift+p")
        self.assertEqual(subprocess.run([os.environ["BREVIX"], "toggle"], timeout=10).returncode, 0)
        desk.wait_for("the picker", desk.panel)
        self.wait_for_message("brevix toggle")


class ALostHotkey(scenario.Scenario):
    """Super moves to another modifier, somebody takes the shortcut as it was, and Super comes back."""

    def holder(self):
        """A program that holds the shortcut; None as long as Brevix has it."""
        program = self.start(os.environ["HOTKEY_HOLDER"], stdout=subprocess.PIPE)
        return program if program.process.stdout.readline() == b"holding\n" else None

    def is_warning_shown(self):
        showing = 25
        root = desk.application(self.brevix.pid)
        return bool(root and desk.find(root, lambda node: node.has(showing) and "is held by another" in node.name))

    def test_the_picker_says_so_until_the_hotkey_is_back(self):
        elsewhere = ["xmodmap", "-e", "clear mod4", "-e", "add mod3 = Super_L Super_R"]
        subprocess.run(elsewhere, check=True)
        holder = desk.wait_for("the shortcut to be free", self.holder, 8, 0.2)
        subprocess.run(["setxkbmap", "us"], check=True)
        subprocess.run([os.environ["BREVIX"], "toggle"], check=True, timeout=10)
        desk.wait_for("the picker", desk.panel)
        desk.wait_for("the warning", self.is_warning_shown, 8, 0.05)
        holder.stop()
        subprocess.run(elsewhere, check=True)
        subprocess.run(["setxkbmap", "us"], check=True)
        desk.wait_for("the warning to go", lambda: not self.is_warning_shown(), 8, 0.05)
        desk.keys("Escape")
        self.brevix.wait_until_closed()
        self.brevix.press_hotkey()
        self.brevix.log_path.write_text("")  # the notes about the layouts are meant to be there


if __name__ == "__main__":
    scenario.main()
