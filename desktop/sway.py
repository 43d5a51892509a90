"""A virtual Wayland desktop under sway, headless, with what desktop.Desktop has besides.

Needs sway, swaylock, wtype and foot; grim for screenshots.
"""

import json
import os
import pwd
import signal
import time

import desktop

# Sway refuses to run as root.
_OTHER_USER = "nobody"

_CONFIGURATION = """
output HEADLESS-1 resolution 1280x800 position 0 0
default_border none
focus_follows_mouse no
xwayland disable
"""
_BAR = """
bar {
    position bottom
    tray_output none
}
"""

# One on which nobody types for a day.
KEYBOARD = ["wtype", "-s", str(24 * 3600 * 1000)]


class SwayDesktop(desktop.Desktop):
    """Windows are named by the numbers of their nodes in sway's tree."""

    has_bar = False  # at the lower edge

    def _start_server(self):
        configuration = self.folder / "sway.conf"
        configuration.write_text(_CONFIGURATION + (_BAR if self.has_bar else ""))
        self.environment["SWAYSOCK"] = str(self._sockets / "ipc")
        self._start_compositor("sway", "--config", str(configuration))
        desktop.wait_until((self._sockets / "ipc").exists, "sway")

    @property
    def _sockets(self):
        """The folder in which the compositor makes them, as another user than ours where we are
        root."""
        return self.folder / "sockets"

    def _start_compositor(self, *command):
        folder = self._sockets
        folder.mkdir(mode=0o700, exist_ok=True)
        self.environment |= {"XDG_SESSION_TYPE": "wayland", "XDG_CURRENT_DESKTOP": command[0]}
        if os.geteuid() == 0:
            user = pwd.getpwnam(_OTHER_USER)
            os.chown(folder, user.pw_uid, user.pw_gid)
            self.folder.chmod(0o711)
            command = ("setpriv", f"--reuid={user.pw_uid}", f"--regid={user.pw_gid}",
                       "--clear-groups", "--pdeathsig=KILL", *command)
        self.server = self.spawn(list(command), environment=self.environment | {
            "XDG_RUNTIME_DIR": str(folder), "WLR_BACKENDS": "headless",
            "WLR_RENDERER": "pixman", "WLR_LIBINPUT_NO_DEVICES": "1"})

        def displays():
            if self.server.poll() is not None:
                raise desktop.DesktopError(
                    f"{command[0]} ended: {self.log(os.path.basename(command[0]))}")
            return list(folder.glob("wayland-?"))

        self.environment["WAYLAND_DISPLAY"] = str(desktop.wait_until(displays, command[0])[0])

    def kill_server(self):
        """Its sockets stay."""
        self.server.kill()
        self.server.wait()

    def restart_server(self):
        for left in self._sockets.iterdir():
            left.unlink()
        self._start_server()
        self.start_window_manager()

    def start_window_manager(self):
        """Sway is that as well. A seat without a keyboard has no focus to give."""
        self.spawn(KEYBOARD)
        desktop.wait_until(lambda: any(device["type"] == "keyboard" for device in
                                       self.message("-t", "get_inputs")), "a keyboard")

    def _start_spy(self):
        """Sway is asked instead."""

    def message(self, *words):
        return json.loads(self.run("swaymsg", "--raw", *words))

    def _nodes(self):
        def below(node):
            yield node
            for child in node["nodes"] + node["floating_nodes"]:
                yield from below(child)

        return [node for node in below(self.message("-t", "get_tree")) if node.get("pid")]

    def windows(self):
        return [node["id"] for node in self._nodes()]

    def windows_of(self, pid):
        return [node["id"] for node in self._nodes() if node["pid"] == pid]

    def place_of(self, window):
        rect = next(node["rect"] for node in self._nodes() if node["id"] == window)
        return rect["x"], rect["y"]

    def work_area(self):
        """Of the workspace that has the focus: left, top, right, bottom."""
        rect = next(each["rect"] for each in self.message("-t", "get_workspaces")
                    if each["focused"])
        return rect["x"], rect["y"], rect["x"] + rect["width"], rect["y"] + rect["height"]

    def lock(self):
        self._locker = self.spawn(["swaylock", "--color", "203040"])

    def unlock(self):
        self._locker.send_signal(signal.SIGUSR1)  # Lets the person in.

    def focused(self):
        return next((node["id"] for node in self._nodes() if node["focused"]), None)

    def press(self, key):
        self.run("wtype", "-k", key)

    def screenshot(self, path):
        self.run("grim", str(path))

    def activate(self, window):
        self.message(f"[con_id={window}] focus")
        desktop.wait_until(lambda: self.focused() == window, f"window {window} in front")
        return time.monotonic()

    def close_windows(self):
        for window in self.windows():
            self.message(f"[con_id={window}] kill")
        desktop.wait_until(lambda: not self.windows(), "the end of all windows")

    def launch_terminal(self):
        return self.launch("foot", "--font=DejaVu Sans Mono:size=11", "bash", "--norc")

