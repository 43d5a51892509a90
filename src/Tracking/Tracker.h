#pragma once

#include "Browsers/BrowserDialect.h"
#include "Browsers/BrowserReading.h"
#include "Model/Calendar.h"
#include "Model/Category.h"
#include "Model/Date.h"
#include "Platform/MainLoop.h"
#include "Platform/NotificationCenter.h"
#include "Platform/Platform.h"
#include "Tracking/Focus.h"
#include "Tracking/HistoryTotals.h"
#include "Tracking/TimeAccumulator.h"

#include <QObject>
#include <QString>

#include <array>
#include <bitset>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <unordered_set>
#include <utility>
#include <vector>

namespace orvanta {

class Activity;
class ActivityList;
class DayActivityList;
class ModelContext;
class UserDefaults;

/// The engine: follows what is in front and books the seconds to activities and days.
///
/// It is the one owner of all tracking state and lives as long as the process. Everything happens
/// on the main thread, in `refreshFocus()`, which every event and the tick call; `transition()` is
/// the only place where seconds are booked, `save()` the only one where the store is written.
///
/// Published values tell their change by a signal, and only a change. Failures are published as
/// Portuguese sentences; the tracker goes on, and a later success clears them.
class Tracker : public QObject {
    Q_OBJECT

public:
    using DialectLookup = std::function<std::optional<BrowserDialect>(const QString& bundleID)>;
    /// Seconds on a clock that never goes back and stands still while the machine sleeps.
    using MonotonicClock = std::function<double()>;
    using WallClock = std::function<Date()>;
    using FrontmostProbe = std::function<std::optional<Focus>()>;

    /// Fetches the records, repairs and seeds what older versions stored, and reads the
    /// preferences. What is referred to outlives the tracker.
    Tracker(ModelContext& context, BrowserReading& reader, UserDefaults& defaults,
            DialectLookup dialect, MonotonicClock now, WallClock dateNow, const Calendar& calendar,
            FrontmostProbe frontmost, const Platform& platform);
    ~Tracker() override;

    /// Begins observing and makes the first refresh; does nothing when started.
    void start();
    /// Books the running stretch, saves and observes no more.
    void stop();

    /// Reads the records of older days, which the construction leaves for later: ten years of them
    /// take longer than the rest of a start. Whatever needs one earlier finds it all the same.
    void completeHistory();

    /// Looks at what is in front and at the reasons not to count, books the seconds since the last
    /// look, and decides what is timed from now on.
    void refreshFocus();
    /// Writes pending changes.
    void save();
    void togglePause();

    /// Whether the panel is open: then Orvanta itself in front leaves the application behind it
    /// counting.
    void setInspecting(bool inspecting);

    void setSitesEnabled(const QString& bundleID, bool enabled);
    void setDisabledBrowsers(std::set<QString> bundleIDs);
    void setShowAllActivities(bool showAll);

    /// Gives the activity this category, for all its time, past days included. What is ignored is
    /// not timed from now on, and remembers the category that it had.
    void classify(const Activity& activity, Category newCategory);
    /// The same for the two categories that a person selects by a button; nothing for any other,
    /// and nothing when it is selected already.
    void selectClassification(const Activity& activity, Category category);
    /// Gives an ignored activity the category back that it had before.
    void resumeMonitoring(const Activity& activity);
    /// Begins the session anew, at zero; the history keeps the time.
    void reset();
    /// Erases the time of all days; the session and the categories stay.
    void clearHistory();

    const ActivityList& activities() const;
    bool showAllActivities() const { return showAllActivities_; }
    bool paused() const { return paused_; }
    /// The key of the activity that is timed now.
    const std::optional<QString>& activeKey() const { return activeKey_; }
    /// Grows with everything that a listing or a total depends on.
    quint64 revision() const { return revision_; }
    /// One line about site identification; empty when there is nothing to report.
    const QString& browserStatus() const { return browserStatus_; }
    /// Why reading or writing the store failed last; none once a save succeeded.
    const std::optional<QString>& storageError() const { return storageError_; }
    /// The moment since when `Activity::seconds` counts.
    Date resetDate() const { return resetDate_; }
    /// Browsers whose sites are not identified.
    const std::set<QString>& disabledBrowsers() const { return disabledBrowsers_; }

    /// Seconds of the session in this category, over the activities that can be listed.
    double total(Category category) const;
    /// What the panel lists, the activity that is timed now first, then by time. Valid until the
    /// next reading.
    const std::vector<const Activity*>& sorted() const;
    /// Every activity that can be listed, in store order.
    std::vector<const Activity*> classifiableActivities() const;
    /// The ignored ones of them, by time.
    std::vector<const Activity*> unmonitored() const;

    /// Seconds by day and category, over the activities that can be listed. Valid until the next
    /// change.
    const HistoryTotals& dayTotals() const;
    /// Rows of seven days in the person's week, up to today, the oldest week first; none when they
    /// would begin before the year 1.
    std::vector<std::vector<HistoryDay>> historyWeeks(int weeks) const;
    /// How many days have time.
    int historyDayCount() const;

Q_SIGNALS:
    void activitiesChanged();
    void showAllActivitiesChanged();
    void pausedChanged();
    void activeKeyChanged();
    void revisionChanged();
    void browserStatusChanged();
    void storageErrorChanged();
    void resetDateChanged();
    void disabledBrowsersChanged();

private:
    /// What is tracked: an application, or a browser for its sites. Not an activity.
    struct TrackingIdentity {
        bool isBrowser;
        QString bundleID;
        friend bool operator==(const TrackingIdentity&, const TrackingIdentity&) = default;
    };
    /// Reasons why the person is away, each independent of the others.
    enum Inactivity : std::size_t { sleep, display, session, lock };

