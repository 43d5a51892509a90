#include "Linux/StatusNotifier/StatusNotifierItem.h"

#include "Linux/StatusNotifier/StatusImage.h"

#include <QCoreApplication>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>
#include <QtEndian>

#include <utility>

namespace orvanta {

namespace {

const auto busName = QStringLiteral("org.freedesktop.DBus");
const auto watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const auto watcherPath = QStringLiteral("/StatusNotifierWatcher");
const auto itemPath = QStringLiteral("/StatusNotifierItem");
const auto menuPath = QStringLiteral("/MenuBar");
/// What KDE's and Ayatana's hosts take for "has no menu".
const auto noMenuPath = QStringLiteral("/NO_DBUSMENU");

constexpr double toolTipInterval = 60; // s

QDBusMessage busCall(const QString& method, const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(
        busName, QStringLiteral("/org/freedesktop/DBus"), busName, method);
    message.setArguments(arguments);
    return message;
}

QDBusMessage watcherCall(const QString& interface, const QString& method,
                         const QVariantList& arguments) {
    QDBusMessage message =
        QDBusMessage::createMethodCall(watcherName, watcherPath, interface, method);
    message.setArguments(arguments);
    message.setAutoStartService(false);
    return message;
}

StatusPixmap toPixmap(const QImage& image) {
    const QImage straight = image.convertToFormat(QImage::Format_ARGB32);
    StatusPixmap pixmap{straight.width(), straight.height(), {}};
    pixmap.bytes.resize(straight.sizeInBytes());
    qToBigEndian<quint32>(straight.constBits(), straight.sizeInBytes() / 4, pixmap.bytes.data());
    return pixmap;
}

/// Hosts squeeze an image into a square, all but this one; none can be asked.
bool isWideHost(uint processIdentifier) {
    QFile name(QStringLiteral("/proc/%1/comm").arg(processIdentifier));
    return name.open(QIODevice::ReadOnly) && name.read(32).trimmed() == "waybar";
}

} // namespace

StatusNotifierItem::StatusNotifierItem(QDBusConnection connection, StatusItem::Handlers handlers,
                                       Configuration configuration)
    : connection_(std::move(connection))
    , handlers_(std::move(handlers))
    , configuration_(std::move(configuration))
    , offersMenu_(!configuration_.currentDesktop.split(QLatin1Char(':'))
                       .contains(QLatin1String("GNOME"), Qt::CaseInsensitive))
    , menu_(handlers_.menu, handlers_.menuWillOpen)
    , service_(QStringLiteral("org.kde.StatusNotifierItem-%1-1")
                   .arg(QCoreApplication::applicationPid())) {
    if (!connection_.isConnected()) {
        host_ = Host::Absent;
        return;
    }
    connection_.registerObject(itemPath, this,
                               QDBusConnection::ExportScriptableSlots |
                                   QDBusConnection::ExportScriptableSignals |
                                   QDBusConnection::ExportAllProperties);
    if (offersMenu_) {
        connection_.registerObject(menuPath, &menu_,
                                   QDBusConnection::ExportScriptableSlots |
                                       QDBusConnection::ExportScriptableSignals |
                                       QDBusConnection::ExportAllProperties);
    }
    connect(&watcherWatcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString& /*service*/, const QString& /*old*/, const QString& newOwner) {
                onWatcherOwner(newOwner);
            });
    watcherWatcher_.setConnection(connection_);
    watcherWatcher_.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    watcherWatcher_.addWatchedService(watcherName);
    // From any sender: naming one makes Qt ask the bus for its owner, and wait.
    for (const char* signal : {"StatusNotifierHostRegistered", "StatusNotifierHostUnregistered"}) {
        connection_.connect({}, watcherPath, watcherName, QString::fromLatin1(signal), this,
                            SLOT(readHost()));
    }
    connection_.connect({}, QStringLiteral("/org/freedesktop/DBus/Local"),
                        QStringLiteral("org.freedesktop.DBus.Local"),
                        QStringLiteral("Disconnected"), this, SLOT(onWatcherGone()));
    constexpr uint doNotQueue = 4;
    call(busCall(QStringLiteral("RequestName"), {service_, doNotQueue}),
         [this](const QDBusMessage& reply) {
             // Processes in containers of their own may have the same number.
             constexpr uint isAnothers = 3;
             if (reply.arguments().value(0).toUInt() == isAnothers) {
                 service_ = connection_.baseService();
                 registerWithWatcher();
             }
         });
    registerWithWatcher();
}

StatusNotifierItem::~StatusNotifierItem() {
    // The connection may be shared, and then outlives the item.
    if (connection_.isConnected()) {
        connection_.unregisterObject(itemPath);
        connection_.unregisterObject(menuPath);
        connection_.send(busCall(QStringLiteral("ReleaseName"), {service_}));
    }
}

