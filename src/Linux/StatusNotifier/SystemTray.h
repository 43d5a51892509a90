#pragma once

#include "Platform/StatusItem.h"

#include <QAbstractNativeEventFilter>
#include <QMenu>
#include <QSystemTrayIcon>

#include <cstdint>
#include <functional>

struct xcb_connection_t;

namespace orvanta {

/// Whether an X11 desktop has a tray in which programs embed a window (freedesktop.org, "System
/// Tray Protocol"), and when one appears. On other display systems there is none.
class SystemTrayManager final : public QAbstractNativeEventFilter {
public:
    /// `appeared` is called each time a manager announces itself. Needs a QGuiApplication.
    explicit SystemTrayManager(std::function<void()> appeared);
    ~SystemTrayManager() override;
    SystemTrayManager(const SystemTrayManager&) = delete;
    SystemTrayManager& operator=(const SystemTrayManager&) = delete;

    /// Asks the X server.
    bool isThere() const;

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

private:
    std::function<void()> appeared_;
    xcb_connection_t* connection_; ///< Qt's own; null without an X server
    std::uint32_t manager_ = 0;    ///< the atom MANAGER
    std::uint32_t selection_ = 0;  ///< the atom that the manager owns
};

/// The status item as a window in such a tray. To be made only while no StatusNotifierHost is
/// there: Qt would show a second item of its own in that. Needs a QApplication.
class EmbeddedStatusItem final {
public:
    explicit EmbeddedStatusItem(const StatusItem::Handlers& handlers);

    void setTitle(const StatusTitle& title);
    /// Of an embedded item nobody asks for the words: they are set.
    void toolTipChanged() {
        if (handlers_.toolTip) {
            icon_.setToolTip(handlers_.toolTip());
        }
    }

private:
    void fillMenu();

    const StatusItem::Handlers& handlers_;
    QMenu menu_;
    QSystemTrayIcon icon_;
};

} // namespace orvanta
