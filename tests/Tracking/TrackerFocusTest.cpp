#include "Fakes/World.h"

using namespace orvanta;

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
    EXPECT_EQ(tracker.activeKey(), QStringLiteral("app:org.Example.A"));
    EXPECT_EQ(world.activity("app:org.Example.A").category(), Category::pending);
    EXPECT_EQ(world.activity("app:org.Example.A").name(), QStringLiteral("org.Example.A"));

    world.pass(10.25);
    const quint64 revision = tracker.revision();
    world.front("b");
    EXPECT_EQ(tracker.revision(), revision + 1);
    EXPECT_EQ(world.seconds("app:org.Example.A"), 10.25);
    EXPECT_EQ(world.activity("app:org.Example.A").lastUsedAt(), world.date());
    EXPECT_EQ(world.activity("app:b").lastUsedAt(), world.date());
    EXPECT_EQ(world.seconds("app:b"), 0);
    EXPECT_FALSE(world.context().hasChanges()); // A change of focus is saved at once.

    const Date entered = world.date();
    world.pass(3);
    EXPECT_EQ(world.seconds("app:b"), 2.75); // Each tick books; the last was 0.25 s ago.
    EXPECT_EQ(tracker.revision(), revision + 1 + 3);
    EXPECT_EQ(world.activity("app:b").lastUsedAt(), entered);

    world.nothingInFront();
    EXPECT_FALSE(tracker.activeKey());
    EXPECT_FALSE(ticking());
    world.pass(100);
    EXPECT_EQ(world.seconds("app:org.Example.A") + world.seconds("app:b"), 13.25);
    world.checkInvariants();
}

TEST_F(TrackerFocusTest, TimesNeitherTheDesktopItselfNorWhatIsIgnored) {
    world.workspace.components = {QStringLiteral("panel")};
    world.front("a");
    world.pass(2);
    world.front("panel");
    world.pass(5);
    EXPECT_EQ(world.find("app:panel"), nullptr);
    EXPECT_EQ(world.seconds("app:a"), 2);

    world.front("b");
    world.pass(3);
    world.activity("app:b").setCategory(Category::ignored);
    world.pass(4);
    // The second until the next look still counts for it, but under no focus.
    EXPECT_EQ(world.seconds("app:b"), 4);
    EXPECT_FALSE(tracker.activeKey());

    world.front("a");
    world.pass(1);
    world.front("b");
    world.pass(9);
    EXPECT_EQ(world.seconds("app:a"), 3);
    EXPECT_EQ(world.seconds("app:b"), 4);
    world.checkInvariants();
}

TEST_F(TrackerFocusTest, OrvantaItselfCountsForWhatIsBehindItsPanelOnly) {
    world.front("a");
    world.pass(1);
    tracker.setInspecting(true);
    world.front("com.brindlework.orvanta");
    world.pass(10);
    EXPECT_EQ(world.seconds("app:a"), 11);
    EXPECT_EQ(tracker.activeKey(), QStringLiteral("app:a"));

    tracker.setInspecting(false);
    world.pass(10);
    EXPECT_EQ(world.seconds("app:a"), 11);
    EXPECT_FALSE(tracker.activeKey());
    EXPECT_EQ(world.find("app:com.brindlework.orvanta"), nullptr);
}

TEST_F(TrackerFocusTest, CountsOnlyWhileNoReasonForAbsenceHolds) {
    struct Reason {
        NotificationCenter& center;
        Notification begin;
        Notification end;
    };
    const std::vector<Reason> reasons{
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

TEST_F(TrackerFocusTest, PausingBooksTheLastStretchAndIsRemembered) {
    world.front("a");
    world.pass(2.5);
    tracker.togglePause();
    EXPECT_TRUE(tracker.paused());
    EXPECT_TRUE(world.defaults->boolValue(QStringLiteral("paused")));
    EXPECT_EQ(world.seconds("app:a"), 2.5);
    EXPECT_FALSE(world.context().hasChanges());
    EXPECT_FALSE(ticking());
    world.pass(60);
    world.restart();
    world.pass(60);
    EXPECT_EQ(world.seconds("app:a"), 2.5);

    world.tracker->togglePause();
    world.pass(1);
    EXPECT_EQ(world.seconds("app:a"), 3.5);
    EXPECT_FALSE(world.defaults->boolValue(QStringLiteral("paused")));
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
    int statuses = 0;
    int errors = 0;
    QObject::connect(&tracker, &Tracker::activeKeyChanged, [&] { ++keys; });
    QObject::connect(&tracker, &Tracker::activitiesChanged, [&] { ++activities; });
    QObject::connect(&tracker, &Tracker::browserStatusChanged, [&] { ++statuses; });
    QObject::connect(&tracker, &Tracker::storageErrorChanged, [&] { ++errors; });
    world.front("a");
    world.pass(20);
    world.front("b");
    world.front("a");
    EXPECT_EQ(keys, 3);
    EXPECT_EQ(activities, 2);
    EXPECT_EQ(statuses + errors, 0);
}

TEST_F(TrackerFocusTest, WhileNothingIsTimedAnOpenPanelIsToldWhenABriefActivityExpires) {
    world.front("a");
    world.pass(30);
    tracker.togglePause();
    world.activity("app:a").setLastUsedAt(world.date() - 200);
    EXPECT_EQ(world.loop.armedCount(), 0U);
    tracker.setInspecting(true);
    EXPECT_EQ(world.loop.armedCount(), 1U);

    const quint64 revision = tracker.revision();
    world.pass(99.5);
    EXPECT_EQ(tracker.revision(), revision);
    world.pass(1);
    EXPECT_EQ(tracker.revision(), revision + 1);
    EXPECT_EQ(world.loop.armedCount(), 0U);

    // Not for one that is listed anyway, has no time, is ignored, or was never used.
    struct Row {
        double seconds;
        Category category;
        double age;
        std::size_t timers;
    };
    for (const Row& row : {Row{59.9, Category::production, 299, 1},
                           {60, Category::production, 0, 0},
                           {0, Category::production, 0, 0},
                           {30, Category::ignored, 0, 0},
                           {30, Category::production, 300, 0}}) {
        world.activity("app:a").setSeconds(row.seconds);
        world.activity("app:a").setCategory(row.category);
        world.activity("app:a").setLastUsedAt(world.date() - row.age);
        tracker.setInspecting(true);
        EXPECT_EQ(world.loop.armedCount(), row.timers) << row.seconds << ' ' << row.age;
    }
    world.activity("app:a").setSeconds(30);
    world.activity("app:a").setLastUsedAt(world.date());
    tracker.setShowAllActivities(true);
    EXPECT_EQ(world.loop.armedCount(), 0U);
    tracker.setShowAllActivities(false);
    EXPECT_EQ(world.loop.armedCount(), 1U);
    tracker.setInspecting(false);
    EXPECT_EQ(world.loop.armedCount(), 0U);
}
