"""A virtual Wayland desktop under labwc, headless, with what desktop.Desktop has besides.

Needs labwc, wlrctl, swaylock, wtype and foot; grim for screenshots.
"""

import pathlib
import time

import desktop
import sway


class LabwcDesktop(sway.SwayDesktop):
    """Windows are named by their application identifiers: labwc tells of them in wlroots' list alone,
    which knows no numbers. Of each application there is one."""

    def _start_server(self):
        self._start_compositor("labwc", "--config-dir", str(self.folder / "defaults"))

    def start_window_manager(self):
        self.spawn(sway.KEYBOARD)

    def _list(self, *matching):
        """Each line is an identifier, a colon and the title."""
        return [line.partition(":")[0]
                for line in self.run("wlrctl", "toplevel", "list", *matching).splitlines()]

    def windows(self):
        return self._list()

    def windows_of(self, pid):
        program = pathlib.Path("/proc", str(pid), "comm").read_text().strip()
        return [window for window in self.windows() if window.rpartition(".")[2] == program]

    def focused(self):
        return next(iter(self._list("state:active")), None)

    def activate(self, window):
        self.run("wlrctl", "toplevel", "focus", f"app_id:{window}")
        desktop.wait_until(lambda: self.focused() == window, f"{window} in front")
        return time.monotonic()

    def minimize(self, window):
        self.run("wlrctl", "toplevel", "minimize", f"app_id:{window}")