void StatusNotifierItem::call(const QDBusMessage& message, Reply reply) {
    auto* pending = new QDBusPendingCallWatcher(connection_.asyncCall(message), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [pending, reply = std::move(reply)] {
        pending->deleteLater();
        reply(pending->reply());
    });
}

void StatusNotifierItem::onWatcherOwner(const QString& newOwner) {
    if (newOwner.isEmpty()) {
        onWatcherGone();
    } else {
        registerWithWatcher();
    }
}

void StatusNotifierItem::registerWithWatcher() {
    ++watcherGeneration_;
    mayBeRead_ = true;
    toldAt_ = configuration_.uptime(); // Hosts that learn of the item read all of it.
    call(watcherCall(watcherName, QStringLiteral("RegisterStatusNotifierItem"), {service_}),
         [this, generation = watcherGeneration_](const QDBusMessage& reply) {
             if (generation == watcherGeneration_ && reply.type() == QDBusMessage::ErrorMessage) {
                 onWatcherGone();
             }
         });
    readWatcherProcess();
    readHost();
}

void StatusNotifierItem::readWatcherProcess() {
    call(busCall(QStringLiteral("GetConnectionUnixProcessID"), {watcherName}),
         [this, generation = watcherGeneration_](const QDBusMessage& reply) {
             if (generation != watcherGeneration_ || reply.type() == QDBusMessage::ErrorMessage) {
                 return;
             }
             const bool wide = isWideHost(reply.arguments().value(0).toUInt());
             if (std::exchange(showsWide_, wide) != wide) {
                 pixmaps_.clear();
                 Q_EMIT NewIcon();
             }
         });
}

void StatusNotifierItem::readHost() {
    call(watcherCall(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                     {watcherName, QStringLiteral("IsStatusNotifierHostRegistered")}),
         [this, generation = watcherGeneration_](const QDBusMessage& reply) {
             if (generation == watcherGeneration_) {
                 const QDBusPendingReply<QDBusVariant> value = reply;
                 setHost(value.isValid() && value.value().variant().toBool() ? Host::Present
                                                                             : Host::Absent);
             }
         });
}

void StatusNotifierItem::onWatcherGone() {
    ++watcherGeneration_;
    mayBeRead_ = false;
    setHost(Host::Absent);
}

void StatusNotifierItem::setHost(Host host) {
    if (std::exchange(host_, host) != host) {
        Q_EMIT hostChanged();
    }
}

void StatusNotifierItem::setTitle(const StatusTitle& title) {
    if (title == title_) {
        return;
    }
    title_ = title;
    pixmaps_.clear();
    if (!mayBeRead_) {
        return;
    }
    toldAt_ = configuration_.uptime();
    Q_EMIT NewTitle();
    Q_EMIT NewIcon();
    Q_EMIT NewToolTip();
    Q_EMIT XAyatanaNewLabel(titleText(), labelGuide());
}

void StatusNotifierItem::toolTipChanged() {
    if (!mayBeRead_) {
        return;
    }
    if (const double now = configuration_.uptime(); now - toldAt_ >= toolTipInterval) {
        toldAt_ = now;
        Q_EMIT NewToolTip();
    }
}

StatusPixmaps StatusNotifierItem::iconPixmap() {
    if (pixmaps_.isEmpty()) {
        if (showsWide_) {
            pixmaps_.append(toPixmap(wideStatusImage(title_, wideStatusImageHeight)));
        } else {
            for (const int edge : statusImageEdges) {
                pixmaps_.append(toPixmap(statusImage(title_, edge)));
            }
        }
    }
    return pixmaps_;
}

StatusToolTip StatusNotifierItem::toolTip() const {
    // Of a tooltip with a title some hosts show the title alone.
    return {{}, {}, handlers_.toolTip ? handlers_.toolTip() : QString(), {}};
}

QDBusObjectPath StatusNotifierItem::menu() const {
    return QDBusObjectPath(offersMenu_ ? menuPath : noMenuPath);
}

void StatusNotifierItem::Activate(int x, int y) {
    std::optional<QPoint> place;
    // waybar counts from its own corner, and hosts that know no place say 0, 0.
    if (!showsWide_ && (x != 0 || y != 0)) {
        place = QPoint(x, y);
    }
    // The host has its answer first, however long the handler takes.
    QMetaObject::invokeMethod(
        this, [this, place] { handlers_.activate(place); }, Qt::QueuedConnection);
}

void StatusNotifierItem::ContextMenu(int x, int y) {
    if (!offersMenu_) {
        Activate(x, y);
    }
}

void StatusNotifierItem::SecondaryActivate(int /*x*/, int /*y*/) {}

void StatusNotifierItem::Scroll(int /*delta*/, const QString& /*orientation*/) {}

} // namespace orvanta
