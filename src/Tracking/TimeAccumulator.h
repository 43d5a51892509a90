#pragma once

#include "Tracking/Focus.h"

#include <optional>

namespace orvanta {

/// The running stretch: what is timed now, and since when.
struct TimeAccumulator {
    struct Stretch {
        QString key;
        double seconds; ///< ≥ 0
    };

    std::optional<Focus> focus;

    /// Reading of the monotonic clock, in seconds, at which the stretch began.
    std::optional<double> last;

    /// Ends the running stretch at `now` and begins one of `next`. Returns what the ended one
    /// earned, if one was running; a clock that went backwards earns nothing.
    std::optional<Stretch> advance(const std::optional<Focus>& next, double now);
};

} // namespace orvanta
