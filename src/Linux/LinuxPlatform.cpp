#include "Linux/LinuxPlatform.h"

#include "Linux/BrowserBridge/LinuxAutomation.h"
#include "Linux/Display.h"
#include "Linux/Screens.h"
#include "Linux/StatusNotifier/LinuxStatusItem.h"
#include "Linux/SystemClock.h"
#include "Linux/Wayland/PlasmaShell.h"
#include "Linux/Windows/ChosenWindowWatcher.h"
#include "Linux/Windows/GnomeWindowWatcher.h"
#include "Linux/Windows/KWinScriptWatcher.h"
#include "Linux/Windows/ListedWindowWatcher.h"
#include "Linux/Windows/SwayWindowWatcher.h"
#include "Linux/Windows/X11MouseMonitor.h"
#include "Linux/Windows/X11Screens.h"
#include "Linux/Windows/X11WindowWatcher.h"
#include "Platform/PrivateFolder.h"

#include <QApplication>
#include <QCursor>
#include <QDBusConnection>
#include <QDir>
#include <QStandardPaths>
#include <QWindow>

#include <chrono>
#include <csignal>
#include <optional>
#include <utility>

namespace orvanta {

namespace {

/// The display of the X server that is this desktop's; none where X is only a guest.
std::optional<QByteArray> xDisplay() {
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        return std::nullopt;
    }
    return qgetenv("DISPLAY");
}

/// Of an extension: beside the program in a build tree, else where it is installed.
QString packageFolder(const QString& name) {
    const QDir programs(QCoreApplication::applicationDirPath());
    const QString built = programs.filePath(name);
    return QDir(built).exists()
               ? built
               : QDir::cleanPath(programs.filePath(QStringLiteral("../share/orvanta/") + name));
}

GnomeExtension gnomeExtension() {
    return GnomeExtension(
        {.packageFolder = packageFolder(QStringLiteral("gnome")),
         .extensionsFolder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
                             QStringLiteral("/gnome-shell/extensions"),
         .settingsProgram = QStringLiteral("gsettings")});
}

/// Ours, gone when the person's last session ends. Empty where there is none: of what stands in for
/// it where the variable is not set, the browser's host does not know.
QString runtimeFolder() {
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (runtime.isEmpty()) {
        return {};
    }
    QString folder = runtime + QStringLiteral("/com.brindlework.orvanta");
    if (isPrivateFolder(runtime) && makePrivateFolder(folder) && isPrivateFolder(folder)) {
        return folder;
    }
    qWarning("orvanta: %s is not used: others may write there", qUtf8Printable(runtime));
    return {};
}

std::unique_ptr<WindowWatcher> makeWindowWatcher(MainLoop& mainLoop) {
    if (const auto display = xDisplay()) {
        return std::make_unique<X11WindowWatcher>(*display, mainLoop);
    }
    const QByteArray display = qgetenv("WAYLAND_DISPLAY");
    std::vector<ChosenWindowWatcher::Candidate> candidates;
    if (const QByteArray sway = qgetenv("SWAYSOCK"); !sway.isEmpty()) {
        candidates.emplace_back([=] { return std::make_unique<SwayWindowWatcher>(sway, display); });
    }
    candidates.emplace_back([=] { return std::make_unique<ListedWindowWatcher>(display); });
    candidates.emplace_back([&mainLoop] {
        return std::make_unique<GnomeWindowWatcher>(QDBusConnection::sessionBus(), mainLoop,
                                                    gnomeExtension());
    });
    candidates.emplace_back([&mainLoop] {
        return std::make_unique<KWinScriptWatcher>(QDBusConnection::sessionBus(), mainLoop,
                                                   runtimeFolder());
    });
    return std::make_unique<ChosenWindowWatcher>(std::move(candidates), mainLoop);
}

} // namespace

