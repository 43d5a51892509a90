"""A virtual Wayland desktop under KWin, with what desktop.Desktop has besides.

Needs kwin-wayland, kde-cli-tools, xwayland and foot.
"""

import pathlib
import shutil
import time

import desktop

_SOCKET = "wayland-kwin"


class KWinDesktop(desktop.Desktop):
    def _start_server(self):
        """Waits for the bus, which KWin needs."""

    def start_window_manager(self):
        # The original carries a file capability, which a process without it may not execute.
        program = self.folder / "kwin_wayland"
        shutil.copyfile("/usr/bin/kwin_wayland", program)
        program.chmod(0o755)
        self.environment |= {"XDG_SESSION_TYPE": "wayland", "XDG_CURRENT_DESKTOP": "KDE",
                             "KDE_FULL_SESSION": "true", "KDE_SESSION_VERSION": "5"}
        self.server = self.spawn(
            [str(program), "--virtual", "--width", "1280", "--height", "800", "--no-lockscreen",
             "--no-global-shortcuts", "--socket", _SOCKET],
            environment=self.environment | {"QT_QPA_PLATFORM": ""})
        desktop.wait_until(lambda: (pathlib.Path(self.environment["XDG_RUNTIME_DIR"]) / _SOCKET)
                           .exists() or self.server.poll() is not None, "KWin", 30)
        if self.server.poll() is not None:
            raise desktop.DesktopError(f"KWin ended: {self.log('kwin_wayland')}")
        self.environment["WAYLAND_DISPLAY"] = _SOCKET

    def _start_spy(self):
        pass
