#pragma once

#include "Model/Calendar.h"
#include "Model/Date.h"
#include "Model/Day.h"

#include <QString>

/// What a store knows the seconds by that one activity key had on one calendar day. The records
/// themselves are kept by a `DayActivityList`; they belong to an `Activity` by equal keys only.
namespace orvanta::DayActivity {

/// The day string of the calendar day that contains `date`.
QString day(Date date, const Calendar& calendar);

/// The identity of the record of this day and key: the day string, "|" and the key.
QString id(Day day, const QString& key);

} // namespace orvanta::DayActivity
