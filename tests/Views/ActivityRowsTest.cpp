#include "PanelStage.h"
#include "Views/Palette.h"

#include <QScrollBar>

using namespace orvanta;

namespace {

constexpr int many = 3000;

/// Three thousand activities, the first with the most time.
PanelStage& fill(PanelStage& stage) {
    for (int i = 0; i < many; ++i) {
        const QString name = QStringLiteral("a%1").arg(i, 4, 10, QLatin1Char('0'));
        stage.world.context().activities().append(name, name, Category::production,
                                                  100000.0 - i * 10);
    }
    stage.tracker().setShowAllActivities(true);
    return stage;
}

} // namespace

TEST(ActivityRowsTest, ThousandsTakeNoMoreRowsThanCanBeSeen) {
    PanelStage stage;
    ActivityRows& list = *fill(stage).open().findChild<ActivityRows*>();
    EXPECT_EQ(list.count(), many);
    EXPECT_LE(list.findChildren<ActivityRow*>().size(), 8);
    for (const int top : {0, 1, 43, 44, 45, 60000, 100000, list.verticalScrollBar()->maximum()}) {
        list.verticalScrollBar()->setValue(top);
        // At each height of the area there is the row that belongs there.
        for (int y = 0; y < 220; y += 10) {
            const int index = (top + y) / 44;
            const QWidget* at = list.viewport()->childAt(20, y);
            while (at != nullptr && qobject_cast<const ActivityRow*>(at) == nullptr) {
                at = at->parentWidget();
            }
            ASSERT_NE(at, nullptr) << top << ' ' << y;
            EXPECT_EQ(at->accessibleName(),
                      QStringLiteral("a%1").arg(index, 4, 10, QLatin1Char('0')));
        }
    }
}

TEST(ActivityRowsTest, TabGoesThroughAllRowsAndBack) {
    PanelStage stage;
    fill(stage).open();
    QStringList visited;
    for (int i = 0; i < 2 + 3 * 20; ++i) {
        stage.press(Qt::Key_Tab);
        QWidget* control = stage.root().focusWidget();
        visited += control->accessibleName();
        EXPECT_FALSE(control->visibleRegion().isEmpty()) << i;
    }
    EXPECT_EQ(visited.at(0), QStringLiteral("Histórico por dia"));
    EXPECT_EQ(visited.at(1), QStringLiteral("Não monitorados"));
    for (int i = 0; i < 20; ++i) {
        const QString name = QStringLiteral("a%1").arg(i, 4, 10, QLatin1Char('0'));
        EXPECT_EQ(
            visited.mid(2 + 3 * i, 3),
            (QStringList{QStringLiteral("Parar de monitorar ") + name,
                         name + QStringLiteral(": Produção"), name + QStringLiteral(": Consumo")}));
    }
    for (int i = 0; i < 3 * 20 - 1; ++i) {
        stage.press(Qt::Key_Backtab);
    }
    EXPECT_EQ(stage.root().focusWidget()->accessibleName(),
              QStringLiteral("Parar de monitorar a0000"));
    for (const char* name : {"Não monitorados", "Histórico por dia", "Sair", "Zerar tempo"}) {
        stage.press(Qt::Key_Backtab);
        EXPECT_EQ(stage.root().focusWidget()->accessibleName(), QString::fromUtf8(name));
    }
}

TEST(ActivityRowsTest, ArrowKeysGoAlongAColumn) {
    PanelStage stage;
    fill(stage).open();
    stage.button("a0000: Produção").setFocus(Qt::TabFocusReason);
    for (int i = 0; i < 30; ++i) {
        stage.press(Qt::Key_Down);
        EXPECT_FALSE(stage.root().focusWidget()->visibleRegion().isEmpty()) << i;
    }
    EXPECT_EQ(stage.root().focusWidget()->accessibleName(), QStringLiteral("a0030: Produção"));
    for (int i = 0; i < 31; ++i) {
        stage.press(Qt::Key_Up);
    }
    EXPECT_EQ(stage.root().focusWidget()->accessibleName(), QStringLiteral("a0000: Produção"));
}

TEST(ActivityRowsTest, WhatMovesTakesTheKeyboardAlongAndNoClickGoesAstray) {
    PanelStage stage({{"A", Category::pending, 900},
                      {"B", Category::pending, 800},
                      {"C", Category::pending, 700}});
    stage.open();
    stage.button("B: Produção").setFocus(Qt::TabFocusReason);
    GridButton& pressed = stage.button("C: Consumo");
    QTest::mousePress(&pressed, Qt::LeftButton);
    stage.world.front("C"); // It becomes the first.
    QTest::mouseRelease(&pressed, Qt::LeftButton);
    for (const char* name : {"A", "B", "C"}) {
        EXPECT_EQ(stage.activity(name).category(), Category::pending) << name;
    }
    EXPECT_EQ(stage.root().focusWidget()->accessibleName(), QStringLiteral("B: Produção"));
    stage.press(Qt::Key_Space);
    EXPECT_EQ(stage.activity("B").category(), Category::production);
}

TEST(ActivityRowsTest, ScrollingLeavesTheKeyboardInSight) {
    PanelStage stage;
    ActivityRows& list = *fill(stage).open().findChild<ActivityRows*>();
    stage.button("a0001: Consumo").setFocus(Qt::TabFocusReason);
    list.verticalScrollBar()->setValue(50000);
    EXPECT_FALSE(stage.root().focusWidget()->visibleRegion().isEmpty());
    EXPECT_EQ(stage.root().focusWidget()->accessibleName(), QStringLiteral("a1137: Consumo"));
}

TEST(ActivityRowsTest, LongNamesLeaveTheGridIntact) {
    const char* const names[] = {
        "Editor de textos com um nome que não cabe nesta linha nem na outra",
        "משחק עם שם ארוך מאוד בעברית שלא נכנס בשורה אחת בכלל",
        "👩‍👩‍👧‍👦 "
        "绘画应用程序的名字非常非常非常非常非常非常长 "
        "👩‍👩‍👧‍👦",
        "linha\noutra linha\tTab"};
    for (const char* name : names) {
        PanelStage stage({{name, Category::pending, 36000}});
        const QImage image = picture(stage.open(), 2);
        const Palette palette(ColorScheme::light);
        // Nothing of the name beside its cell, in its padding or under the time's gap.
        for (const QRect& empty : {QRect(0, 90, 30, 80), QRect(434, 90, 28, 80)}) {
            EXPECT_EQ(count(image, palette.background, empty), empty.width() * empty.height())
                << name;
        }
        EXPECT_EQ(count(image, palette.rule, QRect(463, 88, 1, 87)), 87) << name;
        EXPECT_LT(count(image, palette.background, QRect(32, 90, 200, 80)), 200 * 80) << name;
    }
}
