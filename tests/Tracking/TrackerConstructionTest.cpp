#include "Fakes/World.h"

using namespace orvanta;

namespace {

struct TrackerConstructionTest : testing::Test {
    World world;

    ActivityList& stored() { return world.context().activities(); }
    /// A record as an older version left it.
    Activity& leave(const char* key, const QString& category, double seconds = 0) {
        Activity& activity = stored().append(QString::fromLatin1(key), QStringLiteral("x"),
                                             Category::pending, seconds);
        activity.setCategoryValue(category);
        return activity;
    }
    void reopen() {
        world.context().save();
        world.container.reset();
        world.open();
    }
};

} // namespace

TEST_F(TrackerConstructionTest, RepairsCategoriesAndDatesThatOlderVersionsLeft) {
    leave("app:neutral", QStringLiteral("neutral"))
        .setPreviousCategoryValue(QStringLiteral("production"));
    leave("app:remembers", QStringLiteral("ignored"))
        .setPreviousCategoryValue(QStringLiteral("neutral"));
    leave("app:odd", QStringLiteral("Production"), 3);
    leave("app:used", QStringLiteral("production"), 4).setLastUsedAt(Date{5});
    reopen();
    world.systemShift = 50;
    world.construct();

    EXPECT_EQ(world.activity("app:neutral").categoryValue(), QStringLiteral("ignored"));
    EXPECT_EQ(world.activity("app:neutral").previousCategoryValue(), QStringLiteral("pending"));
    EXPECT_EQ(world.activity("app:remembers").categoryValue(), QStringLiteral("ignored"));
    EXPECT_EQ(world.activity("app:remembers").previousCategoryValue(), QStringLiteral("pending"));
    EXPECT_EQ(world.activity("app:odd").categoryValue(), QStringLiteral("Production"));
    EXPECT_EQ(world.activity("app:odd").category(), Category::pending);
    // The system's date, not the injected one.
    EXPECT_NEAR(*world.activity("app:odd").lastUsedAt() - (world.date() + 50), 0, 1e-5);
    EXPECT_EQ(world.activity("app:used").lastUsedAt(), Date{5});
    EXPECT_FALSE(world.activity("app:neutral").lastUsedAt());
    EXPECT_FALSE(world.context().hasChanges());
    EXPECT_FALSE(world.tracker->storageError());
}

TEST_F(TrackerConstructionTest, KeepsTheFinderIgnoredUntilThePersonChoosesOtherwise) {
    world.construct();
    Activity* finder = &world.activity("app:com.apple.finder");
    EXPECT_EQ(finder->name(), QStringLiteral("Finder"));
    EXPECT_EQ(finder->category(), Category::ignored);
    EXPECT_TRUE(world.defaults->boolValue(QStringLiteral("finderIgnoredV1")));

    finder->setCategory(Category::production);
    reopen();
    world.construct();
    EXPECT_EQ(world.activity("app:com.apple.finder").category(), Category::production);

    // Where the rule was never applied it is, also to an activity that is there.
    world.defaults->setBool(QStringLiteral("finderIgnoredV1"), false);
    reopen();
    world.construct();
    EXPECT_EQ(world.activity("app:com.apple.finder").category(), Category::ignored);
    EXPECT_EQ(stored().size(), 1U);
}

TEST_F(TrackerConstructionTest, SeedsTodaysRecordsFromTheSessionOnceAndNeverLowersOne) {
    leave("app:a", QStringLiteral("production"), 100);
    leave("app:b", QStringLiteral("production"), 100);
    leave("app:none", QStringLiteral("production"));
    const Day today = world.calendar.day(world.date());
    world.context().dayActivities().setSeconds(today, stored()[0].keyId(), 40);
    world.context().dayActivities().setSeconds(today, stored()[1].keyId(), 400);
    world.defaults->setDate(QStringLiteral("resetDate"), world.dateOf("2024-03-05T00:00:00"));
    reopen();
    world.construct();
    EXPECT_EQ(world.daySeconds("2024-03-05", "app:a"), 100);
    EXPECT_EQ(world.daySeconds("2024-03-05", "app:b"), 400);
    EXPECT_EQ(world.days().size(), 2U);

    world.activity("app:a").setSeconds(900);
    reopen();
    world.construct();
    EXPECT_EQ(world.daySeconds("2024-03-05", "app:a"), 100);
}