    // Construction.
    void readPreferences();
    void fetch();
    void repairRecords();
    void findSystemComponents();
    void applyFinderRule();
    void seedHistory();
    Activity& insertActivity(const QString& key, const QString& name, Category category);

    // Timers and observers.
    void updateTimers();
    void planVisibilityTimer();
    void tick();
    void observe(NotificationCenter& center, Notification name, void (Tracker::*handler)());
    template <Inactivity reason>
    void becomeInactive();
    template <Inactivity reason>
    void becomeActive();

    // Focus.
    std::optional<Focus> effectiveFrontmost();
    bool isIgnored(const QString& activityKey) const;
    const QString& appKey(const QString& bundleID);
    void forgetTarget();
    void transition(const std::optional<Focus>& focus);
    void setActiveKey(const QString* key);

    // Days and saving.
    void addToDay(const Activity& activity, double seconds);
    void startNewDayIfNeeded();
    /// Saves; on failure publishes `problem` and the error's text. Whether it succeeded.
    bool saveOr(const QString& problem);

    // Sites.
    void queryBrowser();
    void handleAnswer(const BrowserReading::Answer& answer, int generation,
                      const QString& bundleID);
    void setBrowserStatus(const QString& status);
    void clearBrowserStatus() { setBrowserStatus({}); }
    bool isBrowserApp(const QString& key) const;

    // Listings.
    /// An activity with less than a minute is listed for five minutes after its last use.
    static constexpr double briefSeconds = 60;
    static constexpr double briefStays = 300;

    // Nothing tells a cache that it is out of date. Each holds the version of what it was made of:
    // the list's own count of changes, and the count of changes of what can be listed.
    using ListingVersion = std::pair<quint64, quint64>;
    // Of all activities but the one that changed last: from tick to tick that is the same one.
    struct TotalsCache {
        std::optional<std::pair<quint64, quint64>> version;
        std::array<double, allCases.size()> seconds{};
    };
    struct RowsInputs {
        ListingVersion version;
        quint64 revision;
        bool all;
        qint64 second;
        std::optional<QString> activeKey;
        friend bool operator==(const RowsInputs&, const RowsInputs&) = default;
    };
    struct RowsCache {
        std::optional<RowsInputs> inputs;
        std::vector<const Activity*> rows;
        std::vector<std::uint32_t> order; // Of the listed rows by time, kept to be repaired.
        std::vector<std::uint8_t> listed; // By row, kept for its room.
    };
    ListingVersion listingVersion() const;
    HistoryTotals::CategoriesVersion categoriesVersion() const;

    bool isEligible(const Activity& activity) const;
    const std::vector<std::uint8_t>& eligibleRows() const;
    bool computeEligible(const Activity& activity) const;
    void excludeSystemKey(const QString& key);
    bool precedes(std::size_t a, std::size_t b) const;

    void bumpRevision();
    void setStorageError(const std::optional<QString>& error);
    void setResetDate(Date date);
    Date currentDate() const { return Date::from(platform_.systemTime()); }

    ModelContext& context_;
    ActivityList& activities_;
    DayActivityList& dayRecords_;
    BrowserReading& reader_;
    UserDefaults& defaults_;
    DialectLookup dialect_;
    MonotonicClock now_;
    WallClock dateNow_;
    const Calendar& calendar_;
    FrontmostProbe frontmost_;
    Platform platform_;

    bool showAllActivities_ = false;
    bool paused_ = false;
    std::optional<QString> activeKey_;
    quint64 revision_ = 0;
    QString browserStatus_;
    std::optional<QString> storageError_;
    Date resetDate_;
    std::set<QString> disabledBrowsers_;

    TimeAccumulator accumulator_;
    std::unique_ptr<MainLoopTimer> timer_;
    std::unique_ptr<MainLoopTimer> visibilityTimer_;
    bool started_ = false;
    std::vector<std::pair<NotificationCenter*, NotificationCenter::Token>> observers_;
    std::bitset<4> inactive_;
    bool inspecting_ = false;
    std::optional<Focus> lastExternalApp_;
    std::optional<TrackingIdentity> trackingIdentity_;
    int ticks_ = 0;

    std::optional<QString> browserID_;
    int generation_ = 0;
    bool querying_ = false;
    int browserFailures_ = 0;
    double browserRetryAt_ = 0;

    std::unordered_set<QString> excludedSystemKeys_;
    /// By row of `activities_`, as far as it was asked for; what it rests on changes for no
    /// activity but through `excludeSystemKey()`.
    mutable std::vector<std::uint8_t> eligible_;
    quint64 eligibleGeneration_ = 0;
    mutable TotalsCache totalsCache_;
    mutable RowsCache rowsCache_;
    mutable HistoryTotals historyCache_;
    /// The bundle identifier asked for last and its key, so that a tick makes no text.
    std::pair<QString, QString> lastAppKey_;
};

} // namespace orvanta
