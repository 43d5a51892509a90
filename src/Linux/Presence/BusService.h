#pragma once

#include "Platform/MainLoop.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariant>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace orvanta {

/// A well-known name on a bus, followed through its owner's life. Nothing here waits: every call is
/// asynchronous, and no service is started by asking.
///
/// A service that comes and goes in quick succession is taken up at most once a second.
class BusService final : public QObject {
    Q_OBJECT

public:
    using Handler = std::function<void(const QDBusMessage&)>;

    /// How long what a service said last stands after it has vanished: long enough for it to be
    /// restarted, short enough that a person who works on loses little.
    static constexpr MainLoop::Duration wordStands{60.0};

    /// The bus may be one that is not there.
    BusService(QDBusConnection bus, QString name, MainLoop& mainLoop);

    /// To be called once, when the signals below are connected.
    void start();

    bool isPresent() const { return !owner_.isEmpty(); }
    /// Whether this unique name is the present owner's.
    bool isOwner(const QString& name) const { return isPresent() && name == owner_; }

    /// Hears a signal of the present owner, at this path (any, if empty) and of nobody else; to be
    /// called when it has appeared. Forgotten with the owner.
    void listen(const QString& path, const QString& interface, const QString& member,
                Handler handler);

    /// Calls a method of the present owner. The answer, a reply or an error (no answer in time is
    /// one), is handed over unless the owner has changed meanwhile.
    void ask(const QString& path, const QString& interface, const QString& member,
             const QVariantList& arguments, const Handler& answer);
    /// The same where no answer is waited for.
    void tell(const QString& path, const QString& interface, const QString& member,
              const QVariantList& arguments);

Q_SIGNALS:
    /// There is an owner, perhaps another than before, who has said nothing yet.
    void appeared();
    /// The owner has gone. What it said stands for the time being.
    void vanished();
    /// It has not come back within `wordStands`, so what it said stands no longer.
    void forgotten();

private Q_SLOTS:
    void hear(const QDBusMessage& signal);
    void disconnected() { setOwner({}); }

private:
    struct Subscription {
        QString path;
        QString interface;
        QString member;
        Handler handler;
    };

    void setOwner(const QString& owner);
    void leave();
    void takeUp();

    QDBusConnection bus_;
    QString name_;
    MainLoop& mainLoop_;
    bool ownerTold_ = false;
    QString owner_;     ///< the unique name that is listened to; empty when none is
    QString nextOwner_; ///< who has the name
    std::vector<Subscription> subscriptions_;
    std::unique_ptr<MainLoopTimer> rest_;
    std::unique_ptr<MainLoopTimer> forgetting_;
};

/// An argument of a message; absent unless it is there and of exactly this type.
template <typename T>
std::optional<T> argument(const QDBusMessage& message, int index) {
    const QVariant value = message.arguments().value(index);
    if (value.metaType() != QMetaType::fromType<T>()) {
        return std::nullopt;
    }
    return value.value<T>();
}

/// What a reply or a `PropertiesChanged` (D-Bus, "Standard Interfaces") says of
/// properties.
struct Properties {
    QVariantMap values;
    bool someUntold = false; ///< some have changed without their new value being said

    /// Of a reply to `GetAll`; empty for any other message.
    static Properties ofReply(const QDBusMessage& reply);
    /// Of a signal `PropertiesChanged`; empty if it is of another interface or garbled.
    static Properties ofSignal(const QDBusMessage& signal, const QString& interface);

    template <typename T>
    std::optional<T> value(const char* name) const {
        const QVariant found = values.value(QLatin1String(name));
        if (found.metaType() != QMetaType::fromType<T>()) {
            return std::nullopt;
        }
        return found.value<T>();
    }
};

inline QString propertiesInterface() {
    return QStringLiteral("org.freedesktop.DBus.Properties");
}

} // namespace orvanta
