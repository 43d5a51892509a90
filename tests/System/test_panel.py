"""The panel and the settings as a person without a mouse and without eyes uses them."""

import datetime
import time

import case
import desktop
import panel_case

ACTIVITIES = [(case.XTERM, "XTerm", "pending", 1000), (case.MOUSEPAD, "Mousepad", "production", 900),
              ("site:alfa.test", "alfa.test", "consumption", 300),
              ("app:parado", "Parado", "ignored", 40)]
YESTERDAY = [(1, case.MOUSEPAD, 1800), (1, "site:alfa.test", 600)]
LOGIN = "Iniciar ao entrar no macOS"


class Panel(panel_case.PanelTest):
    def spoken(self):
        return [(node["role"], node["name"], node["description"])
                for node in self.reader.nodes() if node["role"] != "filler" and node["name"]]

    def read_the_panel(self):
        def row(name, seconds, selected):
            values = ["Selecionado" if number == selected else "Não selecionado"
                      for number in range(2)]
            stop = f"Parar de monitorar {name}"
            return [("list item", name, ""), ("label", f"{name}, {seconds}", name),
                    ("button", stop, stop), ("button", f"{name}: Produção", values[0]),
                    ("button", f"{name}: Consumo", values[1])]

        self.press_on("Pausar")  # Nothing moves while it is read.
        self.wait_for_title("PAUSADO")
        self.reader.wait_for("Retomar")
        clicks = " · clique para manter aberto"
        self.assertEqual(
            [node for node in self.spoken() if not node[1].startswith(("PAUSADO", "XTerm"))],
            [("label", "↑ 75% PRODUÇÃO", ""), ("label", "↓ 25% CONSUMO", ""),
             ("button", "Histórico por dia", "Histórico por dia" + clicks),
             ("button", "Não monitorados", "Não monitorados" + clicks),
             ("button", "Parar de monitorar XTerm", "Parar de monitorar XTerm"),
             *row("Mousepad", "15:00", 0), *row("alfa.test", "5:00", 1),
             ("button", "Retomar", "Retomar"), ("button", "Zerar tempo", "Zerar tempo"),
             ("button", "Sair", "Sair · clique direito para Ajustes")])
        self.assertTrue(self.reader.press("XTerm: Produção"))
        self.wait_for_category(case.XTERM, "production")
        desktop.wait_until(lambda: self.reader.find("XTerm: Produção")["description"]
                           == "Selecionado", "the new choice")
        self.press_on("Retomar")
        desktop.wait_until(lambda: any(name.startswith("XTerm, ") and name.endswith(", Ativo")
                                       for name in self.reader.names()), "what is timed")

    def look_back(self):
        self.press_on("Histórico por dia")
        self.wait_for_title("HISTÓRICO")
        self.assertIn("checked", self.reader.find("Histórico por dia")["states"])
        today, yesterday = [panel_case.day_title(self.today() - datetime.timedelta(days=ago))
                            for ago in range(2)]
        days = [node for node in self.spoken() if node[2].startswith(("Produção", "Sem dados"))]
        self.assertEqual([day[1] for day in days[-2:]], [yesterday, today])
        self.assertEqual(days[-2], ("label", yesterday, "Produção 75% · Consumo 25%"))
        self.tab_to(today)  # The one day that Tab leads to.
        self.desktop.press("Up")
        self.wait_for_title(yesterday + " 40:00")
        self.press_on("Histórico por dia")
        self.wait_for_title("MONITORANDO")

    def stop_and_reset(self):
        self.press_on("Parar de monitorar alfa.test", "Return")
        self.press_on("Parar")
        self.wait_for_category("site:alfa.test", "ignored")
        self.press_on("Não monitorados")
        self.press_on("Reativar monitoramento de alfa.test")
        self.wait_for_category("site:alfa.test", "consumption")
        self.press_on("Não monitorados")
        self.press_on("Zerar tempo")
        asked = self.reader.wait_for("Zerar o tempo acumulado?")
        self.assertIn("modal", asked["states"])
        self.assertEqual(asked["description"], "O tempo acumulado será apagado. Suas "
                         "classificações serão preservadas.")
        self.assertEqual(self.reader.focused(), "Cancelar")
        self.desktop.press("Escape")
        self.reader.wait_for_none("Zerar o tempo acumulado?")
        self.only_popover()
        self.press_on("Zerar tempo", "Return")
        self.press_on("Zerar", "Return")
        desktop.wait_until(lambda: self.store.session_seconds()[case.MOUSEPAD] == 0, "the reset")

    def wait_for_check(self, name, is_wanted):
        # What it does is done before readers are told.
        desktop.wait_until(lambda: is_wanted == next(
            "checked" in node["states"] for node in self.reader.nodes()
            if (node["role"], node["name"]) == ("check box", name)), f"{name} as {is_wanted}")

    def set_up_the_general(self):
        sites = next(name for name in self.reader.names("check box")
                     if name.startswith("Identificar sites no "))
        for is_wanted in (False, True):
            self.press_on(sites)
            self.wait_for_check(sites, is_wanted)
            self.assertEqual(len(self.preferences()["disabledBrowsers"]), not is_wanted)
        entry = self.configuration() / "autostart" / f"{desktop.DOMAIN}.desktop"
        for is_wanted in (True, False):
            self.press_on(LOGIN)
            self.wait_for_check(LOGIN, is_wanted)
            self.assertEqual(entry.exists(), is_wanted)

    def classify(self):
        self.desktop.press("ctrl+Tab")
        self.tab_to("Buscar app ou site")
        self.desktop.run("xdotool", "type", "xT")
        self.reader.wait_for_none("Mousepad: Produção")
        self.tab_to("XTerm: Produção")
        self.desktop.press("space")
        self.reader.wait_for("Ignorar")
        self.desktop.run("xdotool", "key", "Down", "Return")
        self.reader.wait_for("XTerm: Consumo")
        self.wait_for_category(case.XTERM, "consumption")

    def open(self):
        self.desktop.launch_xterm()
        self.began = self.start()
        self.start_again()  # Nothing here shows a status item, so that opens the panel.
        self.wait_for_title("MONITORANDO")

    def test_by_keyboard_and_by_ear(self):
        self.prepare_store(ACTIVITIES, YESTERDAY)
        self.open()
        self.read_the_panel()
        self.look_back()
        self.stop_and_reset()
        self.open_settings()
        self.wait_for_no_popover()
        self.set_up_the_general()
        self.classify()
        self.desktop.press("ctrl+q")
        self.assertEqual(self.orvanta.wait(), 0)
        self.assertEqual(self.store.integrity(), "ok")

    def test_the_display_vanishing_ends_it_with_everything_saved(self):
        self.prepare_store([])
        self.open()
        self.wait_until_something_is_unsaved()
        self.desktop.run("xdotool", "key", "Menu", "Down")
        self.reader.wait_for("Mostrar todos")
        self.desktop.server.terminate()
        self.desktop.server.wait()
        vanished = time.monotonic()
        code = self.orvanta.wait(5)
        self.assertGreaterEqual(code, 0, f"ended by a signal: {self.orvanta.complaints()}")
        self.assert_seconds({case.XTERM: vanished - self.began})
