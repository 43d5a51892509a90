#include "Views/Text/Percent.h"

#include <array>
#include <cstdio>

namespace orvanta {

QString percent(double share) {
    std::array<char, 8> digits{};
    std::snprintf(digits.data(), digits.size(), "%.0f", share * 100);
    return QString::fromLatin1(digits.data());
}

} // namespace orvanta