TEST_F(TrackerConstructionTest, SeedsNothingFromASessionOfAnEarlierDay) {
    leave("app:a", QStringLiteral("production"), 100);
    world.defaults->setDate(QStringLiteral("resetDate"), world.dateOf("2024-03-04T23:59:00"));
    reopen();
    world.construct();
    EXPECT_TRUE(world.days().empty());
    EXPECT_TRUE(world.defaults->boolValue(QStringLiteral("historySeededV1")));
}

TEST_F(TrackerConstructionTest, ReadsThePreferences) {
    const auto resetDate = QStringLiteral("resetDate");
    const auto chrome = QStringLiteral("chrome");
    const auto safari = QStringLiteral("safari");
    const auto disabled = QStringLiteral("disabledBrowsers");
    const std::set googleChrome{QStringLiteral("com.google.Chrome")};

    world.systemShift = 7;
    world.construct();
    EXPECT_FALSE(world.tracker->paused());
    EXPECT_TRUE(world.tracker->disabledBrowsers().empty());
    EXPECT_NEAR(world.tracker->resetDate() - (world.date() + 7), 0, 1e-5);
    EXPECT_NEAR(*world.defaults->date(resetDate) - (world.date() + 7), 0, 1e-5);

    world.defaults->setBool(chrome, false);
    world.defaults->setBool(safari, true);
    world.defaults->setBool(QStringLiteral("paused"), true);
    world.construct();
    EXPECT_TRUE(world.tracker->paused());
    EXPECT_EQ(world.tracker->disabledBrowsers(), googleChrome);
    EXPECT_FALSE(world.defaults->contains(disabled)); // Not before the set changes.

    world.tracker->setSitesEnabled(QStringLiteral("b"), false);
    world.tracker->setSitesEnabled(QStringLiteral("a"), false);
    EXPECT_EQ(world.defaults->stringArray(disabled),
              (QStringList{QStringLiteral("a"), QStringLiteral("b"),
                           QStringLiteral("com.google.Chrome")}));
    world.tracker->setSitesEnabled(QStringLiteral("com.google.Chrome"), true);
    world.construct();
    EXPECT_EQ(world.tracker->disabledBrowsers(),
              (std::set{QStringLiteral("a"), QStringLiteral("b")}));

    // A value that is no date counts as none, and is left alone.
    world.defaults->setBool(resetDate, true);
    world.construct();
    EXPECT_NEAR(world.tracker->resetDate() - (world.date() + 7), 0, 1e-5);
    EXPECT_FALSE(world.defaults->date(resetDate));
}

TEST_F(TrackerConstructionTest, LeavesSystemComponentsOutOfTheTotals) {
    leave("app:panel", QStringLiteral("production"), 1);
    leave("app:tool", QStringLiteral("production"), 2);
    leave("app:com.apple.dock.extra", QStringLiteral("production"), 4);
    leave("unknown:x", QStringLiteral("production"), 8);
    leave("app:com.google.Chrome", QStringLiteral("production"), 16);
    leave("app:browser", QStringLiteral("production"), 32);
    leave("app:a", QStringLiteral("production"), 64);
    leave("site:b", QStringLiteral("production"), 128);
    leave("app:c", QStringLiteral("no category"), 256);
    world.workspace.components = {QStringLiteral("panel")};
    world.workspace.locations[QStringLiteral("tool")] = QStringLiteral("/System/Library/Tool.app");
    world.browsers.known = {QStringLiteral("browser")};
    reopen();
    world.construct();
    EXPECT_EQ(world.tracker->total(Category::production), 64 + 128);
    EXPECT_EQ(world.tracker->total(Category::pending), 256);
    EXPECT_EQ(world.tracker->total(Category::consumption), 0);

    // One that turns out to be a component only when it comes to the front.
    world.tracker->start();
    world.workspace.components.insert(QStringLiteral("a"));
    world.front("a");
    EXPECT_EQ(world.tracker->total(Category::production), 128);
}
