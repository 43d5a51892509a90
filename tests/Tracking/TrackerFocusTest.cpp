#include "Fakes/World.h"

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

struct TrackerFocusTest : testing::Test {
    World world;
    Tracker& tracker = world.begin();

    bool ticking() const { return world.loop.armedCount() == 1; }
};

} // namespace

TEST_F(TrackerFocusTest, BooksEachApplicationTheTimeItWasInFront) {
    EXPECT_FALSE(ticking());
    world.front("org.Example.A");
    EXPECT_TRUE(ticking());
    const Activity& a = world.activity("app:org.Example.A");
    EXPECT_EQ(tracker.activeKey(), a.key());
    EXPECT_EQ(a.category(), Category::pending);
    EXPECT_EQ(a.name(), u"org.Example.A"_s);

    world.pass(10.25);
    const quint64 revision = tracker.revision();
    const Date entered = world.date();
    world.front("b");
    EXPECT_EQ(tracker.revision(), revision + 1);
    EXPECT_EQ(a.seconds(), 10.25);
    EXPECT_EQ(a.lastUsedAt(), entered);
    world.pass(3);
    EXPECT_EQ(world.seconds("app:b"), 2.75); // Each tick books; the last was 0.25 s ago.
    EXPECT_EQ(tracker.revision(), revision + 1 + 3);
    EXPECT_EQ(world.activity("app:b").lastUsedAt(), entered);

    world.nothingInFront();
    EXPECT_FALSE(tracker.activeKey());
    EXPECT_FALSE(ticking());
    world.pass(100);
    EXPECT_EQ(a.seconds() + world.seconds("app:b"), 13.25);
}

TEST_F(TrackerFocusTest, CountsOnlyWhileNoReasonForAbsenceHolds) {
    const struct Reason {
        NotificationCenter& center;
        Notification begin;
        Notification end;
    } reasons[] = {
        {world.workspaceCenter, Notification::WillSleep, Notification::DidWake},
        {world.workspaceCenter, Notification::ScreensDidSleep, Notification::ScreensDidWake},
        {world.workspaceCenter, Notification::SessionDidResignActive,
         Notification::SessionDidBecomeActive},
        {world.distributedCenter, Notification::ScreenIsLocked, Notification::ScreenIsUnlocked}};
    world.front("a");
    double expected = 0;
    for (const Reason& first : reasons) {
        for (const Reason& second : reasons) {
            world.pass(1.5);
            expected += 1.5;
            first.center.post(first.begin);
            EXPECT_FALSE(ticking());
            EXPECT_FALSE(world.context().hasChanges());
            world.pass(10);
            second.center.post(second.begin);
            second.center.post(second.begin);
            world.pass(10);
            first.center.post(first.end);
            EXPECT_EQ(ticking(), &first == &second);
            second.center.post(second.end);
            EXPECT_TRUE(ticking());
            EXPECT_DOUBLE_EQ(world.seconds("app:a"), expected);
        }
    }
}

TEST_F(TrackerFocusTest, StartsOnceStopsWhollyAndMayStartAgain) {
    tracker.start();
    world.front("a");
    quint64 revision = tracker.revision();
    world.workspaceCenter.post(Notification::DidActivateApplication);
    EXPECT_EQ(tracker.revision(), revision + 1); // One observer, not two.

    world.pass(2.5);
    tracker.stop();
    EXPECT_EQ(world.seconds("app:a"), 2.5);
    EXPECT_FALSE(world.context().hasChanges());
    revision = tracker.revision();
    world.front("b");
    world.pass(10);
    EXPECT_EQ(tracker.revision(), revision);
    EXPECT_EQ(world.loop.armedCount(), 0U);

    tracker.start();
    world.pass(2);
    EXPECT_EQ(world.seconds("app:b"), 2);

    // Whoever posts or fires after the tracker is gone reaches nobody.
    world.tracker.reset();
    world.front("c");
    world.pass(10);
    EXPECT_EQ(world.seconds("app:b"), 2);
}

TEST_F(TrackerFocusTest, TellsOnlyWhatChanged) {
    int keys = 0;
    int activities = 0;
    int others = 0;
    QObject::connect(&tracker, &Tracker::activeKeyChanged, [&] { ++keys; });
    QObject::connect(&tracker, &Tracker::activitiesChanged, [&] { ++activities; });
    QObject::connect(&tracker, &Tracker::browserStatusChanged, [&] { ++others; });
    QObject::connect(&tracker, &Tracker::storageErrorChanged, [&] { ++others; });
    world.front("a");
    world.pass(20);
    world.front("b");
    world.front("a");
    EXPECT_EQ(keys, 3);
    EXPECT_EQ(activities, 2);
    EXPECT_EQ(others, 0);
}

TEST_F(TrackerFocusTest, ABriefActivityIsListedForFiveMinutesAndAnOpenPanelIsToldOfTheEnd) {
    world.front("a");
    world.pass(1);
    tracker.togglePause();
    Activity& a = world.activity("app:a");
    const auto isListed = [&] {
        return !tracker.sorted().empty();
    };
    // Only where the time ends on its own does an open panel wait for it.
    for (const auto& [seconds, category, usedAgo, listed, withAll, timers] :
         {std::tuple(59.999, Category::production, 299.0, true, true, 1U),
          {1, Category::production, -1000, true, true, 1}, // By a clock that was ahead.
          {59, Category::pending, 300, false, true, 0},
          {60, Category::production, 100000, true, true, 0},
          {0, Category::production, 10, false, false, 0},
          {-1, Category::production, 10, false, false, 0},
          {30, Category::ignored, 0, false, false, 0}}) {
        SCOPED_TRACE(testing::Message() << seconds << " s, used " << usedAgo << " s ago");
        a.setSeconds(seconds);
        a.setCategory(category);
        a.setLastUsedAt(world.date() - usedAgo);
        EXPECT_EQ(isListed(), listed);
        tracker.setInspecting(true);
        EXPECT_EQ(world.loop.armedCount(), timers);
        tracker.setShowAllActivities(true);
        EXPECT_EQ(isListed(), withAll);
        EXPECT_EQ(world.loop.armedCount(), 0U);
        tracker.setShowAllActivities(false);
        EXPECT_EQ(world.loop.armedCount(), timers);
        tracker.setInspecting(false);
        EXPECT_EQ(world.loop.armedCount(), 0U);
        EXPECT_EQ(tracker.classifiableActivities(), std::vector<const Activity*>{&a});
    }
    a.setCategory(Category::pending);
    a.setLastUsedAt(std::nullopt);
    EXPECT_FALSE(isListed());
    a.setSeconds(60);
    EXPECT_TRUE(isListed());

    a.setSeconds(30);
    a.setLastUsedAt(world.date() - 200);
    tracker.setInspecting(true);
    const quint64 revision = tracker.revision();
    world.pass(99.5);
    EXPECT_EQ(tracker.revision(), revision);
    EXPECT_TRUE(isListed());
    world.pass(1);
    EXPECT_EQ(tracker.revision(), revision + 1);
    EXPECT_FALSE(isListed());
    EXPECT_EQ(world.loop.armedCount(), 0U);
}
