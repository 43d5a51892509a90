#include "Linux/Presence/ScreenLock.h"

#include <utility>

namespace orvanta {

ScreenLock::ScreenLock(MainLoop& mainLoop, std::function<void()> changed)
    : mainLoop_(mainLoop)
    , changed_(std::move(changed)) {}

void ScreenLock::requestLock() {
    requested_ = true;
    if (!isConfirmed()) {
        patience_ = mainLoop_.once(confirmedWithin, [this] {
            dropRequest();
            changed_();
        });
    }
    changed_();
}

void ScreenLock::requestUnlock() {
    dropRequest();
    if (hint_.value_or(false)) {
        hint_.reset();
    }
    changed_();
}

void ScreenLock::setHint(std::optional<bool> locked) {
    const bool before = std::exchange(hint_, locked).value_or(false);
    if (hint_.value_or(false)) {
        patience_.reset();
    } else if (before) {
        dropRequest();
    }
    changed_();
}

void ScreenLock::setSaverActive(bool active) {
    const bool before = std::exchange(saverActive_, active);
    if (active) {
        patience_.reset();
    } else if (before) {
        dropRequest();
    }
    changed_();
}

void ScreenLock::dropRequest() {
    requested_ = false;
    patience_.reset();
}

} // namespace orvanta
