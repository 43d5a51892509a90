#pragma once

#include "Eventually.h"
#include "PrivateBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>

#include <gtest/gtest.h>

#include <utility>

namespace orvanta {

/// A panel as a test wants it: the watcher, of which it is the only host, too.
class StatusHost : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    // Qt takes no notice of a watcher that does not declare these.
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)

public:
    explicit StatusHost(const PrivateBus& bus)
        : connection_(bus.connect()) {
        connection_.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                                   QDBusConnection::ExportAllSlots |
                                       QDBusConnection::ExportAllSignals |
                                       QDBusConnection::ExportAllProperties);
        for (const char* signal : {"NewTitle", "NewIcon", "NewToolTip", "XAyatanaNewLabel",
                                   "LayoutUpdated", "ItemsPropertiesUpdated"}) {
            connection_.connect({}, {}, {}, QString::fromLatin1(signal), this,
                                SLOT(note(QDBusMessage)));
        }
    }
    ~StatusHost() override {
        disappear();
        QDBusConnection::disconnectFromBus(connection_.name());
    }
    StatusHost(const StatusHost&) = delete;
    StatusHost& operator=(const StatusHost&) = delete;

    void appear() {
        EXPECT_TRUE(connection_.registerService(QStringLiteral("org.kde.StatusNotifierWatcher")));
    }
    void disappear() {
        connection_.unregisterService(QStringLiteral("org.kde.StatusNotifierWatcher"));
        items_.clear();
    }
    void setHasHost(bool hasHost) {
        hasHost_ = hasHost;
        if (hasHost) {
            Q_EMIT StatusNotifierHostRegistered();
        } else {
            Q_EMIT StatusNotifierHostUnregistered();
        }
    }

    bool hasHost() const { return hasHost_; }
    int protocolVersion() const { return 0; }
    const QStringList& items() const { return items_; }
    bool hasItem() const { return !items_.isEmpty(); }

    /// The names of the signals that have come from items since the last call.
    QStringList takeSignals() {
        call("/", "org.freedesktop.DBus.Peer", "Ping"); // What was sent before has then come.
        return std::exchange(signals_, {});
    }

    /// What the item answers; also an error.
    QDBusMessage call(const char* path, const char* interface, const char* method,
                      const QVariantList& arguments = {}) {
        const QDBusPendingCallWatcher pending(
            connection_.asyncCall(toItem(path, interface, method, arguments)));
        // Not `isFinished`: that is true before the signals that came first have been delivered.
        bool heard = false;
        QObject::connect(&pending, &QDBusPendingCallWatcher::finished, &pending,
                         [&heard] { heard = true; });
        EXPECT_TRUE(eventually([&heard] { return heard; })) << method;
        return pending.reply();
    }
    /// Without waiting for the answer.
    void post(const char* path, const char* interface, const char* method,
              const QVariantList& arguments) {
        connection_.asyncCall(toItem(path, interface, method, arguments));
    }
    QVariant property(const char* name, const char* interface = "org.kde.StatusNotifierItem",
                      const char* path = "/StatusNotifierItem") {
        const QDBusMessage reply =
            call(path, "org.freedesktop.DBus.Properties", "Get",
                 {QString::fromLatin1(interface), QString::fromLatin1(name)});
        return reply.arguments().value(0).value<QDBusVariant>().variant();
    }

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString& service) {
        items_.append(service);
        Q_EMIT StatusNotifierItemRegistered(service);
    }
    void RegisterStatusNotifierHost(const QString& /*service*/) {}

Q_SIGNALS:
    void StatusNotifierItemRegistered(const QString& service);
    void StatusNotifierHostRegistered();
    void StatusNotifierHostUnregistered();

private Q_SLOTS:
    void note(const QDBusMessage& message) { signals_.append(message.member()); }

private:
    QDBusMessage toItem(const char* path, const char* interface, const char* method,
                        const QVariantList& arguments) const {
        QDBusMessage message = QDBusMessage::createMethodCall(
            items_.value(0), QString::fromLatin1(path), QString::fromLatin1(interface),
            QString::fromLatin1(method));
        message.setArguments(arguments);
        return message;
    }

    QDBusConnection connection_;
    bool hasHost_ = true;
    QStringList items_;
    QStringList signals_;
};

} // namespace orvanta
