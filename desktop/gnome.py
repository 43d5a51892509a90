"""A virtual Wayland desktop under GNOME Shell, headless, with what desktop.Desktop has besides.

Needs gnome-shell, foot and python3-dbusmock.
"""

import contextlib
import json
import pathlib
import re
import shutil
import subprocess
import time

import desktop

_SHELL = ("org.gnome.Shell", "/org/gnome/Shell")
_DISPLAYS = ("org.gnome.Mutter.DisplayConfig", "/org/gnome/Mutter/DisplayConfig")

# As the shell knows Orvanta's.
EXTENSION = "orvanta@brindlework.com"

# Lets the shell evaluate scripts, by which windows are found and activated here; lets it lock,
# which it would not without a login manager; and is the keyboard.
_HELPER = "desktop@orvanta.test"
_HELPER_SCRIPT = """
class Helper {
    enable() {
        global.context.unsafe_mode = true;
        global.shield = Main.screenShield ?? new ScreenShield();
        this.keyboard = Clutter.get_default_backend().get_default_seat().create_virtual_device(
            Clutter.InputDeviceType.KEYBOARD_DEVICE);
        global.typeKey = name => {
            for (const state of [Clutter.KeyState.PRESSED, Clutter.KeyState.RELEASED])
                this.keyboard.notify_keyval(GLib.get_monotonic_time(), Clutter[`KEY_${name}`],
                    state);
        };
    }
    disable() {}
}
"""
# How the shell takes it: as a module from 45 on.
_OLDER_HELPER = """
const {Clutter, GLib} = imports.gi;
const {ScreenShield} = imports.ui.screenShield;
const Main = imports.ui.main;
function init() { return new Helper(); }
"""
_NEWER_HELPER = """
import Clutter from 'gi://Clutter';
import GLib from 'gi://GLib';
import * as Main from 'resource:///org/gnome/shell/ui/main.js';
import {ScreenShield} from 'resource:///org/gnome/shell/ui/screenShield.js';
export {Helper as default};
"""

_WINDOWS = ("global.get_window_actors().map(a => a.meta_window)"
            ".filter(w => !w.is_override_redirect())")


def shell_version():
    return int(re.search(r"\d+", subprocess.check_output(["gnome-shell", "--version"], text=True))[0])


def shipped_extension(executable):
    """In the form that the shell here takes; a folder is named after the first version for it."""
    forms = (pathlib.Path(executable).parent / "gnome").glob("[0-9]*")
    return max((form for form in forms if int(form.name) <= shell_version()),
               key=lambda form: int(form.name))


class GnomeDesktop(desktop.Desktop):
    """Windows are named by their sequence numbers in the shell."""

    def __init__(self, time_zone=None, executable=None):
        """`executable`: of Orvanta, where the extension that was built beside it was let in at an
        earlier time."""
        super().__init__(time_zone)
        self._executable = executable

    def _start_server(self):
        """The bus comes first: start_window_manager() starts the shell."""
        self.environment |= {
            "XDG_SESSION_TYPE": "wayland", "XDG_CURRENT_DESKTOP": "GNOME",
            "XDG_SESSION_ID": "auto", "WAYLAND_DISPLAY": "wayland-gnome",
            # Settings that all processes share, in a file of this desktop's.
            "GSETTINGS_BACKEND": "keyfile"}

    def start_window_manager(self):
        helper = self.extensions / _HELPER
        helper.mkdir(parents=True)
        version = shell_version()
        (helper / "extension.js").write_text(
            (_NEWER_HELPER if version >= 45 else _OLDER_HELPER) + _HELPER_SCRIPT)
        (helper / "metadata.json").write_text(json.dumps({
            "uuid": _HELPER, "name": "Desktop", "description": "For tests",
            "shell-version": [str(version)], "session-modes": ["user", "unlock-dialog"]}))
        enabled = [_HELPER]
        if self._executable:
            shutil.copytree(shipped_extension(self._executable), self.extensions / EXTENSION)
            enabled.append(EXTENSION)
        self.run("gsettings", "set", "org.gnome.shell", "enabled-extensions", str(enabled))
        self.start_logind()
        self._start_shell()

    @property
    def extensions(self):
        """The folder of the person's."""
        return self.folder / "data" / "gnome-shell" / "extensions"

    def enabled_extensions(self):
        return re.findall("'([^']+)'", self.run("gsettings", "get", "org.gnome.shell",
                                                "enabled-extensions"))

    def _start_shell(self):
        self.server = self.spawn(
            ["gnome-shell", "--headless", "--no-x11", "--virtual-monitor", "1280x800",
             "--wayland-display", self.environment["WAYLAND_DISPLAY"]])

        def is_up():
            if self.server.poll() is not None:
                raise desktop.DesktopError(f"gnome-shell ended: {self.log('gnome-shell')}")
            with contextlib.suppress(desktop.DesktopError):
                return self.evaluate("Main.layoutManager._startingUp") is False
            return False

        desktop.wait_until(is_up, "gnome-shell", 3 * desktop.DEADLINE, every=0.2)
        # The applications' overview, with which it begins, takes what is typed.
        self.evaluate("Main.overview.hide()")
        desktop.wait_until(lambda: not self.evaluate("Main.overview.visible"), "the desktop")

    def kill_server(self):
        self.server.kill()
        self.server.wait()

    def restart_server(self):
        """As at a new login."""
        self._start_shell()

    def _start_spy(self):
        """The shell is asked instead."""

    def evaluate(self, script):
        """The value of an expression inside the shell."""
        said = self.call(*_SHELL, "org.gnome.Shell.Eval", script).strip()
        found = re.fullmatch(r"\(true, (['\"])(.*)\1\)", said, re.DOTALL)
        if found is None:
            raise desktop.DesktopError(f"{script}: {said}")
        return json.loads(found[2].replace("\\'", "'").replace("\\\\", "\\") or "null")

    def _windows(self):
        return self.evaluate(f"{_WINDOWS}.map(w => [w.get_stable_sequence(), w.get_pid()])")

    def windows(self):
        return [window for window, _ in self._windows()]

    def windows_of(self, pid):
        return [window for window, owner in self._windows() if owner == pid]

    def focused(self):
        return self.evaluate("global.display.focus_window?.get_stable_sequence() ?? null")

    def activate(self, window):
        self.evaluate(f"{_WINDOWS}.find(w => w.get_stable_sequence() === {window})"
                      ".activate(global.get_current_time())")
        desktop.wait_until(lambda: self.focused() == window, f"window {window} in front")
        return time.monotonic()

    def launch_terminal(self):
        return self.launch("foot", "--font=DejaVu Sans Mono:size=11", "bash", "--norc")

    def press(self, key):
        """By its name in Clutter, as in "Return"."""
        self.evaluate(f"global.typeKey('{key}')")

    def minimize(self, window):
        self.evaluate(f"{_WINDOWS}.find(w => w.get_stable_sequence() === {window}).minimize()")

    def lock(self):
        self.evaluate("global.shield.lock(false)")

    def unlock(self):
        self.evaluate("global.shield.deactivate(false)")

    def switch_displays(self, on):
        """As it does itself when nobody is there."""
        self.call(*_DISPLAYS, "org.freedesktop.DBus.Properties.Set", _DISPLAYS[0], "PowerSaveMode",
                  f"<{0 if on else 3}>")

    def screenshot(self, path):
        self.call("org.gnome.Shell", "/org/gnome/Shell/Screenshot",
                  "org.gnome.Shell.Screenshot.Screenshot", "false", "false", str(path))
