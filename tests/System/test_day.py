"""A whole day lived with Orvanta, from its first start to the next morning; at the end every record
of the store against what an independent witness has seen."""

import datetime
import os
import pathlib
import re
import shlex
import signal
import time

import browsers
import case
import desktop
import orvanta_end
import panel_case
import test_away
import witness

ALPHA, BETA = "site:alpha.test", "site:beta.test"
# Finder is ignored from the first start on.
ACTIVITIES = {case.XTERM: ("XTerm", "pending"), case.MOUSEPAD: ("Mousepad", "production"),
              ALPHA: ("alpha.test", "consumption"), BETA: ("beta.test", "pending"),
              "app:com.apple.finder": ("Finder", "ignored")}
WINDOW_CLASSES = {"XTerm": case.XTERM, "Mousepad": case.MOUSEPAD, "Chromium": ALPHA,
                  "firefox-esr": BETA}
PATIENCE = orvanta_end.PATIENCE

# The buttons of the setup's rows, from the popover's corner.
LOGIN, DEFAULT_BROWSER = (276, 110), (276, 154)

# A browser that comes to the front is asked for its site, and first of all for one that is as new.
ASKING = 0.7


def zone(west):
    """So many seconds west of Greenwich (POSIX, "Environment Variables", TZ)."""
    hours, rest = divmod(abs(west), 3600)
    return f"DIA{'-' * (west < 0)}{hours}:{rest // 60:02}:{rest % 60:02}"


def has_ended(process):
    try:
        return " Z " in pathlib.Path(f"/proc/{process}/stat").read_text()
    except FileNotFoundError:
        return True


