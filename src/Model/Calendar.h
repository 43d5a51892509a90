#pragma once

#include "Model/Date.h"
#include "Model/Day.h"

#include <QDateTime>
#include <QTimeZone>

#include <optional>

namespace orvanta {

/// The Gregorian calendar in the person's time zone and week convention.
///
/// The bounds of the day asked for last are kept, so that asking every second costs nothing.
class Calendar {
public:
    /// `firstWeekday` is 1 for Sunday to 7 for Saturday.
    explicit Calendar(const QTimeZone& timeZone, int firstWeekday = 1);

    /// The person travelled, or set another zone.
    void setTimeZone(const QTimeZone& timeZone);

    /// The first moment of the day that contains `date`: midnight, or what the zone has instead of
    /// it on a day that starts later.
    Date startOfDay(Date date) const;

    /// Of this day; absent when the zone skips it, as one on the date line can.
    std::optional<Date> startOfDay(Day day) const;

    Day day(Date date) const;

    /// What the person's calendar and clock show, to the second.
    QDateTime local(Date date) const;

    bool isSameDay(Date a, Date b) const { return day(a) == day(b); }

    /// The same local time `days` days later (or earlier), the first where clocks show it twice. A
    /// time that the zone skips becomes the first one after it. Absent beyond the range of dates,
    /// and when the zone skips that day from this time on.
    std::optional<Date> addingDays(Date date, int days) const;

    /// The day `days` days later (or earlier); absent beyond the years that a day string can hold.
    static std::optional<Day> addingDays(Day day, qint64 days);

    /// 1 for Sunday to 7 for Saturday.
    int weekday(Date date) const;
    int firstWeekday() const { return firstWeekday_; }

private:
    struct Bounds {
        Date start;
        Date end;
        Day day;
    };
    const Bounds& dayAround(Date date) const;

    QTimeZone timeZone_;
    int firstWeekday_;
    mutable Bounds last_;
};

} // namespace orvanta
