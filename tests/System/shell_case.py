"""What the tests of the application's shell have in common: its popover, its item, its windows."""

import re
import subprocess

import case
import desktop
import panels
import status_area

PREFERENCES = f"{desktop.DOMAIN}.plist"


class ShellTest(case.SystemTest):
    def shown(self, name):
        """The windows whose names have this in them; asked again where one vanished meanwhile."""
        while True:
            said = subprocess.run(
                ["xdotool", "search", "--onlyvisible", "--name", name], text=True,
                env=self.desktop.environment, capture_output=True)
            if "BadWindow" not in said.stderr:
                return said.stdout.split()

    def popovers(self):
        """The places (left, top, width, height) of the windows that no window manager manages."""
        with_name, managed = self.shown("^orvanta$"), self.desktop.windows()
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
        return desktop.wait_until(lambda: status_area.ink(self.desktop, panel), "the item")

    def wait_for_no_item(self, panel):
        desktop.wait_until(lambda: not status_area.ink(self.desktop, panel), "the item's end")

    def start_with_panel(self):
        self.terminal = self.desktop.launch_xterm()
        self.panel = panels.XfcePanel(self.desktop)
        self.panel.start()
        self.start()
        return self.wait_for_item(self.panel)

    def wait_for_front(self, window):
        desktop.wait_until(lambda: self.desktop.run("xdotool", "getactivewindow").strip()
                           == str(window), f"window {window} in front")
