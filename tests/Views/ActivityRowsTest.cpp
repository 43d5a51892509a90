#include "Views/ActivityRows.h"

#include "PanelStage.h"
#include "Views/ActivityRow.h"
#include "Views/Palette.h"

#include <QScrollBar>

using namespace orvanta;

namespace {

constexpr int many = 3000;

QString nameOf(int index) {
    return QStringLiteral("a%1").arg(index, 4, 10, QLatin1Char('0'));
}

/// Three thousand activities, the first with the most time.
struct Thousands : PanelStage {
    Thousands() {
        for (int i = 0; i < many; ++i) {
            world.context().activities().append(nameOf(i), nameOf(i), Category::production,
                                                100000.0 - i * 10);
        }
        tracker().setShowAllActivities(true);
    }
    ActivityRows& list = *shown<ActivityRows>(&open()).front();
    /// Presses the key so many times; what has the keyboard is in sight all the time.
    QStringList typeOften(const char* key, int times) {
        QStringList visited;
        for (int i = 0; i < times; ++i) {
            visited += type(root(), key);
            EXPECT_FALSE(root().focusWidget()->visibleRegion().isEmpty()) << key << ' ' << i;
        }
        return visited;
    }
};

} // namespace

TEST(ActivityRowsTest, ThousandsTakeNoMoreRowsThanCanBeSeen) {
    Thousands stage;
    EXPECT_EQ(stage.list.count(), many);
    EXPECT_LE(stage.list.findChildren<ActivityRow*>().size(), 8);
    QScrollBar& bar = *stage.list.verticalScrollBar();
    for (const int top : {0, 1, 43, 44, 45, 60000, 100000, bar.maximum()}) {
        bar.setValue(top);
        // At each height of the area there is the row that belongs there.
        for (int y = 0; y < 220; y += 10) {
            const QWidget* at = stage.list.viewport()->childAt(20, y);
            while (at != nullptr && qobject_cast<const ActivityRow*>(at) == nullptr) {
                at = at->parentWidget();
            }
            EXPECT_EQ(titleOf(at), nameOf((top + y) / 44));
        }
    }
    bar.setValue(0);
    stage.button("a0001: Consumo").setFocus(Qt::TabFocusReason);
    bar.setValue(50000);
    EXPECT_FALSE(stage.root().focusWidget()->visibleRegion().isEmpty());
    EXPECT_EQ(titleOf(stage.root().focusWidget()), QStringLiteral("a1137: Consumo"));
}

TEST(ActivityRowsTest, TheKeyboardGoesThroughAllRowsAndAlongColumns) {
    Thousands stage;
    const QStringList before = lines({"Histórico por dia", "Não monitorados"});
    QStringList expected = before;
    for (int i = 0; i < 20; ++i) {
        expected +=
            {QStringLiteral("Parar de monitorar ") + nameOf(i),
             nameOf(i) + QStringLiteral(": Produção"), nameOf(i) + QStringLiteral(": Consumo")};
    }
    EXPECT_EQ(stage.typeOften("Tab", 62), expected);
    EXPECT_EQ(stage.typeOften("Backtab", 59).last(), QStringLiteral("Parar de monitorar a0000"));
    EXPECT_EQ(stage.typeOften("Backtab", 4),
              lines({"Não monitorados", "Histórico por dia", "Sair", "Zerar tempo"}));
    stage.button("a0000: Produção").setFocus(Qt::TabFocusReason);
    EXPECT_EQ(stage.typeOften("Down", 30).last(), QStringLiteral("a0030: Produção"));
    EXPECT_EQ(stage.typeOften("Up", 31).last(), QStringLiteral("a0000: Produção"));
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
    EXPECT_EQ(type(stage.root(), "Space"), lines({"B: Produção"}));
    for (const char* name : {"A", "B", "C"}) {
        EXPECT_EQ(stage.activity(name).category(),
                  *name == 'B' ? Category::production : Category::pending);
    }
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
