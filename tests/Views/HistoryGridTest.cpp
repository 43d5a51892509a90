#include "Views/HistoryGrid.h"

#include "PanelStage.h"
#include "Views/Palette.h"

using namespace orvanta;
using enum Category;

namespace {

/// A Tuesday with a past.
struct Past : PanelStage {
    Past()
        : PanelStage({{"Editor", production}, {"Jogo", consumption}, {"Nota"}}) {
        world.record("2024-03-03", activity("Editor"), 1800);
        world.record("2024-03-03", activity("Jogo"), 600);
        world.record("2024-03-02", activity("Nota"), 60);
        play({{"open; click Histórico por dia", "Text HISTÓRICO 2; Text ↑ — PRODUÇÃO"}});
    }
    QImage square(const char* title) {
        return picture(root(), 2).copy(
            QRect(named(root(), title).mapTo(&root(), QPoint(2, 2)) * 2, QSize(36, 36)));
    }
};

} // namespace

TEST(HistoryGridTest, ColoursADayByWhatItWasSpentOn) {
    Past stage;
    const Palette palette(ColorScheme::light);
    const QImage classified = stage.square("DOM 3 MAR");
    EXPECT_EQ(count(classified, Palette::red, QRect(0, 0, 36, 9)), 36 * 9);
    EXPECT_EQ(count(classified, Palette::green, QRect(0, 9, 36, 27)), 36 * 27);
    EXPECT_EQ(count(stage.square("SEX 1 MAR"), palette.rule), 36 * 36);
    const QRgb faint = stage.square("SÁB 2 MAR").pixel(5, 5);
    EXPECT_NEAR(qRed(faint), palette.background.red() * 0.65 + palette.muted.red() * 0.35, 1);
    EXPECT_EQ(named(stage.root(), "DOM 3 MAR").parentWidget()->children().size(), 12 * 7 + 3);
    stage.play({{"over DOM 3 MAR", "Text DOM 3 MAR = Produção 75% · Consumo 25%"}});
    EXPECT_EQ(count(stage.square("DOM 3 MAR"), palette.foreground), 36 * 36 - 32 * 32);
}

TEST(HistoryGridTest, ADayUnderThePointerOrTheKeyboardIsTold) {
    Past stage;
    // The days' own widget has a name, too, and so has the button that leads to them.
    QWidget& days = *named(stage.root(), "DOM 3 MAR").parentWidget();
    days.setAccessibleName(QStringLiteral("days"));
    stage.play({
        {"over DOM 3 MAR", "Text DOM 3 MAR 40:00; Text ↑ 75% PRODUÇÃO"},
        {"over SÁB 2 MAR", "Text SÁB 2 MAR 1:00"},
        {"off days", "Text HISTÓRICO 2"},
        // Another listing, and back: no day is looked at.
        {"over DOM 3 MAR; click Não monitorados; click Histórico por dia", "Text HISTÓRICO 2"},
        {"keys Tab Tab Tab", "@TER 5 MAR; Text TER 5 MAR 0:00"},
        {"keys Down", "@TER 5 MAR"},
        {"keys Up", "@SEG 4 MAR"},
        {"keys Left", "@SEG 26 FEV"},
        {"keys Up", "@DOM 25 FEV"},
        {"keys Up", "@SÁB 24 FEV"},
        {"keys Right", "@SÁB 2 MAR; Text SÁB 2 MAR 1:00"},
        {"keys Tab", "@Pausar; Text HISTÓRICO 2"},
        {"keys Backtab", "@SÁB 2 MAR; Text SÁB 2 MAR 1:00"},
    });
}
