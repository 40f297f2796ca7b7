# SPDX-License-Identifier: GPL-3.0-or-later
"""Signs out and in again through a real browser: Chromium, opened by the desktop's own opener as the user's default
browser, leads back through the entry that Brevix has registered for its scheme.

Chromium asks before it opens an address of another program; the test presses that button with the pointer, as a user
would. Nothing is preset in its profile.
"""
import os
import pathlib
import re
import stat
import subprocess
import unittest

import desktop_driver as desk
import endtoend_browser
import scenario

HOME = pathlib.Path(os.environ["HOME"])
APPLICATIONS = HOME / ".local/share/applications"
MIMEAPPS = HOME / ".config/mimeapps.list"
ENTRY = APPLICATIONS / "app.brevix.Brevix.open-app.brevix.local.desktop"
BROWSER_ENTRY = "test-browser.desktop"
OTHERS = f"""# A user's own list
[Added Associations]
text/plain=mousepad.desktop;

[Default Applications]
x-scheme-handler/http={BROWSER_ENTRY}
x-scheme-handler/https={BROWSER_ENTRY}
"""


def make_default_browser(command):
    """Has the desktop open web addresses with this command line."""
    script = HOME / "browser"
    script.write_text(f'#!/bin/sh\necho "$1" >>"{HOME}/browser.calls"\n{command}\n')
    script.chmod(script.stat().st_mode | stat.S_IXUSR)
    APPLICATIONS.mkdir(parents=True, exist_ok=True)
    (APPLICATIONS / BROWSER_ENTRY).write_text(
        f"[Desktop Entry]\nType=Application\nName=Browser\nExec={script} %u\n"
        "MimeType=x-scheme-handler/http;x-scheme-handler/https;\n")
    MIMEAPPS.parent.mkdir(parents=True, exist_ok=True)
    MIMEAPPS.write_text(OTHERS)


def chromium_command():
    sandbox = ["--no-sandbox"] if os.geteuid() == 0 else []
    flags = " ".join([*endtoend_browser.FLAGS, *sandbox, "--force-renderer-accessibility"])
    return f'exec chromium {flags} --user-data-dir="{HOME}/chromium-profile" "$1"'


def pages_opened():
    calls = HOME / "browser.calls"
    return calls.read_text().split() if calls.exists() else []


def button(pid, name):
    """A shown, enabled button of a program; None when there is none."""
    showing, enabled = 25, 8
    root = desk.application(pid)
    return root and desk.find(root, lambda node: node.role in ("push button", "button") and node.name == name
                              and node.has(showing) and node.has(enabled))


def wait_for_button(pid, name, deadline=20):
    return desk.wait_for(f"the button {name!r}", lambda: button(pid, name), deadline, 0.1)


def open_url(address):
    """What the desktop runs for an address of the scheme."""
    return subprocess.run([os.environ["BREVIX"], "open-url", address], capture_output=True, text=True, timeout=20)


