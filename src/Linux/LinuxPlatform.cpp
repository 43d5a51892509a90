#include "Linux/LinuxPlatform.h"

#include "Linux/Windows/X11WindowWatcher.h"

#include <QCoreApplication>
#include <QStandardPaths>

#include <chrono>
#include <csignal>

namespace orvanta {

namespace {

/// For desktops that none of the watchers can read.
class NoWindowWatcher final : public WindowWatcher {
public:
    NoWindowWatcher()
        : WindowWatcher(State::Unsupported) {}
};

std::unique_ptr<WindowWatcher> makeWindowWatcher(MainLoop& mainLoop) {
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        return std::make_unique<NoWindowWatcher>();
    }
    return std::make_unique<X11WindowWatcher>(qgetenv("DISPLAY"), mainLoop);
}

} // namespace

LinuxPlatform::LinuxPlatform()
    : watcher_(makeWindowWatcher(mainLoop_))
    , entries_(QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation))
    , workspace_(*watcher_, entries_, workspaceNotifications_, QCoreApplication::applicationPid(),
                 QStringLiteral("com.brindlework.orvanta")) {
    // libxcb writes to a server that may have died since the last event.
    std::signal(SIGPIPE, SIG_IGN);
    connect(watcher_.get(), &WindowWatcher::stateChanged, this,
            &LinuxPlatform::windowWatchingChanged);
}

LinuxPlatform::~LinuxPlatform() = default;

Platform LinuxPlatform::platform() {
    return {workspace_,
            workspaceNotifications_,
            defaultNotifications_,
            distributedNotifications_,
            mainLoop_,
            [] {
                return std::chrono::system_clock::now();
            }};
}

} // namespace orvanta
