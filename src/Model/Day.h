#pragma once

#include <QString>

#include <compare>
#include <cstdint>
#include <optional>

namespace orvanta {

/// A calendar day in the person's time zone, as day records are filed. Ordered in time.
struct Day {
    std::int16_t year = 0;
    std::uint8_t month = 0;
    std::uint8_t dayOfMonth = 0;

    /// The day string: "%04d-%02d-%02d".
    QString text() const;

    /// The day that `text` is the day string of; none for any other text. Takes Latin-1 or UTF-8
    /// bytes: a day string is ASCII. The parts are not held against a calendar.
    static std::optional<Day> fromText(QByteArrayView text);

    friend constexpr auto operator<=>(Day, Day) = default;
};

} // namespace orvanta
