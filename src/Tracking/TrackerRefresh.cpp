#include "Model/ActivityKey.h"
#include "Model/ActivityList.h"
#include "Platform/Workspace.h"
#include "Tracking/Classification.h"
#include "Tracking/Tracker.h"
#include "Tracking/TrackingPolicy.h"

namespace orvanta {

void Tracker::refreshFocus() {
    startNewDayIfNeeded();

    const std::optional<Focus> front = effectiveFrontmost();
    bool isBrowser = false;
    bool isDisabled = false;
    bool ignored = false;
    if (front) {
        lastExternalApp_ = front;
        isBrowser = dialect_(front->key).has_value();
        isDisabled = disabledBrowsers_.contains(front->key);
        // A browser is judged by its sites.
        ignored = !(isBrowser && !isDisabled) && isIgnored(appKey(front->key));
    }

    if (paused_ || inactive_.any() || !front || ignored) {
        const bool wasTiming = accumulator_.focus.has_value();
        forgetTarget();
        clearBrowserStatus();
        transition(std::nullopt);
        if (wasTiming) {
            save();
        }
        updateTimers();
        return;
    }

    if (isBrowser && isDisabled) {
        forgetTarget();
        setBrowserStatus(QStringLiteral("Ative a identificação de sites nos Ajustes"));
        transition(std::nullopt);
        save();
        updateTimers();
        return;
    }

    if (trackingIdentity_ && trackingIdentity_->isBrowser == isBrowser &&
        trackingIdentity_->bundleID == front->key) {
        transition(accumulator_.focus);
        updateTimers();
        return;
    }

    browserRetryAt_ = 0;
    browserFailures_ = 0;
    forgetTarget();
    trackingIdentity_ = {isBrowser, front->key};
    clearBrowserStatus();
    if (isBrowser) {
        browserID_ = front->key;
        transition(std::nullopt);
        queryBrowser();
    } else {
        transition(Focus{appKey(front->key), front->name, false});
    }
    save();
    updateTimers();
}

/// Forgets what is tracked, so that every outstanding answer of a browser is stale.
void Tracker::forgetTarget() {
    ++generation_;
    trackingIdentity_.reset();
    browserID_.reset();
}

std::optional<Focus> Tracker::effectiveFrontmost() {
    std::optional<Focus> front = frontmost_();
    if (!front) {
        return std::nullopt;
    }
    if (front->key == platform_.workspace.ownBundleIdentifier()) {
        // The panel is looked at, not worked in: what was in front before keeps counting.
        return inspecting_ ? lastExternalApp_ : std::nullopt;
    }
    if (front->isSystemComponent || TrackingPolicy::isSystemComponent(front->key, std::nullopt)) {
        excludeSystemKey(appKey(front->key));
        return std::nullopt;
    }
    return front;
}

bool Tracker::isIgnored(const QString& activityKey) const {
    const Activity* activity = activities_.find(activityKey);
    return activity != nullptr && activity->category() == Category::ignored;
}

const QString& Tracker::appKey(const QString& bundleID) {
    if (lastAppKey_.first != bundleID) {
        lastAppKey_ = {bundleID, appKeyPrefix + bundleID};
    }
    return lastAppKey_.second;
}

void Tracker::transition(const std::optional<Focus>& focus) {
    // Not the argument itself: it may be the accumulator's own focus, which is about to change.
    const std::optional<Focus> target =
        focus && !isIgnored(focus->key) ? focus : std::optional<Focus>();

    const Date date = dateNow_();
    const std::optional<Focus>& running = accumulator_.focus;
    const bool same =
        running.has_value() == target.has_value() && (!running || running->key == target->key);
    if (!same && running) {
        if (Activity* left = activities_.find(running->key)) {
            left->setLastUsedAt(date);
        }
    }
    Activity* entered = target ? activities_.find(target->key) : nullptr;
    if (target && entered == nullptr) {
        entered =
            &insertActivity(target->key, target->name, Classification::suggested(target->key));
    }
    if (const auto stretch = accumulator_.advance(target, now_())) {
        if (Activity* activity = activities_.find(stretch->key)) {
            activity->setSeconds(activity->seconds() + stretch->seconds);
            addToDay(*activity, stretch->seconds);
        }
    }
    if (!same && entered != nullptr) {
        entered->setLastUsedAt(date);
    }
    setActiveKey(target ? &target->key : nullptr);
    bumpRevision();
}

void Tracker::setActiveKey(const QString* key) {
    const bool unchanged = key != nullptr ? activeKey_ == *key : !activeKey_.has_value();
    if (unchanged) {
        return;
    }
    activeKey_ = key != nullptr ? std::optional(*key) : std::nullopt;
    Q_EMIT activeKeyChanged();
}

} // namespace orvanta
