#include "Model/ActivityKey.h"
#include "Tracking/Tracker.h"

#include <QPointer>

#include <algorithm>
#include <cmath>

namespace orvanta {

void Tracker::queryBrowser() {
    if (!browserID_ || querying_ || paused_ || inactive_.any() || now_() < browserRetryAt_) {
        return;
    }
    querying_ = true;
    reader_.read(*browserID_, [weak = QPointer(this), generation = generation_,
                               bundleID = *browserID_](const BrowserReading::Answer& answer) {
        if (weak) {
            weak->handleAnswer(answer, generation, bundleID);
        }
    });
}

void Tracker::handleAnswer(const BrowserReading::Answer& answer, int generation,
                           const QString& bundleID) {
    querying_ = false;
    if (generation != generation_ || paused_ || inactive_.any() || browserID_ != bundleID) {
        return;
    }
    const std::optional<Focus> front = effectiveFrontmost();
    if (!front || front->key != bundleID) {
        return;
    }

    if (answer.site) {
        browserFailures_ = 0;
        browserRetryAt_ = 0;
    } else {
        constexpr int longest = 5;
        constexpr double longestWait = 30;
        ++browserFailures_;
        browserRetryAt_ =
            now_() + std::min(std::exp2(std::min(browserFailures_, longest)), longestWait);
    }
    setBrowserStatus(answer.error.value_or(QString()));

    std::optional<Focus> focus;
    if (answer.site) {
        const QString key = siteKeyPrefix + *answer.site;
        if (!isIgnored(key)) {
            focus = Focus{key, *answer.site, false};
        }
    }
    const std::optional<Focus>& running = accumulator_.focus;
    if (running.has_value() == focus.has_value() && (!focus || running->key == focus->key)) {
        return;
    }
    transition(focus);
    save();
}

void Tracker::setBrowserStatus(const QString& status) {
    if (browserStatus_ != status) {
        browserStatus_ = status;
        Q_EMIT browserStatusChanged();
    }
}

bool Tracker::isBrowserApp(const QString& key) const {
    return key.startsWith(appKeyPrefix) && (key == QLatin1StringView("app:com.apple.Safari") ||
                                            key == QLatin1StringView("app:com.google.Chrome") ||
                                            dialect_(key.mid(appKeyPrefix.size())).has_value());
}

} // namespace orvanta
