"""The status item in real panels, shown by a small program that has nothing else."""

import os
import re
import time
import unittest

import case
import desktop
import panels

PRODUCTION = (64, 194, 74)
SECONDARY = (142, 142, 147)


def ink(place, panel, colour):
    """Where the panel has this colour: the midst of it, or nothing."""
    found = [position for position, seen in panels.pixels(place, panel.area).items()
             if max(abs(a - b) for a, b in zip(seen, colour)) <= 12]
    # A few pixels may be anything.
    return found[len(found) // 2] if len(found) >= 20 else None


def click(place, position, button):
    place.run("xdotool", "mousemove", *map(str, position), "click", str(button))


def choose(place, position, key):
    """Opens the menu and chooses the entry that this key leads to."""
    before = windows_shown(place)
    click(place, position, 3)
    desktop.wait_until(lambda: windows_shown(place) - before, "the menu")
    # It takes the keyboard just after it has come up, and nothing shows that it has.
    time.sleep(0.3)
    place.run("xdotool", "key", key, "Return")


def windows_shown(place):
    return set(place.run("xdotool", "search", "--onlyvisible", "--name", "").split())


class Application(case.SystemTest):
    def test_the_application_is_in_the_panel_and_its_menu_ends_it(self):
        self.desktop.launch_xterm()
        panel = panels.XfcePanel(self.desktop)
        panel.start()
        self.orvanta.start()
        position = desktop.wait_until(lambda: ink(self.desktop, panel, SECONDARY),
                                      "the item in the panel")
        service, = panels.registered_items(self.desktop)
        service = service.partition("/")[0]
        self.assertIn("'↑ —/—'", panels.item_property(self.desktop, service, "Title"))
        self.assertIn("orvanta · Sem dados classificados",
                      panels.item_property(self.desktop, service, "ToolTip"))
        self.assertIn("'Sair do orvanta'", panels.item_menu(self.desktop, service))
        choose(self.desktop, position, "Up")
        self.assertEqual(self.orvanta.wait(), 0)
        self.assert_sound()


class StatusItem(unittest.TestCase):
    def setUp(self):
        self.desktop = desktop.Desktop()
        self.addCleanup(self.desktop.close)
        self.desktop.open()
        self.demo = None

    def start_demo(self):
        self.demo = self.desktop.spawn(
            [os.environ["ORVANTA_STATUS_ITEM_DEMO"], "↑", "63", "37", "production"])

    def said(self):
        return self.desktop.log(os.path.basename(os.environ["ORVANTA_STATUS_ITEM_DEMO"]))

    def ink(self, panel):
        return ink(self.desktop, panel, PRODUCTION)

    def wait_for_ink(self, panel):
        return desktop.wait_until(lambda: self.ink(panel), "the item in the panel", every=0.1)

    def wait_for_words(self, pattern):
        return desktop.wait_until(lambda: re.search(pattern, self.said()), f"'{pattern}'")

    def assert_clicks_arrive(self, panel):
        position = self.wait_for_ink(panel)
        click(self.desktop, position, 1)
        x, y = map(int, self.wait_for_words(r"activate (\d+) (\d+)").groups())
        self.assertLess(abs(x - position[0]) + abs(y - position[1]), 40)

        # The arrow keys find the entries; the last one ends the program.
        before = self.said().count("menu")
        choose(self.desktop, position, "Down")
        self.wait_for_words("all 1")
        self.assertGreater(self.said().count("menu"), before, "asked anew")
        choose(self.desktop, position, "Up")
        self.assertEqual(self.demo.wait(desktop.DEADLINE), 0, self.said())
        desktop.wait_until(lambda: not self.ink(panel), "the end of the item in the panel")

    def test_a_panel_shows_it_whichever_starts_first_and_again_after_its_restart(self):
        for dark in (False, True):
            with self.subTest(dark=dark):
                panel = panels.XfcePanel(self.desktop, dark=dark)
                self.start_demo()
                for _ in range(2):
                    panel.start()
                    self.wait_for_ink(panel)
                    self.assertEqual(
                        panels.registered_items(self.desktop),
                        [f"org.kde.StatusNotifierItem-{self.demo.pid}-1/StatusNotifierItem"])
                    panel.kill()
                    self.assertIsNone(self.demo.poll(), self.said())
                self.demo.terminate()
                self.demo.wait(desktop.DEADLINE)
                panel.start()
                self.start_demo()
                self.wait_for_ink(panel)
                self.demo.terminate()
                panel.close()

    def test_a_panel_hands_clicks_on_and_shows_the_menu(self):
        panel = panels.XfcePanel(self.desktop)
        panel.start()
        self.start_demo()
        self.assert_clicks_arrive(panel)

    def test_a_tray_that_only_embeds_windows_shows_it_too(self):
        tray = panels.EmbeddingTray(self.desktop)
        self.start_demo()
        tray.start()
        self.assert_clicks_arrive(tray)

    def test_it_moves_from_the_tray_to_a_panel_and_back_and_is_never_in_both(self):
        tray = panels.EmbeddingTray(self.desktop)
        panel = panels.XfcePanel(self.desktop)
        self.start_demo()
        for _ in range(2):
            tray.start()
            self.wait_for_ink(tray)
            panel.start()
            self.wait_for_ink(panel)
            desktop.wait_until(lambda: not self.ink(tray), "the end of the item in the tray")
            self.assertEqual(len(panels.registered_items(self.desktop)), 1)
            # The panel has taken the trays' place over, and an ousted tray does not ask for it again.
            tray.kill()
            panel.kill()

    def test_nothing_is_said_on_the_bus_while_only_the_tooltip_changes(self):
        panel = panels.XfcePanel(self.desktop)
        panel.start()
        self.start_demo()
        self.wait_for_ink(panel)
        time.sleep(2)
        item = f"org.kde.StatusNotifierItem-{self.demo.pid}-1"
        self.desktop.spawn(["dbus-monitor", "--session", "--profile",
                            f"sender='{item}'", f"destination='{item}'"])
        desktop.wait_until(lambda: "NameAcquired" in self.desktop.log("dbus-monitor"), "a monitor")
        time.sleep(5)
        self.assertEqual(self.heard(), [])
        click(self.desktop, self.wait_for_ink(panel), 1)
        desktop.wait_until(self.heard, "a sign that the monitor hears")

    def heard(self):
        return [line for line in self.desktop.log("dbus-monitor").splitlines()
                if not re.search(r"^#|NameAcquired|NameLost", line)]


if __name__ == "__main__":
    case.main()
