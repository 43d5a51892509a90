#include "Linux/SystemClock.h"

#include <ctime>

namespace orvanta {

double systemUptime() {
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    constexpr double second = 1e9; // in nanoseconds
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / second;
}

} // namespace orvanta
