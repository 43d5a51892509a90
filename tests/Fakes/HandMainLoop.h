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
        return arm(interval, true, std::move(action));
    }
    std::unique_ptr<MainLoopTimer> once(Duration delay, Action action) override {
        return arm(delay, false, std::move(action));
    }

    /// Lets time pass and fires what becomes due, also what the actions themselves arm within it.
    /// With zero, fires what is due now.
    void advance(double seconds) {
        const Nanoseconds end = now_ + nanoseconds(Duration(seconds));
        while (const auto entry = nextDue(end)) {
            now_ = std::max(now_, entry->due);
            entry->due += entry->interval;
            entry->armed = entry->interval > Nanoseconds::zero();
            const Action action = entry->action; // It may let go of its own timer.
            action();
        }
        now_ = end;
    }

    /// Seconds that have passed since this loop was made.
    double now() const { return Duration(now_).count(); }

    /// Timers that will still fire.
    std::size_t armedCount() const {
        return static_cast<std::size_t>(
            std::ranges::count_if(entries_, [](const auto& entry) { return entry->armed; }));
    }

private:
    /// Whole nanoseconds, so that ten steps of 0.1 s are one second.
    using Nanoseconds = std::chrono::nanoseconds;

    struct Entry {
        Action action;
        Nanoseconds due;
        Nanoseconds interval; ///< zero: fires once
        bool armed = true;
    };

    struct Timer final : public MainLoopTimer {
        explicit Timer(std::shared_ptr<Entry> made)
            : entry(std::move(made)) {}
        ~Timer() override {
            entry->armed = false;
            entry->action = nullptr;
        }
        Timer(const Timer&) = delete;
        Timer& operator=(const Timer&) = delete;

        std::shared_ptr<Entry> entry;
    };

    static Nanoseconds nanoseconds(Duration duration) {
        return std::chrono::round<Nanoseconds>(duration);
    }

    std::unique_ptr<MainLoopTimer> arm(Duration delay, bool repeats, Action action) {
        std::erase_if(entries_, [](const auto& entry) { return !entry->armed; });
        const Nanoseconds interval = nanoseconds(delay);
        entries_.push_back(std::make_shared<Entry>(
            Entry{std::move(action), now_ + interval, repeats ? interval : Nanoseconds::zero()}));
        return std::make_unique<Timer>(entries_.back());
    }

    std::shared_ptr<Entry> nextDue(Nanoseconds end) const {
        std::shared_ptr<Entry> next;
        for (const auto& entry : entries_) {
            if (entry->armed && entry->due <= end && (!next || entry->due < next->due)) {
                next = entry;
            }
        }
        return next;
    }

    std::vector<std::shared_ptr<Entry>> entries_;
    Nanoseconds now_{};
};

} // namespace orvanta
