#include "Views/SetupView.h"

#include "PanelStage.h"
#include "Views/Palette.h"

using namespace orvanta;

namespace {

/// With browsers that run, as the processes 1, 2 and so on; the first is the default one.
struct Unallowed : PanelStage {
    explicit Unallowed(std::initializer_list<const char*> names) {
        for (const QString& name : lines(names)) {
            const int process = static_cast<int>(browsers.size()) + 1;
            browsers.push_back({name, name, process == 1});
            automation.running[name] = {{process, false}};
        }
        isSetUp = false;
        open();
    }
};

} // namespace

TEST(SetupViewTest, ListsTheStepsAndTheirStatesAndGivesWayToThePanel) {
    Unallowed stage({"Firefox", "Chromium"});
    EXPECT_EQ(
        accessibleLines(stage.root()),
        lines({"orvanta", "Text orvanta", "Text CONFIGURAÇÃO 0/2", "Text Iniciar ao entrar",
               "Button Iniciar ao entrar: Abrir o orvanta ao entrar no macOS",
               "Text Sites no Firefox",
               "Button Sites no Firefox: Permitir ler o domínio da aba ativa",
               "Text OUTROS NAVEGADORES OPCIONAL", "Text Sites no Chromium",
               "Button Sites no Chromium: Permitir ler o domínio da aba ativa", "Button Sair"}));

    stage.login.current = LoginItem::Status::requiresApproval;
    stage.automation.decisions = {{1, AutomationPermission::permitted},
                                  {2, AutomationPermission::refused}};
    stage.play({{"pass 1", "Text CONFIGURAÇÃO 1/2; Button Sites no Firefox: Permitido; "
                           "Button Iniciar ao entrar: Ativar o orvanta nos Ajustes do Sistema"}});
    EXPECT_EQ(stage.button("Sites no Firefox: Permitido").label().symbol, Symbol::checkmark);
    const QImage image = picture(stage.root(), 2);
    EXPECT_EQ(count(image, Palette::green, QRect(0, 87, 320, 1)), 320);
    EXPECT_EQ(count(image, Palette(ColorScheme::light).rule, QRect(320, 87, 320, 1)), 320);
    stage.login.current = LoginItem::Status::notRegistered;
    // The click ends the setup, and with it the button's own view.
    stage.play({{"click Sair; pass 1; click Iniciar ao entrar: Abrir o orvanta ao entrar no macOS",
                 "Button Pausar"}});
    EXPECT_EQ(stage.quits, 1);
    EXPECT_EQ(stage.login.registrations, 1);
}

TEST(SetupViewTest, AButtonDoesItsStepAndAllAreReachedByTheKeyboard) {
    Unallowed stage({"Firefox", "a", "b", "c", "d"});
    stage.play({{"keys Tab", "@Iniciar ao entrar: Abrir o orvanta ao entrar no macOS"},
                {"keys Tab Return", "@Sites no Firefox: Permitir ler o domínio da aba ativa"}});
    EXPECT_EQ(stage.automation.log, lines({"ask 1"}));
    stage.automation.decisions[1] = AutomationPermission::refused;
    stage.play({{"pass 1", "@Sites no Firefox: Ativar o orvanta nos Ajustes do Sistema"},
                {"keys Tab Tab Tab Tab", "@Sites no d: Permitir ler o domínio da aba ativa"}});
    EXPECT_FALSE(stage.root().focusWidget()->visibleRegion().isEmpty()) << "it is scrolled to";
}
