#include "Views/Text/HistoryText.h"

#include "Model/Calendar.h"
#include "Views/Text/Percent.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace orvanta {

namespace {

const QString& monthName(int month) {
    static const std::array names{
        QStringLiteral("JAN"), QStringLiteral("FEV"), QStringLiteral("MAR"), QStringLiteral("ABR"),
        QStringLiteral("MAI"), QStringLiteral("JUN"), QStringLiteral("JUL"), QStringLiteral("AGO"),
        QStringLiteral("SET"), QStringLiteral("OUT"), QStringLiteral("NOV"), QStringLiteral("DEZ")};
    return names.at(static_cast<std::size_t>(month - 1));
}

const QString& weekdayName(int weekday) {
    static const std::array names{
        QStringLiteral("DOM"), QStringLiteral("SEG"), QStringLiteral("TER"), QStringLiteral("QUA"),
        QStringLiteral("QUI"), QStringLiteral("SEX"), QStringLiteral("SÁB")};
    return names.at(static_cast<std::size_t>(weekday - 1));
}

} // namespace

QString dayTitle(Date date, const Calendar& calendar) {
    const Day day = calendar.day(date);
    return weekdayName(calendar.weekday(date)) + u' ' + QString::number(day.dayOfMonth) + u' ' +
           monthName(day.month);
}

QString dayShares(const DayTotals& totals) {
    const double classified = totals.production + totals.consumption;
    if (classified <= 0) {
        return QStringLiteral("Sem dados classificados");
    }
    const double ratio = totals.production / classified;
    return QStringLiteral("Produção ") + QString::number(percent(ratio)) +
           QStringLiteral("% · Consumo ") + QString::number(percent(1 - ratio)) + u'%';
}

QStringList monthLabels(const std::vector<std::vector<HistoryDay>>& weeks,
                        const Calendar& calendar) {
    std::vector<int> months;
    months.reserve(weeks.size());
    for (const std::vector<HistoryDay>& week : weeks) {
        months.push_back(week.empty() ? 0 : calendar.day(week.front().date).month);
    }
    QStringList labels;
    for (std::size_t i = 0; i < months.size(); ++i) {
        const int month = months[i];
        const auto first = months.begin();
        const auto few =
            first + static_cast<std::ptrdiff_t>(std::min<std::size_t>(3, months.size()));
        const bool isLabelled =
            i == 0 ? std::all_of(first, few, [month](int other) { return other == month; })
                   : month != months[i - 1];
        labels += month >= 1 && isLabelled ? monthName(month) : QString();
    }
    return labels;
}

} // namespace orvanta
