#include "Views/SetupView.h"

#include "Fakes/FakeAppearance.h"
#include "Fakes/World.h"
#include "SetupDesk.h"
#include "Views/GridButton.h"
#include "Views/Palette.h"
#include "WidgetReading.h"

#include <QScrollArea>
#include <QTest>

using namespace orvanta;

namespace {

struct Stage {
    explicit Stage(const std::vector<const char*>& browsers) {
        for (const char* name : browsers) {
            const int number = static_cast<int>(desk.browsers.size()) + 1;
            desk.addBrowser(number, name, number == 1);
        }
        setup = desk.setup();
        view = std::make_unique<SetupView>(*setup, appearance, [this] { ++quits; });
        view->show();
    }
    SetupDesk desk;
    FakeAppearance appearance;
    std::unique_ptr<Setup> setup;
    std::unique_ptr<SetupView> view;
    int quits = 0;
};

} // namespace

TEST(SetupViewTest, ListsTheStepsAndTheirStates) {
    Stage stage({"Firefox", "Chromium"});
    EXPECT_EQ(
        accessibleLines(*stage.view),
        lines({"Text orvanta", "Text CONFIGURAÇÃO 0/2", "Text Iniciar ao entrar",
               "Button Iniciar ao entrar: Abrir o orvanta ao entrar no macOS",
               "Text Sites no Firefox",
               "Button Sites no Firefox: Permitir ler o domínio da aba ativa",
               "Text OUTROS NAVEGADORES OPCIONAL", "Text Sites no Chromium",
               "Button Sites no Chromium: Permitir ler o domínio da aba ativa", "Button Sair"}));
    EXPECT_EQ(stage.view->size(), QSize(320, 352));

    stage.desk.login.current = LoginItem::Status::requiresApproval;
    stage.desk.automation.decisions = {{1, AutomationPermission::permitted},
                                       {2, AutomationPermission::refused}};
    stage.desk.loop.advance(1);
    EXPECT_EQ(accessibleLines(*stage.view),
              lines({"Text orvanta", "Text CONFIGURAÇÃO 1/2", "Text Iniciar ao entrar",
                     "Button Iniciar ao entrar: Ativar o orvanta nos Ajustes do Sistema",
                     "Text Sites no Firefox", "Button Sites no Firefox: Permitido",
                     "Text OUTROS NAVEGADORES OPCIONAL", "Text Sites no Chromium",
                     "Button Sites no Chromium: Ativar o orvanta nos Ajustes do Sistema",
                     "Button Sair"}));
    const QImage image = picture(*stage.view, 2);
    EXPECT_EQ(count(image, Palette::green, QRect(0, 87, 320, 1)), 320);
    EXPECT_EQ(count(image, Palette(ColorScheme::light).rule, QRect(320, 87, 320, 1)), 320);
    EXPECT_EQ(
        named<GridButton>(*stage.view, "Sites no Chromium: Ativar o orvanta nos Ajustes do Sistema")
            ->label()
            .text,
        QStringLiteral("AJUSTES"));
}

TEST(SetupViewTest, AButtonDoesItsStepAndKeepsTheKeyboard) {
    Stage stage({"Firefox"});
    activate(*stage.view);
    QTest::keyClick(stage.view.get(), Qt::Key_Tab);
    auto* const button =
        named<GridButton>(*stage.view, "Sites no Firefox: Permitir ler o domínio da aba ativa");
    button->setFocus(Qt::TabFocusReason);
    QTest::keyClick(button, Qt::Key_Return);
    EXPECT_EQ(stage.desk.automation.log, lines({"ask 1"}));
    stage.desk.automation.decisions[1] = AutomationPermission::refused;
    stage.desk.loop.advance(1);
    EXPECT_TRUE(button->hasFocus());
    EXPECT_EQ(button->toolTip(), QStringLiteral("Ativar o orvanta nos Ajustes do Sistema"));

    QTest::mouseClick(named(*stage.view, "Sair"), Qt::LeftButton);
    EXPECT_EQ(stage.quits, 1);
}

TEST(SetupViewTest, MoreStepsThanFitAreReachedByTheKeyboard) {
    Stage stage({"Firefox", "a", "b", "c", "d"});
    auto* const last =
        named<GridButton>(*stage.view, "Sites no d: Permitir ler o domínio da aba ativa");
    EXPECT_TRUE(last->visibleRegion().isEmpty());
    activate(*stage.view);
    for (int i = 0; i < 20 && !last->hasFocus(); ++i) {
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget()
                                                    : stage.view.get(),
                        Qt::Key_Tab);
    }
    EXPECT_TRUE(last->hasFocus());
    EXPECT_EQ(last->visibleRegion().boundingRect(), last->rect());
}
