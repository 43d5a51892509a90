#include "Tracking/Tracker.h"

#include "Model/ActivityKey.h"
#include "Model/ActivityList.h"
#include "Model/DayActivityList.h"
#include "Model/ModelContext.h"
#include "Model/UserDefaults.h"
#include "Platform/Workspace.h"
#include "Tracking/TrackingPolicy.h"

namespace orvanta {

namespace {

const auto finderKey = QStringLiteral("app:com.apple.finder");

const auto pausedPreference = QStringLiteral("paused");
const auto resetDatePreference = QStringLiteral("resetDate");
const auto disabledBrowsersPreference = QStringLiteral("disabledBrowsers");
const auto finderIgnoredPreference = QStringLiteral("finderIgnoredV1");
const auto historySeededPreference = QStringLiteral("historySeededV1");

} // namespace

Tracker::Tracker(ModelContext& context, BrowserReading& reader, UserDefaults& defaults,
                 DialectLookup dialect, MonotonicClock now, WallClock dateNow,
                 const Calendar& calendar, FrontmostProbe frontmost, const Platform& platform)
    : context_(context)
    , activities_(context.activities())
    , dayRecords_(context.dayActivities())
    , reader_(reader)
    , defaults_(defaults)
    , dialect_(std::move(dialect))
    , now_(std::move(now))
    , dateNow_(std::move(dateNow))
    , calendar_(calendar)
    , frontmost_(std::move(frontmost))
    , platform_(platform) {
    readPreferences();
    fetch();
    repairRecords();
    findSystemComponents();
    if (!defaults_.contains(resetDatePreference)) {
        defaults_.setDate(resetDatePreference, resetDate_);
    }
    applyFinderRule();
    seedHistory();
}

Tracker::~Tracker() {
    for (const auto& [center, token] : observers_) {
        center->removeObserver(token);
    }
}

void Tracker::readPreferences() {
    resetDate_ = defaults_.date(resetDatePreference).value_or(currentDate());
    if (const auto stored = defaults_.stringArray(disabledBrowsersPreference)) {
        disabledBrowsers_ = std::set(stored->begin(), stored->end());
    } else {
        // Older versions had one switch a browser.
        const std::array switches{
            std::pair(QStringLiteral("safari"), QStringLiteral("com.apple.Safari")),
            std::pair(QStringLiteral("chrome"), QStringLiteral("com.google.Chrome"))};
        for (const auto& [preference, bundleID] : switches) {
            if (defaults_.contains(preference) && !defaults_.boolValue(preference)) {
                disabledBrowsers_.insert(bundleID);
            }
        }
    }
    paused_ = defaults_.boolValue(pausedPreference);
}

void Tracker::fetch() {
    try {
        context_.fetchActivities();
    } catch (const ModelError& error) {
        storageError_ =
            QStringLiteral("Não foi possível ler os dados: ") + error.localizedDescription();
    }
    try {
        const Date date = currentDate();
        context_.fetchDayActivities(calendar_.day(calendar_.addingDays(date, -1).value_or(date)));
    } catch (const ModelError& error) {
        storageError_ =
            QStringLiteral("Não foi possível ler o histórico: ") + error.localizedDescription();
    }
}

void Tracker::completeHistory() {
    dayRecords_.complete();
    if (const auto& error = context_.historyError()) {
        setStorageError(QStringLiteral("Não foi possível ler o histórico: ") +
                        error->localizedDescription());
    }
}

void Tracker::repairRecords() {
    const QString neutral = rawValue(Category::neutral);
    const QString pending = rawValue(Category::pending);
    for (Activity& activity : activities_) {
        if (activity.categoryValue() == neutral) {
            activity.setCategory(Category::ignored);
            activity.setPreviousCategoryValue(pending);
        } else if (activity.previousCategoryValue() == neutral) {
            activity.setPreviousCategoryValue(pending);
        }
    }
    for (Activity& activity : activities_) {
        if (activity.seconds() > 0 && !activity.lastUsedAt()) {
            activity.setLastUsedAt(currentDate());
        }
    }
    saveOr(QStringLiteral("Não foi possível salvar: "));
}

void Tracker::findSystemComponents() {
    for (const Activity& activity : activities_) {
        if (!activity.key().startsWith(appKeyPrefix)) {
            continue;
        }
        const QString bundleID = activity.key().mid(appKeyPrefix.size());
        if (platform_.workspace.isSystemComponent(bundleID) ||
            TrackingPolicy::isSystemComponent(bundleID,
                                              platform_.workspace.installLocation(bundleID))) {
            excludedSystemKeys_.insert(activity.key());
        }
    }
}

void Tracker::applyFinderRule() {
    Activity* finder = activities_.find(finderKey);
    if (finder != nullptr && defaults_.boolValue(finderIgnoredPreference)) {
        return; // The person's later choice stands.
    }
    if (finder != nullptr) {
        finder->setCategory(Category::ignored);
    } else {
        insertActivity(finderKey, QStringLiteral("Finder"), Category::ignored);
    }
    if (saveOr(QStringLiteral("Não foi possível salvar a regra do Finder: "))) {
        defaults_.setBool(finderIgnoredPreference, true);
    }
}

void Tracker::seedHistory() {
    if (defaults_.boolValue(historySeededPreference)) {
        return;
    }
    const Date date = currentDate();
    if (calendar_.isSameDay(resetDate_, date)) {
        const Day today = calendar_.day(date);
        for (const Activity& activity : activities_) {
            const double seconds = activity.seconds();
            if (seconds > 0 && seconds > dayRecords_.seconds(today, activity.keyId()).value_or(0)) {
                dayRecords_.setSeconds(today, activity.keyId(), seconds);
            }
        }
    }
    if (saveOr(QStringLiteral("Não foi possível salvar o histórico: "))) {
        defaults_.setBool(historySeededPreference, true);
    }
}

Activity& Tracker::insertActivity(const QString& key, const QString& name, Category category) {
    Activity& activity = activities_.append(key, name, category, 0);
    Q_EMIT activitiesChanged();
    return activity;
}

void Tracker::start() {
    if (started_) {
        return;
    }
    started_ = true;

    NotificationCenter& workspace = platform_.workspaceNotifications;
    NotificationCenter& distributed = platform_.distributedNotifications;
    observe(workspace, Notification::DidActivateApplication, &Tracker::refreshFocus);
    observe(platform_.defaultNotifications, Notification::CalendarDayChanged,
            &Tracker::refreshFocus);
    observe(workspace, Notification::WillSleep, &Tracker::becomeInactive<sleep>);
    observe(workspace, Notification::DidWake, &Tracker::becomeActive<sleep>);
    observe(workspace, Notification::ScreensDidSleep, &Tracker::becomeInactive<display>);
    observe(workspace, Notification::ScreensDidWake, &Tracker::becomeActive<display>);
    observe(workspace, Notification::SessionDidResignActive, &Tracker::becomeInactive<session>);
    observe(workspace, Notification::SessionDidBecomeActive, &Tracker::becomeActive<session>);
    observe(distributed, Notification::ScreenIsLocked, &Tracker::becomeInactive<lock>);
    observe(distributed, Notification::ScreenIsUnlocked, &Tracker::becomeActive<lock>);

    refreshFocus();
}

void Tracker::stop() {
    started_ = false;
    visibilityTimer_.reset();
    timer_.reset();
    ++generation_;
    trackingIdentity_.reset();
    browserID_.reset();
    transition(std::nullopt);
    save();
    for (const auto& [center, token] : observers_) {
        center->removeObserver(token);
    }
    observers_.clear();
}

void Tracker::togglePause() {
    paused_ = !paused_;
    defaults_.setBool(pausedPreference, paused_);
    Q_EMIT pausedChanged();
    refreshFocus();
}

void Tracker::setInspecting(bool inspecting) {
    inspecting_ = inspecting;
    refreshFocus();
    if (inspecting) {
        queryBrowser();
    }
}

void Tracker::setSitesEnabled(const QString& bundleID, bool enabled) {
    std::set<QString> disabled = disabledBrowsers_;
    if (enabled) {
        disabled.erase(bundleID);
    } else {
        disabled.insert(bundleID);
    }
    setDisabledBrowsers(std::move(disabled));
}

void Tracker::setDisabledBrowsers(std::set<QString> bundleIDs) {
    disabledBrowsers_ = std::move(bundleIDs);
    defaults_.setStringArray(disabledBrowsersPreference,
                             QStringList(disabledBrowsers_.begin(), disabledBrowsers_.end()));
    Q_EMIT disabledBrowsersChanged();
    refreshFocus();
}

void Tracker::setShowAllActivities(bool showAll) {
    if (showAllActivities_ != showAll) {
        showAllActivities_ = showAll;
        Q_EMIT showAllActivitiesChanged();
    }
    updateTimers();
}

const ActivityList& Tracker::activities() const {
    return activities_;
}

void Tracker::observe(NotificationCenter& center, Notification name, void (Tracker::*handler)()) {
    observers_.emplace_back(&center,
                            center.addObserver(name, [this, handler] { (this->*handler)(); }));
}

template <Tracker::Inactivity reason>
void Tracker::becomeInactive() {
    inactive_.set(reason);
    refreshFocus();
}

template <Tracker::Inactivity reason>
void Tracker::becomeActive() {
    inactive_.reset(reason);
    refreshFocus();
}

void Tracker::bumpRevision() {
    ++revision_;
    Q_EMIT revisionChanged();
}

void Tracker::setStorageError(const std::optional<QString>& error) {
    if (storageError_ != error) {
        storageError_ = error;
        Q_EMIT storageErrorChanged();
    }
}

void Tracker::setResetDate(Date date) {
    resetDate_ = date;
    defaults_.setDate(resetDatePreference, date);
    Q_EMIT resetDateChanged();
}

} // namespace orvanta
