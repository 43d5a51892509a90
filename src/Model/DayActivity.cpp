#include "Model/DayActivity.h"

namespace orvanta {

QString DayActivity::day(Date date, const Calendar& calendar) {
    return calendar.day(date).text();
}

QString DayActivity::id(Day day, const QString& key) {
    return day.text() + QLatin1Char('|') + key;
}

} // namespace orvanta
