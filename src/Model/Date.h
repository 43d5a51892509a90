#pragma once

#include <chrono>
#include <compare>

namespace orvanta {

/// A moment on the wall clock, in seconds since 2001-01-01 00:00 UTC: the reference date of the
/// store and of the preferences, kept as it is so that a date read is written back bit by bit.
struct Date {
    /// Finite; negative before 2001.
    double sinceReference = 0;

    /// Seconds from 1970-01-01 00:00 UTC to the reference date.
    static constexpr double referenceSince1970 = 978307200.0;

    static constexpr Date fromUnix(double secondsSince1970) {
        return {secondsSince1970 - referenceSince1970};
    }

    static constexpr Date from(std::chrono::system_clock::time_point time) {
        // Whole seconds and the rest apart, so that nanoseconds are not lost in a large double.
        const auto whole = std::chrono::floor<std::chrono::seconds>(time);
        const std::chrono::duration<double> rest = time - whole;
        return {static_cast<double>(whole.time_since_epoch().count() - 978307200) + rest.count()};
    }

    constexpr double since1970() const { return sinceReference + referenceSince1970; }

    friend constexpr auto operator<=>(Date, Date) = default;
    friend constexpr Date operator+(Date date, double seconds) {
        return {date.sinceReference + seconds};
    }
    friend constexpr Date operator-(Date date, double seconds) {
        return {date.sinceReference - seconds};
    }
    friend constexpr double operator-(Date a, Date b) {
        return a.sinceReference - b.sinceReference;
    }
};

} // namespace orvanta
