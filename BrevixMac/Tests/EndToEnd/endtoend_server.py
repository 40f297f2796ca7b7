# SPDX-License-Identifier: GPL-3.0-or-later
"""Uses the library of a real brevix-cloud: an administrator makes an account, its owner signs in through Chromium with
the keyboard alone, sees the library, shares from it and copies from the page of the share.
"""
import os
import re
import signal
import socket
import subprocess
import unittest

import desktop_driver as desk
import endtoend_signin
import scenario
from endtoend_signin import HOME, wait_for_button

EMAIL = "ada@example.org"
PASSWORD = "correct horse battery"
DATA = HOME / "server"


class BrevixOnServer(desk.Brevix):
    """A running Brevix whose library is the one that BREVIX_SERVER names."""

    library_options = []
    domain = "brevix"


class Server:
    """A running brevix-cloud with one account."""

    def __init__(self):
        with socket.create_server(("127.0.0.1", 0)) as free:
            self.port = free.getsockname()[1]
        self.origin = f"http://127.0.0.1:{self.port}"
        done = self.command("add-user", EMAIL, "--name", "Ada Lovelace", input=PASSWORD + "\n")
        if done.returncode != 0:
            raise desk.Failure(f"the account could not be made: {done.stderr}")
        self.start()

    @staticmethod
    def command(*arguments, input=""):
        return subprocess.run([os.environ["BREVIX_CLOUD"], "--data", DATA, *arguments], input=input,
                              capture_output=True, text=True, timeout=30)

    def start(self):
        self.process = subprocess.Popen([os.environ["BREVIX_CLOUD"], "--data", DATA, "--listen",
                                         f"127.0.0.1:{self.port}"], stdout=subprocess.PIPE, text=True)
        line = self.process.stdout.readline()
        if not line.startswith(f"Serving {self.origin}"):
            raise desk.Failure(f"brevix-cloud said: {line}")

    def stop(self):
        self.process.send_signal(signal.SIGTERM)
        code = self.process.wait(10)
        self.process.stdout.close()
        return code


class OnALibraryServer(scenario.Scenario):
    @classmethod
    def start_brevix(cls):
        cls.server = Server()
        cls.addClassCleanup(lambda: cls.server.process.kill())
        BrevixOnServer.write_defaults()
        cls.environment = {**os.environ, "BREVIX_SERVER": cls.server.origin}
        cls.brevix = BrevixOnServer(os.environ["BREVIX"], first_start=True, env=cls.environment)
        cls.brevix.wait_until_ready()

    @classmethod
    def tearDownClass(cls):
        super().tearDownClass()
        code = cls.server.stop()
        if code != 0:
            raise AssertionError(f"brevix-cloud ended with {code}")

    def node_on_page(self, pid, matches):
        """A part of the browser's page, when it is there and shown."""
        showing = 25
        root = desk.application(pid)
        return root and desk.find(root, lambda node: matches(node) and node.has(showing))

    def wait_on_page(self, pid, what, matches):
        return desk.wait_for(f"{what} on the page", lambda: self.node_on_page(pid, matches), 30, 0.2)

    def wait_for_focus(self, pid, name):
        focused = 12
        self.wait_on_page(pid, f"the focus in {name}", lambda node: node.name == name and node.has(focused))

    def test_the_library_of_a_server_is_opened_with_a_password_and_shared(self):
        endtoend_signin.make_default_browser(endtoend_signin.chromium_command())
        self.brevix.press_hotkey()
        self.wait_for_message("Sign in to sync your library")
        wait_for_button(self.brevix.pid, "Sign In").press()
        page = desk.wait_for("the browser to be called", endtoend_signin.pages_opened, 20)[0]
        self.assertTrue(page.startswith(f"{self.server.origin}/o/oauth2/v2/auth?"), page)
        window = desk.wait_for("the browser", lambda: desk.windows("chromium"), 40)[-1]
        pid = int(desk.output("xdotool", "getwindowpid", str(window)))
        self.addCleanup(lambda: subprocess.run(["kill", str(pid)], check=False))

        # The picker stays above other windows, and may stand over the button that is clicked in the end.
        if desk.panel():
            subprocess.run([os.environ["BREVIX"], "toggle"], env=self.environment, check=True, timeout=10)
            desk.wait_for("the picker to close", lambda: desk.panel() is None)

        # By keyboard alone: the page has put the focus where typing starts.
        self.wait_for_focus(pid, "E-mail")
        desk.activate(window)
        desk.type_text(EMAIL)
        desk.keys("Tab")
        self.wait_for_focus(pid, "Password")
        desk.type_text("not the password")
        desk.keys("Return")
        self.wait_on_page(pid, "the refusal",
                          lambda node: "The e-mail address or the password is wrong." in node.name)
        self.wait_for_focus(pid, "Password")
        desk.type_text(PASSWORD)
        desk.keys("Return")
        desk.wait_for("Chromium's question", lambda: self.consent(pid), 20, 0.2)
        desk.wait_for("Chromium to have opened Brevix", lambda: self.give_consent(pid), 20, 1)
        self.wait_for_message(EMAIL)
        self.wait_for_message(scenario.LINE["title"])

        self.session_lasts_and_follows_the_server()
        self.share_is_copied_from_its_page(pid, window)

    consent = endtoend_signin.SigningIn.consent
    give_consent = endtoend_signin.SigningIn.give_consent

    def session_lasts_and_follows_the_server(self):
        self.assertEqual(self.brevix.stop(), 0)
        self.assertEqual(self.server.stop(), 0)
        self.server.start()
        type(self).brevix = BrevixOnServer(os.environ["BREVIX"], log=self.brevix.log_path, first_start=True,
                                           env=self.environment)
        self.brevix.wait_until_ready()
        self.brevix.press_hotkey()
        self.wait_for_message(scenario.LINE["title"])
        self.assertNotIn("Sign in to sync your library", self.picker_says())

    def share_is_copied_from_its_page(self, pid, window):
        desk.type_text(scenario.LINES["title"])
        desk.wait_for("the prompt", lambda: self.selected_title() == scenario.LINES["title"], 5, 0.03)
        wait_for_button(self.brevix.pid, "Share").press()
        self.wait_for_message("Link copied to clipboard")
        link = desk.clipboard()["UTF8_STRING"].decode()
        self.assertRegex(link, "^" + re.escape(self.server.origin) + r"/public\?promptId=\S+$")
        desk.keys("Escape")
        subprocess.run(["sh", "-c", endtoend_signin.chromium_command(), "sh", link], check=True, timeout=20,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)    # one more page of the running browser
        copy = self.wait_on_page(pid, "the button", lambda node: node.role in ("push button", "button")
                                 and node.name == "Copy Prompt")
        desk.activate(window)
        copy.press()
        desk.wait_for("the text on the clipboard",
                      lambda: desk.clipboard().get("UTF8_STRING", b"").decode() == scenario.LINES["text"])


class AddressesThatCannotBeUsed(unittest.TestCase):
    def test_they_are_refused_at_start(self):
        for address in ("http://library.example.org", "library.example.org", "https://library.example.org/path",
                        "https://ada@library.example.org", "ftp://127.0.0.1"):
            with self.subTest(address):
                done = subprocess.run([os.environ["BREVIX"]], env={**os.environ, "BREVIX_SERVER": address},
                                      capture_output=True, text=True, timeout=30)
                self.assertEqual(done.returncode, 69)
                self.assertIn("BREVIX_SERVER must be like https://library.example.org", done.stderr)


if __name__ == "__main__":
    scenario.main()
