#include "App/AppDelegate.h"

#include "App/AboutPanel.h"
#include "App/MainMenu.h"
#include "App/SettingsWindow.h"
#include "Model/ActivityStore.h"
#include "Model/PreferencesMigration.h"
#include "Platform/Appearance.h"
#include "Platform/Bundles.h"
#include "Platform/Workspace.h"
#include "Tracking/Classification.h"
#include "Tracking/FrontmostProbe.h"
#include "Views/PanelRoot.h"
#include "Views/PopoverPlace.h"
#include "Views/SettingsView.h"
#include "Views/Text/StatusText.h"
#include "Views/Text/WindowWatchingText.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace orvanta {

namespace {

const auto domain = QStringLiteral("com.brindlework.orvanta");
const auto olderDomain = QStringLiteral("com.local.Orvanta");
const auto automationDomain = QStringLiteral("com.brindlework.orvanta.automation");

/// When the desktop has come up, and before anybody looks at the history.
constexpr MainLoop::Duration afterLaunch{5};

/// The desktop needs a moment to say what is in front once the settings are gone.
constexpr MainLoop::Duration afterSettings{0.2};

/// For whom a setup waits that is not looked at. Finding the installed browsers reads some hundred
/// files, and the setup asks for them every second.
constexpr double browsersStay = 60; // s

/// A press that closed the popover and a click that is reported within so long, so near to it, are
/// one and the same.
constexpr double longestClick = 1;
constexpr int sameSpot = 16;

/// Whether the point is on what panels have taken of a monitor.
bool isOverPanel(QPoint point, const std::vector<ScreenArea>& screens) {
    return std::ranges::any_of(screens, [point](const ScreenArea& screen) {
        return screen.geometry.contains(point) && !screen.workArea.contains(point);
    });
}

/// Where nobody knows where the pointer was, time alone has to tell.
bool isSameSpot(std::optional<QPoint> one, std::optional<QPoint> other) {
    return !one || !other || (*one - *other).manhattanLength() < sameSpot;
}

} // namespace

AppDelegate::AppDelegate(Surroundings surroundings)
    : surroundings_(std::move(surroundings))
    , desktop_(surroundings_.desktop)
    , platform_(desktop_.platform())
    , defaults_(surroundings_.configurationFolder, domain)
    , automationDefaults_(surroundings_.configurationFolder, automationDomain)
    , calendar_(surroundings_.calendar)
    , popover_(desktop_.placesPopups() ? Popover::Kind::Popup : Popover::Kind::Window,
               platform_.mainLoop) {
    connect(&popover_, &Popover::wasLeft, this,
            [this] { closeByPress(desktop_.pointerPosition()); });
    connect(&popover_, &Popover::didClose, this, &AppDelegate::popoverDidClose);
}

AppDelegate::~AppDelegate() {
    popover_.close();
}

