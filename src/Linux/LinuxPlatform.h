#pragma once

#include "Linux/Applications/DesktopEntries.h"
#include "Linux/Applications/LinuxBundles.h"
#include "Linux/BrowserBridge/LinuxAutomation.h"
#include "Linux/LinuxWorkspace.h"
#include "Linux/MainLoop/QtMainLoop.h"
#include "Linux/Presence/DayChange.h"
#include "Linux/Presence/Presence.h"
#include "Linux/Windows/WindowWatcher.h"
#include "Platform/NotificationCenter.h"
#include "Platform/Platform.h"
#include "Platform/StatusItem.h"

#include <QObject>
#include <QTimeZone>

#include <functional>
#include <memory>

namespace orvanta {

/// The services of the Linux desktop that this process runs on, chosen by its environment. Needs a
/// QCoreApplication. From here on the process ignores SIGPIPE.
class LinuxPlatform final : public QObject {
    Q_OBJECT

public:
    LinuxPlatform();
    ~LinuxPlatform() override;
    LinuxPlatform(const LinuxPlatform&) = delete;
    LinuxPlatform& operator=(const LinuxPlatform&) = delete;

    /// Refers to this object.
    Platform platform();

    /// The application's one place in the status area, shown as soon as the desktop has one. Needs
    /// a QApplication; this object outlives it.
    std::unique_ptr<StatusItem> makeStatusItem(StatusItem::Handlers handlers);

    /// The applications that are installed.
    const Bundles& bundles() const { return bundles_; }

    /// Begins to listen for browsers. The two functions keep the person's decisions, as
    /// `LinuxAutomationPermission` asks for them; this object outlives the result.
    std::unique_ptr<LinuxAutomation>
    makeAutomation(std::function<QStringList(const QString&)> load,
                   std::function<void(const QString&, const QStringList&)> store);

    /// Begins to announce absence and the day change on the notification centres, first of all what
    /// already holds. To be called once, when those who want to hear it observe the centres.
    void startPresence();

    /// Whether it is known which window is in front.
    WindowWatcher::State windowWatching() const { return watcher_->state(); }

Q_SIGNALS:
    void windowWatchingChanged();
    /// The local time zone is another. Comes before the day change that is announced because of it.
    void timeZoneChanged(const QTimeZone& zone);

private:
    QtMainLoop mainLoop_;
    NotificationCenter workspaceNotifications_;
    NotificationCenter defaultNotifications_;
    NotificationCenter distributedNotifications_;
    std::unique_ptr<WindowWatcher> watcher_;
    DesktopEntries entries_;
    LinuxBundles bundles_;
    LinuxWorkspace workspace_;
    std::unique_ptr<Presence> presence_;
    std::unique_ptr<DayChange> dayChange_;
};

} // namespace orvanta
