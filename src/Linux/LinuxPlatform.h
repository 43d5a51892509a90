#pragma once

#include "Linux/Applications/DesktopEntries.h"
#include "Linux/LinuxWorkspace.h"
#include "Linux/MainLoop/QtMainLoop.h"
#include "Linux/Windows/WindowWatcher.h"
#include "Platform/NotificationCenter.h"
#include "Platform/Platform.h"

#include <QObject>

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

    /// Whether it is known which window is in front.
    WindowWatcher::State windowWatching() const { return watcher_->state(); }

Q_SIGNALS:
    void windowWatchingChanged();

private:
    QtMainLoop mainLoop_;
    NotificationCenter workspaceNotifications_;
    NotificationCenter defaultNotifications_;
    NotificationCenter distributedNotifications_;
    std::unique_ptr<WindowWatcher> watcher_;
    DesktopEntries entries_;
    LinuxWorkspace workspace_;
};

} // namespace orvanta
