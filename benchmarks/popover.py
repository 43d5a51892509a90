#!/usr/bin/python3
"""What the popover costs: from a click on the status item to the first pixels of the panel, and
the memory that opening and closing it leaves behind, and the CPU of a second with it open.

    benchmarks/popover.py [--times N] [--executable FILE] [STORE]

The clicks are the panel's own calls of the status item; a pixel of the screen is looked at some
thousand times a second. Private memory is read from the kernel, with the popover closed.
"""

import argparse
import ctypes
import pathlib
import plistlib
import re
import statistics
import sys
import time

from gi.repository import Gio, GLib

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "desktop"))

import desktop  # noqa: E402 (the path has just been set)
import panels  # noqa: E402

WARMING_UP = 100
WATCHED = 15  # Seconds, in which three saves fall.
DESK = (1200, 500)  # Where nothing but the screen's black would be.


class Screen:
    def __init__(self, place):
        self._x = ctypes.CDLL("libX11.so.6")
        self._x.XOpenDisplay.restype = self._x.XGetImage.restype = ctypes.c_void_p
        self._x.XDefaultRootWindow.restype = self._x.XGetPixel.restype = ctypes.c_ulong
        self._display = ctypes.c_void_p(
            self._x.XOpenDisplay(place.environment["DISPLAY"].encode()))
        self._root = ctypes.c_ulong(self._x.XDefaultRootWindow(self._display))

    def pixel(self, x, y):
        image = ctypes.c_void_p(self._x.XGetImage(self._display, self._root, x, y, 1, 1,
                                                  ctypes.c_ulong(0xFFFFFF), 2))
        value = self._x.XGetPixel(image, 0, 0)
        self._x.XDestroyImage(image)
        return value & 0xFFFFFF


class Item:
    def __init__(self, place):
        found = desktop.wait_until(lambda: re.findall(r"'([^']*)'", place.read(
            "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
            "org.kde.StatusNotifierWatcher", "RegisteredStatusNotifierItems")), "the item")
        self._name = found[0].partition("/")[0]
        self._bus = Gio.DBusConnection.new_for_address_sync(
            place.environment["DBUS_SESSION_BUS_ADDRESS"],
            Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT
            | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION, None, None)

    def activate(self):
        self._bus.call(self._name, "/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate",
                       GLib.Variant("(ii)", DESK), None, Gio.DBusCallFlags.NONE, -1, None, None)
        self._bus.flush_sync(None)


def memory_of(pid, kind):
    """In kB."""
    text = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text()
    return int(re.search(rf"^{kind}:\s+(\d+)", text, re.MULTILINE)[1])


def cpu_of_a_second(pid):
    """In milliseconds."""
    def running():
        return int(pathlib.Path(f"/proc/{pid}/schedstat").read_text().split()[0]) / 1e6

    before = running()
    time.sleep(WATCHED)
    return (running() - before) / WATCHED


def wait_for(screen, point, is_open, black):
    deadline = time.monotonic() + desktop.DEADLINE
    while (screen.pixel(*point) != black) != is_open:
        if time.monotonic() > deadline:
            raise desktop.DesktopError("The popover does not " + ("open." if is_open else "close."))
        time.sleep(0.0001)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--times", type=int, default=3000)
    parser.add_argument("--executable", type=pathlib.Path,
                        default=ROOT / "build" / "release" / "orvanta")
    parser.add_argument("store", nargs="?", type=pathlib.Path)
    arguments = parser.parse_args()
    desktop.end_on_signals()
    with desktop.Desktop() as place:
        panel = panels.XfcePanel(place)
        panel.start()
        place.launch_xterm()
        configuration = pathlib.Path(place.environment["XDG_CONFIG_HOME"])
        (configuration / "com.brindlework.orvanta.plist").write_bytes(
            plistlib.dumps({"setupDoneV1": True}))
        orvanta = desktop.Orvanta(place, arguments.executable)
        if arguments.store:
            desktop.Store(arguments.store).copy_to(orvanta.store.path)
        orvanta.start()
        item, screen = Item(place), Screen(place)
        # A point of the popover's margin, at whichever side of the screen it opens.
        point = (1276, 200)
        black = screen.pixel(*point)
        openings, memory = [], []
        for number in range(arguments.times):
            began = time.monotonic()
            item.activate()
            wait_for(screen, point, True, black)
            openings.append((time.monotonic() - began) * 1000)
            item.activate()
            wait_for(screen, point, False, black)
            if (number + 1) % WARMING_UP == 0:
                memory.append(memory_of(orvanta.process.pid, "Private_Dirty"))
        time.sleep(WATCHED)  # What a start leaves for later is over.
        closed = cpu_of_a_second(orvanta.process.pid)
        pss = memory_of(orvanta.process.pid, "Pss") / 1024
        item.activate()
        wait_for(screen, point, True, black)
        opened = cpu_of_a_second(orvanta.process.pid)
        panel.close()
    first = openings[0]
    openings.sort()
    print(f"click to first pixels, ms, of {len(openings)} (budget 50): the first {first:.1f}, "
          f"median {statistics.median(openings):.1f}, "
          f"95 of 100 within {openings[len(openings) * 95 // 100]:.1f}, most {openings[-1]:.1f}")
    print(f"CPU a second, ms: {closed:.2f} closed, {opened:.2f} open")
    print(f"PSS with the panel closed again, MB (a year of history 29, ten 32): {pss:.1f}")
    print(f"private dirty, kB, after each {WARMING_UP}: {' '.join(map(str, memory))}")


if __name__ == "__main__":
    main()
