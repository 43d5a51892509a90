#pragma once

#include "Platform/MainLoop.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace orvanta {

/// A main loop whose time passes only by `advance`. Timers fire exactly when due, in time order;
/// timers due at the same moment, in the order in which they were made.
class HandMainLoop final : public MainLoop {
public:
    std::unique_ptr<MainLoopTimer> every(Duration interval, Duration /*tolerance*/,
                                         Action action) override {
        return std::make_unique<Timer>(timers_, dueAfter(interval), rounded(interval), action);
    }
    std::unique_ptr<MainLoopTimer> once(Duration delay, Action action) override {
        return std::make_unique<Timer>(timers_, dueAfter(delay), never, action);
    }

    /// Lets time pass and fires what becomes due, also what the actions themselves arm within it.
    /// With zero, fires what is due now.
    void advance(double seconds) {
        const Nanoseconds end = dueAfter(Duration(seconds));
        for (;;) {
            const auto next = std::ranges::min_element(*timers_, {}, &Timer::due);
            if (next == timers_->end() || (*next)->due > end) {
                break;
            }
            Timer& timer = **next;
            now_ = std::max(now_, timer.due);
            timer.due = timer.interval == never ? never : timer.due + timer.interval;
            const Action action = timer.action; // It may let go of its own timer.
            action();
        }
        now_ = end;
    }

    /// Seconds that have passed since this loop was made.
    double now() const { return Duration(now_).count(); }

    /// Timers that will still fire.
    std::size_t armedCount() const {
        return static_cast<std::size_t>(std::ranges::count_if(
            *timers_, [](const Timer* timer) { return timer->due != never; }));
    }

private:
    /// Whole nanoseconds, so that ten steps of 0.1 s are one second.
    using Nanoseconds = std::chrono::nanoseconds;
    static constexpr Nanoseconds never = Nanoseconds::max();

    struct Timer;
    using Timers = std::shared_ptr<std::vector<Timer*>>;
    struct Timer final : public MainLoopTimer {
        Timer(Timers all, Nanoseconds first, Nanoseconds each, Action what)
            : timers(std::move(all))
            , due(first)
            , interval(each)
            , action(std::move(what)) {
            timers->push_back(this);
        }
        ~Timer() override { std::erase(*timers, this); }

        Timers timers;
        Nanoseconds due;
        Nanoseconds interval;
        Action action;
    };

    static Nanoseconds rounded(Duration duration) {
        return std::chrono::round<Nanoseconds>(duration);
    }
    Nanoseconds dueAfter(Duration delay) const { return now_ + rounded(delay); }

    Timers timers_ = std::make_shared<std::vector<Timer*>>();
    Nanoseconds now_{};
};

} // namespace orvanta
