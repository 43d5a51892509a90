"""What the tests of the application's shell have in common: its popover, its item, its windows."""

import pathlib
import plistlib
import re
import subprocess

import case
import desktop
import panels
import status_area

PREFERENCES = "com.brindlework.orvanta.plist"


class ShellTest(case.SystemTest):
    environment = None  # Of the application, where it is not the desktop's.

    def finish_setup(self):
        (self.configuration() / PREFERENCES).write_bytes(plistlib.dumps({"setupDoneV1": True}))

    def configuration(self):
        return pathlib.Path(self.desktop.environment["XDG_CONFIG_HOME"])

    def preferences(self):
        path = self.configuration() / PREFERENCES
        return plistlib.loads(path.read_bytes()) if path.exists() else {}

    def popovers(self):
        """The places (left, top, width, height) of the windows that no window manager manages."""
        with_name = subprocess.run(
            ["xdotool", "search", "--onlyvisible", "--name", "^orvanta$"], text=True,
            env=self.desktop.environment, capture_output=True).stdout.split()
        managed = self.desktop.windows()
        found = []
        for window in with_name:
            if int(window) in managed:
                continue
            try:
                said = self.desktop.run("xdotool", "getwindowgeometry", "--shell", window)
            except desktop.DesktopError:
                continue  # It has just gone.
            found.append(tuple(int(re.search(rf"{name}=(-?\d+)", said)[1])
                               for name in ("X", "Y", "WIDTH", "HEIGHT")))
        return found

    def wait_for_popover(self):
        desktop.wait_until(self.popovers, "the popover")
        return self.only_popover()

    def only_popover(self):
        found = self.popovers()
        self.assertEqual(len(found), 1)
        return found[0]

    def wait_for_no_popover(self):
        desktop.wait_until(lambda: not self.popovers(), "the end of the popover")

    def click(self, place, button=1):
        status_area.click(self.desktop, place, button)

    def wait_for_item(self, panel):
        return desktop.wait_until(lambda: status_area.ink(self.desktop, panel,
                                                          status_area.SECONDARY), "the item")

    def start_with_panel(self, finished=True):
        if finished:
            self.finish_setup()
        self.terminal = self.desktop.launch_xterm()
        self.panel = panels.XfcePanel(self.desktop)
        self.panel.start()
        self.orvanta.start(self.environment)
        return self.wait_for_item(self.panel)

    def start_again(self):
        """A second start, as from a menu; it ends when the first has answered."""
        again = self.desktop.spawn([self.orvanta.executable])
        self.assertEqual(again.wait(desktop.DEADLINE), 0)

    def own_windows(self):
        return self.desktop.windows_of(self.orvanta.process.pid)
