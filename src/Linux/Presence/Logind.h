#pragma once

#include "Linux/Presence/BusService.h"

#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QString>

#include <optional>
#include <vector>

namespace orvanta {

/// What systemd-logind knows: the machine's sleep, and this session (org.freedesktop.login1(5)).
///
/// While the machine is awake it holds a delay lock, so that sleep waits until those who hear of it
/// have finished.
class Logind final : public QObject {
    Q_OBJECT

public:
    /// `sessionId` is what XDG_SESSION_ID says, or empty: then the session is that of the process,
    /// or the one that logind takes for the caller's.
    Logind(const QDBusConnection& systemBus, const QString& sessionId, qint64 processIdentifier,
           MainLoop& mainLoop);
    void start() { service_.start(); }

    bool isSleeping() const { return sleeping_; }
    /// True also where it is not known.
    bool isSessionActive() const { return active_; }
    /// Absent where it is not known.
    std::optional<bool> lockedHint() const { return lockedHint_; }

Q_SIGNALS:
    /// Sleep waits until this has returned.
    void sleepingChanged();
    void sessionActiveChanged();
    void lockedHintChanged();
    /// Somebody asks the session's locker to act; whether there is one is not said.
    void lockRequested();
    void unlockRequested();

private:
    void greet();
    void forget();
    void setSleeping(bool sleeping);
    void inhibitSleep();
    void findSession(size_t candidate);
    void followSession(const QString& path);
    void askSession();
    void noteSession(const Properties& properties);
    void setSessionActive(bool active);
    void setLockedHint(std::optional<bool> locked);

    BusService service_;
    struct Candidate {
        QString method;
        QVariant argument;
    };
    std::vector<Candidate> candidates_;
    QString session_;
    bool sleepHeard_ = false;
    bool inhibiting_ = false;
    bool asking_ = false;
    bool activeHeard_ = false;
    bool hintHeard_ = false;

    bool sleeping_ = false;
    bool active_ = true;
    std::optional<bool> lockedHint_;
    QDBusUnixFileDescriptor inhibitor_;
};

} // namespace orvanta
