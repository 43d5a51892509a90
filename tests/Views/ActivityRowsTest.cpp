#include "Views/ActivityRows.h"

#include "PanelStage.h"
#include "Views/ActivityRow.h"
#include "Views/Palette.h"

#include <QScrollBar>

using namespace orvanta;
using namespace Qt::StringLiterals;

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
    QStringList typeOften(const QString& key, int times) {
        return type(root(), qPrintable((key + u' ').repeated(times).trimmed()));
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
            const QString name = nameOf((top + y) / 44);
            EXPECT_EQ(titleOf(stage.list.viewport()->childAt(20, y)).left(5), name);
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
    EXPECT_EQ(stage.typeOften(u"Tab"_s, 5),
              lines({"Histórico por dia", "Não monitorados", "Parar de monitorar a0000",
                     "a0000: Produção", "a0000: Consumo"}));
    EXPECT_EQ(stage.typeOften(u"Tab"_s, 57).last(), u"a0019: Consumo"_s);
    EXPECT_FALSE(stage.root().focusWidget()->visibleRegion().isEmpty());
    EXPECT_EQ(stage.typeOften(u"Backtab"_s, 63).mid(58),
              lines({"Parar de monitorar a0000", "Não monitorados", "Histórico por dia", "Sair",
                     "Zerar tempo"}));
    stage.button("a0000: Produção").setFocus(Qt::TabFocusReason);
    EXPECT_EQ(stage.typeOften(u"Down"_s, 30).last(), u"a0030: Produção"_s);
    EXPECT_FALSE(stage.root().focusWidget()->visibleRegion().isEmpty());
    EXPECT_EQ(stage.typeOften(u"Up"_s, 31).last(), u"a0000: Produção"_s);
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
    for (const char* name : {"Editor de textos com um nome que não cabe nesta linha nem na outra",
                             "משחק עם שם ארוך מאוד בעברית שלא נכנס בשורה אחת בכלל",
                             "👩‍👩‍👧‍👦 "
                             "绘画应用程序的名字非常非常非常非常非常非常长 "
                             "👩‍👩‍👧‍👦",
                             "linha\noutra linha\tTab"}) {
        PanelStage stage({{name, Category::pending, 36000}});
        const QImage image = picture(stage.open(), 2);
        const QColor ground = Palette(ColorScheme::light).background;
        // Nothing of the name beside its cell, in its padding or under the time's gap.
        EXPECT_EQ(count(image, ground, QRect(0, 90, 30, 80)), 30 * 80) << name;
        EXPECT_EQ(count(image, ground, QRect(434, 90, 28, 80)), 28 * 80) << name;
        EXPECT_LT(count(image, ground, QRect(32, 90, 200, 80)), 200 * 80) << name;
    }
}
