#include "Model/DurationText.h"

namespace orvanta {

QString duration(double seconds) {
    constexpr double limit = 9.2e18; // Just inside what a 64-bit integer holds.
    const qint64 n = seconds > 0 && seconds < limit ? static_cast<qint64>(seconds) : 0;
    if (n >= 3600) {
        return QString::asprintf("%lld:%02lld:%02lld", n / 3600, n / 60 % 60, n % 60);
    }
    return QString::asprintf("%lld:%02lld", n / 60, n % 60);
}

} // namespace orvanta
