"""On KWin: what test_sway sees on sway, with a terminal of the X server that is KWin's guest."""

import os
import re
import time

import case
import desktop
import kwin
import test_sway


class KWin(test_sway.Sway):
    TERMINAL = case.XTERM
    IS_BY_SCRIPT = False

    def make_desktop(self):
        return kwin.KWinDesktop(os.environ["ORVANTA_EXECUTABLE"],
                                time_zone=desktop.zone_far_from_midnight(),
                                has_menu=not self.IS_BY_SCRIPT)

    def wait_to_count(self, key):
        super().wait_to_count(key)
        self.assertEqual(self.desktop.has_script(desktop.DOMAIN), self.IS_BY_SCRIPT)

    def leave_panel_for(self, window):
        """No keys can be pressed on a KWin without a display."""
        self.desktop.activate(window)

    def absences(self, terminal):
        return ((self.desktop.lock, self.desktop.unlock),
                (lambda: self.desktop.minimize(terminal), lambda: self.desktop.activate(terminal)))

    def test_the_panel_opens_where_its_item_was_clicked(self):
        terminal = self.start_with_terminal()
        names = self.desktop.call("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                  "org.freedesktop.DBus.ListNames")
        item = re.search(r"org\.kde\.StatusNotifierItem-[\d-]+", names)[0]
        for click, place in (((900, 10), (740, 22)), ((300, 700), (140, 336))):
            self.desktop.call(item, "/StatusNotifierItem", "org.kde.StatusNotifierItem.Activate",
                              *map(str, click))
            panel = desktop.wait_until(self.own_windows, "the panel")[0]
            desktop.wait_until(lambda: self.desktop.place_of(panel) == place, "the panel's place")
            self.desktop.activate(terminal)
            self.wait_for_no_panel()
            time.sleep(1)  # A click right after it would be the one that closed it.


class KWinByScript(KWin):
    """Where KWin finds no menu of applications: it then overlooks our desktop entry, which asks for
    the list of windows."""

    IS_BY_SCRIPT = True
