#pragma once

#include "Platform/MainLoop.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace orvanta {

/// A main loop whose time passes only by `advance`. Timers fire exactly when due, in time order;
/// timers due at the same moment, in the order in which they were made.
class HandMainLoop final : public MainLoop {
public:
    HandMainLoop() = default;

    std::unique_ptr<MainLoopTimer> every(Duration interval, Duration /*tolerance*/,
                                         Action action) override {
        assert(interval > Duration::zero());
        return arm(interval, true, std::move(action));
    }

    std::unique_ptr<MainLoopTimer> once(Duration delay, Action action) override {
        assert(delay >= Duration::zero());
        return arm(delay, false, std::move(action));
    }

    /// Lets time pass and fires what becomes due, also what the actions themselves arm within it.
    /// With zero, fires what is due now.
    void advance(Duration by) {
        const Nanoseconds end = now_ + nanoseconds(by);
        while (const auto entry = nextDue(end)) {
            now_ = std::max(now_, entry->due);
            if (entry->interval > Nanoseconds::zero()) {
                entry->due += entry->interval;
            } else {
                entry->armed = false;
            }
            ++entry->running;
            entry->action();
            --entry->running;
        }
        now_ = end;
    }
    void advance(double seconds) { advance(Duration(seconds)); }

    /// Seconds that have passed since this loop was made.
    double now() const { return Duration(now_).count(); }

    /// Timers that will still fire.
    std::size_t armedCount() const {
        return static_cast<std::size_t>(std::ranges::count_if(entries_, &Entry::isArmed));
    }

private:
    /// Whole nanoseconds, so that ten steps of 0.1 s are one second.
    using Nanoseconds = std::chrono::nanoseconds;

    struct Entry {
        Action action;
        Nanoseconds due{};
        Nanoseconds interval{}; ///< zero: fires once
        bool armed = true;
        int running = 0;

        static bool isArmed(const std::shared_ptr<Entry>& entry) { return entry->armed; }
    };

    class Timer final : public MainLoopTimer {
    public:
        explicit Timer(std::shared_ptr<Entry> entry)
            : entry_(std::move(entry)) {}
        ~Timer() override {
            entry_->armed = false;
            if (entry_->running == 0) {
                entry_->action = nullptr;
            }
        }
        Timer(const Timer&) = delete;
        Timer& operator=(const Timer&) = delete;

    private:
        std::shared_ptr<Entry> entry_;
    };

    static Nanoseconds nanoseconds(Duration duration) {
        return std::chrono::round<Nanoseconds>(duration);
    }

    std::unique_ptr<MainLoopTimer> arm(Duration delay, bool repeats, Action action) {
        std::erase_if(entries_, [](const auto& entry) { return !entry->armed; });
        const auto entry = std::make_shared<Entry>();
        entry->action = std::move(action);
        entry->due = now_ + nanoseconds(delay);
        entry->interval = repeats ? nanoseconds(delay) : Nanoseconds::zero();
        entries_.push_back(entry);
        return std::make_unique<Timer>(entry);
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