bool AppDelegate::applicationDidFinishLaunching() {
    PreferencesMigration::migrate(defaults_, olderDomain, domain);

    try {
        container_ = ActivityStore::open(surroundings_.dataFolder);
    } catch (const ModelError& error) {
        surroundings_.alert(QStringLiteral("Não foi possível abrir os dados do orvanta"),
                            error.localizedDescription());
        return false;
    }

    const Bundles& bundles = desktop_.bundles();
    automation_ = desktop_.makeAutomation(
        {.load =
             [this](const QString& key) {
                 return automationDefaults_.stringArray(key).value_or(QStringList());
             },
         .store =
             [this](const QString& key, const QStringList& identifiers) {
                 automationDefaults_.setStringArray(key, identifiers);
             },
         .browsers =
             [&bundles] {
                 QStringList identifiers;
                 for (const Browser& browser : Browser::installed(bundles)) {
                     identifiers.append(browser.id);
                 }
                 return identifiers;
             }});
    reader_ = std::make_unique<BrowserReader>(bundles, automation_->runningApplications(),
                                              automation_->transport(), automation_->permission(),
                                              Classification::host);
    tracker_ = std::make_unique<Tracker>(
        container_->mainContext(), *reader_, defaults_,
        [&bundles](const QString& id) { return BrowserDialect::of(id, bundles); },
        [this] { return desktop_.uptime(); }, [this] { return Date::from(platform_.systemTime()); },
        calendar_, [this] { return frontmostFocus(platform_.workspace); }, platform_);

    const auto silence = [this] {
        automation_->setSilenced(tracker_->disabledBrowsers());
    };
    connect(tracker_.get(), &Tracker::disabledBrowsersChanged, this, silence);
    silence();

    status_ = desktop_.makeStatusItem(
        {.activate = [this](std::optional<QPoint> place) { togglePopover(place); },
         .menu = [this] { return statusMenu(); },
         .menuWillOpen = [this] { popover_.close(); },
         .toolTip =
             [this] {
                 return statusToolTip(statusTotals(), tracker_->paused());
             }});
    connect(tracker_.get(), &Tracker::revisionChanged, this, &AppDelegate::updateStatus);
    updateStatus();

    setup_ =
        std::make_unique<Setup>([this] { return enabledBrowsers(); }, defaults_, setupSystem());
    connect(&desktop_, &Desktop::timeZoneChanged, this,
            [this](const QTimeZone& zone) { calendar_.setTimeZone(zone); });
    tracker_->start();
    desktop_.startPresence();
    setup_->onGrant = [this] {
        showPopover();
    };
    if (!setup_->isReady()) {
        setupTimer_ =
            platform_.mainLoop.once(MainLoop::Duration::zero(), [this] { showPopover(); });
    }

    historyTimer_ = platform_.mainLoop.once(afterLaunch, [this] {
        tracker_->completeHistory();
        automation_->renewPreparations();
        ::malloc_trim(0); // What reading took and no one needs any more goes back to the system.
    });
    connect(&desktop_, &Desktop::windowWatchingChanged, this, &AppDelegate::windowWatchingChanged);
    windowWatchingChanged();
    return true;
}

bool AppDelegate::applicationShouldHandleReopen() {
    if (settingsWindow_ && settingsWindow_->isVisible()) { // Also when it is minimised.
        showSettings();
    } else if (status_ && !status_->isShown()) {
        showPopover(true);
    }
    saidOfWindows_.reset();
    windowWatchingChanged();
    return false;
}

void AppDelegate::save() {
    if (tracker_) {
        tracker_->refreshFocus();
        tracker_->save();
    }
}

void AppDelegate::applicationWillTerminate() {
    popover_.close();
    stopPopoverDismissalMonitoring();
    if (tracker_) {
        tracker_->stop();
    }
}

void AppDelegate::displayDidVanish() {
    if (tracker_) {
        tracker_->blockSignals(true); // Those who show it would be drawing on nothing.
        tracker_->stop();
    }
}

StatusTotals AppDelegate::statusTotals() const {
    return {tracker_->total(Category::production), tracker_->total(Category::consumption),
            tracker_->total(Category::pending)};
}

void AppDelegate::updateStatus() {
    const StatusTitle title = statusTitle(statusTotals(), tracker_->paused());
    if (title_ != title) {
        title_ = title;
        status_->setTitle(title);
    }
    status_->toolTipChanged();
}

std::vector<StatusMenuItem> AppDelegate::statusMenu() {
    return {{.text = QStringLiteral("Mostrar todos"),
             .action = [this] { toggleShowAll(); },
             .checked = tracker_->showAllActivities()},
            {},
            {.text = QStringLiteral("Ajustes…"),
             .action = [this] { showSettings(); },
             .keyEquivalent = QLatin1Char(',')},
            {},
            {.text = QStringLiteral("Sair do orvanta"),
             .action = surroundings_.terminate,
             .keyEquivalent = QLatin1Char('q')}};
}

Setup::System AppDelegate::setupSystem() {
    return {.loginItem = desktop_.loginItem(),
            .bundles = desktop_.bundles(),
            .runningApplications = automation_->runningApplications(),
            .permission = automation_->permission(),
            .launcher = automation_->launcher(),
            .mainLoop = platform_.mainLoop};
}

