#pragma once

#include "Model/Calendar.h"
#include "Model/Date.h"
#include "Model/Day.h"

#include <QString>

namespace orvanta {

/// The seconds that one activity key had on one calendar day.
///
/// A value: the records themselves are kept by a `DayActivityList`. It belongs to an `Activity` by
/// equal keys only.
class DayActivity {
public:
    DayActivity(Day day, const QString& key, double seconds);

    /// The day string of the calendar day that contains `date`.
    static QString day(Date date, const Calendar& calendar);

    /// The identity of the record of this day and key: the day string, "|" and the key.
    static QString id(Day day, const QString& key);

    QString id() const { return id(day_, key_); }
    QString day() const { return day_.text(); }
    const QString& key() const { return key_; }
    double seconds() const { return seconds_; }

private:
    Day day_;
    QString key_;
    double seconds_;
};

} // namespace orvanta
