#include "Fakes/World.h"
#include "Tracking/KeyOrder.h"

#include <algorithm>
#include <functional>
#include <random>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

/// What the listings and the history are, said plainly and computed anew at every look.
class Plain {
public:
    explicit Plain(World& world)
        : world_(world)
        , tracker_(*world.tracker) {}

    bool isEligible(const Activity& activity) const {
        const QString& key = activity.key();
        return !key.startsWith(u"unknown:"_s) && key != u"app:browser"_s &&
               key != u"app:com.apple.finder"_s &&
               !(key.startsWith(u"app:"_s) && world_.workspace.seenComponents.contains(key.mid(4)));
    }
    static Category category(const Activity& activity) {
        return categoryFromRawValue(activity.categoryValue()).value_or(Category::pending);
    }

    double total(Category wanted) const {
        double sum = 0;
        for (const Activity* activity : classifiable()) {
            sum += category(*activity) == wanted ? activity->seconds() : 0;
        }
        return sum;
    }

    std::vector<const Activity*> classifiable() const {
        std::vector<const Activity*> result;
        for (const Activity& activity : tracker_.activities()) {
            if (isEligible(activity)) {
                result.push_back(&activity);
            }
        }
        return result;
    }

    std::vector<const Activity*> unmonitored() const {
        return inOrder([](const Activity& a) { return category(a) == Category::ignored; });
    }

    std::vector<const Activity*> sorted() const {
        auto rows = inOrder([this](const Activity& a) { return isListed(a); });
        const auto active = std::ranges::find_if(
            rows, [this](const Activity* a) { return tracker_.activeKey() == a->key(); });
        if (active != rows.end()) {
            std::rotate(rows.begin(), active, active + 1);
        }
        return rows;
    }

    std::map<QString, DayTotals> dayTotals() const {
        std::map<QString, DayTotals> result;
        const DayActivityList& records = world_.context().dayActivities();
        for (std::size_t i = 0; i < records.dayCount(); ++i) {
            const auto day = records.oneDay(i);
            for (std::size_t j = 0; j < day.keys.size(); ++j) {
                const Activity* activity = world_.context().activities().find(day.keys[j]);
                const Category counted = activity ? category(*activity) : Category::ignored;
                if (counted != Category::ignored && counted != Category::neutral &&
                    isEligible(*activity)) {
                    DayTotals& totals = result[day.day.text()];
                    (counted == Category::production    ? totals.production
                     : counted == Category::consumption ? totals.consumption
                                                        : totals.pending) += day.seconds[j];
                }
            }
        }
        return result;
    }

private:
    bool isListed(const Activity& activity) const {
        const bool active = tracker_.activeKey() == activity.key();
        if (category(activity) == Category::ignored || (!(activity.seconds() > 0) && !active)) {
            return false;
        }
        return tracker_.showAllActivities() || active || activity.seconds() >= 60 ||
               (activity.lastUsedAt() && world_.date() - *activity.lastUsedAt() < 300);
    }

    template <typename Wanted>
    std::vector<const Activity*> inOrder(const Wanted& wanted) const {
        auto rows = classifiable();
        std::erase_if(rows, [&](const Activity* activity) { return !wanted(*activity); });
        std::ranges::stable_sort(rows, [](const Activity* a, const Activity* b) {
            return a->seconds() != b->seconds() ? a->seconds() > b->seconds()
                                                : compareKeys(a->key(), b->key()) < 0;
        });
        return rows;
    }

    World& world_;
    const Tracker& tracker_;
};

