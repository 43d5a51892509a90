#include "Model/Day.h"

namespace orvanta {

QString Day::text() const {
    return QString::asprintf("%04d-%02d-%02d", year, month, dayOfMonth);
}

std::optional<Day> Day::fromText(QByteArrayView text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-') {
        return std::nullopt;
    }
    int digits[8];
    int count = 0;
    for (const qsizetype position : {0, 1, 2, 3, 5, 6, 8, 9}) {
        const char c = text[position];
        if (c < '0' || c > '9') {
            return std::nullopt;
        }
        digits[count++] = c - '0';
    }
    const int year = ((digits[0] * 10 + digits[1]) * 10 + digits[2]) * 10 + digits[3];
    return Day{static_cast<std::int16_t>(year),
               static_cast<std::uint8_t>(digits[4] * 10 + digits[5]),
               static_cast<std::uint8_t>(digits[6] * 10 + digits[7])};
}

} // namespace orvanta
