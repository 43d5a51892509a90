#pragma once

#include "Platform/MainLoop.h"

#include <functional>
#include <memory>
#include <utility>

namespace orvanta {

/// Passes a state on at once, but at most once a second: what changes more often is no person's
/// doing, and each change costs a booking. The last state always arrives.
class Calm {
public:
    Calm(MainLoop& mainLoop, std::function<void(bool)> apply)
        : mainLoop_(mainLoop)
        , apply_(std::move(apply)) {}

    void set(bool state) {
        wanted_ = state;
        if (!rest_) {
            pass();
        }
    }

private:
    static constexpr MainLoop::Duration restBetween{1.0};

    void pass() {
        if (passed_ == wanted_) {
            return;
        }
        passed_ = wanted_;
        rest_ = mainLoop_.once(restBetween, [this] {
            rest_.reset();
            pass();
        });
        apply_(passed_);
    }

    MainLoop& mainLoop_;
    std::function<void(bool)> apply_;
    bool wanted_ = false;
    bool passed_ = false;
    std::unique_ptr<MainLoopTimer> rest_;
};

} // namespace orvanta
