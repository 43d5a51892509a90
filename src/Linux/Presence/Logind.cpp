#include "Linux/Presence/Logind.h"

#include <QDBusObjectPath>

#include <utility>

namespace orvanta {

namespace {

QString managerPath() {
    return QStringLiteral("/org/freedesktop/login1");
}

QString managerInterface() {
    return QStringLiteral("org.freedesktop.login1.Manager");
}

QString sessionInterface() {
    return QStringLiteral("org.freedesktop.login1.Session");
}

} // namespace

Logind::Logind(const QDBusConnection& systemBus, const QString& sessionId, qint64 processIdentifier,
               MainLoop& mainLoop)
    : service_(systemBus, QStringLiteral("org.freedesktop.login1"), mainLoop) {
    if (!sessionId.isEmpty()) {
        candidates_.push_back({QStringLiteral("GetSession"), sessionId});
    }
    candidates_.push_back(
        {QStringLiteral("GetSessionByPID"), QVariant::fromValue(uint(processIdentifier))});
    candidates_.push_back({QStringLiteral("GetSession"), QStringLiteral("auto")});
    connect(&service_, &BusService::appeared, this, &Logind::greet);
    connect(&service_, &BusService::forgotten, this, &Logind::forget);
}

void Logind::greet() {
    sleepHeard_ = inhibiting_ = asking_ = activeHeard_ = hintHeard_ = false;
    inhibitor_ = {}; // One of a predecessor holds nothing up.
    service_.listen(managerPath(), managerInterface(), QStringLiteral("PrepareForSleep"),
                    [this](const QDBusMessage& signal) {
                        if (const auto sleeping = argument<bool>(signal, 0)) {
                            sleepHeard_ = true;
                            setSleeping(*sleeping);
                        }
                    });
    service_.ask(managerPath(), propertiesInterface(), QStringLiteral("Get"),
                 {managerInterface(), QStringLiteral("PreparingForSleep")},
                 [this](const QDBusMessage& answer) {
                     const QVariant value =
                         argument<QDBusVariant>(answer, 0).value_or(QDBusVariant()).variant();
                     if (!sleepHeard_) {
                         setSleeping(value.metaType() == QMetaType::fromType<bool>() &&
                                     value.toBool());
                     }
                 });
    findSession(0);
}

/// Without logind nobody tells of a wake-up, a switch back or an unlocking any more.
void Logind::forget() {
    inhibitor_ = {};
    if (std::exchange(sleeping_, false)) {
        Q_EMIT sleepingChanged();
    }
    setSessionActive(true);
    setLockedHint(std::nullopt);
}

void Logind::setSleeping(bool sleeping) {
    if (sleeping_ != sleeping) {
        sleeping_ = sleeping;
        Q_EMIT sleepingChanged();
    }
    if (sleeping_) {
        inhibitor_ = {}; // All is booked and saved: sleep may begin.
    } else {
        inhibitSleep();
    }
}

void Logind::inhibitSleep() {
    if (inhibitor_.isValid() || std::exchange(inhibiting_, true)) {
        return;
    }
    service_.ask(managerPath(), managerInterface(), QStringLiteral("Inhibit"),
                 {QStringLiteral("sleep"), QStringLiteral("orvanta"),
                  QStringLiteral("Salvar o tempo medido antes da suspensão"),
                  QStringLiteral("delay")},
                 [this](const QDBusMessage& answer) {
                     inhibiting_ = false;
                     if (!sleeping_) {
                         inhibitor_ = argument<QDBusUnixFileDescriptor>(answer, 0).value_or(
                             QDBusUnixFileDescriptor());
                     }
                 });
}

void Logind::findSession(size_t candidate) {
    if (candidate == candidates_.size()) {
        followSession(managerPath() + QStringLiteral("/session/auto"));
        return;
    }
    service_.ask(managerPath(), managerInterface(), candidates_[candidate].method,
                 {candidates_[candidate].argument}, [this, candidate](const QDBusMessage& answer) {
                     if (const auto path = argument<QDBusObjectPath>(answer, 0)) {
                         followSession(path->path());
                     } else {
                         findSession(candidate + 1);
                     }
                 });
}

void Logind::followSession(const QString& path) {
    session_ = path;
    service_.listen(session_, sessionInterface(), QStringLiteral("Lock"),
                    [this](const QDBusMessage& /*signal*/) { Q_EMIT lockRequested(); });
    service_.listen(session_, sessionInterface(), QStringLiteral("Unlock"),
                    [this](const QDBusMessage& /*signal*/) { Q_EMIT unlockRequested(); });
    service_.listen(session_, propertiesInterface(), QStringLiteral("PropertiesChanged"),
                    [this](const QDBusMessage& signal) {
                        const auto properties = Properties::ofSignal(signal, sessionInterface());
                        noteSession(properties);
                        if (properties.someUntold) {
                            askSession();
                        }
                    });
    askSession();
}

/// One question at a time, however often there is reason to ask. An answer that comes after a
/// signal was given after it, too, and knows what it was about.
void Logind::askSession() {
    if (std::exchange(asking_, true)) {
        return;
    }
    service_.ask(session_, propertiesInterface(), QStringLiteral("GetAll"), {sessionInterface()},
                 [this](const QDBusMessage& answer) {
                     asking_ = false;
                     noteSession(Properties::ofReply(answer));
                     // What a predecessor said holds no longer.
                     if (!activeHeard_) {
                         setSessionActive(true);
                     }
                     if (!hintHeard_) {
                         setLockedHint(std::nullopt);
                     }
                 });
}

void Logind::noteSession(const Properties& properties) {
    if (const auto active = properties.value<bool>("Active")) {
        activeHeard_ = true;
        setSessionActive(*active);
    }
    if (const auto locked = properties.value<bool>("LockedHint")) {
        hintHeard_ = true;
        setLockedHint(locked);
    }
}

void Logind::setSessionActive(bool active) {
    if (active_ != active) {
        active_ = active;
        Q_EMIT sessionActiveChanged();
    }
}

void Logind::setLockedHint(std::optional<bool> locked) {
    if (lockedHint_ != locked) {
        lockedHint_ = locked;
        Q_EMIT lockedHintChanged();
    }
}

} // namespace orvanta
