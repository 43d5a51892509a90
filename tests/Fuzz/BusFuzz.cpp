// What a service says on a bus, of whatever types: it goes over a real connection.

#include "Fuzz.h"
#include "Linux/Presence/BusService.h"

#include <QCoreApplication>
#include <QDBusServer>
#include <QDBusVariant>

#include <fuzzer/FuzzedDataProvider.h>

using namespace orvanta;

namespace {

QVariant made(FuzzedDataProvider& bytes, int depth = 0) {
    const auto text = [&] {
        return QString::fromLatin1(bytes.ConsumeRandomLengthString(8).c_str());
    };
    switch (bytes.ConsumeIntegralInRange(0, depth < 4 ? 8 : 5)) {
    case 0:
        return bytes.ConsumeIntegral<int>();
    case 1:
        return bytes.ConsumeIntegral<qulonglong>();
    case 2:
        return bytes.ConsumeBool();
    case 3:
        return bytes.ConsumeFloatingPoint<double>();
    case 4:
        return text();
    case 5:
        return QStringList{text(), text()};
    case 6:
        return QVariant::fromValue(QDBusVariant(made(bytes, depth + 1)));
    case 7:
        return QVariantMap{{QStringLiteral("PowerSaveMode"), made(bytes, depth + 1)},
                           {QStringLiteral("LockedHint"), made(bytes, depth + 1)},
                           {text(), made(bytes, depth + 1)}};
    default:
        return QVariantList{made(bytes, depth + 1), made(bytes, depth + 1)};
    }
}

void readAll(const QDBusMessage& message) {
    for (int index = 0; index < 4; ++index) {
        argument<QString>(message, index);
        argument<QDBusVariant>(message, index);
        argument<qulonglong>(message, index);
    }
    for (const auto& told : {Properties::ofReply(message),
                             Properties::ofSignal(message, QStringLiteral("an.interface"))}) {
        told.value<int>("PowerSaveMode");
        told.value<bool>("LockedHint");
        told.value<double>("state");
    }
}

/// Two ends of one connection.
class Peers : public QObject {
    Q_OBJECT

public:
    Peers() {
        connect(&server_, &QDBusServer::newConnection, this,
                [this](const QDBusConnection& one) { service_.emplace(one); });
        client_ = QDBusConnection::connectToPeer(server_.address(), QStringLiteral("client"));
        while (!service_) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        client_.connect({}, QStringLiteral("/"), QStringLiteral("an.interface"),
                        QStringLiteral("Said"), this, SLOT(hear(QDBusMessage)));
    }
    void say(const QVariantList& arguments) {
        auto signal = QDBusMessage::createSignal(
            QStringLiteral("/"), QStringLiteral("an.interface"), QStringLiteral("Said"));
        signal.setArguments(arguments);
        heard_ = false;
        if (service_->send(signal)) {
            while (!heard_) {
                QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
            }
        }
    }

private Q_SLOTS:
    void hear(const QDBusMessage& message) {
        readAll(message);
        heard_ = true;
    }

private:
    QDBusServer server_;
    std::optional<QDBusConnection> service_;
    QDBusConnection client_{QString()};
    bool heard_ = false;
};

} // namespace

int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    static int argc = 0;
    static const QCoreApplication application(argc, nullptr);
    static Peers peers;
    FuzzedDataProvider bytes(reinterpret_cast<const std::uint8_t*>(data), size);
    QVariantList arguments;
    if (bytes.ConsumeBool()) {
        arguments.append(QStringLiteral("an.interface"));
    }
    while (bytes.remaining_bytes() > 0 && arguments.size() < 5) {
        arguments.append(made(bytes));
    }
    peers.say(arguments);
    return 0;
}

#include "BusFuzz.moc"
