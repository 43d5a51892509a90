#include "Linux/Presence/BusService.h"

#include <QDBusArgument>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>

#include <utility>

namespace orvanta {

namespace {

constexpr int answerWithin = 5000; // ms

/// At least this long between two take-ups of the name.
constexpr MainLoop::Duration restBetween{1.0};

/// A map of variants, as QtDBus leaves it undecoded inside a message.
QVariantMap mapOf(const QVariant& value) {
    if (value.metaType() != QMetaType::fromType<QDBusArgument>()) {
        return {};
    }
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a{sv}")) {
        return {};
    }
    return qdbus_cast<QVariantMap>(argument);
}

} // namespace

BusService::BusService(QDBusConnection bus, QString name, MainLoop& mainLoop)
    : bus_(std::move(bus))
    , name_(std::move(name))
    , mainLoop_(mainLoop) {}

void BusService::start() {
    if (!bus_.isConnected()) {
        return;
    }
    // First, so that no change of the owner falls between the watch and the question.
    auto* const watcher =
        new QDBusServiceWatcher(name_, bus_, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString& /*name*/, const QString& /*old*/, const QString& owner) {
                ownerTold_ = true;
                setOwner(owner);
            });
    bus_.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                 QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                 SLOT(disconnected()));

    auto question = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetNameOwner"));
    question << name_;
    auto* const answer = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
        answer->deleteLater();
        if (const auto owner = argument<QString>(answer->reply(), 0);
            owner && answer->isValid() && !ownerTold_) {
            setOwner(*owner);
        }
    });
}

/// Subscribes under the owner's unique name. Under the well-known one QtDBus would ask the bus who
/// that is, and wait.
void BusService::listen(const QString& path, const QString& interface, const QString& member,
                        Handler handler) {
    bus_.connect(owner_, path, interface, member, this, SLOT(hear(QDBusMessage)));
    subscriptions_.push_back({path, interface, member, std::move(handler)});
}

void BusService::ask(const QString& path, const QString& interface, const QString& member,
                     const QVariantList& arguments, const Handler& answer) {
    auto call = QDBusMessage::createMethodCall(owner_, path, interface, member);
    call.setArguments(arguments);
    auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call, answerWithin), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, watcher, answer, owner = owner_] {
                watcher->deleteLater();
                if (owner == owner_) {
                    answer(watcher->reply());
                }
            });
}

void BusService::tell(const QString& path, const QString& interface, const QString& member,
                      const QVariantList& arguments) {
    auto call = QDBusMessage::createMethodCall(owner_, path, interface, member);
    call.setArguments(arguments);
    bus_.send(call);
}

void BusService::hear(const QDBusMessage& signal) {
    // One that was on its way when the owner changed may still come in.
    if (owner_.isEmpty() || signal.service() != owner_) {
        return;
    }
    for (const auto& each : subscriptions_) {
        if (each.member == signal.member() && each.interface == signal.interface() &&
            (each.path.isEmpty() || each.path == signal.path())) {
            const Handler handler = each.handler; // It may end its own subscription.
            handler(signal);
            return;
        }
    }
}

void BusService::setOwner(const QString& owner) {
    nextOwner_ = owner;
    if (owner_ != owner) {
        leave();
    }
    if (!rest_) {
        takeUp();
    }
}

void BusService::leave() {
    if (owner_.isEmpty()) {
        return;
    }
    for (const auto& each : subscriptions_) {
        bus_.disconnect(owner_, each.path, each.interface, each.member, this,
                        SLOT(hear(QDBusMessage)));
    }
    subscriptions_.clear();
    owner_.clear();
    forgetting_ = mainLoop_.once(wordStands, [this] {
        forgetting_.reset();
        Q_EMIT forgotten();
    });
    Q_EMIT vanished();
}

void BusService::takeUp() {
    if (nextOwner_.isEmpty() || nextOwner_ == owner_) {
        return;
    }
    rest_ = mainLoop_.once(restBetween, [this] {
        rest_.reset();
        takeUp();
    });
    forgetting_.reset();
    owner_ = nextOwner_;
    Q_EMIT appeared();
}

Properties Properties::ofReply(const QDBusMessage& reply) {
    return {mapOf(reply.arguments().value(0)), false};
}

Properties Properties::ofSignal(const QDBusMessage& signal, const QString& interface) {
    if (argument<QString>(signal, 0) != interface) {
        return {};
    }
    const auto untold = argument<QStringList>(signal, 2);
    return {mapOf(signal.arguments().value(1)), untold && !untold->isEmpty()};
}

} // namespace orvanta
