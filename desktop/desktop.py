"""A virtual desktop: an X server, a window manager and a session bus of its own, in a private folder.

Shared by the system tests, the demonstration of script/run and the measurements of script/bench.
Nothing of the person who starts it is read or written, and everything it started is ended with it,
however it ends.
"""

import atexit
import contextlib
import ctypes
import os
import pathlib
import re
import select
import shutil
import signal
import sqlite3
import subprocess
import tempfile
import time
import urllib.parse
import weakref

# Long enough for a debug build on a busy machine; a condition that holds is seen within milliseconds.
DEADLINE = 20.0

DOMAIN = "com.brindlework.orvanta"

_PR_SET_PDEATHSIG = 1
_PR_SET_CHILD_SUBREAPER = 36
_LIBC = ctypes.CDLL(None, use_errno=True)

# No service can be started through this bus: what a test does not start does not take part.
_BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


class DesktopError(Exception):
    """The desktop did not do what was asked of it."""


def wait_until(condition, what, seconds=DEADLINE, every=0.02):
    """The first true value of `condition`; an error that names `what` if none comes in time."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() >= deadline:
            raise DesktopError(f"{what}: not within {seconds:g} s")
        time.sleep(every)


def sleep_until(moment):
    """Real time, to a moment of time.monotonic()."""
    while (left := moment - time.monotonic()) > 0:
        time.sleep(left)


def zone_far_from_midnight():
    """A time zone in which it is about noon now: at midnight the session's times restart."""
    offset = 12 - time.gmtime().tm_hour
    # The names of this family count the hours west of Greenwich.
    return f"Etc/GMT{-offset:+d}" if offset else "Etc/GMT"


def end_on_signals():
    """Makes the signals that ask for an end raise, so that open desktops are closed on the way out."""

    def interrupt(number, frame):
        raise KeyboardInterrupt

    for number in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(number, interrupt)


def _die_with_parent(parent):
    def prepare():
        _LIBC.prctl(_PR_SET_PDEATHSIG, signal.SIGKILL, 0, 0, 0)
        if os.getppid() != parent:
            os._exit(1)

    return prepare


def _below(ancestor):
    """The parents of all processes below this one, by process, parents first."""
    children = {}
    for entry in os.listdir("/proc"):
        if entry.isdigit():
            with contextlib.suppress(OSError):
                text = pathlib.Path("/proc", entry, "stat").read_text()
                children.setdefault(int(text.rpartition(")")[2].split()[1]), []).append(int(entry))
    found = {}
    level = [ancestor]
    while level:
        found |= {child: parent for parent in level for child in children.get(parent, [])}
        level = [child for parent in level for child in children.get(parent, [])]
    return found


_open_desktops = weakref.WeakSet()


@atexit.register
def _close_open_desktops():
    for desktop in list(_open_desktops):
        desktop.close()


