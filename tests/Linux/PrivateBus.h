#pragma once

#include "XServer.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <QTemporaryDir>

#include <functional>
#include <map>
#include <optional>
#include <set>

namespace orvanta {

/// A message bus of our own, on which everybody may do everything.
class PrivateBus {
public:
    PrivateBus()
        : program_(QStringLiteral("dbus-daemon"),
                   {QStringLiteral("--session"), QStringLiteral("--nofork"),
                    QStringLiteral("--print-address"),
                    QStringLiteral("--address=unix:dir=") + directory_.path()},
                   QProcessEnvironment::systemEnvironment()) {
        EXPECT_TRUE(eventually([this] { return program_.process().canReadLine(); }));
        address_ = QString::fromLatin1(program_.process().readLine().trimmed());
    }

    /// Another participant.
    QDBusConnection connect() const {
        static int number = 0;
        return QDBusConnection::connectToBus(address_, QStringLiteral("test%1").arg(++number));
    }
    void kill() { program_.kill(); }

private:
    QTemporaryDir directory_;
    Program program_;
    QString address_;
};

/// Returns once the bus has taken everything that this participant sent.
inline void flush(const QDBusConnection& connection) {
    connection.call(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
}

/// Returns once everything that the bus had for this participant has been heard.
inline void drain(const QDBusConnection& connection) {
    const QDBusPendingCallWatcher answer(connection.asyncCall(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId"))));
    bool heard = false;
    QObject::connect(&answer, &QDBusPendingCallWatcher::finished, &answer, [&] { heard = true; });
    EXPECT_TRUE(eventually([&] { return heard; }));
}

/// A service that says what a test dictates, at every path. Gone when destroyed.
class FakeService final : public QDBusVirtualObject {
public:
    using Answer = std::function<std::optional<QVariantList>(const QDBusMessage&)>;

    explicit FakeService(const PrivateBus& bus)
        : connection_(bus.connect()) {
        EXPECT_TRUE(
            connection_.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath));
    }
    FakeService(const PrivateBus& bus, const char* name)
        : FakeService(bus) {
        own(name);
    }
    ~FakeService() override { QDBusConnection::disconnectFromBus(connection_.name()); }
    FakeService(const FakeService&) = delete;
    FakeService& operator=(const FakeService&) = delete;

    void own(const char* name) {
        EXPECT_TRUE(connection_.registerService(QLatin1String(name))) << name;
    }
    void disown(const char* name) {
        EXPECT_TRUE(connection_.unregisterService(QLatin1String(name))) << name;
    }

    /// What calls of this method are answered with; with nothing, an error.
    void on(const char* member, Answer answer) {
        answers_[QLatin1String(member)] = std::move(answer);
    }
    void on(const char* member, const QVariant& answer) {
        on(member, [answer](const QDBusMessage&) { return QVariantList{answer}; });
    }
    void ignore(const char* member) { ignored_.insert(QLatin1String(member)); }
    int calls(const char* member) const {
        const auto found = calls_.find(QLatin1String(member));
        return found == calls_.end() ? 0 : found->second;
    }

    void say(const char* path, const char* interface, const char* member,
             const QVariantList& arguments = {}) const {
        auto signal = QDBusMessage::createSignal(QLatin1String(path), QLatin1String(interface),
                                                 QLatin1String(member));
        signal.setArguments(arguments);
        EXPECT_TRUE(connection_.send(signal));
    }
    void change(const char* path, const char* interface, const QVariantMap& values,
                const QStringList& invalidated = {}) const {
        say(path, "org.freedesktop.DBus.Properties", "PropertiesChanged",
            {QLatin1String(interface), values, invalidated});
    }
    const QDBusConnection& connection() const { return connection_; }

    QString introspect(const QString& /*path*/) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        ++calls_[message.member()];
        if (ignored_.contains(message.member())) {
            message.setDelayedReply(true);
            return true;
        }
        const auto found = answers_.find(message.member());
        const auto answer = found == answers_.end() ? std::nullopt : found->second(message);
        return connection.send(answer ? message.createReply(*answer)
                                      : message.createErrorReply(QDBusError::UnknownMethod, {}));
    }

private:
    QDBusConnection connection_;
    std::map<QString, Answer> answers_;
    std::set<QString> ignored_;
    std::map<QString, int> calls_;
};

} // namespace orvanta
