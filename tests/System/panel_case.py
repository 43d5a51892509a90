"""What the tests of the popover have in common: a panel that shows its item, a screen reader."""

import contextlib
import datetime
import json
import pathlib
import re
import sqlite3
import subprocess
import time
import zoneinfo

import case
import desktop
import panels

ITEM_COLOUR = (142, 142, 147)
STORE_EPOCH = 978307200.0  # Dates in the store are seconds since 2001-01-01 00:00 UTC.


class ScreenReader:
    def __init__(self, place):
        place.spawn(["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"])
        desktop.wait_until(lambda: panels.has_owner(place, "org.a11y.Bus"), "the readers' bus")
        program = pathlib.Path(__file__).with_name("screen_reader.py")
        self._process = subprocess.Popen(["/usr/bin/python3", "-B", str(program)], text=True,
                                         env=place.environment, stdin=subprocess.PIPE,
                                         stdout=subprocess.PIPE)
        self._process.stdout.readline()

    def close(self):
        self._process.communicate()

    def nodes(self):
        """All that the window in front shows, from the outside in."""
        self._process.stdin.write("\n")
        self._process.stdin.flush()
        return json.loads(self._process.stdout.readline())

    def names(self, role):
        return [node["name"] for node in self.nodes() if node["name"] and node["role"] == role]

    def wait_for(self, name):
        """What has this name, a button sooner than anything else."""
        return desktop.wait_until(lambda: sorted(
            (node for node in self.nodes() if node["name"] == name),
            key=lambda node: node["role"] != "button"), f"'{name}'")[0]


class PanelTest(case.SystemTest):
    def setUp(self):
        super().setUp()
        self.environment = self.desktop.environment
        self.reader = ScreenReader(self.desktop)
        self.addCleanup(self.reader.close)
        self.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"

    def prepare_store(self, activities, days=()):
        """Activities as (key, name, category, seconds), used an hour ago; days as (how many days
        ago, key, seconds). The application makes the store itself, at a first start."""
        self.prefer(setupDoneV1=True, historySeededV1=True)
        self.start()
        desktop.wait_until(lambda: "finderIgnoredV1" in self.preferences(), "the first start")
        self.ask_to_end()
        today = datetime.datetime.now(zoneinfo.ZoneInfo(self.environment["TZ"])).date()
        dated = [(str(today - datetime.timedelta(days=ago)), key, seconds)
                 for ago, key, seconds in days]
        with contextlib.closing(sqlite3.connect(self.store.path)) as database, database:
            database.executemany(
                "INSERT INTO ZACTIVITY (Z_ENT, Z_OPT, ZLASTUSEDAT, ZKEY, ZNAME, ZCATEGORYVALUE,"
                " ZSECONDS) VALUES (1, 1, ?, ?, ?, ?, ?)",
                [(time.time() - 3600 - STORE_EPOCH, *activity) for activity in activities])
            database.executemany(
                "INSERT INTO ZDAYACTIVITY (Z_ENT, Z_OPT, ZID, ZDAY, ZKEY, ZSECONDS)"
                " VALUES (2, 1, ?, ?, ?, ?)", [(f"{day}|{key}", day, key, seconds)
                                               for day, key, seconds in dated])

    def popovers(self):
        """The places (left, top, width, height) of the windows that no window manager manages."""
        said = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^orvanta$",
                               "getwindowgeometry", "--shell", "%@"],
                              text=True, env=self.environment, capture_output=True)
        if "BadWindow" in said.stderr:  # One vanished meanwhile.
            return self.popovers()
        managed = self.desktop.windows()
        found = re.findall(r"WINDOW=(.+)\nX=(.+)\nY=(.+)\nWIDTH=(.+)\nHEIGHT=(.+)\n", said.stdout)
        return [tuple(map(int, place)) for window, *place in found if int(window) not in managed]

    def wait_for_popover(self):
        desktop.wait_until(self.popovers, "the popover", 2 * desktop.DEADLINE)
        found = self.popovers()
        self.assertEqual(len(found), 1)
        return found[0]

    def wait_for_no_popover(self):
        desktop.wait_until(lambda: not self.popovers(), "the end of the popover")

    def click(self, place, button=1):
        self.desktop.run("xdotool", "mousemove", *map(str, place), "click", str(button))

    def item(self, panel):
        """Where the panel has the item's colour: the midst of it, or nothing."""
        left, top, width, height = panel.area
        path = self.desktop.folder / "area.ppm"
        self.desktop.run("scrot", "--overwrite", "--autoselect", f"{left},{top},{width},{height}",
                         str(path))
        pixels = path.read_bytes()[-3 * width * height:]
        found = [(left + i % width, top + i // width) for i in range(width * height)
                 if all(abs(a - b) <= 12 for a, b in zip(pixels[3 * i:3 * i + 3], ITEM_COLOUR))]
        # A few pixels may be anything.
        return found[len(found) // 2] if len(found) >= 20 else None

    def wait_for_item(self, panel):
        return desktop.wait_until(lambda: self.item(panel), "the item")

    def wait_for_no_item(self, panel):
        desktop.wait_until(lambda: not self.item(panel), "the item's end")

    def start_with_panel(self):
        self.terminal = self.desktop.launch_xterm()
        self.panel = panels.XfcePanel(self.desktop)
        self.panel.start()
        self.start()
        return self.wait_for_item(self.panel)

    def wait_for_title(self, beginning):
        """What the title band says."""
        return desktop.wait_until(lambda: next((
            name for name in self.reader.names("label") if name.startswith(beginning)), None),
            f"the title '{beginning}'")

    def move_to(self, name):
        left, top, width, height = self.reader.wait_for(name)["place"]
        self.desktop.run("xdotool", "mousemove", str(left + width // 2), str(top + height // 2))

    def click_on(self, name, button=1):
        self.move_to(name)
        self.desktop.run("xdotool", "click", str(button))
