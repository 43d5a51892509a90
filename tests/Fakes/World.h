#pragma once

#include "Fakes/FakeBrowsers.h"
#include "Fakes/FakeWorkspace.h"
#include "Fakes/HandMainLoop.h"
#include "Fakes/QtPrinters.h"
#include "Model/ActivityList.h"
#include "Model/ActivityStore.h"
#include "Model/Calendar.h"
#include "Model/DayActivity.h"
#include "Model/DayActivityList.h"
#include "Model/Sqlite.h"
#include "Model/UserDefaults.h"
#include "Platform/NotificationCenter.h"
#include "Platform/Platform.h"
#include "Tracking/FrontmostProbe.h"
#include "Tracking/Tracker.h"

#include <QDateTime>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>
#include <memory>

namespace orvanta {

/// A person's machine in the hand: a real store and real preferences in a temporary folder, and
/// everything that moves by itself (clocks, timers, windows, browsers) driven by the test.
///
/// Time passes on both clocks together: by `pass()` with the timers firing, by `stall()` with the
/// process held up. `wallShift` moves the date alone, as a person who sets the clock does.
class World {
public:
    explicit World(const char* localStart = "2024-03-05T12:00:00",
                   const char* timeZone = "America/Sao_Paulo")
        : calendar(QTimeZone(timeZone))
        , zone_(timeZone)
        , start_(dateOf(localStart)) {
        open();
    }

    QTemporaryDir folder;
    HandMainLoop loop;
    FakeWorkspace workspace;
    FakeBrowsers browsers;
    NotificationCenter workspaceCenter;
    NotificationCenter defaultCenter;
    NotificationCenter distributedCenter;
    Calendar calendar;
    double wallShift = 0;

    std::unique_ptr<UserDefaults> defaults;
    std::unique_ptr<ModelContainer> container;
    std::unique_ptr<Tracker> tracker;

    QString storePath() const {
        return folder.filePath(QStringLiteral("com.brindlework.orvanta/Activities.store"));
    }
    /// Begins a new process over what an earlier one left.
    void open() {
        container = ActivityStore::open(folder.path());
        defaults = std::make_unique<UserDefaults>(folder.path(),
                                                  QStringLiteral("com.brindlework.orvanta"));
    }
    Tracker& construct() {
        const auto systemTime = [this] {
            // A double of so many nanoseconds would not be exact.
            using std::chrono::milliseconds;
            return std::chrono::system_clock::time_point(
                milliseconds(static_cast<qint64>(date().since1970() * 1000)));
        };
        const Platform platform{workspace, workspaceCenter, defaultCenter, distributedCenter,
                                loop,      systemTime};
        tracker.reset();
        tracker = std::make_unique<Tracker>(
            context(), browsers, *defaults,
            [this](const QString& id) { return browsers.dialect(id); }, [this] { return uptime(); },
            [this] { return date(); }, calendar, [this] { return frontmostFocus(workspace); },
            platform);
        return *tracker;
    }
    Tracker& begin() {
        construct().start();
        return *tracker;
    }
    void restart() {
        tracker.reset();
        container.reset();
        open();
        begin();
    }

    ModelContext& context() { return container->mainContext(); }
    double uptime() const { return loop.now() + stalled_; }
    Date date() const { return start_ + uptime() + wallShift; }
    void setDate(const char* local) { wallShift += dateOf(local) - date(); }
    Date dateOf(const char* local) const {
        const QDateTime time = QDateTime::fromString(QLatin1StringView(local), Qt::ISODateWithMs);
        return Date::fromUnix(
            static_cast<double>(QDateTime(time.date(), time.time(), zone_).toMSecsSinceEpoch()) /
            1000);
    }
    void travel(const char* timeZone) {
        zone_ = QTimeZone(timeZone);
        calendar.setTimeZone(zone_);
        defaultCenter.post(Notification::CalendarDayChanged);
    }

    void pass(double seconds) { loop.advance(seconds); }
    void stall(double seconds) { stalled_ += seconds; }
    void front(const char* id) {
        workspace.front = RunningApplication{QString::fromLatin1(id), {}, {}, {}};
        workspaceCenter.post(Notification::DidActivateApplication);
    }
    void nothingInFront() {
        workspace.front.reset();
        workspaceCenter.post(Notification::DidActivateApplication);
    }

    /// A record as some version may have left it.
    Activity& add(const QString& key, const QString& categoryValue, double seconds = 0) {
        Activity& activity = context().activities().append(key, key, Category::pending, seconds);
        activity.setCategoryValue(categoryValue);
        return activity;
    }
    void record(const char* day, const Activity& activity, double seconds) {
        context().dayActivities().add(*Day::fromText(day), activity.keyId(), seconds);
    }

    Activity* find(const char* key) {
        return context().activities().find(QString::fromLatin1(key));
    }
    Activity& activity(const char* key) {
        Activity* found = find(key);
        EXPECT_NE(found, nullptr) << key;
        return *found;
    }
    double seconds(const char* key) { return activity(key).seconds(); }
    double daySeconds(const char* day, const char* key) {
        const auto id = context().keys().find(QString::fromLatin1(key));
        return id ? context().dayActivities().seconds(*Day::fromText(day), *id).value_or(0) : 0;
    }

    /// Seconds by the text of day and key, of every record.
    std::map<QString, double> days() {
        std::map<QString, double> result;
        const DayActivityList& list = context().dayActivities();
        for (std::size_t i = 0; i < list.dayCount(); ++i) {
            const auto day = list.oneDay(i);
            for (std::size_t j = 0; j < day.keys.size(); ++j) {
                result[DayActivity::id(day.day, context().keys().text(day.keys[j]))] =
                    day.seconds[j];
            }
        }
        return result;
    }

private:
    QTimeZone zone_;
    Date start_;
    double stalled_ = 0;
};

} // namespace orvanta