class Desktop:
    """Use as a context manager, or call open() and close()."""

    def __init__(self, time_zone=None):
        self._time_zone = time_zone
        self._processes = []
        self._active = None
        self._spy = None
        self._spy_rest = b""
        self.folder = None
        self.environment = {}
        self.server = None
        self.window_manager = None

    def __enter__(self):
        return self.open()

    def __exit__(self, *_):
        self.close()

    def open(self):
        _open_desktops.add(self)
        try:
            # Grandchildren that outlive their parent then come to us, and close() finds them.
            _LIBC.prctl(_PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)
            self._make_folder()
            self._start_server()
            self._start_bus()
            self.start_window_manager()
            self._start_spy()
        except BaseException:
            self.close()
            raise
        return self

    def _make_folder(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="orvanta-desktop-"))
        for name in ("home", "config", "data", "cache", "state", "runtime", "log"):
            (self.folder / name).mkdir(mode=0o700)
        self.environment = {
            "PATH": os.environ.get("PATH", "/usr/local/bin:/usr/bin:/bin"),
            "HOME": str(self.folder / "home"),
            "LANG": "C.UTF-8",
            "SHELL": "/bin/bash",
            "XDG_CONFIG_HOME": str(self.folder / "config"),
            "XDG_DATA_HOME": str(self.folder / "data"),
            "XDG_CACHE_HOME": str(self.folder / "cache"),
            "XDG_STATE_HOME": str(self.folder / "state"),
            "XDG_RUNTIME_DIR": str(self.folder / "runtime"),
            "XDG_DATA_DIRS": "/usr/local/share:/usr/share",
            "XDG_CONFIG_DIRS": "/etc/xdg",
            # The machine's own session must not decide whether anybody is present here.
            "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self.folder}/runtime/no-system-bus",
            # The applications that are looked at should need no more than the desktop has.
            "GSETTINGS_BACKEND": "memory",
            "GIO_USE_VFS": "local",
            "NO_AT_BRIDGE": "1",
        }
        if self._time_zone:
            self.environment["TZ"] = self._time_zone
        elif "TZ" in os.environ:
            self.environment["TZ"] = os.environ["TZ"]
        for name in ("ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS"):
            if name in os.environ:
                self.environment[name] = os.environ[name]

    def start_logind(self, *sessions):
        """Plays it on a system bus of the desktop's own."""
        socket = self.folder / "runtime" / "system-bus"
        self.environment["DBUS_SYSTEM_BUS_ADDRESS"] = f"unix:path={socket}"
        self.spawn(["dbus-daemon", "--session", f"--address=unix:path={socket}", "--nofork",
                    "--nopidfile"])
        wait_until(socket.exists, "a system bus")
        self.spawn(["/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"])
        self.run("gdbus", "wait", "--system", "--timeout", "20", "org.freedesktop.login1")
        for session in sessions:
            self.call_logind("", "org.freedesktop.DBus.Mock.AddSession", session, "seat0",
                             str(os.getuid()), "somebody", "true")

    def call_logind(self, below, method, *arguments):
        self.run("gdbus", "call", "--system", "--dest", "org.freedesktop.login1", "--object-path",
                 f"/org/freedesktop/login1{below}", "--method", method, *arguments)

    def _start_server(self):
        reading, writing = os.pipe()
        try:
            self.server = self.spawn(
                ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x800x24",
                 "-nolisten", "tcp", "-noreset", "-s", "0"],
                pass_fds=[writing])
            os.close(writing)
            writing = None
            # Number and end of line come in two writes; without a reader of the second it gives up.
            number = b""
            while not number.endswith(b"\n"):
                ready, _, _ = select.select([reading], [], [], DEADLINE)
                read = os.read(reading, 32) if ready else b""
                if not read:
                    raise DesktopError(f"Xvfb does not start: {self.log('Xvfb')}")
                number += read
            self.environment["DISPLAY"] = f":{number.decode().strip()}"
        finally:
            os.close(reading)
            if writing is not None:
                os.close(writing)

    def _start_bus(self):
        socket = self.folder / "runtime" / "bus"
        configuration = self.folder / "bus.conf"
        configuration.write_text(_BUS_CONFIGURATION.format(socket=socket))
        bus = self.spawn(
            ["dbus-daemon", f"--config-file={configuration}", "--nofork", "--nopidfile"])
        wait_until(lambda: socket.exists() or bus.poll() is not None, "a session bus")
        if bus.poll() is not None:
            raise DesktopError(f"dbus-daemon does not start: {self.log('dbus-daemon')}")
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={socket}"

    def start_window_manager(self):
        self.window_manager = self.spawn(["openbox", "--sm-disable"])
        wait_until(lambda: self.has_window_manager() or self.window_manager.poll() is not None,
                   "a window manager")
        if self.window_manager.poll() is not None:
            raise DesktopError(f"openbox does not start: {self.log('openbox')}")

    def has_window_manager(self):
        """A window manager that was killed leaves the root's property behind, but not its window."""
        window = self._window_property("-root", "_NET_SUPPORTING_WM_CHECK")
        return (window is not None
                and self._window_property("-id", window, "_NET_SUPPORTING_WM_CHECK") == window)

    def _start_spy(self):
        self._spy = self.spawn(["xprop", "-root", "-spy", "_NET_ACTIVE_WINDOW"],
                               stdout=subprocess.PIPE)
        os.set_blocking(self._spy.stdout.fileno(), False)

    def spawn(self, command, environment=None, stdout=None, pass_fds=()):
        """Starts a process that ends with the desktop. Its output goes to log/<name>."""
        name = os.path.basename(command[0])
        with open(self.folder / "log" / name, "ab") as log:
            process = subprocess.Popen(
                command, env=self.environment if environment is None else environment,
                cwd=self.folder / "home", stdin=subprocess.DEVNULL, stdout=stdout or log,
                stderr=log, pass_fds=pass_fds, start_new_session=True,
                preexec_fn=_die_with_parent(os.getpid()))
        self._processes.append(process)
        return process

    def log(self, name):
        path = self.folder / "log" / name
        return path.read_text(errors="replace").strip() if path.exists() else ""

    def run(self, *command):
        """A short command on this desktop; its standard output."""
        try:
            result = subprocess.run(command, env=self.environment, stdin=subprocess.DEVNULL,
                                    capture_output=True, text=True, timeout=DEADLINE)
        except subprocess.TimeoutExpired:
            raise DesktopError(f"{' '.join(command)}: not within {DEADLINE:g} s") from None
        if result.returncode != 0:
            raise DesktopError(f"{' '.join(command)}: {result.stderr.strip()}")
        return result.stdout

    def call(self, service, path, method, *arguments):
        """Over the session bus; the answer as gdbus writes it."""
        return self.run("gdbus", "call", "--session", "--dest", service, "--object-path", path,
                        "--method", method, *arguments)

    def read(self, service, path, interface, name):
        """A property, over the session bus."""
        return self.call(service, path, "org.freedesktop.DBus.Properties.Get", interface, name)

    def _window_property(self, *arguments):
        with contextlib.suppress(DesktopError):
            found = re.search(r"window id # (0x[0-9a-f]+)", self.run("xprop", *arguments))
            return found and found[1]
        return None

    # Windows are named by their number.

    def windows(self):
        """The windows that the window manager manages, oldest first."""
        listed = self.run("xprop", "-root", "_NET_CLIENT_LIST").partition("#")[2]
        return [int(number, 16) for number in re.findall(r"0x[0-9a-f]+", listed)]

    def windows_of(self, pid):
        def owner(window):
            # It may have closed since it was listed.
            with contextlib.suppress(DesktopError):
                found = re.search(r"= (\d+)", self.run("xprop", "-id", str(window), "_NET_WM_PID"))
                return found and int(found[1])
            return None

        return [window for window in self.windows() if owner(window) == pid]

    def launch(self, *command):
        """Starts an application, waits for its window to be in front and returns it."""
        process = self.spawn(list(command))

        def appeared():
            if process.poll() is not None:
                raise DesktopError(f"{command[0]} ended: {self.log(os.path.basename(command[0]))}")
            return self.windows_of(process.pid)

        window = wait_until(appeared, f"a window of {command[0]}")[0]
        self.activate(window)
        return window

    def launch_terminal(self):
        return self.launch_xterm()

    def launch_xterm(self):
        return self.launch("xterm", "-geometry", "80x24+40+40", "-fa", "DejaVu Sans Mono", "-fs",
                           "11", "-e", "bash", "--norc")

    def title(self, window):
        return self.run("xdotool", "getwindowname", str(window)).strip()

    def launch_mousepad(self):
        return self.launch("mousepad")

    def close_windows(self):
        """Ends the applications of all windows and waits until nothing is in front."""
        for window in self.windows():
            with contextlib.suppress(DesktopError):
                self.run("xdotool", "windowkill", str(window))
        wait_until(lambda: not self.windows(), "the end of all windows")

    def activate(self, window):
        """Brings a window to the front; returns the moment at which it was seen there."""
        self.run("xdotool", "windowactivate", str(window))
        deadline = time.monotonic() + DEADLINE
        # What the window manager said before the request is read first, then what comes of it.
        self._read_spy(0)
        while self._active != window:
            left = deadline - time.monotonic()
            if left <= 0:
                raise DesktopError(f"window {window:#x} does not come to the front")
            self._read_spy(left)
        return time.monotonic()

    def _read_spy(self, seconds):
        ready, _, _ = select.select([self._spy.stdout], [], [], seconds)
        if not ready:
            return
        read = os.read(self._spy.stdout.fileno(), 65536)
        if not read:
            raise DesktopError("the display is gone")
        *lines, self._spy_rest = (self._spy_rest + read).split(b"\n")
        for line in lines:
            found = re.search(rb"window id # (0x[0-9a-f]+)", line)
            self._active = int(found[1], 16) if found else None

    def move(self, window, left, top, width, height):
        self.run("xdotool", "windowmove", str(window), str(left), str(top),
                 "windowsize", str(window), str(width), str(height))

    def type_line(self, text):
        """Into the window in front, as from a keyboard."""
        self.run("xdotool", "type", "--delay", "30", text)
        self.press("Return")

    def press(self, key):
        self.run("xdotool", "key", key)

    def screenshot(self, path):
        self.run("scrot", "--overwrite", str(path))

    def close(self):
        """Ends everything that lives on this desktop and removes its folder."""
        _open_desktops.discard(self)
        # While it is still known who started whom: a browser's helpers overwrite their environment.
        family = self._family() if self.folder else set()
        # The server goes last, so that nothing complains about it on the way, and by being asked:
        # it then removes its lock and its socket.
        for process in reversed(self._processes):
            if process.poll() is None and process is self.server:
                process.terminate()
                with contextlib.suppress(subprocess.TimeoutExpired):
                    process.wait(2)
            if process.poll() is None:
                with contextlib.suppress(ProcessLookupError):
                    os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            if process.stdout:
                process.stdout.close()
        self._processes.clear()
        if self.folder is None:
            return
        deadline = time.monotonic() + DEADLINE
        while (left := self._family() | family & _below(os.getpid()).keys()) \
                and time.monotonic() < deadline:
            for pid in left:
                with contextlib.suppress(ProcessLookupError):
                    os.kill(pid, signal.SIGKILL)
                with contextlib.suppress(ChildProcessError):
                    os.waitpid(pid, os.WNOHANG)
            time.sleep(0.01)
        shutil.rmtree(self.folder, ignore_errors=True)
        self.folder = None

    def _family(self):
        """The processes that carry the desktop's folder in their environment, and those below."""
        mark = f"HOME={self.folder}/home".encode()
        found = set()
        for pid, parent in _below(os.getpid()).items():
            with contextlib.suppress(OSError):
                if parent in found or mark in pathlib.Path(
                        "/proc", str(pid), "environ").read_bytes().split(b"\0"):
                    found.add(pid)
        return found


