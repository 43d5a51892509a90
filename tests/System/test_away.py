"""Nothing is counted while the person is away, whichever service tells it, and however many do."""

import time

import case
import desktop

SAVER = ("org.gnome.ScreenSaver", "/org/gnome/ScreenSaver")
LOGIND = ("org.freedesktop.login1", "/org/freedesktop/login1")
SESSION = (LOGIND[0], "/org/freedesktop/login1/session/c1")
MOCK = "org.freedesktop.DBus.Mock"

# Saying it, hearing it and saving it.
PROMPTLY = 0.7


class Services:
    """For a test with a desktop: logind and a screen saver, played on its bus."""

    def start_services(self):
        environment = self.desktop.environment
        # One bus is both here, and dbusmock plays the services on it.
        environment["DBUS_SYSTEM_BUS_ADDRESS"] = environment["DBUS_SESSION_BUS_ADDRESS"]
        environment["XDG_SESSION_ID"] = "c1"
        for template, service in (("logind", LOGIND), ("gnome_screensaver", SAVER)):
            self.desktop.spawn(["/usr/bin/python3", "-m", "dbusmock", "--template", template])
            self.desktop.run("gdbus", "wait", "--session", "--timeout", "20", service[0])
        self.desktop.call(*LOGIND, f"{MOCK}.AddSession", "c1", "seat0", "1000", "somebody", "true")

    def prepare_for_sleep(self, begins):
        self.desktop.call(*LOGIND, f"{MOCK}.EmitSignal", "org.freedesktop.login1.Manager",
                          "PrepareForSleep", "b", f"[<{begins}>]")

    def _session_property(self, name, value):
        self.desktop.call(*SESSION, f"{MOCK}.UpdateProperties", "org.freedesktop.login1.Session",
                          f"{{'{name}': <{value}>}}")

    def switch_session(self, begins):
        self._session_property("Active", "false" if begins == "true" else "true")

    def lock(self, begins):
        self._session_property("LockedHint", begins)

    def save_the_screen(self, begins):
        self.desktop.call(*SAVER, "org.gnome.ScreenSaver.SetActive", begins)

    def blank_the_displays(self, begins):
        self.desktop.run("xset", "s", "activate" if begins == "true" else "reset")


class Away(Services, case.SystemTest):
    def setUp(self):
        super().setUp()
        self.start_services()
        self.desktop.launch_xterm()

    def test_counting_stops_at_once_and_resumes_when_all_are_over(self):
        reasons = (self.prepare_for_sleep, self.switch_session, self.lock, self.save_the_screen,
                   self.blank_the_displays)
        counted = 0.0

        def stand_still(seconds):
            """What was before is in the store, and nothing is booked. If anything were that is not
            saved yet, the sum at the end would show it."""
            time.sleep(PROMPTLY)
            self.assertAlmostEqual(self.store.total(), counted, delta=case.TOLERANCE)
            before = self.store.total()
            time.sleep(seconds)
            self.assertEqual(self.store.total(), before)

        self.lock("true")
        self.start()
        stand_still(case.SAVE_INTERVAL)
        self.assertLess(self.store.total(), PROMPTLY)
        began = time.monotonic()
        self.lock("false")
        for number, reason in enumerate(reasons):
            with self.subTest(reason.__name__):
                desktop.sleep_until(began + 2)
                counted += time.monotonic() - began
                reason("true")
                stand_still(1)
                # Overlapping with the one before it.
                other = reasons[number - 1]
                other("true")
                reason("false")
                stand_still(1)
                began = time.monotonic()
                other("false")
        desktop.sleep_until(began + 2)
        counted += self.ask_to_end() - began
        self.assert_seconds({case.XTERM: counted})