class SigningIn(scenario.Scenario):
    def setUp(self):
        super().setUp()
        (HOME / "browser.calls").unlink(missing_ok=True)

    def tearDown(self):
        # A test that failed halfway must not leave its sign-in to the next one.
        self.show_picker()
        cancel = button(self.brevix.pid, "Cancel")
        if cancel:
            cancel.press()
        super().tearDown()

    @classmethod
    def tearDownClass(cls):
        code = cls.brevix.stop()
        lines = [line for line in cls.brevix.log_path.read_text().splitlines()
                 if "no answer to the running sign-in" not in line and "nobody waits for" not in line]
        if code != 0 or lines:
            raise AssertionError(f"Brevix ended with {code} and said:\n" + "\n".join(lines))

    def sign_out(self):
        self.brevix.press_hotkey()
        if "Sign in to sync your library" not in self.picker_says():
            wait_for_button(self.brevix.pid, "Sign Out").press()
        self.wait_for_message("Sign in to sync your library")

    def begin_sign_in(self):
        """Signs out, presses the button and gives the page that the browser was asked to open."""
        known = len(pages_opened())
        self.sign_out()
        wait_for_button(self.brevix.pid, "Sign In").press()
        pages = desk.wait_for("the browser to be called", lambda: pages_opened()[known:], 20)
        return pages[0]

    def show_picker(self):
        if not desk.panel():
            self.brevix.press_hotkey()

    def browser_window(self):
        return desk.wait_for("the browser", lambda: desk.windows("chromium"), 40)[-1]

    def test_sign_out_and_in_again_through_the_browser(self):
        make_default_browser(chromium_command())
        page = self.begin_sign_in()
        self.assertRegex(page, r"^http://127\.0\.0\.1:\d+/o/oauth2/v2/auth\?client_id=brevix-local-client&redirect_uri=")
        self.assertIn("code_challenge_method=S256", page)
        window = self.browser_window()
        pid = int(desk.output("xdotool", "getwindowpid", str(window)))
        self.addCleanup(lambda: subprocess.run(["kill", str(pid)], check=False))
        account = desk.wait_for("the account on the page", lambda: self.account_on_page(pid), 30, 0.2)
        desk.activate(window)
        account.press()
        desk.wait_for("Chromium's question", lambda: self.consent(pid), 20, 0.2)
        desk.wait_for("Chromium to have opened Brevix", lambda: self.give_consent(pid), 20, 1)
        self.wait_for_message("local@localhost")
        said = self.picker_says()
        self.assertNotIn("Sign in to sync your library", said)
        self.assertIn(scenario.LINE["title"], said)
        self.assertIsNotNone(desk.panel(), "the picker comes back to show the outcome")
        self.assert_lists_are_kept()

    def account_on_page(self, pid):
        root = desk.application(pid)
        return root and desk.find(root, lambda node: node.role in ("push button", "button")
                                  and "local@localhost" in node.name)

    def consent(self, pid):
        root = desk.application(pid)
        return root and desk.find(root, lambda node: node.role in ("push button", "button")
                                  and node.name == "Open Brevix")

    def give_consent(self, pid):
        """Presses the button unless it is gone: for half a second after it has appeared, Chromium takes no click."""
        consent = self.consent(pid)
        if consent:
            consent.press()
        return not consent

    def assert_lists_are_kept(self):
        text = MIMEAPPS.read_text()
        for line in OTHERS.splitlines():
            self.assertIn(line, text)
        self.assertIn(f"x-scheme-handler/app.brevix.local={ENTRY.name};", text)
        self.assertIn(f"Exec={os.environ['BREVIX']} open-url %u", ENTRY.read_text())

    def test_a_forged_callback_does_not_end_it_and_cancel_does(self):
        make_default_browser("exit 0")
        self.begin_sign_in()
        self.show_picker()
        self.wait_for_message("Continue in your browser")
        self.assertIn("Signing In...", self.picker_says())
        for forged in ("app.brevix.local:/oauthredirect?code=evil&state=guess",
                       "app.brevix.local:/oauthredirect?error=access_denied&error_description=Call%20us"):
            self.assertEqual(open_url(forged).returncode, 0)
            self.wait_for_message("Brevix rejected the Google sign-in callback because the request state didn't match.")
            self.assertNotIn("Call us", self.picker_says())
        self.assertIn("Continue in your browser", self.picker_says())
        wait_for_button(self.brevix.pid, "Cancel").press()
        self.wait_for_message("Google sign-in was canceled.")
        self.assertIsNotNone(button(self.brevix.pid, "Sign In"))

    def test_a_refusal_on_the_page_is_shown(self):
        make_default_browser("exit 0")
        page = self.begin_sign_in()
        state = re.search(r"[?&]state=([^&]+)", page).group(1)
        answer = f"app.brevix.local:/oauthredirect?error=access_denied&state={state}"
        self.assertEqual(subprocess.run(["xdg-open", answer], check=False).returncode, 0)
        self.wait_for_message("access_denied")
        self.assertIn("Sign in to sync your library", self.picker_says())

    def test_without_a_browser_the_link_can_be_copied(self):
        make_default_browser("exit 1")
        page = self.begin_sign_in()
        self.show_picker()
        self.wait_for_message("No browser could be opened")
        wait_for_button(self.brevix.pid, "Copy Link").press()
        desk.wait_for("the link", lambda: desk.clipboard().get("UTF8_STRING", b"").decode() == page)
        self.wait_for_message("Link copied")
        wait_for_button(self.brevix.pid, "Cancel").press()
        self.wait_for_message("Google sign-in was canceled.")

    def test_an_address_that_nobody_waits_for_changes_nothing(self):
        self.brevix.press_hotkey()
        before = self.picker_says()
        self.assertEqual(open_url("app.brevix.local:/oauthredirect?code=a&state=b").returncode, 0)
        self.assertEqual(self.picker_says(), before)


class SignedOut(scenario.Scenario):
    def test_it_lasts_across_a_restart(self):
        self.brevix.press_hotkey()
        wait_for_button(self.brevix.pid, "Sign Out").press()
        self.wait_for_message("Sign in to sync your library")
        self.assertEqual(self.brevix.stop(), 0)
        type(self).brevix = desk.Brevix(os.environ["BREVIX"], log=self.brevix.log_path, first_start=True)
        self.brevix.wait_until_ready()
        self.brevix.press_hotkey()
        self.wait_for_message("Sign in to sync your library")
        self.assertNotIn(scenario.LINE["title"], self.picker_says())


class WithoutARunningInstance(unittest.TestCase):
    def test_an_address_for_nobody_is_said_clearly(self):
        done = open_url("app.brevix.local:/oauthredirect?code=secret&state=b")
        self.assertEqual(done.returncode, 69)
        self.assertIn("Brevix is not running", done.stderr)
        self.assertNotIn("secret", done.stderr)


if __name__ == "__main__":
    scenario.main()