class Orvanta:
    """The application under test on a desktop, with its store."""

    def __init__(self, desktop, executable):
        self.desktop = desktop
        self.executable = os.path.abspath(executable)
        self.under = []  # What starts it, with its arguments: a tracer.
        self.process = None
        if not os.access(self.executable, os.X_OK):
            raise DesktopError(f"{self.executable} is not there or cannot be executed")

    @property
    def store(self):
        return Store(pathlib.Path(self.desktop.environment["XDG_DATA_HOME"])
                     / DOMAIN / "Activities.store")

    def start(self, environment=None):
        """Starts it and returns the moment just before."""
        started = time.monotonic()
        self.process = self.desktop.spawn([*self.under, self.executable], environment=environment)
        return started

    def is_running(self):
        return self.process.poll() is None

    def ask_to_end(self, number=signal.SIGTERM):
        """Returns the moment of asking and the exit code; negative is the signal that ended it."""
        if not self.is_running():
            raise DesktopError(f"Orvanta had already ended: {self.complaints()}")
        asked = time.monotonic()
        self.process.send_signal(number)
        return asked, self.wait()

    def wait(self, seconds=DEADLINE):
        try:
            return self.process.wait(seconds)
        except subprocess.TimeoutExpired:
            raise DesktopError(f"Orvanta did not end within {seconds:g} s") from None

    def complaints(self):
        return self.desktop.log(os.path.basename(self.executable))


class Store:
    """What other programs see of the store. Each reading is a connection that cannot write."""

    def __init__(self, path):
        self.path = pathlib.Path(path)

    def rows(self, query):
        address = f"file:{urllib.parse.quote(str(self.path))}?mode=ro"
        with contextlib.closing(sqlite3.connect(address, uri=True, timeout=5)) as connection:
            return connection.execute(query).fetchall()

    def copy_to(self, path):
        """With the side file, in which a store that was not closed cleanly keeps a part of itself."""
        path.parent.mkdir(mode=0o700)
        for suffix in ("", "-wal"):
            source = self.path.with_name(self.path.name + suffix)
            if source.exists():
                shutil.copyfile(source, path.with_name(path.name + suffix))