LinuxPlatform::LinuxPlatform()
    : watcher_(makeWindowWatcher(mainLoop_))
    , entries_(QStandardPaths::standardLocations(QStandardPaths::ApplicationsLocation))
    , bundles_(entries_, LinuxBundles::Places::ofThisProcess())
    , workspace_(*watcher_, entries_, workspaceNotifications_, QCoreApplication::applicationPid(),
                 QStringLiteral("com.brindlework.orvanta"))
    , loginItem_(LinuxLoginItem::Places::ofThisProcess())
    , appearance_(QDBusConnection::sessionBus(), mainLoop_)
    , swayShell_(xDisplay() ? QByteArray() : qgetenv("SWAYSOCK"), mainLoop_) {
    // libxcb writes to a server that may have died since the last event.
    std::signal(SIGPIPE, SIG_IGN);
    connect(watcher_.get(), &WindowWatcher::stateChanged, this, &Desktop::windowWatchingChanged);
    workspaceNotifications_.addObserver(Notification::DidWake, [this] { watcher_->chooseAgain(); });
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
                        xDisplay().value_or(QByteArray()), qgetenv("WAYLAND_DISPLAY")});
    presence_->start();
    // Qt reads the link anew each time; under TZ it never changes.
    dayChange_ = std::make_unique<DayChange>(
        DayChange::Surroundings{[] { return QTimeZone::systemTimeZone(); }, "/etc/localtime"});
    connect(dayChange_.get(), &DayChange::timeZoneChanged, this, &Desktop::timeZoneChanged);
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

double LinuxPlatform::uptime() const {
    return systemUptime();
}

std::vector<ScreenArea> LinuxPlatform::screenAreas() const {
    auto areas = swayShell_.screenAreas();
    return areas.empty() ? orvanta::screenAreas() : areas;
}

std::optional<QPoint> LinuxPlatform::pointerPosition() const {
    // Wayland tells only those whose window it is over.
    return qtX11Connection() != nullptr ? std::optional(QCursor::pos()) : std::nullopt;
}

std::unique_ptr<EventMonitor>
LinuxPlatform::addGlobalMonitorForMouseDowns(std::function<void(QPoint)> handler) {
    return X11MouseMonitor::open(xDisplay().value_or(QByteArray()),
                                 [handler = std::move(handler)] { handler(QCursor::pos()); });
}

bool LinuxPlatform::placesPopups() const {
    return qtX11Connection() != nullptr;
}

void LinuxPlatform::place(QWindow& window, QPoint place) {
    if (!plasmaShell_) {
        plasmaShell_ = std::make_unique<PlasmaShell>();
    }
    plasmaShell_->place(window, place);
    swayShell_.place(window.title(), place);
}

void LinuxPlatform::keepInactive(QWindow& window) {
    if (qtX11Connection() != nullptr) {
        focusFilter_.apply(static_cast<std::uint32_t>(window.winId()));
    }
}

void LinuxPlatform::activate(QWindow& window) {
    window.requestActivate();
    if (xcb_connection_t* connection = qtX11Connection()) {
        activateX11Window(connection, static_cast<unsigned>(window.winId()));
    }
}

std::unique_ptr<Automation> LinuxPlatform::makeAutomation(AutomationDecisions decisions) {
    const QString host =
        QCoreApplication::applicationDirPath() + QStringLiteral("/orvanta-browser-host");
    const QString runtime = runtimeFolder();
    return std::make_unique<LinuxAutomation>(LinuxAutomation::Surroundings{
        .transport = {workspace_, workspaceNotifications_, mainLoop_, systemUptime,
                      [this] {
                          const RunningApplication* front = workspace_.frontmostApplication();
                          return QApplication::activePopupWidget() != nullptr ||
                                 (front &&
                                  front->bundleIdentifier == workspace_.ownBundleIdentifier());
                      }},
        .bridge = {.socket = runtime.isEmpty() ? QString() : runtime + QStringLiteral("/browsers"),
                   .hostExecutable = host},
        .identity = ApplicationIdentity(entries_, QCoreApplication::applicationPid(),
                                        workspace_.ownBundleIdentifier()),
        .load = std::move(decisions.load),
        .store = std::move(decisions.store),
        .browsers = std::move(decisions.browsers),
        .name =
            [this](const QString& identifier) {
                const auto location = bundles_.locationOfApplication(identifier);
                return location ? bundles_.displayName(*location) : identifier;
            },
        .preparation = BrowserPreparation(
            {.home = QDir::homePath(),
             .configHome = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation),
             .hostExecutable = host,
             .packageFolder = packageFolder(QStringLiteral("browser"))}),
        .entries = entries_,
        .display = xDisplay().value_or(QByteArray())});
}

} // namespace orvanta
