#include "Fakes/World.h"

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

struct TrackerClassificationTest : testing::Test {
    World world;
    Tracker& tracker = world.begin();
};

} // namespace

TEST_F(TrackerClassificationTest, IgnoringRemembersAndResumingGivesBack) {
    using Text = std::optional<QString>;
    int number = 0;
    for (const auto& [category, previous, remembered, resumed] :
         {std::tuple(u"production"_s, Text(), Text(u"production"_s), u"production"_s),
          {u"consumption"_s, u"production"_s, u"consumption"_s, u"consumption"_s},
          {u"Production"_s, {}, u"Production"_s, u"pending"_s},
          {u"ignored"_s, u"consumption"_s, u"consumption"_s, u"consumption"_s},
          {u"ignored"_s, {}, {}, u"pending"_s},
          {u"ignored"_s, u"ignored"_s, u"ignored"_s, u"pending"_s},
          {u"ignored"_s, u"?"_s, u"?"_s, u"pending"_s}}) {
        Activity& activity = world.add(u"app:%1"_s.arg(++number), category);
        activity.setPreviousCategoryValue(previous);
        tracker.classify(activity, Category::ignored);
        EXPECT_EQ(activity.categoryValue(), u"ignored"_s);
        EXPECT_EQ(activity.previousCategoryValue(), remembered) << number;
        EXPECT_FALSE(world.context().hasChanges());
        tracker.resumeMonitoring(activity);
        EXPECT_EQ(activity.categoryValue(), resumed) << number;
        EXPECT_EQ(activity.previousCategoryValue(), remembered);

        const quint64 revision = tracker.revision();
        tracker.resumeMonitoring(activity); // Is monitored: nothing is booked.
        EXPECT_EQ(tracker.revision(), revision);
    }
}

TEST_F(TrackerClassificationTest, AButtonSelectsProductionOrConsumptionOnce) {
    Activity& activity = world.add(u"app:a"_s, u""_s);
    for (const auto& [from, selected, to] :
         {std::tuple(u"?"_s, Category::consumption, "consumption"_L1),
          {u"ignored"_s, Category::production, "production"_L1},
          {u"production"_s, Category::production, ""_L1},
          {u"production"_s, Category::pending, ""_L1},
          {u"production"_s, Category::ignored, ""_L1},
          {u"production"_s, Category::neutral, ""_L1}}) {
        activity.setCategoryValue(from);
        const quint64 revision = tracker.revision();
        tracker.selectClassification(activity, selected);
        EXPECT_EQ(activity.categoryValue(), to.isEmpty() ? from : to);
        EXPECT_EQ(tracker.revision() == revision, to.isEmpty());
    }
}

TEST_F(TrackerClassificationTest, WhatIsInFrontIsBookedThenStopsAndStartsBeingTimedAtOnce) {
    world.front("a");
    world.pass(2.5);
    const Activity& a = world.activity("app:a");
    std::vector<double> pending;
    const auto look = QObject::connect(&tracker, &Tracker::revisionChanged, [&] {
        pending.push_back(tracker.total(Category::pending));
    });
    tracker.classify(a, Category::production);
    EXPECT_EQ(pending, (std::vector<double>{2.5, 0})); // Booked under what it was timed for.
    EXPECT_EQ(tracker.activeKey(), u"app:a"_s);
    tracker.classify(a, Category::ignored);
    EXPECT_FALSE(tracker.activeKey());
    world.pass(10);
    world.front("b");
    world.front("a"); // Ignored before it came.
    world.pass(10);
    EXPECT_EQ(a.seconds(), 2.5);
    tracker.resumeMonitoring(a);
    EXPECT_EQ(tracker.activeKey(), u"app:a"_s);
    EXPECT_TRUE(world.browsers.reads.empty());
    world.pass(3);
    EXPECT_EQ(tracker.total(Category::production), 5.5);
    QObject::disconnect(look);
}

TEST_F(TrackerClassificationTest, ASiteTakenBackIsAskedForWithoutWaitingForTheTick) {
    world.browsers.known = {u"browser"_s};
    world.front("browser");
    world.browsers.answer(u"a.org"_s);
    world.pass(1.5);
    world.browsers.answer(u"a.org"_s);
    const Activity& site = world.activity("site:a.org");
    tracker.classify(site, Category::ignored);
    EXPECT_FALSE(tracker.activeKey());
    EXPECT_EQ(site.seconds(), 1.5);
    EXPECT_TRUE(world.browsers.reads.empty());

    tracker.classify(site, Category::consumption);
    ASSERT_EQ(world.browsers.reads.size(), 1U);
    world.browsers.answer(u"a.org"_s);
    EXPECT_EQ(tracker.activeKey(), u"site:a.org"_s);
    tracker.classify(site, Category::production); // Was monitored before.
    EXPECT_TRUE(world.browsers.reads.empty());
}

TEST_F(TrackerClassificationTest, AResetBeginsTheSessionAtZeroAndKeepsEverythingElse) {
    world.front("a");
    world.pass(5);
    tracker.classify(world.activity("app:a"), Category::production);
    tracker.classify(world.activity("app:a"), Category::ignored);
    world.front("b");
    world.pass(2);
    world.systemShift = 100; // The moment is the system clock's.
    tracker.reset();
    EXPECT_EQ(world.daySeconds("2024-03-05", "app:a"), 5);
    EXPECT_EQ(world.daySeconds("2024-03-05", "app:b"), 2); // The running stretch, too.
    for (const Activity& activity : tracker.activities()) {
        EXPECT_EQ(activity.seconds(), 0);
        EXPECT_EQ(activity.lastUsedAt().has_value(), activity.key() == u"app:b"_s);
    }
    EXPECT_EQ(world.activity("app:a").category(), Category::ignored);
    EXPECT_EQ(world.activity("app:a").previousCategoryValue(), u"production"_s);
    EXPECT_EQ(tracker.resetDate(), world.date() + 100);
    EXPECT_EQ(world.defaults->date(u"resetDate"_s), tracker.resetDate());
    EXPECT_EQ(Database(world.storePath()).integer("SELECT MAX(ZSECONDS) FROM ZACTIVITY"), 0);
    world.pass(3);
    EXPECT_EQ(world.seconds("app:b"), 3);
    EXPECT_EQ(world.daySeconds("2024-03-05", "app:b"), 5);
}
