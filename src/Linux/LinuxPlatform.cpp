#include "Linux/LinuxPlatform.h"

#include "Linux/StatusNotifier/LinuxStatusItem.h"
#include "Linux/SystemClock.h"
#include "Linux/Windows/X11WindowWatcher.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QStandardPaths>

#include <chrono>
#include <csignal>
#include <optional>
#include <utility>

namespace orvanta {

namespace {

/// For desktops that none of the watchers can read.
class NoWindowWatcher final : public WindowWatcher {
public:
    NoWindowWatcher()
        : WindowWatcher(State::Unsupported) {}
};

/// The display of the X server that is this desktop's; none where X is only a guest.
std::optional<QByteArray> xDisplay() {
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        return std::nullopt;
    }
    return qgetenv("DISPLAY");
}

std::unique_ptr<WindowWatcher> makeWindowWatcher(MainLoop& mainLoop) {
    if (const auto display = xDisplay()) {
        return std::make_unique<X11WindowWatcher>(*display, mainLoop);
    }
    return std::make_unique<NoWindowWatcher>();
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

void LinuxPlatform::startPresence() {
    presence_ = std::make_unique<Presence>(
        platform(), Presence::Surroundings{
                        QDBusConnection::systemBus(), QDBusConnection::sessionBus(),
                        qEnvironmentVariable("XDG_SESSION_ID"), QCoreApplication::applicationPid(),
                        xDisplay().value_or(QByteArray())});
    presence_->start();
    // Qt reads the link anew each time; under TZ it never changes.
    dayChange_ = std::make_unique<DayChange>(
        DayChange::Surroundings{[] { return QTimeZone::systemTimeZone(); }, "/etc/localtime"});
    connect(dayChange_.get(), &DayChange::timeZoneChanged, this, &LinuxPlatform::timeZoneChanged);
    connect(dayChange_.get(), &DayChange::dayChanged, this,
            [this] { defaultNotifications_.post(Notification::CalendarDayChanged); });
    dayChange_->start();
}

std::unique_ptr<StatusItem> LinuxPlatform::makeStatusItem(StatusItem::Handlers handlers) {
    return std::make_unique<LinuxStatusItem>(
        QDBusConnection::sessionBus(), std::move(handlers),
        StatusNotifierItem::Configuration{qEnvironmentVariable("XDG_CURRENT_DESKTOP"),
                                          systemUptime},
        mainLoop_);
}

} // namespace orvanta
