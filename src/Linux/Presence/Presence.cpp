#include "Linux/Presence/Presence.h"

#include "Platform/Workspace.h"

#include <utility>

namespace orvanta {

Presence::Presence(const Platform& platform, Surroundings surroundings)
    : platform_(platform)
    , xDisplay_(std::move(surroundings.xDisplay))
    , waylandDisplay_(std::move(surroundings.waylandDisplay))
    , logind_(surroundings.systemBus, surroundings.sessionId, surroundings.processIdentifier,
              platform.mainLoop)
    , savers_(surroundings.sessionBus, platform.mainLoop)
    , mutter_(surroundings.sessionBus, platform.mainLoop)
    , lock_(platform.mainLoop, [this] { update(); })
    , savedCalmly_(platform.mainLoop, [this](bool active) { lock_.setSaverActive(active); })
    , mutterOffCalmly_(platform.mainLoop,
                       [this](bool off) {
                           mutterOff_ = off;
                           update();
                       })
    , x11OffCalmly_(platform.mainLoop,
                    [this](bool off) {
                        x11Off_ = off;
                        update();
                    })
    , waylandOffCalmly_(platform.mainLoop, [this](bool off) {
        waylandOff_ = off;
        update();
    }) {
    connect(&logind_, &Logind::sleepingChanged, this, &Presence::update);
    connect(&logind_, &Logind::sessionActiveChanged, this, &Presence::update);
    connect(&logind_, &Logind::lockedHintChanged, this, &Presence::lockedHintChanged);
    connect(&logind_, &Logind::lockRequested, this, [this] { lock_.requestLock(); });
    connect(&logind_, &Logind::unlockRequested, this, &Presence::unlockRequested);
    connect(&savers_, &ScreenSavers::changed, this,
            [this] { savedCalmly_.set(savers_.isActive()); });
    connect(&mutter_, &MutterDisplays::changed, this,
            [this] { mutterOffCalmly_.set(mutter_.areOff()); });
    activation_ = platform_.workspaceNotifications.addObserver(Notification::DidActivateApplication,
                                                               [this] { applicationActivated(); });
}

Presence::~Presence() {
    platform_.workspaceNotifications.removeObserver(activation_);
}

void Presence::start() {
    logind_.start();
    savers_.start();
    mutter_.start();
    if (!xDisplay_.isEmpty()) {
        x11_ = std::make_unique<X11Displays>(xDisplay_, platform_.mainLoop);
        connect(x11_.get(), &X11Displays::changed, this,
                [this] { x11OffCalmly_.set(x11_->areOff()); });
        x11OffCalmly_.set(x11_->areOff());
    }
    if (!waylandDisplay_.isEmpty()) {
        wayland_ = std::make_unique<WaylandDisplays>(waylandDisplay_);
        connect(wayland_.get(), &WaylandDisplays::changed, this,
                [this] { waylandOffCalmly_.set(wayland_->areOff()); });
    }
}

void Presence::lockedHintChanged() {
    lock_.setHint(logind_.lockedHint());
    if (logind_.lockedHint()) {
        savers_.dropVanished(); // Theirs is the older word.
    }
}

void Presence::unlockRequested() {
    savers_.dropVanished();
    lock_.requestUnlock();
}

void Presence::applicationActivated() {
    if (platform_.workspace.frontmostApplication() != nullptr && savers_.dropVanished()) {
        lock_.requestUnlock();
    }
}

void Presence::update() {
    struct Announcement {
        Reason reason;
        bool holds;
        NotificationCenter& center;
        Notification begins;
        Notification ends;
    };
    NotificationCenter& workspace = platform_.workspaceNotifications;
    const std::array<Announcement, ReasonCount> announcements{
        {{Sleep, logind_.isSleeping(), workspace, Notification::WillSleep, Notification::DidWake},
         {Display, mutterOff_ || x11Off_ || waylandOff_ || lock_.isOnlySaved(), workspace,
          Notification::ScreensDidSleep, Notification::ScreensDidWake},
         {Session, !logind_.isSessionActive(), workspace, Notification::SessionDidResignActive,
          Notification::SessionDidBecomeActive},
         {Lock, lock_.isLocked(), platform_.distributedNotifications, Notification::ScreenIsLocked,
          Notification::ScreenIsUnlocked}}};
    for (const bool beginning : {true, false}) {
        for (const auto& each : announcements) {
            if (each.holds == beginning && announced_[each.reason] != each.holds) {
                announced_[each.reason] = each.holds;
                each.center.post(each.holds ? each.begins : each.ends);
            }
        }
    }
}

} // namespace orvanta
