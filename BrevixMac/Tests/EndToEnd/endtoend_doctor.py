# SPDX-License-Identifier: GPL-3.0-or-later
"""`brevix doctor`: with and without a running Brevix, and with things that are held, stopped, or missing."""
import os
import signal
import subprocess
import unittest

import desktop_driver as desk
import doctor
import scenario
from doctor import Report

WORKS = {name: "works" for name in doctor.ROWS}


def open_editor():
    editor = desk.Program("mousepad", "--disable-server", env=desk.without_memory())
    desk.wait_for_window("mousepad")
    desk.field(editor.pid)
    return editor


class WithAnEditor(unittest.TestCase):
    def setUp(self):
        self.programs = [open_editor()]

    def tearDown(self):
        for program in self.programs:
            program.stop()

    def hold_hotkey(self):
        holder = desk.Program(os.environ["HOTKEY_HOLDER"], stdout=subprocess.PIPE)
        self.programs.append(holder)
        self.assertEqual(holder.process.stdout.readline(), b"holding\n")

    def start_brevix(self):
        brevix = desk.Brevix(os.environ["BREVIX"])
        self.programs.append(brevix)
        brevix.wait_until_ready()
        return brevix


class WithoutARunningInstance(WithAnEditor):
    def test_everything_works_and_it_says_who_has_looked(self):
        report = Report("--local")
        self.assertEqual(list(report.rows), doctor.ROWS)
        self.assertEqual((report.states(), report.code), (WORKS, 0))
        self.assertEqual((report.source, report.json["session"]), ("standalone", "X11, openbox"))
        self.assertEqual(report.done.stderr, "")

    def test_the_text_stands_in_columns(self):
        done = doctor.run("--local", "doctor")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertIn("Brevix is not running; examined without it\n", done.stdout)
        rows = [line for line in done.stdout.split("\n")[3:] if line]
        self.assertEqual(len(rows), len(doctor.ROWS))
        self.assertEqual({line.index("works") for line in rows}, {len("Clipboard restore  ")})

    def test_a_build_that_names_no_project_cannot_sign_in(self):
        report = Report()
        self.assertEqual((report.states(), report.code), ({**WORKS, "schemeHandler": "fails"}, 1))
        self.assertIn("GoogleService-Info.plist", report.rows["schemeHandler"]["fix"])

    def test_a_held_hotkey_fails(self):
        self.hold_hotkey()
        report = Report("--local")
        self.assertEqual((report.states(), report.code), ({**WORKS, "hotkey": "fails"}, 1))
        self.assertIn("Super+Shift+P is held", report.rows["hotkey"]["reason"])

    def test_the_hotkey_is_free_afterwards(self):
        Report("--local")
        self.hold_hotkey()

    def test_a_stopped_clipboard_owner_is_named(self):
        owner = desk.Program("xclip", "-quiet", "-selection", "clipboard", "-i", stdin=subprocess.PIPE)
        self.programs.append(owner)
        owner.process.stdin.write(b"kept")
        owner.process.stdin.close()
        desk.wait_for("the copy", lambda: desk.clipboard().get("UTF8_STRING") == b"kept")
        os.kill(owner.pid, signal.SIGSTOP)
        try:
            report = Report("--local")
        finally:
            os.kill(owner.pid, signal.SIGCONT)
        self.assertEqual(report.state("clipboardRestore"), "fails")
        self.assertIn("Xclip, which owns the clipboard", report.rows["clipboardRestore"]["reason"])
        desk.wait_for("the content", lambda: desk.clipboard().get("UTF8_STRING") == b"kept")

    def test_the_clipboard_is_as_it_was(self):
        desk.copy_text("kept")
        self.assertEqual(Report("--local").state("clipboardRestore"), "works")
        self.assertEqual(desk.clipboard().get("UTF8_STRING"), b"kept")

    def test_a_program_that_tells_nothing_is_named(self):
        self.programs.append(desk.Program("xev"))
        desk.wait_for("the mute program", lambda: desk.output("xdotool", "search", "--name", "Event Tester"))
        report = Report("--local")
        self.assertEqual((report.states(), report.code), ({**WORKS, "capture": "degraded"}, 0))
        self.assertIn("Xev does not tell about its fields", report.rows["capture"]["reason"])

    def test_without_a_display_it_says_so_and_examines_the_rest(self):
        report = Report("--local", without=("DISPLAY", "WAYLAND_DISPLAY"))
        self.assertEqual(report.code, 69)
        self.assertIn("no display", report.done.stderr)
        self.assertEqual(report.states(), {**{name: "fails" for name in doctor.ROWS}, "schemeHandler": "works"})

    def test_a_display_that_is_gone_is_no_crash(self):
        for environment in ({"DISPLAY": ":7777"}, {"DISPLAY": "", "WAYLAND_DISPLAY": "wayland-7"}):
            with self.subTest(environment):
                report = Report("--local", env=environment)
                self.assertEqual(report.code, 69)
                self.assertIn("no display: cannot connect", report.done.stderr)

    def test_without_a_session_bus_it_says_so(self):
        report = Report("--local", env={"DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent"})
        self.assertEqual(report.code, 1)
        for name in ("capture", "directInsertion", "paste", "schemeHandler"):
            self.assertEqual(report.state(name), "fails", name)
        self.assertIn("D-Bus", report.rows["capture"]["reason"])
        for name in ("hotkey", "clipboardRestore", "tray"):
            self.assertEqual(report.state(name), "works", name)

    def test_inside_wayland_it_names_the_limits(self):
        report = Report("--local", env={"WAYLAND_DISPLAY": "wayland-0", "XDG_CURRENT_DESKTOP": "sway"})
        self.assertEqual(report.json["session"], "X11 inside Wayland, sway")
        for name in ("hotkey", "paste", "clipboardRestore"):
            self.assertEqual(report.state(name), "degraded", name)
        self.assertIn("exec brevix toggle", report.rows["hotkey"]["fix"])

    def test_json_goes_with_doctor_only(self):
        for arguments in (["--json"], ["--json", "toggle"], ["doctor", "extra"]):
            with self.subTest(arguments):
                self.assertEqual(doctor.run(*arguments).returncode, 64)


