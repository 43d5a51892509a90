#pragma once

#include "Testing.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QDBusVirtualObject>

#include <set>

namespace orvanta {

/// A message bus of our own, on which everybody may do everything.
class PrivateBus {
public:
    /// Another participant.
    QDBusConnection connect() const {
        static int number = 0;
        return QDBusConnection::connectToBus(address_, u"test%1"_s.arg(++number));
    }
    void kill() { program_.kill(); }

private:
    QTemporaryDir directory_;
    Program program_{u"dbus-daemon"_s,
                     {u"--session"_s, u"--nofork"_s, u"--print-address"_s,
                      u"--address=unix:dir="_s + directory_.path()}};
    QString address_ = QString::fromLatin1(program_.nextLine());
};

inline QDBusMessage methodCall(const QString& service, const QString& path,
                               const QString& interface, const QString& method,
                               const QVariantList& arguments = {}) {
    auto message = QDBusMessage::createMethodCall(service, path, interface, method);
    message.setArguments(arguments);
    return message;
}

/// The answer, which may be an error. All that came in before it has been heard.
inline QDBusMessage ask(const QDBusConnection& connection, const QDBusMessage& question) {
    const QDBusPendingCallWatcher answer(connection.asyncCall(question));
    // Not `isFinished`: that is true before the signals that came first have been delivered.
    bool heard = false;
    QObject::connect(&answer, &QDBusPendingCallWatcher::finished, &answer, [&] { heard = true; });
    EXPECT_TRUE(eventually([&] { return heard; })) << qPrintable(question.member());
    return answer.reply();
}

/// Returns once the bus has taken all from this participant, and this all that the bus had for it.
inline void drain(const QDBusConnection& connection) {
    const QString bus = u"org.freedesktop.DBus"_s;
    ask(connection, methodCall(bus, u"/org/freedesktop/DBus"_s, bus, u"GetId"_s));
}

/// A service that says what a test dictates, at every path. Gone when destroyed.
class FakeService final : public QDBusVirtualObject {
public:
    using Answer = std::function<std::optional<QVariantList>(const QDBusMessage&)>;

    explicit FakeService(const PrivateBus& bus)
        : connection_(bus.connect()) {
        EXPECT_TRUE(connection_.registerVirtualObject(u"/"_s, this, QDBusConnection::SubPath));
    }
    ~FakeService() override { QDBusConnection::disconnectFromBus(connection_.name()); }

    void own(const QString& name) { EXPECT_TRUE(connection_.registerService(name)); }
    void disown(const QString& name) { connection_.unregisterService(name); }

    /// What calls of this method are answered with; with nothing, an error.
    void on(const QString& member, Answer answer) { answers_[member] = std::move(answer); }
    void on(const QString& member, const QVariant& answer) {
        on(member, [answer](const QDBusMessage&) { return QVariantList{answer}; });
    }
    void ignore(const QString& member) { ignored_.insert(member); }
    int calls(const QString& member) const {
        const auto found = calls_.find(member);
        return found == calls_.end() ? 0 : found->second;
    }

    void say(const QString& path, const QString& interface, const QString& member,
             const QVariantList& arguments = {}, const QString& toWhom = {}) const {
        auto signal = QDBusMessage::createTargetedSignal(toWhom, path, interface, member);
        signal.setArguments(arguments);
        EXPECT_TRUE(connection_.send(signal));
    }
    void change(const QString& path, const QString& interface, const QVariantMap& values,
                const QStringList& invalidated = {}) const {
        say(path, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s,
            {interface, values, invalidated});
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
