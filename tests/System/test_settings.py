"""The settings as a person without a mouse uses them: with the keyboard, and by ear."""

import case
import desktop
import panel_case
import panels

ACTIVITIES = [(case.XTERM, "XTerm", "pending", 1000),
              (case.MOUSEPAD, "Mousepad", "production", 900),
              ("app:parado", "Parado", "ignored", 40)]
YESTERDAY = [(1, case.MOUSEPAD, 1800)]
SITES, LOGIN, ERASE = "Identificar sites no ", "Iniciar ao entrar no macOS", "Apagar histórico…"
QUESTION = "Apagar o histórico por dia?"


class Settings(panel_case.PanelTest):
    def open(self):
        self.prepare_store(ACTIVITIES, YESTERDAY)
        self.orvanta.start(self.environment)
        desktop.wait_until(lambda: panels.has_owner(self.desktop, "com.brindlework.orvanta"),
                           "the application")
        self.start_again()  # Nothing shows a status item here, so that opens the panel.
        self.wait_for_title("MONITORANDO")
        self.desktop.run("xdotool", "key", "Menu", "Up")
        self.reader.wait_for("Ajustes…")
        self.desktop.press("Return")
        self.desktop.activate(desktop.wait_until(self.own_windows, "the settings")[0])
        self.reader.wait_for("Geral")

    def spoken(self):
        return [(node["role"], node["name"]) for node in self.reader.nodes()
                if node["role"] in ("label", "check box", "button", "text", "list item")]

    def wait_for_check(self, name, is_wanted):
        def is_checked():
            return next("checked" in node["states"] for node in self.reader.nodes()
                        if (node["role"], node["name"]) == ("check box", name))

        # What it does is done before readers are told.
        desktop.wait_until(lambda: is_checked() == is_wanted, f"{name} as {is_wanted}")

    def switch_a_browser(self):
        sites = next(name for name in self.reader.names("check box") if name.startswith(SITES))
        self.wait_for_check(sites, True)
        said = self.spoken()
        row = [("label", sites), ("button", "Permitir"), ("check box", sites)]
        self.assertEqual(said[:3], row)
        self.assertGreater(said.index(next(each for each in said if each[1].startswith("Somente"))),
                           said.index(row[2]), "what explains the browsers is read after them")
        self.press_on(sites)
        desktop.wait_until(lambda: len(self.preferences().get("disabledBrowsers", [])) == 1,
                           "the browser's end")
        self.wait_for_check(sites, False)
        self.assertNotEqual(self.spoken()[1], row[1])
        self.desktop.press("space")
        desktop.wait_until(lambda: self.preferences()["disabledBrowsers"] == [], "its return")

    def start_at_login(self):
        entry = self.configuration() / "autostart" / "com.brindlework.orvanta.desktop"
        for is_wanted in (True, False):
            self.press_on(LOGIN)
            desktop.wait_until(lambda: entry.exists() == is_wanted, "the login item")
            self.wait_for_check(LOGIN, is_wanted)

    def erase_the_history(self):
        def days():
            return self.store.rows("SELECT ZID FROM ZDAYACTIVITY")

        for key, is_left in (("Escape", True), ("Return", True), ("space", False)):
            self.press_on(ERASE)
            self.reader.wait_for(QUESTION)
            if not is_left:
                self.tab_to("Apagar")
            self.desktop.press(key)
            self.reader.wait_for_none(QUESTION)
            desktop.wait_until(lambda: bool(days()) == is_left, "what is left of the history")
        self.assertEqual(self.store.session_seconds()[case.MOUSEPAD], 900)

    def classify(self):
        self.desktop.run("xdotool", "key", "ctrl+Tab")
        self.tab_to("Buscar app ou site")
        self.assertEqual([name for role, name in self.spoken() if role == "list item"],
                         ["Mousepad: Produção", "Parado: Ignorar", "XTerm: Pendente"])
        self.desktop.run("xdotool", "type", "xT")
        self.reader.wait_for_none("Mousepad: Produção")
        self.tab_to("XTerm: Pendente")
        self.desktop.press("space")
        self.reader.wait_for("Pendente")
        self.desktop.run("xdotool", "key", "Down", "Down", "Return")
        self.wait_for_category(case.XTERM, "consumption")
        self.reader.wait_for("XTerm: Consumo")

    def test_by_keyboard_and_by_ear(self):
        self.open()
        self.switch_a_browser()
        self.start_at_login()
        self.erase_the_history()
        self.classify()
        self.desktop.press("ctrl+q")
        self.assertEqual(self.orvanta.wait(), 0)
        self.assertEqual(self.store.integrity(), "ok")