class WithARunningInstance(WithAnEditor):
    def test_its_own_view_is_told_also_without_a_display(self):
        brevix = self.start_brevix()
        desk.wait_for("everything to work", lambda: Report().states() == WORKS)
        for without in ((), ("DISPLAY",)):
            with self.subTest(without):
                report = Report(without=without)
                self.assertEqual((report.states(), report.code, report.source), (WORKS, 0, "instance"))
                self.assertIn("Super+Shift+P opens the picker", report.rows["hotkey"]["reason"])
        self.assertEqual(brevix.log_path.read_text(), "")
        brevix.press_hotkey()    # still there
        desk.keys("Escape")
        brevix.wait_until_closed()

    def test_a_hotkey_that_another_program_had_first(self):
        self.hold_hotkey()
        self.start_brevix()
        desk.wait_for("the hotkey to be the only failure",
                      lambda: Report().states() == {**WORKS, "hotkey": "fails"})
        self.assertEqual(Report().code, 1)

    def test_the_hotkey_of_the_running_one_is_no_failure_of_a_second_look(self):
        self.start_brevix()
        self.assertEqual(Report().state("hotkey"), "works")
        self.assertEqual(Report().state("hotkey"), "works")

    def test_accessibility_switched_off_meanwhile(self):
        self.start_brevix()
        desk.wait_for("everything to work", lambda: Report().states() == WORKS)
        switch = ["gdbus", "call", "--session", "-d", "org.a11y.Bus", "-o", "/org/a11y/bus", "-m",
                  "org.freedesktop.DBus.Properties.Set", "org.a11y.Status", "IsEnabled"]
        subprocess.run([*switch, "<false>"], check=True, stdout=subprocess.DEVNULL)
        try:
            report = Report()
        finally:
            subprocess.run([*switch, "<true>"], check=True, stdout=subprocess.DEVNULL)
        failing = {"capture": "fails", "directInsertion": "fails", "paste": "fails"}
        self.assertEqual((report.states(), report.code), ({**WORKS, **failing}, 1))
        self.assertIn("switched off", report.rows["capture"]["reason"])

    def test_one_that_hangs_is_reported(self):
        brevix = self.start_brevix()
        os.kill(brevix.pid, signal.SIGSTOP)
        try:
            report = Report("--local")
        finally:
            os.kill(brevix.pid, signal.SIGCONT)
        self.assertEqual(report.source, "silentInstance")
        self.assertEqual(report.state("hotkey"), "unknown")
        self.assertIn("does not answer", report.rows["hotkey"]["reason"])


if __name__ == "__main__":
    scenario.main()
