"""The panel as a person uses it: with the pointer, with the keyboard alone, and by ear."""

import datetime
import time

import case
import desktop
import panel_case
import panels
import status_area

PRODUCTION, CONSUMPTION = (64, 194, 74), (209, 36, 59)
BACKGROUND = (250, 250, 250)

ACTIVITIES = [(case.XTERM, "XTerm", "pending", 1000), (case.MOUSEPAD, "Mousepad", "production", 900),
              ("site:alfa.test", "alfa.test", "consumption", 300),
              ("app:breve", "Breve", "pending", 1), ("app:parado", "Parado", "ignored", 40)]
YESTERDAY = [(1, case.MOUSEPAD, 1800), (1, "site:alfa.test", 600)]


def days_of_week(day):
    """Up to this day; where the session's language has no country, weeks begin on Mondays."""
    return day.weekday() + 1


def tinted(colour, share):
    return tuple(share * a + (1 - share) * b for a, b in zip(colour, BACKGROUND))


class Panel(panel_case.PanelTest):
    def open(self, activities=ACTIVITIES, days=YESTERDAY):
        self.prepare_store(activities, days)
        self.desktop.launch_xterm()
        self.panel = panels.XfcePanel(self.desktop)
        self.panel.start()
        self.began = self.orvanta.start(self.environment)
        self.item = desktop.wait_until(lambda: status_area.ink(
            self.desktop, self.panel, PRODUCTION if activities else status_area.SECONDARY),
            "the item")
        self.click(self.item)
        self.place = self.wait_for_popover()
        self.wait_for_title("MONITORANDO")

    def wait_for_colour(self, x, y, colour):
        """At a point of the popover."""
        def is_there():
            seen = self.pixel(self.place[0] + x, self.place[1] + y)
            return all(abs(a - b) <= 3 for a, b in zip(seen, colour))

        desktop.wait_until(is_there, f"{colour} at {x}, {y}")

    def confirm(self, question, answer):
        self.reader.wait_for(question)
        self.click_on(answer)
        self.reader.wait_for_none(question)

    def rest(self):
        """Takes the pointer to where the panel has nothing that it could be over."""
        self.desktop.run("xdotool", "mousemove", str(self.place[0] + 80), str(self.place[1] + 20))

    def classify(self):
        self.click_on("Mousepad: Consumo")
        self.wait_for_category(case.MOUSEPAD, "consumption")
        self.click_on("alfa.test: Produção")
        self.wait_for_category("site:alfa.test", "production")
        self.rest()
        # XTerm, in front, comes first, then by time.
        self.wait_for_colour(232 + 5, 88 + 44 * 2 + 5, tinted(PRODUCTION, 0.2))
        self.wait_for_colour(276 + 5, 88 + 44 + 5, tinted(CONSUMPTION, 0.2))
        self.wait_for_colour(232 + 5, 88 + 44 + 5, BACKGROUND)
        self.reader.wait_for("↑ 25% PRODUÇÃO")
        self.wait_for_colour(79, 43, PRODUCTION)
        self.wait_for_colour(81, 43, CONSUMPTION)

    def stop(self):
        stop, question = "Parar de monitorar alfa.test", "Parar de monitorar alfa.test?"
        self.click_on(stop)
        self.confirm(question, "Cancelar")
        self.assertEqual(self.category("site:alfa.test"), "production")
        self.click_on(stop)
        self.confirm(question, "Parar")
        self.wait_for_category("site:alfa.test", "ignored")
        self.reader.wait_for_none("alfa.test")

    def resume(self):
        self.click_on("Não monitorados")
        self.assertEqual(self.wait_for_title("NÃO"), "NÃO MONITORADOS 2")
        self.click_on("Reativar monitoramento de alfa.test")
        self.wait_for_category("site:alfa.test", "production")
        self.assertEqual(self.wait_for_title("NÃO MONITORADOS 1"), "NÃO MONITORADOS 1")
        self.click_on("Não monitorados")
        self.wait_for_title("MONITORANDO")

    def pause(self):
        """Returns for how long."""
        began = time.monotonic()
        self.click_on("Pausar")
        self.wait_for_title("PAUSADO")
        self.click_on("Retomar")
        self.wait_for_title("MONITORANDO")
        return time.monotonic() - began

    def look_at_the_history(self):
        
        self.rest()
        self.move_to("Histórico por dia")
        self.assertEqual(self.wait_for_title("HISTÓRICO"), "HISTÓRICO 2")
        day = self.yesterday()
        self.move_to(day)  # Down into it: the preview stays.
        self.wait_for_title(day + " 40:00")
        self.reader.wait_for("↑ 25% PRODUÇÃO")
        self.rest()
        self.wait_for_title("MONITORANDO")

        self.click_on("Histórico por dia")
        self.wait_for_title("HISTÓRICO")
        until = time.monotonic() + 1
        self.move_to("Não monitorados")
        self.rest()
        while time.monotonic() < until:
            self.assertEqual(self.title(), "HISTÓRICO 2")
        self.click_on("Histórico por dia")
        self.rest()
        self.wait_for_title("MONITORANDO")

    def use_the_menu(self):
        self.assertIsNone(self.reader.find("Breve"))
        self.desktop.run("xdotool", "click", "3")
        self.desktop.press("Down")
        self.click_on("Mostrar todos")
        self.reader.wait_for("Breve")

    def reset(self):
        question = "Zerar o tempo acumulado?"
        self.click_on("Zerar tempo")
        self.reader.wait_for(question)
        self.desktop.press("Escape")
        self.reader.wait_for_none(question)
        self.only_popover()
        self.click_on("Zerar tempo")
        self.confirm(question, "Zerar")
        desktop.wait_until(lambda: self.store.session_seconds()[case.MOUSEPAD] == 0, "the reset")
        self.assertEqual(self.category(case.MOUSEPAD), "consumption")
        self.desktop.press("Escape")
        self.wait_for_no_popover()

    def test_with_the_pointer(self):
        self.open()
        self.classify()
        self.stop()
        self.resume()
        paused = self.pause()
        self.look_at_the_history()
        self.use_the_menu()
        self.reset()
        self.click(self.item)
        self.wait_for_popover()
        self.click_on("Sair")
        self.assertEqual(self.orvanta.wait(), 0)
        # The panel took nothing from the application behind it.
        counted = self.store.history_seconds()[case.XTERM]
        self.assertAlmostEqual(counted, time.monotonic() - self.began - paused,
                               delta=2 * case.TOLERANCE + 1)
        self.assertEqual(self.store.integrity(), "ok")

    def test_with_the_keyboard_alone(self):
        self.open()
        self.press_on("Histórico por dia")
        self.wait_for_title("HISTÓRICO")
        self.tab_to(self.reader.names("label")[-1])  # Today, the one day that Tab leads to.
        self.desktop.press("Up")
        self.wait_for_title(self.yesterday() + " 40:00")
        self.press_on("Histórico por dia")
        self.wait_for_title("MONITORANDO")

        self.press_on("XTerm: Consumo")
        self.wait_for_category(case.XTERM, "consumption")
        self.press_on("Parar de monitorar alfa.test", "Return")
        self.press_on("Parar")
        self.wait_for_category("site:alfa.test", "ignored")
        self.press_on("Não monitorados")
        self.press_on("Reativar monitoramento de alfa.test")
        self.wait_for_category("site:alfa.test", "consumption")
        self.press_on("Não monitorados")
        self.press_on("Pausar")
        self.wait_for_title("PAUSADO")
        self.press_on("Retomar")
        self.wait_for_title("MONITORANDO")

        self.press_on("Zerar tempo")
        self.reader.wait_for("Zerar o tempo acumulado?")
        self.desktop.press("Escape")
        self.reader.wait_for_none("Zerar o tempo acumulado?")
        self.only_popover()
        self.press_on("Zerar tempo", "Return")
        self.press_on("Zerar", "Return")
        desktop.wait_until(lambda: self.store.session_seconds()[case.MOUSEPAD] == 0, "the reset")

        self.desktop.run("xdotool", "key", "Menu", "Up")
        self.reader.wait_for("Ajustes…")
        self.desktop.press("Return")
        desktop.wait_until(self.own_windows, "the settings")
        self.wait_for_no_popover()
        self.ask_to_end()

    def yesterday(self):
        return next(node["name"] for node in self.reader.nodes()
                    if node["description"].startswith("Produção"))

    def test_by_ear(self):
        self.open()
        today, yesterday = self.today(), self.today() - datetime.timedelta(days=1)

        def spoken():
            return [(node["role"], node["name"], node["description"])
                    for node in self.reader.nodes() if node["role"] != "filler" and node["name"]]

        def row(name, seconds, selected, hint=True):
            tip = f"{name} · escolha ↑ ou ↓ para classificar" if hint else name
            values = ["Selecionado" if number == selected else "Não selecionado"
                      for number in range(2)]
            stop = f"Parar de monitorar {name}"
            return [("list item", name, ""), ("label", f"{name}, {seconds}", tip),
                    ("button", stop, stop), ("button", f"{name}: Produção", values[0]),
                    ("button", f"{name}: Consumo", values[1])]

        self.press_on("Pausar")  # Nothing moves while it is read.
        self.wait_for_title("PAUSADO")
        said = spoken()
        clicks = " · clique para manter aberto"
        self.assertEqual(
            [node for node in said if not node[1].startswith(("PAUSADO", "XTerm"))],
            [("label", "↑ 75% PRODUÇÃO", ""), ("label", "↓ 25% CONSUMO", ""),
             ("button", "Histórico por dia", "Histórico por dia" + clicks),
             ("button", "Não monitorados", "Não monitorados" + clicks),
             *[node for node in row("XTerm", "", None) if node[1].startswith("Parar")],
             *row("Mousepad", "15:00", 0, hint=False), *row("alfa.test", "5:00", 1, hint=False),
             ("button", "Retomar", "Retomar"),
             ("button", "Zerar tempo", "Zerar tempo"),
             ("button", "Sair", "Sair · clique direito para Ajustes")])

        self.assertTrue(self.reader.press("XTerm: Produção"))
        self.wait_for_category(case.XTERM, "production")
        desktop.wait_until(lambda: self.reader.find("XTerm: Produção")["description"]
                           == "Selecionado", "the new choice")
        self.assertTrue(self.reader.press("Retomar"))
        self.wait_for_title("MONITORANDO")
        desktop.wait_until(lambda: any(name.startswith("XTerm, ") and name.endswith(", Ativo")
                                       for name in self.reader.names()), "what is timed")

        self.assertTrue(self.reader.press("Histórico por dia"))
        self.wait_for_title("HISTÓRICO")
        self.assertIn("checked", self.reader.find("Histórico por dia")["states"])
        days = [node for node in self.reader.nodes() if node["description"].startswith(
            ("Produção", "Sem dados"))]
        self.assertEqual(len(days), 12 * 7 + days_of_week(today))
        self.assertEqual([(day["role"], day["name"], day["children"]) for day in days[-2:]],
                         [("label", panel_case.day_title(day), []) for day in (yesterday, today)])
        self.assertEqual(days[-2]["description"], "Produção 75% · Consumo 25%")

        self.assertTrue(self.reader.press("Zerar tempo"))
        asked = self.reader.wait_for("Zerar o tempo acumulado?")
        self.assertIn("modal", asked["states"])
        self.assertEqual(asked["description"], "O tempo acumulado será apagado. Suas "
                         "classificações serão preservadas.")
        self.assertEqual(self.reader.focused(), "Cancelar")
        self.desktop.press("Escape")
        self.press_on("Sair")
        self.assertEqual(self.orvanta.wait(), 0)

    def test_the_display_vanishing_ends_it_with_everything_saved(self):
        self.open(activities=[], days=[])
        self.wait_until_something_is_unsaved()
        self.desktop.press("Menu")
        self.desktop.press("Down")
        self.reader.wait_for("Mostrar todos")
        self.desktop.server.terminate()
        self.desktop.server.wait()
        vanished = time.monotonic()
        code = self.orvanta.wait(5)
        self.assertGreaterEqual(code, 0, f"ended by a signal: {self.orvanta.complaints()}")
        self.assert_seconds({case.XTERM: vanished - self.began})

    def test_the_setup_by_ear(self):
        self.orvanta.start(self.environment)
        left, top, _, _ = self.wait_for_popover()
        self.click((left + 20, top + 20))  # At a first start the keyboard stays where it is.

        def is_followed():
            self.desktop.press("Tab")
            return self.reader.names()

        desktop.wait_until(is_followed, "the focus", every=0.2)
        asks = "Iniciar ao entrar: Abrir o orvanta ao entrar no macOS"
        self.assertEqual(self.reader.wait_for(asks)["role"], "button")
        title = next(name for name in self.reader.names("label") if name.startswith("CONF"))
        self.assertRegex(title, r"^CONFIGURAÇÃO 0/\d$")
        self.assertTrue(self.reader.press(asks))
        self.reader.wait_for("Iniciar ao entrar: Ativo")
        self.reader.wait_for(title.replace("0/", "1/"))
