#include "Model/DayActivity.h"

namespace orvanta {

DayActivity::DayActivity(Day day, const QString& key, double seconds)
    : day_(day)
    , key_(key)
    , seconds_(seconds) {}

QString DayActivity::day(Date date, const Calendar& calendar) {
    return calendar.day(date).text();
}

QString DayActivity::id(Day day, const QString& key) {
    return day.text() + QLatin1Char('|') + key;
}

} // namespace orvanta
