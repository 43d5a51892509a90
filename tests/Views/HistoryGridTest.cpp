#include "Views/HistoryGrid.h"

#include "PanelStage.h"
#include "Views/Band.h"
#include "Views/Palette.h"

using namespace orvanta;

namespace {

/// A Tuesday with a past.
struct Past : PanelStage {
    Past()
        : PanelStage({{"Editor", Category::production},
                      {"Jogo", Category::consumption},
                      {"Nota", Category::pending}}) {
        world.record("2024-03-03", activity("Editor"), 1800);
        world.record("2024-03-03", activity("Jogo"), 600);
        world.record("2024-03-02", activity("Nota"), 60);
        open();
        click("Histórico por dia");
    }
    Band& cell(const char* title) { return *named<Band>(root(), title); }
    QImage square(const char* title) {
        Band& shown = cell(title);
        const QRect place(shown.mapTo(&root(), QPoint(2, 2)) * 2, QSize(36, 36));
        return picture(root(), 2).copy(place);
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

    const auto* const named = QAccessible::queryAccessibleInterface(&stage.cell("DOM 3 MAR"));
    EXPECT_EQ(named->text(QAccessible::Value), QStringLiteral("Produção 75% · Consumo 25%"));
    EXPECT_EQ(stage.cell("DOM 3 MAR").parentWidget()->children().size(), 12 * 7 + 3);
}

TEST(HistoryGridTest, ADayUnderThePointerIsOutlinedAndTold) {
    Past stage;
    EXPECT_TRUE(stage.shows("Text HISTÓRICO 2"));
    EXPECT_TRUE(stage.shows("Text ↑ — PRODUÇÃO"));
    stage.enter(stage.cell("DOM 3 MAR"));
    EXPECT_TRUE(stage.shows("Text DOM 3 MAR 40:00"));
    EXPECT_TRUE(stage.shows("Text ↑ 75% PRODUÇÃO"));
    EXPECT_EQ(count(stage.square("DOM 3 MAR"), Palette(ColorScheme::light).foreground),
              36 * 36 - 32 * 32);
    stage.enter(stage.cell("SÁB 2 MAR"));
    EXPECT_TRUE(stage.shows("Text SÁB 2 MAR 1:00"));
    stage.leave(*stage.cell("SÁB 2 MAR").parentWidget());
    EXPECT_TRUE(stage.shows("Text HISTÓRICO 2"));
    // Another listing, and back: no day is looked at.
    stage.enter(stage.cell("DOM 3 MAR"));
    stage.click("Não monitorados");
    stage.click("Histórico por dia");
    EXPECT_TRUE(stage.shows("Text HISTÓRICO 2"));
}

TEST(HistoryGridTest, TheArrowKeysGoFromDayToDay) {
    Past stage;
    for (int i = 0; i < 3; ++i) {
        stage.press(Qt::Key_Tab);
    }
    struct Row {
        Qt::Key key;
        const char* title;
    };
    EXPECT_TRUE(stage.shows("Text TER 5 MAR 0:00"));
    for (const Row& row : {Row{Qt::Key_Down, "TER 5 MAR"},
                           {Qt::Key_Up, "SEG 4 MAR"},
                           {Qt::Key_Left, "SEG 26 FEV"},
                           {Qt::Key_Up, "DOM 25 FEV"},
                           {Qt::Key_Up, "SÁB 24 FEV"},
                           {Qt::Key_Right, "SÁB 2 MAR"}}) {
        stage.press(row.key);
        EXPECT_EQ(stage.root().focusWidget()->accessibleName(), QString::fromUtf8(row.title));
    }
    EXPECT_TRUE(stage.shows("Text SÁB 2 MAR 1:00"));
    stage.press(Qt::Key_Tab);
    EXPECT_EQ(stage.root().focusWidget()->accessibleName(), QStringLiteral("Pausar"));
    EXPECT_TRUE(stage.shows("Text HISTÓRICO 2"));
    stage.press(Qt::Key_Backtab);
    EXPECT_TRUE(stage.shows("Text SÁB 2 MAR 1:00"));
}
