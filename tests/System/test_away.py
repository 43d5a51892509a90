"""Nothing is counted while the person is away, whichever service tells it, and however many do."""

import time

import case
import desktop

SAVER = ("org.gnome.ScreenSaver", "/org/gnome/ScreenSaver")
LOGIND = ("org.freedesktop.login1", "/org/freedesktop/login1")
SESSION = ("org.freedesktop.login1", "/org/freedesktop/login1/session/c1")
MOCK = "org.freedesktop.DBus.Mock"

# Saying it, hearing it and saving it.
PROMPTLY = 0.7


class Away(case.SystemTest):
    def setUp(self):
        super().setUp()
        environment = self.desktop.environment
        # One bus is both here, and dbusmock plays the services on it.
        environment["DBUS_SYSTEM_BUS_ADDRESS"] = environment["DBUS_SESSION_BUS_ADDRESS"]
        environment["XDG_SESSION_ID"] = "c1"
        for template in ("logind", "gnome_screensaver"):
            self.desktop.spawn(["/usr/bin/python3", "-m", "dbusmock", "--template", template])
        self._call_when_there(*LOGIND, f"{MOCK}.AddSession", "c1", "seat0", "1000", "somebody",
                              "true")
        self._call_when_there(*SAVER, "org.gnome.ScreenSaver.GetActive")
        self.desktop.launch_xterm()

    def _call_when_there(self, *call):
        def answered():
            try:
                return self.desktop.call(*call)
            except desktop.DesktopError:
                return None

        desktop.wait_until(answered, call[0])

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

    def test_counting_stops_at_once_and_resumes_when_all_are_over(self):
        reasons = (self.prepare_for_sleep, self.switch_session, self.lock, self.save_the_screen,
                   self.blank_the_displays)
        counted = 0.0

        def stand_still(seconds):
            """Nothing is booked in this time, and what was before is in the store."""
            time.sleep(PROMPTLY)
            self.assertAlmostEqual(self.store.total(), counted, delta=case.TOLERANCE)
            before = self.store.total()
            time.sleep(seconds)
            self.assertEqual(self.store.total(), before)

        self.lock("true")
        self.orvanta.start()
        stand_still(6)
        self.assertLess(self.store.total(), PROMPTLY)
        began = time.monotonic()
        self.lock("false")
        for number, reason in enumerate(reasons):
            with self.subTest(reason.__name__):
                desktop.sleep_until(began + 3)
                counted += time.monotonic() - began
                reason("true")
                stand_still(2)
                # Overlapping with the one before it.
                other = reasons[number - 1]
                other("true")
                reason("false")
                stand_still(2)
                began = time.monotonic()
                other("false")
        desktop.sleep_until(began + 3)
        counted += self.ask_to_end() - began
        self.assert_seconds({case.XTERM: counted})
