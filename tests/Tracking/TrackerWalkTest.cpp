#include "Fakes/World.h"
#include "Tracking/KeyOrder.h"

#include <algorithm>
#include <random>

using namespace orvanta;

namespace {

/// What the listings and the history are, said plainly and computed anew at every look.
class Plain {
public:
    explicit Plain(World& world)
        : world_(world)
        , tracker_(*world.tracker) {}

    bool isEligible(const Activity& activity) const {
        const QString& key = activity.key();
        return !key.startsWith(QStringLiteral("unknown:")) &&
               key != QStringLiteral("app:browser") &&
               key != QStringLiteral("app:com.apple.finder") &&
               !(key.startsWith(QStringLiteral("app:")) &&
                 world_.workspace.seenComponents.contains(key.mid(4)));
    }
    static std::optional<Category> category(const Activity& activity) {
        return categoryFromRawValue(activity.categoryValue());
    }

    double total(Category wanted) const {
        double sum = 0;
        for (const Activity& activity : tracker_.activities()) {
            if (isEligible(activity) && category(activity).value_or(Category::pending) == wanted) {
                sum += activity.seconds();
            }
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
            const Activity* first = *active;
            rows.erase(active);
            rows.insert(rows.begin(), first);
        }
        return rows;
    }

    std::map<QString, DayTotals> dayTotals() const {
        std::map<QString, DayTotals> result;
        const DayActivityList& records = world_.context().dayActivities();
        for (std::size_t i = 0; i < records.dayCount(); ++i) {
            const auto day = records.oneDay(i);
            for (std::size_t j = 0; j < day.keys.size(); ++j) {
                const Activity* activity =
                    world_.context().activities().find(world_.context().keys().text(day.keys[j]));
                if (activity == nullptr || !isEligible(*activity)) {
                    continue;
                }
                const Category counted = category(*activity).value_or(Category::pending);
                if (counted == Category::production) {
                    result[day.day.text()].production += day.seconds[j];
                } else if (counted == Category::consumption) {
                    result[day.day.text()].consumption += day.seconds[j];
                } else if (counted == Category::pending) {
                    result[day.day.text()].pending += day.seconds[j];
                }
            }
        }
        return result;
    }