/// A seeded walk over everything that a person and a desktop can do.
class Walk {
public:
    explicit Walk(unsigned seed)
        : random_(seed)
        , isSound_(seed % 3 != 0)
        , world_("2024-03-05T22:00:00") {
        world_.calendar = Calendar(QTimeZone("America/Sao_Paulo"), seed % 2 == 0 ? 1 : 2);
        world_.browsers.known = {u"browser"_s};
        // A record that names no activity.
        Database(world_.storePath())
            .execute("INSERT INTO ZDAYACTIVITY VALUES (99, 2, 1, 50, '2024-03-02', 'x', 'x')");
        world_.begin();
        QStringList keys{u"app:a"_s,     u"site:x.org"_s, u"unknown:?"_s, u"app:browser"_s,
                         u"app:part0"_s, u"app:part1"_s,  u"app:old"_s};
        for (int i = 0; i < 60; ++i) {
            keys.append(u"site:%1.org"_s.arg(i));
        }
        if (!isSound_) { // Keys twice, as in a damaged store, which then can never be saved.
            keys += {u"site:x.org"_s, u"app:part0"_s};
        }
        for (const QString& key : keys) {
            const QString category = upTo(3) == 0 ? u"?"_s : rawValue(anyCategory());
            const Activity& activity = world_.add(key, category, upTo(40) * 3.31);
            for (int i = 0; i < 5; ++i) {
                world_.context().dayActivities().add(anyDay(), activity.keyId(),
                                                     upTo(100) * 0.7 + 0.1);
            }
        }
        expected_ = booked();
        watch();
    }

    /// Does one thing, and says which.
    std::size_t step() {
        Tracker& tracker = *world_.tracker;
        const auto seldom = [this] {
            return upTo(8) == 0;
        };
        const std::function<void()> things[] = {
            [&] { tracker.classify(anyActivity(), anyCategory()); },
            [&] { tracker.selectClassification(anyActivity(), anyCategory()); },
            [&] { tracker.resumeMonitoring(anyActivity()); },
            [&] { tracker.setShowAllActivities(upTo(2) == 0); },
            [&] { tracker.togglePause(); },
            [&] { tracker.setInspecting(upTo(2) == 0); },
            [&] { seldom() ? tracker.reset() : tracker.save(); },
            [&] { seldom() ? clearHistory() : tracker.completeHistory(); },
            [&] { seldom() ? restart() : tracker.start(); },
            [&] { spend(upTo(upTo(64) == 0 ? 800000 : 3200) / 8.0, true); },
            [&] { spend(upTo(90), false); },
            [&] { spend(upTo(90), false); },
            [&] {
                world_.distributedCenter.post(upTo(3) == 0 ? Notification::ScreenIsLocked
                                                           : Notification::ScreenIsUnlocked);
            },
            [&] {
                world_.wallShift += seldom() ? upTo(200000) - 60000 : 0;
                world_.defaultCenter.post(Notification::CalendarDayChanged);
            },
            [&] { world_.travel(seldom() ? "Asia/Tokyo" : "Europe/Berlin"); },
            // A part of the desktop comes to the front, and nobody is told.
            [&] {
                world_.workspace.front = RunningApplication{anyPart(), {}, {}, {}};
            },
            [&] { world_.front(qPrintable(anyPart())); },
            [&] { world_.nothingInFront(); },
            [&] { world_.front(qPrintable(u"new%1"_s.arg(upTo(30)))); },
            [&] { world_.front(upTo(2) == 0 ? "a" : "old"); },
            [&] { world_.front("browser"); },
            [&] { answer(); },
            [&] { answer(); },
        };
        const int what = upTo(std::size(things));
        things[what]();
        return static_cast<std::size_t>(what);
    }

