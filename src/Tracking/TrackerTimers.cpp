#include "Model/ActivityList.h"
#include "Tracking/Tracker.h"

namespace orvanta {

namespace {

constexpr MainLoop::Duration tickInterval{1.0};
constexpr MainLoop::Duration tickTolerance{0.05};
constexpr int ticksPerSave = 5;

} // namespace

void Tracker::updateTimers() {
    if (!started_) {
        return;
    }
    const bool running = !paused_ && inactive_.none() && (accumulator_.focus || browserID_);
    if (!running) {
        timer_.reset();
    } else if (!timer_) {
        timer_ = platform_.mainLoop.every(tickInterval, tickTolerance, [this] { tick(); });
    }
    visibilityTimer_.reset();
    if (!running && inspecting_ && !showAllActivities_) {
        planVisibilityTimer();
    }
}

void Tracker::planVisibilityTimer() {
    const Date date = currentDate();
    std::optional<Date> earliest;
    for (const Activity& activity : activities_) {
        const double seconds = activity.seconds();
        if (!(seconds > 0 && seconds < briefSeconds) || !activity.lastUsedAt() ||
            activity.category() == Category::ignored || !isEligible(activity)) {
            continue;
        }
        const Date expiry = *activity.lastUsedAt() + briefStays;
        if (expiry > date && (!earliest || expiry < *earliest)) {
            earliest = expiry;
        }
    }
    if (earliest) {
        visibilityTimer_ = platform_.mainLoop.once(MainLoop::Duration{*earliest - date}, [this] {
            bumpRevision();
            updateTimers();
        });
    }
}

void Tracker::tick() {
    refreshFocus();
    queryBrowser();
    if (++ticks_ % ticksPerSave == 0) {
        save();
    }
}

} // namespace orvanta
