"""What a person does from the first start to the last thing that has to be allowed."""

import os
import pathlib
import plistlib
import shlex
import signal
import time

import browsers
import desktop
import orvanta_end
import shell_case

PATIENCE = orvanta_end.PATIENCE
# The buttons of the setup's rows, from the popover's corner.
LOGIN, DEFAULT_BROWSER = (276, 110), (276, 154)


def has_ended(process):
    try:
        return " Z " in pathlib.Path(f"/proc/{process}/stat").read_text()
    except FileNotFoundError:
        return True


class SetupTest(shell_case.ShellTest):
    def picture(self, name):
        """Kept where somebody wants to look at it."""
        folder = os.environ.get("ORVANTA_SCREENSHOTS")
        if folder:
            time.sleep(0.3)
            self.desktop.screenshot(f"{folder}/{name}.png")

    def press(self, button):
        place = desktop.wait_until(self.popovers, "the popover", PATIENCE)[0]
        self.click((place[0] + button[0], place[1] + button[1]))

    def decisions(self):
        path = self.configuration() / "com.brindlework.orvanta.automation.plist"
        return plistlib.loads(path.read_bytes()) if path.exists() else {}

    def start_browser_by(self, command):
        """What the menu's entry of the browser starts."""
        folder = pathlib.Path(self.desktop.environment["XDG_DATA_HOME"]) / "applications"
        folder.mkdir(parents=True)
        entry = pathlib.Path("/usr/share/applications/chromium.desktop").read_text()
        lines = [f"Exec={shlex.join(command)} %U" if line.startswith("Exec=") else line
                 for line in entry.splitlines()]
        (folder / "chromium.desktop").write_text("\n".join(lines) + "\n")

    def allow_everything(self, pages):
        """By clicks in the popover. Returns the browser that stands in front with alpha.test; the popover
        opens by itself."""
        browser = browsers.Chromium(self.desktop, pages)
        self.start_browser_by(browser.command)

        self.start_with_panel(finished=False)
        self.wait_for_popover()
        self.picture("setup-first-start")
        self.press(LOGIN)
        entry = self.configuration() / "autostart" / "com.brindlework.orvanta.desktop"
        desktop.wait_until(entry.exists, "the login item")
        self.picture("setup-login-item")

        # The browser does not run: it is started, out of sight, and the question comes.
        self.press(DEFAULT_BROWSER)
        question = desktop.wait_until(self.own_windows, "the question", PATIENCE)[0]
        started = desktop.wait_until(
            lambda: [window for window in self.desktop.windows()
                     if "chromium" in self.desktop.run("xprop", "-id", str(window), "WM_CLASS")],
            "the browser", PATIENCE)[0]
        self.assertIn("_NET_WM_STATE_HIDDEN", self.desktop.run("xprop", "-id", str(started),
                                                               "_NET_WM_STATE"))
        self.picture("setup-question")
        self.desktop.activate(question)
        self.desktop.press("space")
        desktop.wait_until(lambda: self.decisions().get("agreed") == ["chromium"], "the decision")
        self.picture("setup-restart-browser")
        self.desktop.press("space")
        self.assertFalse(self.preferences().get("setupDoneV1"))

        # Started anew it has the extension, connects, and the popover opens by itself: all is done.
        process = int(self.desktop.run("xdotool", "getwindowpid", str(started)))
        os.kill(process, signal.SIGTERM)
        desktop.wait_until(lambda: has_ended(process), "the browser's end", PATIENCE)
        browser.new_window(lambda: browser.open(browser.address("alpha.test")))
        desktop.wait_until(lambda: self.preferences().get("setupDoneV1"), "the setup's end",
                           PATIENCE)
        self.assertEqual(self.decisions()["allowed"], ["chromium"])
        return browser
