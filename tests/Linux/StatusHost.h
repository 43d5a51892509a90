#pragma once

#include "PrivateBus.h"
#include "Testing.h"

namespace orvanta {

/// A panel as a test wants it: the watcher, of which it is the only host, too.
class StatusHost : public QObject {
    Q_OBJECT

public:
    explicit StatusHost(const PrivateBus& bus)
        : service_(bus) {
        service_.on(u"RegisterStatusNotifierItem"_s, [this](const QDBusMessage& call) {
            items_.append(call.arguments().value(0).toString());
            return QVariantList();
        });
        setHasHost(true);
        for (const QString& signal :
             {u"NewTitle"_s, u"NewIcon"_s, u"NewToolTip"_s, u"XAyatanaNewLabel"_s,
              u"LayoutUpdated"_s, u"ItemsPropertiesUpdated"_s}) {
            auto connection = service_.connection();
            connection.connect({}, {}, {}, signal, this, SLOT(note(QDBusMessage)));
        }
    }

    void appear() { service_.own(name); }
    void setHasHost(bool hasHost) {
        service_.on(u"Get"_s, QVariant::fromValue(QDBusVariant(hasHost)));
        service_.say(u"/StatusNotifierWatcher"_s, name,
                     hasHost ? u"StatusNotifierHostRegistered"_s
                             : u"StatusNotifierHostUnregistered"_s);
    }
    const QStringList& items() const { return items_; }

    /// The names of the signals that have come from items since the last call.
    QStringList takeSignals() {
        call(u"/"_s, u"org.freedesktop.DBus.Peer"_s, u"Ping"_s); // What came before is then heard.
        return std::exchange(signals_, {});
    }
    /// What the item answers; also an error.
    QDBusMessage call(const QString& path, const QString& interface, const QString& method,
                      const QVariantList& arguments = {}) {
        return ask(service_.connection(),
                   methodCall(items_.value(0), path, interface, method, arguments));
    }

private Q_SLOTS:
    void note(const QDBusMessage& message) { signals_.append(message.member()); }

private:
    const QString name = u"org.kde.StatusNotifierWatcher"_s;
    FakeService service_;
    QStringList items_;
    QStringList signals_;
};

} // namespace orvanta