    std::vector<std::vector<HistoryDay>> historyWeeks(int weeks) const {
        const Calendar& calendar = world_.calendar;
        const Date today = calendar.startOfDay(world_.date());
        const int offset = (calendar.weekday(today) - calendar.firstWeekday() + 7) % 7;
        const auto totals = dayTotals();
        std::vector<std::vector<HistoryDay>> rows(static_cast<std::size_t>(weeks));
        for (int back = offset + 7 * (weeks - 1); back >= 0; --back) {
            const Date date = *calendar.addingDays(today, -back);
            const QString id = DayActivity::day(date, calendar);
            const auto found = totals.find(id);
            rows[static_cast<std::size_t>(weeks - 1 - (back + 6 - offset) / 7)].push_back(
                {id, date, found == totals.end() ? DayTotals() : found->second});
        }
        return rows;
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
        , world_("2024-03-05T23:40:00") {
        world_.calendar = Calendar(QTimeZone("America/Sao_Paulo"), seed % 2 == 0 ? 1 : 2);
        world_.browsers.known = {QStringLiteral("browser")};
        // What a store can hold, also a damaged one: keys twice, which then can never be saved, and
        // categories of no meaning.
        std::vector<const char*> keys{"app:a",     "site:x.org", "unknown:?", "app:browser",
                                      "app:part0", "app:part1",  "app:old"};
        if (seed % 3 == 0) {
            keys.insert(keys.end(), {"site:x.org", "app:part0"});
        }
        for (const char* key : keys) {
            Activity& activity = world_.context().activities().append(
                QString::fromLatin1(key), QString(), anyCategory(), upTo(4) * 33.1);
            if (upTo(3) == 0) {
                activity.setCategoryValue(QStringLiteral("?"));
            }
            for (int i = 0; i < 5; ++i) {
                const Day day{2024, static_cast<std::uint8_t>(1 + upTo(2)),
                              static_cast<std::uint8_t>(1 + upTo(28))};
                world_.context().dayActivities().add(day, activity.keyId(), upTo(100) * 0.7 + 0.1);
            }
        }
        world_.begin();
        watch();
    }

    /// Does one thing, and says which.
    int step() {
        Tracker& tracker = *world_.tracker;
        const int what = upTo(18);
        switch (what) {
        case 0:
            tracker.classify(anyActivity(), anyCategory());
            break;
        case 1:
            tracker.selectClassification(anyActivity(), anyCategory());
            break;
        case 2:
            tracker.resumeMonitoring(anyActivity());
            break;
        case 3:
            tracker.setShowAllActivities(upTo(2) == 0);
            break;
        case 4:
            tracker.togglePause();
            break;
        case 5:
            tracker.setInspecting(upTo(2) == 0);
            break;
        case 6:
            if (upTo(8) == 0) {
                tracker.reset();
            } else if (upTo(8) == 0) {
                tracker.clearHistory();
            } else if (upTo(8) == 0) {
                tracker.stop();
                world_.restart();
                watch();
            }
            break;
        case 7:
            world_.stall(upTo(8) == 0 ? upTo(100000) : upTo(400));
            tracker.refreshFocus();
            break;
        case 8: // A part of the desktop comes to the front, and nobody is told.
            bringToFront(anyPart());
            break;
        case 9:
            world_.front(qPrintable(anyPart()));
            break;
        case 10:
            world_.nothingInFront();
            break;
        case 11:
            world_.front(qPrintable(QStringLiteral("new%1").arg(upTo(30))));
            break;
        case 12:
            world_.front("browser");
            break;
        case 13:
        case 14:
            if (!world_.browsers.reads.empty()) {
                world_.browsers.answer(upTo(2) == 0 ? QStringLiteral("x.org")
                                                    : QStringLiteral("\u00e9.org"));
            }
            break;
        case 15:
            world_.front(upTo(2) == 0 ? "a" : "old");
            break;
        default: // Whole seconds: within one, a listing may be the one before.
            world_.pass(upTo(90));
        }
        return what;
    }

    void check() {
        const Tracker& tracker = *world_.tracker;
        const Plain plain(world_);
        for (const Category category : allCases) {
            EXPECT_EQ(tracker.total(category), plain.total(category));
        }
        EXPECT_EQ(tracker.sorted(), plain.sorted());
        EXPECT_EQ(tracker.classifiableActivities(), plain.classifiable());
        EXPECT_EQ(tracker.unmonitored(), plain.unmonitored());
        std::map<QString, DayTotals> found;
        for (const auto& [day, totals] : tracker.dayTotals()) {
            found[day.text()] = totals;
        }
        const auto expected = plain.dayTotals();
        EXPECT_EQ(found, expected);
        EXPECT_EQ(tracker.historyWeeks(13), plain.historyWeeks(13));
        EXPECT_EQ(tracker.historyDayCount(), std::ranges::count_if(expected, [](const auto& day) {
                      const DayTotals& totals = day.second;
                      return totals.production + totals.consumption + totals.pending > 0;
                  }));
        world_.checkInvariants(false);
    }

private:
    int upTo(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
    Category anyCategory() { return allCases[static_cast<std::size_t>(upTo(allCases.size()))]; }
    const Activity& anyActivity() {
        const ActivityList& all = world_.tracker->activities();
        return all[static_cast<std::size_t>(upTo(static_cast<int>(all.size())))];
    }
    QString anyPart() {
        const QString id = QStringLiteral("part%1").arg(upTo(3));
        world_.workspace.components.insert(id);
        return id;
    }
    void bringToFront(const QString& id) {
        world_.workspace.front = RunningApplication{id, {}, {}, {}};
    }

    /// As a view does, which looks while the tracker is still at work.
    void watch() {
        const auto look = [this] {
            const Tracker& tracker = *world_.tracker;
            tracker.total(Category::pending);
            tracker.sorted();
            tracker.dayTotals();
        };
        const Tracker* tracker = world_.tracker.get();
        QObject::connect(tracker, &Tracker::revisionChanged, tracker, look);
        QObject::connect(tracker, &Tracker::activeKeyChanged, tracker, look);
        QObject::connect(tracker, &Tracker::activitiesChanged, tracker, look);
    }

    std::mt19937 random_;
    World world_;
};

} // namespace

/// Whatever happens in whatever order, what is shown is what a plain look at the records says, to
/// the last bit.
TEST(TrackerWalkTest, WhatIsShownIsNeverOutOfDate) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        Walk walk(seed);
        for (int step = 0; step < 300; ++step) {
            const int what = walk.step();
            walk.check();
            ASSERT_FALSE(testing::Test::HasFailure())
                << "seed " << seed << ", step " << step << ", which was " << what;
        }
    }
}
