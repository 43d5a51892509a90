#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace orvanta {

/// A timer that is armed as long as the object lives; destroying it disarms it, also from within
/// its own action.
class MainLoopTimer {
public:
    virtual ~MainLoopTimer() = default;
    MainLoopTimer(const MainLoopTimer&) = delete;
    MainLoopTimer& operator=(const MainLoopTimer&) = delete;

protected:
    MainLoopTimer() = default;
};

/// Timers of the main thread. They fire while a menu or a modal window is up, too.
class MainLoop {
public:
    using Duration = std::chrono::duration<double>;
    using Action = std::function<void()>;

    virtual ~MainLoop() = default;
    MainLoop(const MainLoop&) = delete;
    MainLoop& operator=(const MainLoop&) = delete;

    /// Fires every `interval` (> 0), each time up to `tolerance` late, so that the system can
    /// gather wake-ups.
    virtual std::unique_ptr<MainLoopTimer> every(Duration interval, Duration tolerance,
                                                 Action action) = 0;

    /// Fires once, after `delay` (≥ 0) and never before.
    virtual std::unique_ptr<MainLoopTimer> once(Duration delay, Action action) = 0;

protected:
    MainLoop() = default;
};

} // namespace orvanta
