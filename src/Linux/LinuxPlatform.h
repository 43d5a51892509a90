#pragma once

#include "Linux/Applications/DesktopEntries.h"
#include "Linux/Applications/LinuxBundles.h"
#include "Linux/Autostart/LinuxLoginItem.h"
#include "Linux/LinuxAppearance.h"
#include "Linux/LinuxWorkspace.h"
#include "Linux/MainLoop/QtMainLoop.h"
#include "Linux/Presence/DayChange.h"
#include "Linux/Presence/Presence.h"
#include "Linux/Wayland/PlasmaShell.h"
#include "Linux/Wayland/SwayShell.h"
#include "Linux/Windows/WindowWatcher.h"
#include "Linux/Windows/X11FocusFilter.h"
#include "Platform/Desktop.h"
#include "Platform/NotificationCenter.h"

#include <functional>
#include <memory>
#include <vector>

namespace orvanta {

/// The services of the Linux desktop that this process runs on, chosen by its environment. Needs a
/// QApplication. From here on the process ignores SIGPIPE.
class LinuxPlatform final : public Desktop {
    Q_OBJECT

public:
    LinuxPlatform();
    ~LinuxPlatform() override;
    LinuxPlatform(const LinuxPlatform&) = delete;
    LinuxPlatform& operator=(const LinuxPlatform&) = delete;

    Platform platform() override;
    double uptime() const override;
    const Bundles& bundles() const override { return bundles_; }
    LoginItem& loginItem() override { return loginItem_; }
    std::unique_ptr<Automation> makeAutomation(AutomationDecisions decisions) override;
    std::unique_ptr<StatusItem> makeStatusItem(StatusItem::Handlers handlers) override;
    void startPresence() override;
    WindowWatching windowWatching() const override { return watcher_->state(); }
    std::optional<QString> allowWindowWatching() override { return watcher_->allow(); }
    const Appearance& appearance() const override { return appearance_; }
    std::vector<ScreenArea> screenAreas() const override;
    std::optional<QPoint> pointerPosition() const override;
    std::unique_ptr<EventMonitor>
    addGlobalMonitorForMouseDowns(std::function<void(QPoint)> handler) override;
    void updateFrontmost() override { watcher_->update(); }
    bool placesPopups() const override;
    void place(QWindow& window, QPoint place) override;
    void keepInactive(QWindow& window) override;
    void activate(QWindow& window) override;

private:
    QtMainLoop mainLoop_;
    NotificationCenter workspaceNotifications_;
    NotificationCenter defaultNotifications_;
    NotificationCenter distributedNotifications_;
    std::unique_ptr<WindowWatcher> watcher_;
    DesktopEntries entries_;
    LinuxBundles bundles_;
    LinuxWorkspace workspace_;
    LinuxLoginItem loginItem_;
    LinuxAppearance appearance_;
    X11FocusFilter focusFilter_;
    SwayShell swayShell_;
    std::unique_ptr<PlasmaShell> plasmaShell_; ///< made when first needed
    std::unique_ptr<Presence> presence_;
    std::unique_ptr<DayChange> dayChange_;
};

} // namespace orvanta
