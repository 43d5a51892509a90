#include "Linux/StatusNotifier/SystemTray.h"

#include "Linux/Display.h"
#include "Linux/StatusNotifier/StatusImage.h"
#include "Linux/Windows/X11Reply.h"

#include <QGuiApplication>
#include <QIcon>
#include <QPixmap>

#include <xcb/xcb.h>

#include <utility>

namespace orvanta {

SystemTrayManager::SystemTrayManager(std::function<void()> appeared)
    : appeared_(std::move(appeared))
    , connection_(qtX11Connection()) {
    if (connection_ != nullptr) {
        manager_ = internAtom(connection_, "MANAGER");
        // As Qt does; a second screen of the old kind has no tray.
        selection_ = internAtom(connection_, "_NET_SYSTEM_TRAY_S0");
        // Qt has selected for these events already.
        qGuiApp->installNativeEventFilter(this);
    }
}

SystemTrayManager::~SystemTrayManager() {
    if (qGuiApp != nullptr) {
        qGuiApp->removeNativeEventFilter(this);
    }
}

bool SystemTrayManager::isThere() const {
    if (connection_ == nullptr) {
        return false;
    }
    const auto reply = owned(xcb_get_selection_owner_reply(
        connection_, xcb_get_selection_owner(connection_, selection_), nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

bool SystemTrayManager::nativeEventFilter(const QByteArray& /*eventType*/, void* message,
                                          qintptr* /*result*/) {
    constexpr uint8_t sent = 0x80; // by another client
    const auto* event = static_cast<xcb_generic_event_t*>(message);
    if ((event->response_type & ~sent) == XCB_CLIENT_MESSAGE) {
        const auto* client = static_cast<xcb_client_message_event_t*>(message);
        if (client->format == 32 && client->type == manager_ &&
            client->data.data32[1] == selection_) {
            appeared_();
        }
    }
    return false;
}

EmbeddedStatusItem::EmbeddedStatusItem(const StatusItem::Handlers& handlers)
    : handlers_(handlers) {
    QObject::connect(&menu_, &QMenu::aboutToShow, &menu_, [this] {
        if (handlers_.menuWillOpen) {
            handlers_.menuWillOpen();
        }
        fillMenu();
    });
    QObject::connect(
        &icon_, &QSystemTrayIcon::activated, &icon_,
        [this](QSystemTrayIcon::ActivationReason reason) {
            // The second of two quick clicks is a click, too.
            if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick) {
                const QRect place = icon_.geometry();
                handlers_.activate(place.isValid() ? std::optional(place.center()) : std::nullopt);
            }
        });
    icon_.setContextMenu(&menu_);
}

void EmbeddedStatusItem::setTitle(const StatusTitle& title) {
    QIcon icon;
    for (const int edge : statusImageEdges) {
        icon.addPixmap(QPixmap::fromImage(statusImage(title, edge)));
    }
    icon_.setIcon(icon);
    icon_.show(); // Not before there is an image: Qt would complain.
}

void EmbeddedStatusItem::fillMenu() {
    menu_.clear();
    for (const StatusMenuItem& item : handlers_.menu()) {
        if (item.text.isEmpty()) {
            menu_.addSeparator();
            continue;
        }
        QString label = item.text;
        label.replace(QLatin1Char('&'), QLatin1String("&&")); // One alone marks an access key.
        QAction* action = menu_.addAction(label);
        action->setCheckable(item.checked.has_value());
        action->setChecked(item.checked.value_or(false));
        action->setEnabled(static_cast<bool>(item.action));
        if (item.keyEquivalent) {
            action->setShortcut(QKeySequence(QStringLiteral("Ctrl+") + *item.keyEquivalent));
        }
        if (item.action) {
            QObject::connect(action, &QAction::triggered, &menu_, item.action,
                             Qt::QueuedConnection);
        }
    }
}

} // namespace orvanta
