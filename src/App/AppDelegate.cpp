#include "AppDelegate.h"

#include "Linux/LinuxPlatform.h"
#include "Linux/SystemClock.h"
#include "Model/ActivityStore.h"
#include "Model/PreferencesMigration.h"
#include "Platform/Bundles.h"
#include "Platform/Workspace.h"
#include "Tracking/Classification.h"
#include "Tracking/FrontmostProbe.h"
#include "Views/Text/StatusText.h"
#include "Views/Text/WindowWatchingText.h"

#include <QCoreApplication>
#include <QLocale>
#include <QMessageBox>
#include <QStandardPaths>

#include <malloc.h>

#include <chrono>

namespace orvanta {

namespace {

const auto domain = QStringLiteral("com.brindlework.orvanta");
const auto olderDomain = QStringLiteral("com.local.Orvanta");
const auto automationDomain = QStringLiteral("com.brindlework.orvanta.automation");

QString configurationFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
}

int firstWeekday() {
    return QLocale::system().firstDayOfWeek() % 7 + 1; // Qt counts from Monday, 1.
}

} // namespace

AppDelegate::AppDelegate(LinuxPlatform& platform)
    : platform_(platform)
    , defaults_(configurationFolder(), domain)
    , calendar_(QTimeZone::systemTimeZone(), firstWeekday())
    , automationDefaults_(configurationFolder(), automationDomain) {}

AppDelegate::~AppDelegate() = default;

bool AppDelegate::applicationDidFinishLaunching() {
    PreferencesMigration::migrate(defaults_, olderDomain, domain);

    try {
        container_ = ActivityStore::open(
            QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
    } catch (const ModelError& error) {
        QMessageBox alert(QMessageBox::Critical, QStringLiteral("orvanta"),
                          QStringLiteral("Não foi possível abrir os dados do orvanta"));
        alert.setInformativeText(error.localizedDescription());
        alert.exec();
        return false;
    }

    automation_ = platform_.makeAutomation(
        [this](const QString& key) {
            return automationDefaults_.stringArray(key).value_or(QStringList());
        },
        [this](const QString& key, const QStringList& identifiers) {
            automationDefaults_.setStringArray(key, identifiers);
        });
    const Bundles& bundles = platform_.bundles();
    reader_ = std::make_unique<BrowserReader>(bundles, automation_->runningApplications(),
                                              automation_->transport(), automation_->permission(),
                                              Classification::host);

    const Platform platform = platform_.platform();
    tracker_ = std::make_unique<Tracker>(
        container_->mainContext(), *reader_, defaults_,
        [&bundles](const QString& id) { return BrowserDialect::of(id, bundles); }, systemUptime,
        [] { return Date::from(std::chrono::system_clock::now()); }, calendar_,
        [&workspace = platform.workspace] { return frontmostFocus(workspace); }, platform);

    status_ = platform_.makeStatusItem({.activate = [](std::optional<QPoint>) {},
                                        .menu =
                                            [this] {
                                                return statusMenu();
                                            }});
    connect(tracker_.get(), &Tracker::revisionChanged, this, &AppDelegate::updateStatus);
    updateStatus();

    connect(&platform_, &LinuxPlatform::timeZoneChanged, this,
            [this](const QTimeZone& zone) { calendar_.setTimeZone(zone); });
    tracker_->start();
    platform_.startPresence();
    // When the desktop has come up, and before anybody looks at the history.
    constexpr MainLoop::Duration later{5};
    historyTimer_ = platform.mainLoop.once(later, [this] {
        tracker_->completeHistory();
        automation_->renewPreparations();
        ::malloc_trim(0); // What reading took and no one needs any more goes back to the system.
    });

    connect(&platform_, &LinuxPlatform::windowWatchingChanged, this,
            &AppDelegate::windowWatchingChanged);
    windowWatchingChanged();
    return true;
}

void AppDelegate::applicationWillTerminate() {
    if (tracker_) {
        tracker_->stop();
    }
}

void AppDelegate::applicationWasStartedAgain() {
    windowWatchingChanged();
}

void AppDelegate::updateStatus() {
    const StatusTotals totals{tracker_->total(Category::production),
                              tracker_->total(Category::consumption),
                              tracker_->total(Category::pending)};
    const StatusTitle title = statusTitle(totals, tracker_->paused());
    if (title_ != title) {
        title_ = title;
        status_->setTitle(title);
    }
    const QString toolTip = statusToolTip(totals, tracker_->paused());
    if (toolTip_ != toolTip) {
        toolTip_ = toolTip;
        status_->setToolTip(toolTip);
    }
}

std::vector<StatusMenuItem> AppDelegate::statusMenu() const {
    return {{QStringLiteral("Sair do orvanta"), [] { QCoreApplication::quit(); }, {}}};
}

void AppDelegate::windowWatchingChanged() {
    const WindowWatcher::State state = platform_.windowWatching();
    if (state == WindowWatcher::State::Ended) {
        // There is no display left to say it on.
        qInfo("%s", qUtf8Printable(windowWatchingText(state)));
        QCoreApplication::quit();
    } else if (const QString text = windowWatchingText(state); !text.isEmpty()) {
        auto* message = new QMessageBox(QMessageBox::Information, QStringLiteral("orvanta"), text);
        message->setAttribute(Qt::WA_DeleteOnClose);
        message->setModal(false);
        message->show();
    }
}

} // namespace orvanta
