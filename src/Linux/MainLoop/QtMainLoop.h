#pragma once

#include "Platform/MainLoop.h"

namespace orvanta {

/// The main loop of the thread's Qt event dispatcher. Timers have a resolution of one millisecond
/// and need a QCoreApplication.
///
/// Where the tolerance is at least 5% of the interval, Qt may gather several timers in one wake-up;
/// it can then fire up to 5% early, too. Timers that fire once are never early.
class QtMainLoop final : public MainLoop {
public:
    QtMainLoop() = default;

    std::unique_ptr<MainLoopTimer> every(Duration interval, Duration tolerance,
                                         Action action) override;
    std::unique_ptr<MainLoopTimer> once(Duration delay, Action action) override;
};

} // namespace orvanta
