#include "Linux/Windows/ChosenWindowWatcher.h"

#include <cstddef>
#include <utility>

namespace orvanta {

ChosenWindowWatcher::ChosenWindowWatcher(std::vector<Candidate> candidates, MainLoop& mainLoop)
    : WindowWatcher(State::Waiting)
    , candidates_(std::move(candidates))
    , mainLoop_(mainLoop) {
    chooseAgain();
}

void ChosenWindowWatcher::chooseAgain() {
    if (chosen_) {
        return;
    }
    asked_.clear();
    isPatient_ = true;
    // From when answers can be heard: a start may take long.
    timer_ = mainLoop_.once(MainLoop::Duration::zero(), [this] {
        timer_ = mainLoop_.once(patience, [this] {
            isPatient_ = false;
            consider();
        });
    });
    consider();
}

void ChosenWindowWatcher::update() {
    if (chosen_) {
        chosen_->update();
    }
}

std::optional<QString> ChosenWindowWatcher::allow() {
    for (const auto& watcher : asked_) {
        if (watcher->state() == State::NeedsPermission) {
            return watcher->allow();
        }
    }
    return std::nullopt;
}

void ChosenWindowWatcher::consider() {
    if (chosen_) {
        return;
    }
    State otherwise = otherwise_;
    bool isAnyWaiting = false;
    for (std::size_t index = 0; index < candidates_.size(); ++index) {
        if (index == asked_.size()) {
            ask(candidates_[index]);
        }
        std::unique_ptr<WindowWatcher>& watcher = asked_[index];
        if (watcher->state() == State::Watching) {
            choose(std::move(watcher));
            return;
        }
        if (watcher->state() == State::Waiting) {
            isAnyWaiting = true;
            if (isPatient_) {
                break;
            }
        }
        if (watcher->state() == State::NeedsPermission || watcher->state() == State::NeedsLogin ||
            watcher->state() == State::Incompatible) {
            otherwise = watcher->state();
        }
    }
    if (!isAnyWaiting) {
        timer_.reset();
    }
    // One that answers late is welcome still.
    setState(isAnyWaiting && isPatient_ ? State::Waiting : otherwise);
}

void ChosenWindowWatcher::ask(const Candidate& candidate) {
    const auto& watcher = asked_.emplace_back(candidate());
    // Not within its own call: those that are not chosen are destroyed.
    connect(watcher.get(), &WindowWatcher::stateChanged, this, &ChosenWindowWatcher::consider,
            Qt::QueuedConnection);
}

void ChosenWindowWatcher::choose(std::unique_ptr<WindowWatcher> watcher) {
    chosen_ = std::move(watcher);
    asked_.clear();
    timer_.reset();
    otherwise_ = State::Unsupported;
    connect(chosen_.get(), &WindowWatcher::activeWindowChanged, this,
            [this] { setActiveWindow(chosen_->activeWindow()); });
    connect(chosen_.get(), &WindowWatcher::stateChanged, this, &ChosenWindowWatcher::chosenChanged,
            Qt::QueuedConnection);
    setState(State::Watching);
    setActiveWindow(chosen_->activeWindow());
}

void ChosenWindowWatcher::chosenChanged() {
    if (!chosen_ || chosen_->state() == State::Watching) {
        return;
    }
    otherwise_ = chosen_->state() == State::Ended ? State::Ended : State::Unsupported;
    chosen_.reset();
    setActiveWindow(std::nullopt);
    setState(State::Waiting);
    timer_ = mainLoop_.once(returning, [this] { chooseAgain(); });
}

} // namespace orvanta
