#pragma once

#include "Linux/Presence/Calm.h"
#include "Linux/Presence/Logind.h"
#include "Linux/Presence/MutterDisplays.h"
#include "Linux/Presence/ScreenLock.h"
#include "Linux/Presence/ScreenSavers.h"
#include "Linux/Presence/WaylandDisplays.h"
#include "Linux/Presence/X11Displays.h"
#include "Platform/NotificationCenter.h"
#include "Platform/Platform.h"

#include <QByteArray>
#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <array>
#include <cstddef>
#include <memory>

namespace orvanta {

/// Whether a person can be at work here. Sleep, displays, session and lock are four reasons of
/// absence; each holds while any of its sources says so, and is announced on the platform's
/// notification centres when that changes. A reason that begins is announced before one that ends,
/// so that nothing is counted between a dark screen and its lock.
///
/// Where a source is absent, nothing holds on its behalf. What a service said before it vanished
/// stands for `BusService::wordStands`. The session's hint is logind's own and stands longer; but
/// once a screen saver has died while it was active, an application coming to the front shows that
/// the screen is not locked, and ends both.
class Presence final : public QObject {
    Q_OBJECT

public:
    struct Surroundings {
        QDBusConnection systemBus;
        QDBusConnection sessionBus;
        QString sessionId; ///< of logind's, or empty
        qint64 processIdentifier = 0;
        QByteArray xDisplay;       ///< empty unless the desktop is an X server's
        QByteArray waylandDisplay; ///< empty unless it is a Wayland compositor's
    };

    /// What `platform` refers to must outlive this object.
    Presence(const Platform& platform, Surroundings surroundings);
    ~Presence() override;
    Presence(const Presence&) = delete;
    Presence& operator=(const Presence&) = delete;

    /// Announces what already holds, as soon as it is known, and from then on what changes. To be
    /// called once, when those who want to hear it observe the centres.
    void start();

private:
    /// The index of a reason in what follows.
    enum Reason { Sleep, Display, Session, Lock, ReasonCount };

    void lockedHintChanged();
    void unlockRequested();
    void applicationActivated();
    void update();

    Platform platform_;
    QByteArray xDisplay_;
    QByteArray waylandDisplay_;
    Logind logind_;
    ScreenSavers savers_;
    MutterDisplays mutter_;
    std::unique_ptr<X11Displays> x11_;
    std::unique_ptr<WaylandDisplays> wayland_;
    ScreenLock lock_;
    Calm savedCalmly_;
    Calm mutterOffCalmly_;
    Calm x11OffCalmly_;
    Calm waylandOffCalmly_;
    bool mutterOff_ = false;
    bool x11Off_ = false;
    bool waylandOff_ = false;
    NotificationCenter::Token activation_{};
    std::array<bool, ReasonCount> announced_{};
};

} // namespace orvanta