    void check() {
        const Tracker& tracker = *world_.tracker;
        const Plain plain(world_);
        for (const Category category : allCases) {
            // Added up in another order.
            EXPECT_NEAR(tracker.total(category), plain.total(category), 1e-6);
        }
        EXPECT_EQ(tracker.sorted(), plain.sorted());
        EXPECT_EQ(tracker.classifiableActivities(), plain.classifiable());
        EXPECT_EQ(tracker.unmonitored(), plain.unmonitored());
        std::map<QString, DayTotals> found;
        for (const auto& [day, totals] : tracker.dayTotals()) {
            found[day.text()] = totals;
        }
        auto expected = plain.dayTotals();
        EXPECT_EQ(found, expected);
        EXPECT_EQ(tracker.historyDayCount(), std::ssize(expected));
        for (const auto& week : tracker.historyWeeks(13)) {
            for (const HistoryDay& day : week) {
                EXPECT_EQ(day.totals, expected[day.id]);
            }
        }
        auto inRecords = booked();
        for (const auto& [key, seconds] : expected_) {
            EXPECT_NEAR(inRecords[key], seconds, 1e-5) << qPrintable(key);
        }
        EXPECT_EQ(inRecords.size(), expected_.size());
        world_.checkInvariants(false);
    }

private:
    int upTo(std::size_t n) { return static_cast<int>(random_() % n); }
    Category anyCategory() { return allCases[static_cast<std::size_t>(upTo(allCases.size()))]; }
    Day anyDay() {
        return {2024, static_cast<std::uint8_t>(1 + upTo(2)),
                static_cast<std::uint8_t>(1 + upTo(28))};
    }
    const Activity& anyActivity() {
        const ActivityList& all = world_.tracker->activities();
        return all[static_cast<std::size_t>(upTo(all.size()))];
    }
    QString anyPart() {
        QString id = u"part%1"_s.arg(upTo(3));
        world_.workspace.components.insert(id);
        return id;
    }
    void answer() {
        if (!world_.browsers.reads.empty()) {
            world_.browsers.answer(upTo(2) == 0 ? u"x.org"_s : u"\u00e9.org"_s);
        }
    }

    /// Every second of what is timed is in the day records once, until they are erased.
    void spend(double seconds, bool heldUp) {
        const auto timed = world_.tracker->activeKey();
        const auto& front = world_.workspace.front;
        const bool untold = front && world_.workspace.components.contains(front->bundleIdentifier);
        if (heldUp) {
            world_.stall(seconds);
            world_.tracker->refreshFocus();
        } else { // Whole seconds: within one, a listing may be the one before.
            world_.pass(seconds);
        }
        if (timed && untold) {
            expected_ = booked(); // A tick on the way has seen it.
        } else if (timed) {
            expected_[*timed] += seconds;
        }
    }
    void clearHistory() {
        world_.tracker->clearHistory();
        expected_.clear();
    }
    void restart() {
        world_.tracker->stop();
        const auto before = world_.days();
        world_.restart();
        watch();
        EXPECT_TRUE(!isSound_ || world_.days() == before);
        expected_ = booked();
    }
    std::map<QString, double> booked() {
        std::map<QString, double> result;
        for (const auto& [id, seconds] : world_.days()) {
            result[id.section(u'|', 1)] += seconds;
        }
        return result;
    }

    /// As a view does, which looks while the tracker is still at work.
    void watch() {
        const Tracker* tracker = world_.tracker.get();
        const auto look = [tracker] {
            tracker->total(Category::pending);
            tracker->sorted();
            tracker->dayTotals();
        };
        QObject::connect(tracker, &Tracker::revisionChanged, tracker, look);
        QObject::connect(tracker, &Tracker::activeKeyChanged, tracker, look);
        QObject::connect(tracker, &Tracker::activitiesChanged, tracker, look);
    }

    std::mt19937 random_;
    bool isSound_;
    World world_;
    std::map<QString, double> expected_;
};

} // namespace

/// Whatever happens in whatever order, no second is lost, and what is shown is what a plain look at
/// the records says, to the last bit.
TEST(TrackerWalkTest, NothingIsLostAndWhatIsShownIsNeverOutOfDate) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        Walk walk(seed);
        for (int step = 0; step < 300; ++step) {
            const std::size_t what = walk.step();
            walk.check();
            ASSERT_FALSE(testing::Test::HasFailure())
                << "seed " << seed << ", step " << step << ", which was " << what;
        }
    }
}
