"""On a Wayland compositor of wlroots: applications and a browser in turn, a locker, the panel, and
the compositor's end."""

import time

import browsers
import case
import desktop
import orvanta_end
import sway

FOOT = "app:foot"
SITE = "site:alpha.test"

# Uneven, so that no rhythm of Orvanta's own falls together with the switches. The first is longer
# than a save is away.
STRETCHES = (7, 2, 5, 3, 4, 3)


class Sway(case.SystemTest):
    TERMINAL = FOOT

    def make_desktop(self):
        return sway.SwayDesktop(time_zone=desktop.zone_far_from_midnight())

    def setUp(self):
        super().setUp()
        # A panel that opens by itself would be in front.
        self.prefer(setupDoneV1=True)

    def start_with_terminal(self):
        """With a terminal in front that counts."""
        terminal = self.desktop.launch_terminal()
        self.start()
        self.wait_to_count(self.TERMINAL)
        return terminal

    def launch_browser(self):
        """One that was agreed to at an earlier time."""
        self.prefer(".automation", allowed=["chromium"])
        pages = orvanta_end.Sites()
        self.addCleanup(pages.close)
        browser = browsers.Chromium(self.desktop, pages)
        browser.load_extension()
        browser.command.append("--ozone-platform=wayland")
        return browser.new_window(lambda: browser.open(browser.address("alpha.test")))

    def test_each_has_its_time(self):
        windows = {self.TERMINAL: self.desktop.launch_terminal(),
                   case.MOUSEPAD: self.desktop.launch_mousepad(), SITE: self.launch_browser()}
        self.start()
        self.wait_to_count(SITE)
        self.desktop.activate(windows[self.TERMINAL])
        self.wait_to_count(self.TERMINAL)  # What was in front before it has been saved.
        before = self.store.session_seconds()
        for number, stretch in enumerate(STRETCHES):
            key = (case.MOUSEPAD, SITE, self.TERMINAL)[number % 3]
            self.count(key, self.desktop.activate(windows[key]))
            time.sleep(stretch)
        self.ask_to_end()
        self.assert_near(self.gained_since(before), self.due, "session")
        self.assert_near(self.store.history_seconds(), self.gained_since({}), "history")

    def absences(self, terminal):
        """Ways to leave it, and to come back to it."""
        return ((self.desktop.lock, self.desktop.unlock),
                (lambda: self.desktop.message("workspace", "2"),
                 lambda: self.desktop.activate(terminal)))

    def test_nothing_counts_behind_a_locker_or_without_a_window(self):
        terminal = self.start_with_terminal()
        for leave, come_back in self.absences(terminal):
            leave()
            self.assert_nothing_counts()
            come_back()
            self.wait_to_count(self.TERMINAL)

    def leave_panel_for(self, _):
        """The window that was in front before it."""
        self.desktop.press("Escape")

    def wait_for_panel(self):
        self.start_again()  # Nothing here shows its status item.
        return desktop.wait_until(self.own_windows, "the panel")[0]

    def wait_for_no_panel(self):
        desktop.wait_until(lambda: not self.own_windows(), "the panel's end")

    def test_the_panel_neither_counts_nor_stops_what_is_behind_it(self):
        mousepad = self.desktop.launch_mousepad()
        terminal = self.start_with_terminal()
        panel = self.wait_for_panel()
        desktop.wait_until(lambda: self.desktop.focused() == panel, "the panel in front")
        before = self.store.session_seconds()
        desktop.wait_until(lambda: self.gained_since(before).get(self.TERMINAL, 0) > 4,
                           "time behind it", 4 + case.SAVE_INTERVAL + case.TOLERANCE)
        self.leave_panel_for(terminal)
        self.wait_for_no_panel()
        self.assertEqual(self.desktop.focused(), terminal)

        self.wait_for_panel()
        self.desktop.activate(mousepad)
        self.wait_for_no_panel()
        self.wait_to_count(case.MOUSEPAD)
        self.assertEqual(set(self.gained_since({})), {self.TERMINAL, case.MOUSEPAD})

    def test_the_compositors_end_loses_nothing_and_its_return_is_noticed(self):
        self.start_with_terminal()
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
        panel = desktop.wait_until(self.own_windows, "the panel")[0]
        _, _, right, bottom = place.work_area()
        desktop.wait_until(lambda: place.place_of(panel) == (right - 320, bottom - 352),
                           "its place")
