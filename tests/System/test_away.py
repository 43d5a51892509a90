"""Nothing is counted while the person is away."""

import time

import case

MOCK = "org.freedesktop.DBus.Mock"

# Saying it, hearing it and saving it.
PROMPTLY = 0.7


class Away(case.SystemTest):
    def setUp(self):
        super().setUp()
        self.desktop.environment["XDG_SESSION_ID"] = "c1"
        self.desktop.start_logind("c1")

    def _set(self, name, value):
        self.desktop.call_logind("/session/c1", f"{MOCK}.UpdateProperties",
                                 "org.freedesktop.login1.Session", f"{{'{name}': <{value}>}}")

    def lock(self, begins):
        self._set("LockedHint", begins)

    def switch_session(self, begins):
        self._set("Active", "false" if begins == "true" else "true")

    def sleep(self, begins):
        self.desktop.call_logind("", f"{MOCK}.EmitSignal", "org.freedesktop.login1.Manager",
                                 "PrepareForSleep", "b", f"[<{begins}>]")

    def blank_the_displays(self, begins):
        self.desktop.run("xset", "s", "activate" if begins == "true" else "reset")

    def test_counting_stops_at_once_and_resumes_when_it_is_over(self):
        self.desktop.launch_xterm()
        self.lock("true")
        self.start()
        for leave in (self.lock, self.switch_session, self.sleep, self.blank_the_displays):
            with self.subTest(leave.__name__):
                self.count(None)
                leave("true")
                time.sleep(PROMPTLY)
                before = self.store.total()
                self.assertAlmostEqual(before, self.due[case.XTERM], delta=case.TOLERANCE)
                time.sleep(2)
                self.assertEqual(self.store.total(), before)
                self.count(case.XTERM)
                leave("false")
                time.sleep(2)
        self.ask_to_end()
        self.assert_due()
