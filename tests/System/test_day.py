"""A day lived with Orvanta, from its first start to the next morning."""

import datetime
import os
import pathlib
import re
import select
import shlex
import signal
import time

import browsers
import case
import desktop
import orvanta_end
import panel_case

ALPHA = "site:alpha.test"
ACTIVITIES = {case.XTERM: ("XTerm", "pending"), case.MOUSEPAD: ("Mousepad", "production"),
              ALPHA: ("alpha.test", "consumption"),
              "app:com.apple.finder": ("Finder", "ignored")}  # From the first start on.
PATIENCE = orvanta_end.PATIENCE

# The buttons of the setup's rows, from the popover's corner.
LOGIN, DEFAULT_BROWSER = (276, 110), (276, 154)

DAYS = ("SEG", "TER", "QUA", "QUI", "SEX", "SÁB", "DOM")
MONTHS = ("JAN", "FEV", "MAR", "ABR", "MAI", "JUN", "JUL", "AGO", "SET", "OUT", "NOV", "DEZ")


class Day(panel_case.PanelTest):
    def press(self, button):
        left, top, *_ = self.wait_for_popover()
        self.click((left + button[0], top + button[1]))

    def set_up(self):
        """By clicks in the popover, which opens by itself, until all is allowed."""
        pages = orvanta_end.Sites()
        self.addCleanup(pages.close)
        chromium = browsers.Chromium(self.desktop, pages)
        # What the menu's entry of the browser starts.
        folder = pathlib.Path(self.environment["XDG_DATA_HOME"]) / "applications"
        folder.mkdir(parents=True)
        entry = pathlib.Path("/usr/share/applications/chromium.desktop").read_text()
        (folder / "chromium.desktop").write_text(re.sub(
            "(?m)^Exec=.*", lambda _: f"Exec={shlex.join(chromium.command)} %U", entry))

        self.start_with_panel()
        self.press(LOGIN)
        entry = self.configuration() / "autostart" / f"{desktop.DOMAIN}.desktop"
        desktop.wait_until(entry.exists, "the login item")

        # The browser does not run: it is started, out of sight, and the question comes.
        self.press(DEFAULT_BROWSER)
        started = desktop.wait_until(
            lambda: [window for window in self.desktop.windows()
                     if "chromium" in self.desktop.run("xprop", "-id", str(window), "WM_CLASS")],
            "the browser", PATIENCE)[0]
        desktop.wait_until(lambda: "_NET_WM_STATE_HIDDEN" in self.desktop.run(
            "xprop", "-id", str(started), "_NET_WM_STATE"), "the browser out of sight")
        self.agree()
        desktop.wait_until(lambda: self.decisions().get("agreed") == ["chromium"], "the decision")
        self.desktop.press("space")  # It must be restarted.
        self.assertFalse(self.preferences().get("setupDoneV1"))

        # Started anew it has the extension, connects, and the popover opens by itself: all is done.
        process = int(self.desktop.run("xdotool", "getwindowpid", str(started)))
        ended = os.pidfd_open(process)
        os.kill(process, signal.SIGTERM)
        self.assertTrue(select.select([ended], [], [], PATIENCE)[0], "the browser does not end")
        os.close(ended)
        site = chromium.new_window(lambda: chromium.open(chromium.address("alpha.test")))
        desktop.wait_until(lambda: self.preferences().get("setupDoneV1"), "the setup's end",
                           PATIENCE)
        self.assertEqual(self.decisions()["allowed"], ["chromium"])
        self.wait_for_popover()
        self.windows = {case.XTERM: self.terminal, case.MOUSEPAD: self.desktop.launch_mousepad(),
                        ALPHA: site}

    def restart_before_midnight(self):
        """With an empty store: how the time of the setup divides is the machine's affair."""
        self.desktop.activate(self.terminal)
        self.ask_to_end()
        self.store.path.unlink()
        midnight = int(time.time()) + 12
        west = (midnight + 43200) % 86400 - 43200  # Seconds west of Greenwich.
        self.environment["TZ"] = (f"DIA{'-' * (west < 0)}{datetime.timedelta(seconds=abs(west))}")
        self.morning = datetime.datetime.utcfromtimestamp(midnight - west).date()
        self.count(case.XTERM, self.start())
        self.item = self.wait_for_item(self.panel)
        return time.monotonic() + midnight - time.time()

    def spend(self, seconds, key):
        self.count(key, self.desktop.activate(self.windows[key]))
        time.sleep(seconds)

    def open_panel(self):
        self.click(self.item)
        self.wait_for_popover()
        self.wait_for_title("MONITORANDO")

    def close_panel(self):
        self.desktop.press("Escape")
        self.wait_for_no_popover()

    def look_back(self, day, counted):
        self.open_panel()
        self.click_on("Histórico por dia")
        self.assertEqual(self.wait_for_title("HISTÓRICO"), "HISTÓRICO 2")
        title = f"{DAYS[day.weekday()]} {day.day} {MONTHS[day.month - 1]}"
        self.move_to(title)
        minutes, seconds = map(int, self.wait_for_title(title + " ").split()[-1].split(":"))
        self.assertAlmostEqual(60 * minutes + seconds, sum(counted.values()),
                               delta=case.TOLERANCE * len(counted))
        self.close_panel()

    def classify_and_reset(self):
        """Returns what was due until then."""
        self.open_panel()
        self.click_on("Mousepad: Produção")
        self.click_on("alpha.test: Consumo")
        self.click_on("Zerar tempo")
        self.reader.wait_for("Zerar o tempo acumulado?")
        self.click_on("Zerar")
        desktop.wait_until(lambda: not self.store.session_seconds()[case.MOUSEPAD], "the reset")
        self.count(ALPHA)
        self.close_panel()
        return self.due.copy()

    def test_from_the_first_start_to_the_next_morning(self):
        self.set_up()
        midnight = self.restart_before_midnight()
        desktop.sleep_until(midnight - 5)
        self.spend(7, case.MOUSEPAD)
        self.count(case.MOUSEPAD, midnight)
        evening = self.due.copy()
        self.due.clear()
        self.spend(4, ALPHA)
        yesterday = self.morning - datetime.timedelta(days=1)
        self.look_back(yesterday, evening)
        before_reset = self.classify_and_reset()
        self.spend(3, case.XTERM)
        self.spend(3, ALPHA)
        self.ask_to_end()

        self.assertEqual(self.store.integrity(), "ok")
        self.assert_near(self.gained_since({}), self.due - before_reset, "session")
        for day, expected in ((yesterday, evening), (self.morning, self.due)):
            self.assert_near(dict(self.store.rows(
                f"SELECT ZKEY, ZSECONDS FROM ZDAYACTIVITY WHERE ZDAY = '{day}'")), expected, day)
        self.assertEqual({key: (name, category) for key, name, category in self.store.rows(
            "SELECT ZKEY, ZNAME, ZCATEGORYVALUE FROM ZACTIVITY")}, ACTIVITIES)