std::vector<Browser> AppDelegate::enabledBrowsers() {
    const double now = desktop_.uptime();
    if (!browsersRead_ || now - *browsersRead_ >= browsersStay) {
        browsersRead_ = now;
        browsers_ = Browser::installed(desktop_.bundles());
    }
    std::vector<Browser> browsers = browsers_;
    std::erase_if(browsers, [this](const Browser& browser) {
        return tracker_->disabledBrowsers().contains(browser.id);
    });
    return browsers;
}

void AppDelegate::toggleShowAll() {
    tracker_->setShowAllActivities(!tracker_->showAllActivities());
}

void AppDelegate::togglePopover(std::optional<QPoint> place) {
    if (popover_.isVisible()) {
        popover_.close();
        return;
    }
    const auto pointer = desktop_.pointerPosition();
    const auto press = std::exchange(closingPress_, std::nullopt);
    if (press && desktop_.uptime() - press->uptime < longestClick &&
        isSameSpot(pointer, press->place)) {
        return;
    }
    // Panels do not agree on the pixels they count in; who clicked has the pointer there.
    if (pointer && isOverPanel(*pointer, desktop_.screenAreas())) {
        clicked_ = pointer;
    } else if (place) {
        clicked_ = place;
    }
    showPopover(true);
}

/// `isAsked`: whether a person did something just now that opens it.
void AppDelegate::showPopover(bool isAsked) {
    if (popover_.isVisible()) {
        return;
    }
    browsersRead_.reset();
    desktop_.updateFrontmost(); // What came to the front before does not close it.
    tracker_->setInspecting(true);
    startPopoverDismissalMonitoring();
    auto content = std::make_unique<PanelRoot>(
        *setup_, PanelSurroundings{.tracker = *tracker_,
                                   .calendar = calendar_,
                                   .appearance = desktop_.appearance(),
                                   .mainLoop = platform_.mainLoop,
                                   .openSettings = [this] { showSettings(); },
                                   .quit = surroundings_.terminate,
                                   .desktopProblem =
                                       [this] {
                                           return desktopProblem();
                                       }});
    const QPoint place = popoverPlace(clicked_, desktop_.screenAreas(), Popover::contentSize);
    popover_.winId(); // Its native window is made now, if it never was.
    desktop_.keepInactive(*popover_.windowHandle());
    popover_.open(std::move(content), {.place = place,
                                       .takesKeyboard = isAsked,
                                       .leavesPointer = outsideClickMonitor_ != nullptr});
    if (!desktop_.placesPopups()) {
        desktop_.place(*popover_.windowHandle(), place);
    }
}

void AppDelegate::popoverDidClose() {
    stopPopoverDismissalMonitoring();
    tracker_->setInspecting(false);
}

void AppDelegate::startPopoverDismissalMonitoring() {
    stopPopoverDismissalMonitoring();
    outsideClickMonitor_ =
        desktop_.addGlobalMonitorForMouseDowns([this](QPoint place) { mousePressed(place); });
    appActivationObserver_ = platform_.workspaceNotifications.addObserver(
        Notification::DidActivateApplication, [this] { applicationActivated(); });
}

void AppDelegate::stopPopoverDismissalMonitoring() {
    outsideClickMonitor_.reset();
    if (const auto observer = std::exchange(appActivationObserver_, std::nullopt)) {
        platform_.workspaceNotifications.removeObserver(*observer);
    }
}

void AppDelegate::mousePressed(QPoint place) {
    const QWidget* menu = QApplication::activePopupWidget();
    if (popover_.geometry().contains(place) ||
        (menu != nullptr && menu->geometry().contains(place))) {
        return;
    }
    closeByPress(place);
}

/// By one that may be the first half of a click on the status item, which is not to open it again.
void AppDelegate::closeByPress(std::optional<QPoint> place) {
    closingPress_ = {place, desktop_.uptime()};
    popover_.close();
}

