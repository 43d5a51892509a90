#pragma once

#include "Platform/MainLoop.h"

#include <functional>
#include <memory>
#include <optional>

namespace orvanta {

/// Decides from what the desktop says whether the screen is locked, or only saved.
///
/// - The session's hint is what the locker itself told logind: it stands.
/// - An active screen saver is a lock where no hint is known, or where a lock was asked for; with
///   a hint that says "unlocked" it is only a dark screen.
/// - A request to lock counts from the moment it is made, so that nothing is counted while the
///   locker starts. If neither hint nor saver confirms it in time, there is no locker, or one that
///   tells nobody, and the request is dropped: counting nothing for the rest of the day would be
///   worse.
/// - A request to unlock ends request and hint: every locker obeys it, and one that has crashed
///   left its hint behind.
class ScreenLock {
public:
    /// How long a locker may take to confirm a request.
    static constexpr MainLoop::Duration confirmedWithin{30.0};

    /// `changed` is called after a state below may have changed.
    ScreenLock(MainLoop& mainLoop, std::function<void()> changed);

    void requestLock();
    void requestUnlock();
    void setHint(std::optional<bool> locked);
    void setSaverActive(bool active);

    bool isLocked() const { return hint_.value_or(saverActive_) || requested_; }
    bool isOnlySaved() const { return saverActive_ && !isLocked(); }

private:
    bool isConfirmed() const { return hint_.value_or(false) || saverActive_; }
    void dropRequest();

    MainLoop& mainLoop_;
    std::function<void()> changed_;
    std::optional<bool> hint_;
    bool saverActive_ = false;
    bool requested_ = false;
    std::unique_ptr<MainLoopTimer> patience_;
};

} // namespace orvanta