class Day(test_away.Services, panel_case.PanelTest):
    def make_desktop(self):
        self.midnight = int(time.time()) + 3 * 3600
        self.west = (self.midnight + 43200) % 86400 - 43200
        return desktop.Desktop(time_zone=zone(self.west))

    def setUp(self):
        super().setUp()
        self.start_services()
        self.environment.update(self.desktop.environment)
        self.witness = witness.Witness(self.desktop, WINDOW_CLASSES)
        self.starting = self.lost = 0.0
        self.pages = orvanta_end.Sites()
        self.addCleanup(self.pages.close)

    def start(self):
        """It is not known from where on it counts what is in front meanwhile."""
        began = time.monotonic()
        ready = super().start()
        self.witness.note("running", True, ready)
        self.starting += ready - began

    def date(self, moment):
        return datetime.datetime.fromtimestamp(moment - self.west, datetime.timezone.utc).date()

    def press(self, button):
        place = desktop.wait_until(self.popovers, "the popover", PATIENCE)[0]
        self.click((place[0] + button[0], place[1] + button[1]))

    def answer_the_question(self):
        question = desktop.wait_until(self.own_windows, "the question", PATIENCE)[0]
        self.desktop.activate(question)
        self.desktop.press("space")

    def set_up(self):
        """By clicks in the popover, which opens by itself, until all is allowed."""
        for site in (ALPHA, BETA):
            self.witness.note("barred", (site, True))
        chromium = browsers.Chromium(self.desktop, self.pages)
        # What the menu's entry of the browser starts.
        folder = pathlib.Path(self.desktop.environment["XDG_DATA_HOME"]) / "applications"
        folder.mkdir(parents=True)
        entry = pathlib.Path("/usr/share/applications/chromium.desktop").read_text()
        (folder / "chromium.desktop").write_text(re.sub(
            "(?m)^Exec=.*", lambda _: f"Exec={shlex.join(chromium.command)} %U", entry))

        self.item = self.start_with_panel()
        self.press(LOGIN)
        entry = self.configuration() / "autostart" / f"{desktop.DOMAIN}.desktop"
        desktop.wait_until(entry.exists, "the login item")

        # The browser does not run: it is started, out of sight, and the question comes.
        self.press(DEFAULT_BROWSER)
        desktop.wait_until(self.own_windows, "the question", PATIENCE)
        started = desktop.wait_until(
            lambda: [window for window in self.desktop.windows()
                     if "chromium" in self.desktop.run("xprop", "-id", str(window), "WM_CLASS")],
            "the browser", PATIENCE)[0]
        desktop.wait_until(lambda: "_NET_WM_STATE_HIDDEN" in self.desktop.run(
            "xprop", "-id", str(started), "_NET_WM_STATE"), "the browser out of sight")
        self.answer_the_question()
        desktop.wait_until(lambda: self.decisions().get("agreed") == ["chromium"], "the decision")
        self.desktop.press("space")  # It must be restarted.
        self.assertFalse(self.preferences().get("setupDoneV1"))

        # Started anew it has the extension, connects, and the popover opens by itself: all is done.
        process = int(self.desktop.run("xdotool", "getwindowpid", str(started)))
        os.kill(process, signal.SIGTERM)
        desktop.wait_until(lambda: has_ended(process), "the browser's end", PATIENCE)
        alpha = chromium.new_window(lambda: chromium.open(chromium.address("alpha.test")))
        desktop.wait_until(lambda: self.preferences().get("setupDoneV1"), "the setup's end",
                           PATIENCE)
        self.assertEqual(self.decisions()["allowed"], ["chromium"])
        self.wait_for_popover()
        self.let_in(ALPHA)
        self.item = self.wait_for_item(self.panel)

        firefox = browsers.Firefox(self.desktop, self.pages)
        firefox.load_extension()
        beta = firefox.new_window(lambda: firefox.open(firefox.address("beta.test")))
        self.answer_the_question()
        desktop.wait_until(lambda: "firefox-esr" in self.decisions()["allowed"], "the connection",
                           PATIENCE)
        self.let_in(BETA)
        self.windows = {case.XTERM: self.terminal, case.MOUSEPAD: self.desktop.launch_mousepad(),
                        ALPHA: alpha, BETA: beta}

    def let_in(self, site):
        """While it is not in front: a browser that has just connected may be asked again late."""
        self.desktop.activate(self.terminal)
        self.witness.note("barred", (site, False))

    def spend(self, seconds, key):
        self.desktop.activate(self.windows[key])
        time.sleep(seconds)

    def be_away(self, tell):
        """Behind it nothing counts that is in front."""
        self.witness.note("away", True)
        tell("true")
        time.sleep(3)
        self.witness.note("away", False)
        tell("false")

    def open_panel(self):
        self.click(self.item)
        self.wait_for_popover()
        self.wait_for_title("MONITORANDO")

    def close_panel(self):
        self.desktop.press("Escape")
        self.wait_for_no_popover()

    def work(self):
        for key, seconds in ((case.MOUSEPAD, 5), (ALPHA, 5), (BETA, 4), (case.XTERM, 3), (ALPHA, 3),
                             (case.MOUSEPAD, 3)):
            self.spend(seconds, key)
        self.open_panel()
        self.click_on("Mousepad: Produção")
        self.click_on("alpha.test: Consumo")
        self.wait_for_category(case.MOUSEPAD, "production")
        self.wait_for_category(ALPHA, "consumption")
        self.close_panel()
        self.be_away(self.lock)

    def crash(self):
        """What was measured since the last save is lost. Started again as at a login in which the
        clock shows that the day is nearly over."""
        self.lost = case.SAVE_INTERVAL
        self.witness.note("running", False, self.kill())
        midnight = int(time.time()) + 8
        self.west += midnight - self.midnight
        self.midnight = midnight
        self.environment["TZ"] = zone(self.west)
        self.start()
        self.desktop.activate(self.windows[case.XTERM])
        self.witness.note("midnight", None, time.monotonic() + self.midnight - time.time())
        time.sleep(self.midnight - time.time() + 2)
        self.assertEqual(self.popovers(), [], "there is nothing more to ask for")
        self.days = [self.date(self.midnight + seconds) for seconds in (-1, 1)]

    def look_back(self):
        self.spend(3, ALPHA)
        counted = self.witness.expected()[1][0]
        self.open_panel()
        self.click_on("Histórico por dia")
        self.assertEqual(self.wait_for_title("HISTÓRICO"), "HISTÓRICO 2")
        yesterday = panel_case.day_title(self.days[0])
        production, consumption = map(int, re.findall(
            r"\d+", self.reader.wait_for(yesterday)["description"]))
        self.assertEqual(production + consumption, 100)
        self.assertAlmostEqual(
            production, 100 * counted[case.MOUSEPAD] / (counted[case.MOUSEPAD] + counted[ALPHA]),
            delta=8)
        self.move_to(yesterday)
        minutes, seconds = map(int, self.wait_for_title(yesterday + " ").split()[-1].split(":"))
        self.assertAlmostEqual(60 * minutes + seconds, sum(counted.values()),
                               delta=self.lost + self.starting + sum(map(self.slack, counted)))
        self.close_panel()

    def reset(self):
        self.spend(3, BETA)
        self.open_panel()
        self.click_on("Zerar tempo")
        self.reader.wait_for("Zerar o tempo acumulado?")
        self.click_on("Zerar")
        desktop.wait_until(lambda: not self.store.session_seconds()[case.XTERM], "the reset")
        self.witness.note("reset", None)
        self.close_panel()
        self.compare()

    def erase_the_history(self):
        self.spend(3, case.MOUSEPAD)
        self.open_panel()
        self.open_settings()
        self.press_on("Apagar histórico…")
        self.reader.wait_for("Apagar o histórico por dia?")
        self.press_on("Apagar")
        desktop.wait_until(lambda: not self.store.history_seconds(), "the end of the history")
        self.witness.note("erased", None)
        self.spend(3, case.XTERM)
        self.spend(3, case.MOUSEPAD)

    def slack(self, key):
        return case.TOLERANCE + ASKING * self.witness.visits(key) * key.startswith("site:")

    def compare(self):
        """What has been saved: nothing else, nothing twice, nothing missing."""
        session, days = self.witness.expected()
        measured = {(day, key): seconds for day, key, seconds in
                    self.store.rows("SELECT ZDAY, ZKEY, ZSECONDS FROM ZDAYACTIVITY")}
        expected = {(day.isoformat(), key): seconds for day, counted in zip(self.days, days)
                    for key, seconds in counted.items()}
        rows = {("session", key): seconds for key, seconds in self.store.session_seconds().items()}
        print(f"session {rows} of {session}, days {measured} of {expected}")
        measured |= rows
        expected |= {("session", key): session.get(key, 0.0) for key in ACTIVITIES}
        self.assertEqual(set(measured), set(expected))
        for (day, key), seconds in expected.items():
            is_cut = (day, key) == (self.days[0].isoformat(), case.MOUSEPAD)
            was_in_front = is_cut or (day, key) == (self.days[0].isoformat(), case.XTERM)
            self.assertGreaterEqual(measured[day, key],
                                    seconds - self.slack(key) - self.lost * is_cut, key)
            self.assertLessEqual(measured[day, key],
                                 seconds + self.slack(key) + self.starting * was_in_front, key)

    def test_from_the_first_start_to_the_next_morning(self):
        self.set_up()
        self.work()
        self.crash()
        self.look_back()
        self.reset()
        self.erase_the_history()
        self.witness.note("running", False, self.ask_to_end())
        self.compare()
        self.assertEqual(self.store.integrity(), "ok")
        self.assertEqual({key: (name, category) for key, name, category in self.store.rows(
            "SELECT ZKEY, ZNAME, ZCATEGORYVALUE FROM ZACTIVITY")}, ACTIVITIES)
