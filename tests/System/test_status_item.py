"""The status item in real panels, mostly shown by a small program that has nothing else."""

import os
import re
import time

import case
import desktop
import panels
from status_area import PRODUCTION, SECONDARY, click, ink


def registered_items(place):
    """What the watcher has, as bus names with a path."""
    return re.findall(r"'([^']*)'", place.read(
        "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher", "org.kde.StatusNotifierWatcher",
        "RegisteredStatusNotifierItems"))


def choose(place, position, key):
    """Opens the menu and chooses the entry that this key leads to."""
    def windows_shown():
        return set(place.run("xdotool", "search", "--onlyvisible", "--name", "").split())

    before = windows_shown()
    click(place, position, 3)
    desktop.wait_until(lambda: windows_shown() - before, "the menu")
    # It takes the keyboard just after it has come up, and nothing shows that it has.
    time.sleep(0.3)
    place.run("xdotool", "key", key, "Return")


class StatusItem(case.SystemTest):
    def test_it_is_in_the_panel_and_its_menu_ends_it(self):
        self.desktop.launch_xterm()
        panel = panels.XfcePanel(self.desktop)
        panel.start()
        self.orvanta.start()
        position = desktop.wait_until(lambda: ink(self.desktop, panel, SECONDARY),
                                      "the item in the panel")
        service = registered_items(self.desktop)[0].partition("/")[0]
        for name, value in (("Title", "'↑ —/—'"),
                            ("ToolTip", "orvanta · Sem dados classificados")):
            self.assertIn(value, self.desktop.read(service, "/StatusNotifierItem",
                                                   "org.kde.StatusNotifierItem", name))
        self.assertIn("'Sair do orvanta'", self.desktop.call(
            service, "/MenuBar", "com.canonical.dbusmenu.GetLayout", "0", "1", "[]"))
        choose(self.desktop, position, "Up")
        self.assertEqual(self.orvanta.wait(), 0)
        self.assertEqual(self.store.integrity(), "ok")

    def start_demo(self):
        self.demo = self.desktop.spawn([os.environ["ORVANTA_STATUS_ITEM_DEMO"]])

    def said(self):
        return self.desktop.log(os.path.basename(os.environ["ORVANTA_STATUS_ITEM_DEMO"]))

    def wait_for_ink(self, panel):
        return desktop.wait_until(lambda: ink(self.desktop, panel, PRODUCTION),
                                  "the item in the panel", every=0.1)

    def wait_for_no_ink(self, panel):
        desktop.wait_until(lambda: not ink(self.desktop, panel, PRODUCTION),
                           "the end of the item in the panel")

    def wait_for_words(self, pattern):
        return desktop.wait_until(lambda: re.search(pattern, self.said()), f"'{pattern}'")

    def assert_clicks_arrive(self, panel):
        position = self.wait_for_ink(panel)
        click(self.desktop, position, 1)
        x, y = map(int, self.wait_for_words(r"activate (\d+) (\d+)").groups())
        self.assertLess(abs(x - position[0]) + abs(y - position[1]), 40)

        # The arrow keys find the entries; the last one ends the program.
        for words in ("all 1", "all 0"):
            choose(self.desktop, position, "Down")
            self.wait_for_words(words)
        choose(self.desktop, position, "Up")
        self.assertEqual(self.demo.wait(desktop.DEADLINE), 0, self.said())
        self.wait_for_no_ink(panel)

    def test_clicks_arrive_from_a_panel(self):
        panel = panels.XfcePanel(self.desktop)
        panel.start()
        self.start_demo()
        self.assert_clicks_arrive(panel)

    def test_clicks_arrive_from_an_embedding_tray(self):
        tray = panels.EmbeddingTray(self.desktop)
        self.start_demo()
        tray.start()
        self.assert_clicks_arrive(tray)

    def test_it_moves_from_tray_to_panel_and_back(self):
        tray = panels.EmbeddingTray(self.desktop)
        panel = panels.XfcePanel(self.desktop)
        self.start_demo()
        for _ in range(2):
            tray.start()
            self.wait_for_ink(tray)
            panel.start()
            self.wait_for_ink(panel)
            self.wait_for_no_ink(tray)
            self.assertEqual(registered_items(self.desktop), [
                f"org.kde.StatusNotifierItem-{self.demo.pid}-1/StatusNotifierItem"])
            # The panel has taken the trays' place over; an ousted tray does not ask for it again.
            tray.kill()
            panel.kill()
