#include "Model/Calendar.h"

#include <algorithm>
#include <cmath>

namespace orvanta {

namespace {

QDateTime atUtc(qint64 seconds) {
    return QDateTime::fromSecsSinceEpoch(seconds, QTimeZone::utc());
}

QDateTime localTime(Date date, const QTimeZone& zone) {
    constexpr double limit = 9e11; // Some 28,000 years: a file can hold any double.
    const double seconds = std::floor(std::clamp(date.since1970(), -limit, limit));
    return QDateTime::fromSecsSinceEpoch(static_cast<qint64>(seconds), zone);
}

/// The first moment at which clocks show this time, or have just skipped it. Qt itself takes the
/// second of two such moments and none for a skipped time: a day that begins twice, as in the
/// Azores, would begin after its own first hour.
Date fromLocalTime(QDate date, QTime time, const QTimeZone& zone) {
    constexpr qint64 aDay = 86400; // Zones do not change twice within two.
    const qint64 shown = QDateTime(date, time, QTimeZone::utc()).toSecsSinceEpoch();
    const int before = zone.offsetFromUtc(atUtc(shown - aDay));
    const int after = zone.offsetFromUtc(atUtc(shown + aDay));
    qint64 moment = shown - before;
    if (zone.offsetFromUtc(atUtc(moment)) != before) {
        moment = shown - after;
        if (zone.offsetFromUtc(atUtc(moment)) != after) {
            moment = zone.nextTransition(atUtc(moment)).atUtc.toSecsSinceEpoch();
        }
    }
    return Date::fromUnix(static_cast<double>(moment));
}

QDate dateOf(Day day) {
    return {day.year, day.month, day.dayOfMonth};
}

Day dayOf(QDate date) {
    return {static_cast<std::int16_t>(date.year()), static_cast<std::uint8_t>(date.month()),
            static_cast<std::uint8_t>(date.day())};
}

} // namespace

Calendar::Calendar(const QTimeZone& timeZone, int firstWeekday)
    : timeZone_(timeZone.isValid() ? timeZone : QTimeZone::utc())
    , firstWeekday_(firstWeekday) {}

void Calendar::setTimeZone(const QTimeZone& timeZone) {
    timeZone_ = timeZone.isValid() ? timeZone : QTimeZone::utc();
    last_ = {};
}

Date Calendar::startOfDay(Date date) const {
    return dayAround(date).start;
}

std::optional<Date> Calendar::startOfDay(Day day) const {
    const Date start = fromLocalTime(dateOf(day), QTime(0, 0), timeZone_);
    return localTime(start, timeZone_).date() == dateOf(day) ? std::optional(start) : std::nullopt;
}

Day Calendar::day(Date date) const {
    return dayAround(date).day;
}

QDateTime Calendar::local(Date date) const {
    return localTime(date, timeZone_);
}

std::optional<Date> Calendar::addingDays(Date date, int days) const {
    const QDateTime local = localTime(date, timeZone_);
    const QDate moved = local.date().addDays(days);
    if (!moved.isValid()) {
        return std::nullopt;
    }
    const Date result = fromLocalTime(moved, local.time(), timeZone_);
    if (localTime(result, timeZone_).date() != moved) {
        return std::nullopt;
    }
    const double fraction = date.since1970() - std::floor(date.since1970());
    return result + fraction;
}

std::optional<Day> Calendar::addingDays(Day day, qint64 days) {
    const QDate moved = dateOf(day).addDays(days);
    return moved.isValid() && moved.year() >= 1 && moved.year() <= 9999
               ? std::optional(dayOf(moved))
               : std::nullopt;
}

int Calendar::weekday(Date date) const {
    return localTime(date, timeZone_).date().dayOfWeek() % 7 + 1; // Qt counts from Monday, 1.
}

const Calendar::Bounds& Calendar::dayAround(Date date) const {
    if (date < last_.start || date >= last_.end) {
        const QDate local = localTime(date, timeZone_).date();
        const QTime midnight(0, 0);
        last_.start = fromLocalTime(local, midnight, timeZone_);
        last_.end = fromLocalTime(local.addDays(1), midnight, timeZone_);
        last_.day = dayOf(local);
    }
    return last_;
}

} // namespace orvanta
