#include "Views/Text/PanelText.h"

#include "Fakes/QtPrinters.h"
#include "Model/Calendar.h"
#include "Views/Text/HistoryText.h"

#include <QTimeZone>

#include <gtest/gtest.h>

using namespace orvanta;

namespace {

Date dateOf(const char* text) {
    const QDate day = QDate::fromString(QLatin1StringView(text), Qt::ISODate);
    return Date::fromUnix(static_cast<double>(day.startOfDay(QTimeZone::utc()).toSecsSinceEpoch()));
}

/// Weeks of seven days; the last has as many as are left.
std::vector<std::vector<HistoryDay>> weeksFrom(const char* first, int days) {
    std::vector<std::vector<HistoryDay>> weeks;
    for (int i = 0; i < days; ++i) {
        if (i % 7 == 0) {
            weeks.emplace_back();
        }
        weeks.back().push_back({QString(), dateOf(first) + i * 86400.0, {}});
    }
    return weeks;
}

} // namespace

TEST(HistoryTextTest, NamesTheMonthsThatBeginAndTheFirstIfItLasts) {
    const Calendar calendar(QTimeZone::utc());
    struct Row {
        const char* first;
        int days;
        const char* labels; ///< joined by commas
    };
    for (const Row& row : {Row{"2023-12-10", 87, "DEZ,,,,JAN,,,,FEV,,,,MAR"},
                           {"2023-12-24", 42, ",,JAN,,,"},
                           {"2023-12-17", 21, "DEZ,,"},
                           {"2024-02-25", 14, ",MAR"},
                           {"2024-03-03", 9, "MAR,"},
                           {"2024-03-03", 0, ""}}) {
        EXPECT_EQ(monthLabels(weeksFrom(row.first, row.days), calendar).join(u','),
                  QString::fromLatin1(row.labels))
            << row.first;
    }
    auto weeks = weeksFrom("2024-03-03", 7);
    weeks.emplace_back();
    EXPECT_EQ(monthLabels(weeks, calendar).join(u','), QStringLiteral(","));
}

TEST(HistoryTextTest, NamesDaysAndTheirShares) {
    const Calendar calendar(QTimeZone::utc());
    const char* const titles[] = {"DOM 3 MAR", "SEG 4 MAR", "TER 5 MAR", "QUA 6 MAR",
                                  "QUI 7 MAR", "SEX 8 MAR", "SÁB 9 MAR"};
    for (int i = 0; i < 7; ++i) {
        EXPECT_EQ(dayTitle(dateOf("2024-03-03") + i * 86400.0, calendar),
                  QString::fromUtf8(titles[i]));
    }
    EXPECT_EQ(dayShares({1800, 600, 50}), QStringLiteral("Produção 75% · Consumo 25%"));
    EXPECT_EQ(dayShares({0, 0, 50}), QStringLiteral("Sem dados classificados"));
}

TEST(PanelTextTest, SaysWhatButtonsAndRowsAreFor) {
    const QString name = QStringLiteral("Editor");
    EXPECT_EQ(rowToolTip(name, Category::pending),
              QStringLiteral("Editor · escolha ↑ ou ↓ para classificar"));
    EXPECT_EQ(rowToolTip(name, Category::neutral), name);
    EXPECT_EQ(categoryToolTip(name, Category::consumption, false),
              QStringLiteral("Marcar Editor como Consumo"));
    EXPECT_EQ(categoryToolTip(name, Category::consumption, true),
              QStringLiteral("Consumo selecionada"));
    EXPECT_EQ(listingToolTip(QStringLiteral("Não monitorados")),
              QStringLiteral("Não monitorados · clique para manter aberto"));
    EXPECT_EQ(footerToolTip(QStringLiteral("Zerar tempo")), QStringLiteral("Zerar tempo"));
    EXPECT_EQ(metricPercentage(0.625), QStringLiteral("62%"));
}