void AppDelegate::applicationActivated() {
    const RunningApplication* front = platform_.workspace.frontmostApplication();
    if (front != nullptr && front->bundleIdentifier != platform_.workspace.ownBundleIdentifier()) {
        popover_.close();
    }
}

void AppDelegate::showSettings() {
    if (!settingsWindow_) {
        settingsWindow_ =
            std::make_unique<SettingsWindow>(new SettingsView(*tracker_, setupSystem(), calendar_));
        installEditMenu(*settingsWindow_);
        connect(settingsWindow_.get(), &SettingsWindow::willClose, this,
                &AppDelegate::windowWillClose);
        if (const auto screens = desktop_.screenAreas(); !screens.empty()) {
            settingsWindow_->centre(screens.front().workArea);
        }
    }
    popover_.close();
    tracker_->setInspecting(false);
    settingsWindow_->setWindowState(settingsWindow_->windowState() & ~Qt::WindowMinimized);
    settingsWindow_->show();
    settingsWindow_->raise();
    desktop_.activate(*settingsWindow_->windowHandle());
    tracker_->refreshFocus();
}

void AppDelegate::installEditMenu(SettingsWindow& window) {
    installMainMenu(window, {.showAbout =
                                 [&window] {
                                     auto* about = window.findChild<AboutPanel*>();
                                     (about != nullptr ? about : new AboutPanel(&window))->show();
                                 },
                             .showSettings = [this] { showSettings(); },
                             .terminate = surroundings_.terminate});
}

void AppDelegate::windowWillClose() {
    tracker_->setInspecting(false);
    refreshTimer_ = platform_.mainLoop.once(afterSettings, [this] { tracker_->refreshFocus(); });
}

void AppDelegate::windowWatchingChanged() {
    const WindowWatching state = desktop_.windowWatching();
    if (state == WindowWatching::Waiting || state == saidOfWindows_) {
        return; // It may be what it was again.
    }
    saidOfWindows_ = state;
    if (windowMessage_) {
        windowMessage_->close();
    }
    const QString text = windowWatchingText(state);
    if (state == WindowWatching::Ended) {
        // There is no display left to say it on.
        qInfo("%s", qUtf8Printable(text));
        surroundings_.terminate();
    } else if (state == WindowWatching::NeedsPermission) {
        askForWindowWatching();
    } else if (!text.isEmpty()) {
        windowMessage(text, {}).show();
    }
}

DesktopProblem AppDelegate::desktopProblem() {
    const WindowWatching state = desktop_.windowWatching();
    DesktopProblem problem{windowWatchingText(state), {}};
    if (state == WindowWatching::NeedsPermission) {
        problem.solve = [this] {
            popover_.close();
            askForWindowWatching();
        };
    }
    return problem;
}

void AppDelegate::askForWindowWatching() {
    QMessageBox& question = windowMessage(
        windowWatchingText(WindowWatching::NeedsPermission),
        QStringLiteral("A extensão diz ao orvanta apenas qual aplicativo está à frente: nunca "
                       "títulos nem conteúdos. Nada sai deste computador."));
    const auto* permit = question.addButton(QStringLiteral("Permitir"), QMessageBox::AcceptRole);
    question.addButton(QStringLiteral("Agora não"), QMessageBox::RejectRole);
    connect(permit, &QPushButton::clicked, this, [this] {
        if (const auto problem = desktop_.allowWindowWatching()) {
            windowMessage(QStringLiteral("Não foi possível instalar a extensão."), *problem).show();
        }
    });
    question.show();
}

QMessageBox& AppDelegate::windowMessage(const QString& text, const QString& detail) {
    if (windowMessage_) {
        windowMessage_->close();
    }
    windowMessage_ = new QMessageBox(QMessageBox::Information, QStringLiteral("orvanta"), text);
    windowMessage_->setInformativeText(detail);
    windowMessage_->setAttribute(Qt::WA_DeleteOnClose);
    windowMessage_->setModal(false);
    return *windowMessage_;
}

} // namespace orvanta
