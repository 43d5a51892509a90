"""A virtual Wayland desktop under KWin, with what desktop.Desktop has besides.

Needs kwin-wayland of Plasma 5 or 6 with its scripts (kwin-common), kbuildsycoca of the same
(libkf5service-bin or libkf6service-bin), the Wayland platform of the Qt of its locker, xwayland and
xterm.
"""

import contextlib
import pathlib
import re
import shutil
import stat
import time

import desktop

_RUNNER = ("org.kde.KWin", "/WindowsRunner")
_SCRIPTING = ("org.kde.KWin", "/Scripting")
_SAVER = ("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
          "org.freedesktop.ScreenSaver")
_SESSION = "auto"  # the name of a caller's own one
_ENTRY = (pathlib.Path(__file__).resolve().parent.parent / "packaging"
          / f"{desktop.DOMAIN}.desktop.in")

_X_SOCKETS = pathlib.Path("/tmp/.X11-unix")

# Plasma 5 brings one, kf5-applications.menu; Plasma 6 has its in a package of its whole desktop.
_MENU = """<!DOCTYPE Menu PUBLIC "-//freedesktop//DTD Menu 1.0//EN"
 "http://www.freedesktop.org/standards/menu-spec/menu-1.0.dtd">
<Menu><Name>All</Name><DefaultAppDirs/><Include><All/></Include></Menu>
"""

# KWin tells its log which process has which window, and which has the focus. Plasma 6 speaks of
# windows where Plasma 5 spoke of clients.
_SPY = """
function tellOwner(window) { print("OWNER " + window.internalId + " " + window.pid); }
function tellFocus(window) { print("FOCUS " + (window ? window.internalId : "none")); }
const isOlder = workspace.clientAdded !== undefined;
(isOlder ? workspace.clientAdded : workspace.windowAdded).connect(tellOwner);
(isOlder ? workspace.clientActivated : workspace.windowActivated).connect(tellFocus);
tellFocus(isOlder ? workspace.activeClient : workspace.activeWindow);
"""


