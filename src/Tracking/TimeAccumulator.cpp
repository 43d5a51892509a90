#include "Tracking/TimeAccumulator.h"

namespace orvanta {

std::optional<TimeAccumulator::Stretch> TimeAccumulator::advance(const std::optional<Focus>& next,
                                                                 double now) {
    std::optional<Stretch> ended;
    if (focus && last) {
        const double elapsed = now - *last;
        ended = {focus->key, elapsed >= 0 ? elapsed : 0};
    }
    focus = next;
    last = now;
    return ended;
}

} // namespace orvanta
