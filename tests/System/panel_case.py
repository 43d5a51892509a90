"""What the tests of the panel have in common: a store with a past, and a screen reader."""

import contextlib
import datetime
import json
import pathlib
import sqlite3
import subprocess
import time
import zoneinfo

import desktop
import panels
import shell_case

DAYS = ("SEG", "TER", "QUA", "QUI", "SEX", "SÁB", "DOM")
MONTHS = ("JAN", "FEV", "MAR", "ABR", "MAI", "JUN", "JUL", "AGO", "SET", "OUT", "NOV", "DEZ")


def day_title(day):
    return f"{DAYS[day.weekday()]} {day.day} {MONTHS[day.month - 1]}"


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

    def _ask(self, words):
        self._process.stdin.write(words + "\n")
        self._process.stdin.flush()
        return json.loads(self._process.stdout.readline())

    def nodes(self):
        """All that the window in front shows, from the outside in."""
        return self._ask("read")

    def names(self, role=None):
        return [node["name"] for node in self.nodes()
                if node["name"] and role in (None, node["role"])]

    def press(self, name):
        return self._ask(f"press {name}")

    def find(self, name):
        """What has this name, with its place."""
        return self._ask(f"find {name}")

    def wait_for(self, name):
        return desktop.wait_until(lambda: self.find(name), f"'{name}'")

    def wait_for_none(self, name):
        desktop.wait_until(lambda: not self.find(name), f"the end of '{name}'")

    def focused(self):
        return self._ask("focused")


class PanelTest(shell_case.ShellTest):
    def setUp(self):
        super().setUp()
        self.reader = ScreenReader(self.desktop)
        self.addCleanup(self.reader.close)
        self.environment = dict(self.desktop.environment, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")

    def today(self):
        return datetime.datetime.now(zoneinfo.ZoneInfo(self.desktop.environment["TZ"])).date()

    def prepare_store(self, activities, days=()):
        """Activities as (key, name, category, seconds), used an hour ago; days as (how many days ago,
        key, seconds). The application makes the store itself, at a first start."""
        self.prefer(setupDoneV1=True, historySeededV1=True)
        self.orvanta.start()
        desktop.wait_until(lambda: "finderIgnoredV1" in self.preferences(), "the first start")
        self.ask_to_end()
        used = time.time() - 3600 - datetime.datetime(
            2001, 1, 1, tzinfo=datetime.timezone.utc).timestamp()
        with contextlib.closing(sqlite3.connect(self.store.path)) as database, database:
            for key, name, category, seconds in activities:
                database.execute(
                    "INSERT INTO ZACTIVITY (Z_ENT, Z_OPT, ZLASTUSEDAT, ZSECONDS, ZCATEGORYVALUE,"
                    " ZKEY, ZNAME) VALUES (1, 1, ?, ?, ?, ?, ?)",
                    (used, seconds, category, key, name))
            for ago, key, seconds in days:
                day = (self.today() - datetime.timedelta(days=ago)).isoformat()
                database.execute(
                    "INSERT INTO ZDAYACTIVITY (Z_ENT, Z_OPT, ZSECONDS, ZID, ZDAY, ZKEY)"
                    " VALUES (2, 1, ?, ?, ?, ?)", (seconds, f"{day}|{key}", day, key))

    def category(self, key):
        return dict(self.store.rows("SELECT ZKEY, ZCATEGORYVALUE FROM ZACTIVITY")).get(key)

    def wait_for_category(self, key, category):
        desktop.wait_until(lambda: self.category(key) == category, f"{key} as {category}")

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

    def tab_to(self, name):
        self.reader.wait_for(name)
        seen = []
        while (focused := self.reader.focused()) != name:
            self.assertNotIn(focused, seen, f"no Tab leads to {name}")
            seen.append(focused)
            self.desktop.press("Tab")
            desktop.wait_until(lambda: self.reader.focused() not in (focused, None),
                               "the next control")

    def press_on(self, name, key="space"):
        self.tab_to(name)
        self.desktop.press(key)

    def open_settings(self):
        """From the panel, by its menu's last entry."""
        self.desktop.run("xdotool", "key", "Menu", "Up")
        self.reader.wait_for("Ajustes…")
        self.desktop.press("Return")
        self.desktop.activate(desktop.wait_until(self.own_windows, "the settings")[0])
        self.reader.wait_for("Geral")