class KWinDesktop(desktop.Desktop):
    """Windows are named by their UUIDs in KWin. The terminal is one of the X server that is its
    guest."""

    def __init__(self, executable, time_zone=None, has_menu=True):
        """`executable`: of Orvanta, whose desktop entry was installed at an earlier time. KWin knows
        of entries only where a menu of applications names their folder."""
        super().__init__(time_zone)
        self._executable = executable
        self._has_menu = has_menu

    def _start_server(self):
        """The bus comes first: start_window_manager() starts KWin."""
        self.environment |= {"XDG_SESSION_TYPE": "wayland", "XDG_CURRENT_DESKTOP": "KDE",
                             "WAYLAND_DISPLAY": "wayland-kwin"}
        # X servers make it where there is none; KWin insists on it for its guest.
        with contextlib.suppress(FileExistsError):
            _X_SOCKETS.mkdir()
            _X_SOCKETS.chmod(stat.S_ISVTX | 0o777)

    def start_window_manager(self):
        folder = self.folder / "data" / "applications"
        folder.mkdir()
        (folder / f"{desktop.DOMAIN}.desktop").write_text(
            _ENTRY.read_text().replace("@exec@", str(pathlib.Path(self._executable).resolve())))
        if self._has_menu:
            menus = self.folder / "config" / "menus"
            menus.mkdir()
            (menus / "applications.menu").write_text(_MENU)
        else:
            self.environment["XDG_CONFIG_DIRS"] = str(self.folder / "nowhere")
        self.run(shutil.which("kbuildsycoca6") or "kbuildsycoca5", "--noincremental")
        # The original carries a file capability, which not everybody may execute.
        self._program = self.folder / "kwin_wayland"
        shutil.copyfile("/usr/bin/kwin_wayland", self._program)
        self._program.chmod(stat.S_IRWXU)
        # Nobody is there, and yet it shall lock only when it is told to.
        (self.folder / "config" / "kscreenlockerrc").write_text("[Daemon]\nAutolock=false\n")
        self.start_logind(_SESSION)
        self._start_kwin()

    def _start_kwin(self):
        told = self.folder / "environment"
        told.unlink(missing_ok=True)
        application = self.folder / "tell-environment"
        application.write_text(f'#!/bin/sh\nenv >{told}.new; mv {told}.new {told}\n')
        application.chmod(stat.S_IRWXU)
        self.server = self.spawn(
            [str(self._program), "--virtual", "--width", "1280", "--height", "800",
             "--no-global-shortcuts", "--xwayland",
             "--socket", self.environment["WAYLAND_DISPLAY"], str(application)],
            environment=self.environment | {"QT_LOGGING_RULES": "*.debug=false;js*=true;"
                                                                "kwin_scripting.debug=true"})

        def is_up():
            if self.server.poll() is not None:
                raise desktop.DesktopError(f"KWin ended: {self.log('kwin_wayland')}")
            return told.exists()

        desktop.wait_until(is_up, "KWin")
        for line in told.read_text().splitlines():
            name, _, value = line.partition("=")
            if name in ("DISPLAY", "XAUTHORITY"):
                self.environment[name] = value
        self._evaluate("spy", _SPY)
        desktop.wait_until(lambda: self._told(r"FOCUS (\S+)"), "KWin's word on the focus")

    def _evaluate(self, name, text):
        script = self.folder / f"{name}.js"
        script.write_text(text)
        self.call(*_SCRIPTING, "org.kde.kwin.Scripting.loadScript", str(script), name)
        self.call(*_SCRIPTING, "org.kde.kwin.Scripting.start")

    def kill_server(self):
        self.server.kill()
        self.server.wait()
        (self.folder / "log" / "kwin_wayland").write_text("")

    def restart_server(self):
        self._start_kwin()

    def _start_spy(self):
        """KWin's script is that."""

    def has_script(self, name):
        return "true" in self.call(*_SCRIPTING, "org.kde.kwin.Scripting.isScriptLoaded", name)

    def _told(self, what):
        return re.findall(f"^js: {what}$", self.log("kwin_wayland"), re.MULTILINE)

    def windows(self):
        return re.findall(r"'0_(\{[0-9a-f-]+\})'",
                          self.call(*_RUNNER, "org.kde.krunner1.Match", "window"))

    def windows_of(self, pid):
        there = self.windows()
        return [window for window in self._told(f"OWNER (\\S+) {pid}") if window in there]

    def focused(self):
        return self._told(r"FOCUS (\S+)")[-1]

    def activate(self, window):
        self.call(*_RUNNER, "org.kde.krunner1.Run", f"0_{window}", "")
        desktop.wait_until(lambda: self.focused() == window, f"window {window} in front")
        return time.monotonic()

    def place_of(self, window):
        """Left, top."""
        told = self.call("org.kde.KWin", "/KWin", "org.kde.KWin.getWindowInfo", window)
        return tuple(float(re.search(rf"'{name}': <([\d.-]+)>", told)[1]) for name in "xy")

    def _is_locked(self):
        destination, path, interface = _SAVER
        return "true" in self.call(destination, path, f"{interface}.GetActive")

    def lock(self):
        destination, path, interface = _SAVER
        self.call(destination, path, f"{interface}.Lock")
        desktop.wait_until(self._is_locked, "the locker")

    def unlock(self):
        """As `loginctl unlock-session` does."""
        self.call_logind(f"/session/{_SESSION}", "org.freedesktop.DBus.Mock.EmitSignal",
                         "org.freedesktop.login1.Session", "Unlock", "", "[]")
        desktop.wait_until(lambda: not self._is_locked(), "the locker's end")

    def minimize(self, window):
        self._evaluate(f"minimize-{time.monotonic_ns()}", f"""
const windows = workspace.windowList ? workspace.windowList() : workspace.clientList();
windows.find(each => each.internalId == "{window}").minimized = true;
""")
        desktop.wait_until(lambda: self.focused() != window, f"window {window} minimized")
