"""On a Wayland compositor of wlroots: two applications and a browser in turn, a locker, and the
compositor's end."""

import plistlib
import time

import browsers
import case
import desktop
import orvanta_end
import sway

FOOT = "app:foot"
SITE = "site:alpha.test"


class Sway(case.SystemTest):
    TERMINAL = FOOT

    def make_desktop(self):
        return sway.SwayDesktop(time_zone=desktop.zone_far_from_midnight())

    def setUp(self):
        super().setUp()
        # A panel that opens by itself would be in front.
        self.prefer("", setupDoneV1=True)

    def prefer(self, name, **preferences):
        (self.desktop.folder / "config" / f"{desktop.DOMAIN}{name}.plist").write_bytes(
            plistlib.dumps(preferences))

    def leave_panel_for(self, _):
        """The window that was in front before it."""
        self.desktop.press("Escape")

    def gained_since(self, before):
        return {key: seconds - before.get(key, 0)
                for key, seconds in self.store.session_seconds().items()
                if seconds - before.get(key, 0) > 0.01}

    def wait_to_count(self, key):
        before = self.store.session_seconds().get(key, 0)
        desktop.wait_until(lambda: self.store.session_seconds().get(key, 0) > before,
                           f"{key} to count", orvanta_end.PATIENCE)

    def open_browser(self):
        """That was agreed to at an earlier time."""
        self.prefer(".automation", allowed=["chromium"])
        pages = orvanta_end.Sites()
        self.addCleanup(pages.close)
        browser = browsers.Chromium(self.desktop, pages)
        browser.load_extension()
        browser.command.append("--ozone-platform=wayland")
        return browser.new_window(lambda: browser.open(browser.address("alpha.test")))

    def test_each_has_its_time(self):
        windows = {SITE: self.open_browser(), self.TERMINAL: self.desktop.launch_terminal(),
                   case.MOUSEPAD: self.desktop.launch_mousepad()}
        self.orvanta.start()
        self.desktop.activate(windows[SITE])
        self.wait_to_count(SITE)

        # Uneven; a minute.
        stretches = ((self.TERMINAL, 7), (case.MOUSEPAD, 9), (SITE, 8), (self.TERMINAL, 3),
                     (SITE, 11), (case.MOUSEPAD, 6), (self.TERMINAL, 10), (SITE, 6))
        seen = dict.fromkeys(windows, 0.0)
        due = since = self.desktop.activate(windows[self.TERMINAL])
        self.wait_to_count(self.TERMINAL)  # What was in front before it has been saved.
        before = self.store.session_seconds() | {self.TERMINAL: 0}
        for index, (key, stretch) in enumerate(stretches):
            due += stretch
            desktop.sleep_until(due)
            if index == len(stretches) - 1:
                switched = self.ask_to_end()
            else:
                switched = self.desktop.activate(windows[stretches[index + 1][0]])
            seen[key] += switched - since
            since = switched
        gained = self.gained_since(before)
        print(f"{gained} of {seen}")
        self.assertEqual(set(gained), set(seen))
        for key, seconds in seen.items():
            self.assertAlmostEqual(gained[key], seconds, delta=case.TOLERANCE, msg=key)

    def absences(self, terminal):
        """Ways to leave it, and to come back to it."""
        return ((self.desktop.lock, self.desktop.unlock),
                (lambda: self.desktop.message("workspace", "2"),
                 lambda: self.desktop.activate(terminal)))

    def test_nothing_counts_behind_a_locker_or_without_a_window(self):
        terminal = self.desktop.launch_terminal()
        self.orvanta.start()
        self.wait_to_count(self.TERMINAL)
        for leave, come_back in self.absences(terminal):
            leave()
            time.sleep(2)  # Until what was before has been booked.
            before = self.store.session_seconds()
            time.sleep(6)
            self.assertEqual(self.store.session_seconds(), before)
            come_back()
            self.wait_to_count(self.TERMINAL)

    def test_the_panel_neither_counts_nor_stops_what_is_behind_it(self):
        terminal, mousepad = self.desktop.launch_terminal(), self.desktop.launch_mousepad()
        self.desktop.activate(terminal)
        self.orvanta.start()
        self.wait_to_count(self.TERMINAL)

        self.desktop.spawn([self.orvanta.executable])  # Nothing here shows its status item.
        panel = desktop.wait_until(lambda: self.desktop.windows_of(self.orvanta.process.pid),
                                   "the panel")[0]
        desktop.wait_until(lambda: self.desktop.focused() == panel, "the panel in front")
        before = self.store.session_seconds()
        desktop.wait_until(lambda: self.gained_since(before).get(self.TERMINAL, 0) > 4,
                           "time behind it", 4 + case.SAVE_INTERVAL + case.TOLERANCE)
        self.leave_panel_for(terminal)
        desktop.wait_until(lambda: not self.desktop.windows_of(self.orvanta.process.pid),
                           "the panel's end")
        self.assertEqual(self.desktop.focused(), terminal)

        self.desktop.spawn([self.orvanta.executable])
        desktop.wait_until(lambda: self.desktop.windows_of(self.orvanta.process.pid), "the panel")
        self.desktop.activate(mousepad)
        desktop.wait_until(lambda: not self.desktop.windows_of(self.orvanta.process.pid),
                           "the panel's end")
        self.wait_to_count(case.MOUSEPAD)
        self.assertEqual({key for key, seconds in self.store.session_seconds().items() if seconds},
                         {self.TERMINAL, case.MOUSEPAD})

    def test_the_compositors_end_loses_nothing_and_its_return_is_noticed(self):
        self.desktop.launch_terminal()
        self.orvanta.start()
        self.wait_until_something_is_unsaved()
        saved = self.store.total()
        self.desktop.kill_server()
        desktop.wait_until(lambda: self.store.total() > saved + 2, "what was not saved")
        self.desktop.restart_server()
        self.desktop.launch_terminal()
        self.wait_to_count(self.TERMINAL)
        self.ask_to_end()
        self.assertEqual(self.store.integrity(), "ok")


class Bar(case.SystemTest):
    def make_desktop(self):
        place = sway.SwayDesktop(time_zone=desktop.zone_far_from_midnight())
        place.has_bar = True
        return place

    def test_the_panel_is_in_the_corner_at_the_bar(self):
        place = self.desktop
        desktop.wait_until(lambda: place.work_area()[3] < 800, "the bar")
        self.orvanta.start()  # For the first time: the panel opens by itself.
        panel = desktop.wait_until(lambda: place.windows_of(self.orvanta.process.pid),
                                   "the panel")[0]
        _, _, right, bottom = place.work_area()
        desktop.wait_until(lambda: place.place_of(panel) == (right - 320, bottom - 352),
                           "its place")
