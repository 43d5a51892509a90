#include "Linux/SingleInstance.h"

#include "Platform/PrivateFolder.h"

#include <QDBusPendingCallWatcher>
#include <QFile>
#include <QTimer>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace orvanta {

namespace {

const auto applicationInterface = QStringLiteral("org.freedesktop.Application");

/// What the bus says of a name that nobody has and that it is not to start anybody for.
constexpr QLatin1StringView noOwner("org.freedesktop.DBus.Error.NameHasNoOwner");
constexpr int retryInterval = 50; // ms

} // namespace

SingleInstance::SingleInstance(const QString& folder, const QString& busName,
                               const QDBusConnection& bus, int patience)
    : busName_(busName)
    , bus_(bus)
    , patience_(patience) {
    makePrivateFolder(folder);
    const QByteArray file = QFile::encodeName(folder + QStringLiteral("/lock"));
    lock_ = ::open(file.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (lock_ >= 0) {
        int result = 0;
        do {
            result = ::flock(lock_, LOCK_EX | LOCK_NB);
        } while (result != 0 && errno == EINTR);
        isFirst_ = result == 0 || errno != EWOULDBLOCK;
    }
}

SingleInstance::~SingleInstance() {
    if (activated_) {
        bus_.unregisterObject(objectPath());
    }
    if (lock_ >= 0) {
        ::close(lock_);
    }
}

void SingleInstance::listen(std::function<void()> activated) {
    activated_ = std::move(activated);
    if (!bus_.isConnected() || !bus_.registerVirtualObject(objectPath(), this)) {
        return;
    }
    // Whether it is ours is decided by the lock; without the name a second start just ends.
    constexpr uint doNotQueue = 4;
    QDBusMessage request = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("RequestName"));
    request << busName_ << doNotQueue;
    bus_.asyncCall(request);
}

void SingleInstance::handOver(std::function<void(bool answered)> done) {
    if (!bus_.isConnected()) {
        QTimer::singleShot(0, this, [done = std::move(done)] { done(false); });
        return;
    }
    ask(QDeadlineTimer(patience_), std::move(done));
}

void SingleInstance::ask(QDeadlineTimer deadline, std::function<void(bool answered)> done) {
    QDBusMessage request = QDBusMessage::createMethodCall(
        busName_, objectPath(), applicationInterface, QStringLiteral("Activate"));
    request << QVariantMap();
    request.setAutoStartService(false);
    auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(request, patience_), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
            [this, watcher, deadline, done = std::move(done)] {
                watcher->deleteLater();
                // The first has the lock, but is still starting.
                if (watcher->error().name() == noOwner && !deadline.hasExpired()) {
                    QTimer::singleShot(retryInterval, this,
                                       [this, deadline, done] { ask(deadline, done); });
                } else {
                    done(!watcher->isError());
                }
            });
}

QString SingleInstance::introspect(const QString& /*path*/) const {
    return QStringLiteral("<interface name=\"org.freedesktop.Application\">"
                          "<method name=\"Activate\">"
                          "<arg type=\"a{sv}\" name=\"platform_data\" direction=\"in\"/>"
                          "</method>"
                          "</interface>");
}

bool SingleInstance::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    if (message.interface() != applicationInterface ||
        message.member() != QStringLiteral("Activate")) {
        return false;
    }
    connection.send(message.createReply());
    activated_();
    return true;
}

QString SingleInstance::objectPath() const {
    return QLatin1Char('/') + QString(busName_).replace(QLatin1Char('.'), QLatin1Char('/'));
}

} // namespace orvanta
