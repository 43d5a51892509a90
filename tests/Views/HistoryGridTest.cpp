#include "Views/HistoryGrid.h"

#include "PanelStage.h"
#include "Views/Palette.h"

using namespace orvanta;

TEST(HistoryGridTest, ColoursADayAndTellsOfTheOneUnderThePointerOrTheKeyboard) {
    // It is a Tuesday.
    PanelStage stage({{"Editor", Category::production}, {"Jogo", Category::consumption}, {"Nota"}});
    stage.world.record("2024-03-03", stage.activity("Editor"), 1800);
    stage.world.record("2024-03-03", stage.activity("Jogo"), 600);
    stage.world.record("2024-03-02", stage.activity("Nota"), 60);
    stage.play({{"open; click Histórico por dia", "Text HISTÓRICO 2; Text ↑ — PRODUÇÃO"}});
    const auto square = [&stage](const char* title) {
        const QPoint place = named(stage.root(), title).mapTo(&stage.root(), QPoint(2, 2));
        return picture(stage.root(), 2).copy(QRect(place * 2, QSize(36, 36)));
    };
    const Palette palette(ColorScheme::light);
    EXPECT_EQ(count(square("DOM 3 MAR"), Palette::red, QRect(0, 0, 36, 9)), 36 * 9);
    EXPECT_EQ(count(square("DOM 3 MAR"), Palette::green, QRect(0, 9, 36, 27)), 36 * 27);
    EXPECT_EQ(count(square("SEX 1 MAR"), palette.rule), 36 * 36);
    EXPECT_NEAR(qRed(square("SÁB 2 MAR").pixel(5, 5)),
                palette.background.red() * 0.65 + palette.muted.red() * 0.35, 1);
    QWidget& days = *named(stage.root(), "DOM 3 MAR").parentWidget();
    EXPECT_EQ(days.children().size(), 12 * 7 + 3);
    days.setAccessibleName(QStringLiteral("days")); // As a button has the name that it has.
    stage.play({{"over DOM 3 MAR", "Text DOM 3 MAR 40:00; Text ↑ 75% PRODUÇÃO; "
                                   "Text DOM 3 MAR = Produção 75% · Consumo 25%"}});
    EXPECT_EQ(count(square("DOM 3 MAR"), palette.foreground), 36 * 36 - 32 * 32);
    stage.play({
        {"over SÁB 2 MAR", "Text SÁB 2 MAR 1:00"},
        {"off days", "Text HISTÓRICO 2"},
        // Another listing, and back: no day is looked at.
        {"over DOM 3 MAR; click Não monitorados; click Histórico por dia", "Text HISTÓRICO 2"},
        {"keys Tab Tab Tab Down", "@TER 5 MAR; Text TER 5 MAR 0:00"},
        {"keys Up Left", "@SEG 26 FEV"},
        {"keys Up Up Right", "@SÁB 2 MAR; Text SÁB 2 MAR 1:00"},
        {"keys Tab", "@Pausar; Text HISTÓRICO 2"},
        {"keys Backtab", "@SÁB 2 MAR; Text SÁB 2 MAR 1:00"},
    });
}
