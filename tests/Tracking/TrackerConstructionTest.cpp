#include "Fakes/World.h"

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

struct TrackerConstructionTest : testing::Test {
    World world;

    void saveAndRestart() {
        world.context().save();
        world.restart();
    }
};

} // namespace

TEST_F(TrackerConstructionTest, RepairsCategoriesAndDatesThatOlderVersionsLeft) {
    world.add(u"app:neutral"_s, u"neutral"_s).setPreviousCategoryValue(u"production"_s);
    world.add(u"app:remembers"_s, u"ignored"_s).setPreviousCategoryValue(u"neutral"_s);
    world.add(u"app:odd"_s, u"Production"_s, 3);
    world.add(u"app:used"_s, u"production"_s, 4).setLastUsedAt(Date{5});
    world.systemShift = 50;
    saveAndRestart();
    for (const char* key : {"app:neutral", "app:remembers"}) {
        EXPECT_EQ(world.activity(key).categoryValue(), u"ignored"_s);
        EXPECT_EQ(world.activity(key).previousCategoryValue(), u"pending"_s);
        EXPECT_FALSE(world.activity(key).lastUsedAt());
    }
    EXPECT_EQ(world.activity("app:odd").categoryValue(), u"Production"_s);
    // The system's date, not the injected one.
    EXPECT_NEAR(*world.activity("app:odd").lastUsedAt() - (world.date() + 50), 0, 1e-5);
    EXPECT_EQ(world.activity("app:used").lastUsedAt(), Date{5});
    EXPECT_FALSE(world.context().hasChanges());
    EXPECT_FALSE(world.tracker->storageError());
}

TEST_F(TrackerConstructionTest, KeepsTheFinderIgnoredUntilThePersonChoosesOtherwise) {
    world.begin();
    const char* finder = "app:com.apple.finder";
    EXPECT_EQ(world.activity(finder).name(), u"Finder"_s);
    EXPECT_EQ(world.activity(finder).category(), Category::ignored);
    EXPECT_TRUE(world.defaults->boolValue(u"finderIgnoredV1"_s));
    world.activity(finder).setCategory(Category::production);
    saveAndRestart();
    EXPECT_EQ(world.activity(finder).category(), Category::production);
    // Where the rule was never applied it is, also to an activity that is there.
    world.defaults->setBool(u"finderIgnoredV1"_s, false);
    saveAndRestart();
    EXPECT_EQ(world.activity(finder).category(), Category::ignored);
    EXPECT_EQ(world.context().activities().size(), 1U);
}

TEST_F(TrackerConstructionTest, SeedsTodaysRecordsFromTodaysSessionOnceAndNeverLowersOne) {
    const auto historySeeded = u"historySeededV1"_s;
    world.add(u"app:none"_s, u"production"_s);
    const auto leave = [this](const QString& key, double inSession, double today) {
        const Activity& activity = world.add(key, u"production"_s, inSession);
        if (today > 0) {
            world.record("2024-03-05", activity, today);
        }
    };
    leave(u"app:a"_s, 100, 40);
    leave(u"app:b"_s, 100, 400);
    leave(u"app:new"_s, 100, 0);
    world.defaults->setDate(u"resetDate"_s, world.dateOf("2024-03-04T23:59:59"));
    const auto asLeft = world.days();
    saveAndRestart();
    EXPECT_EQ(world.days(), asLeft);
    EXPECT_TRUE(world.defaults->boolValue(historySeeded));

    world.defaults->setBool(historySeeded, false);
    world.defaults->setDate(u"resetDate"_s, world.dateOf("2024-03-05T00:00:00"));
    for (const char* key : {"app:a", "app:b", "app:new"}) {
        world.activity(key).setSeconds(100);
    }
    saveAndRestart();
    const std::map<QString, double> seeded{
        {u"2024-03-05|app:a"_s, 100}, {u"2024-03-05|app:b"_s, 400}, {u"2024-03-05|app:new"_s, 100}};
    EXPECT_EQ(world.days(), seeded);
    world.activity("app:a").setSeconds(900);
    saveAndRestart();
    EXPECT_EQ(world.days(), seeded);
}

TEST_F(TrackerConstructionTest, ReadsThePreferences) {
    const auto resetDate = u"resetDate"_s;
    const auto disabled = u"disabledBrowsers"_s;
    const auto chrome = u"com.google.Chrome"_s;
    world.systemShift = 7;
    world.construct();
    EXPECT_FALSE(world.tracker->paused());
    EXPECT_TRUE(world.tracker->disabledBrowsers().empty());
    EXPECT_NEAR(world.tracker->resetDate() - (world.date() + 7), 0, 1e-5);
    EXPECT_NEAR(*world.defaults->date(resetDate) - (world.date() + 7), 0, 1e-5);

    world.defaults->setBool(u"chrome"_s, false);
    world.defaults->setBool(u"safari"_s, true);
    world.defaults->setBool(u"paused"_s, true);
    world.construct();
    EXPECT_TRUE(world.tracker->paused());
    EXPECT_EQ(world.tracker->disabledBrowsers(), std::set{chrome});
    EXPECT_FALSE(world.defaults->contains(disabled)); // Not before the set changes.

    world.tracker->setSitesEnabled(u"b"_s, false);
    world.tracker->setSitesEnabled(u"a"_s, false);
    EXPECT_EQ(world.defaults->stringArray(disabled), (QStringList{u"a"_s, u"b"_s, chrome}));
    world.tracker->setSitesEnabled(chrome, true);
    world.construct();
    EXPECT_EQ(world.tracker->disabledBrowsers(), (std::set{u"a"_s, u"b"_s}));

    // A value that is no date counts as none, and is left alone.
    world.defaults->setBool(resetDate, true);
    world.construct();
    EXPECT_NEAR(world.tracker->resetDate() - (world.date() + 7), 0, 1e-5);
    EXPECT_FALSE(world.defaults->date(resetDate));
}

TEST_F(TrackerConstructionTest, LeavesSystemComponentsAndBrowsersOutOfTheTotals) {
    double seconds = 1;
    for (const QString& key :
         {u"app:panel"_s, u"app:tool"_s, u"app:com.apple.dock.extra"_s, u"unknown:x"_s,
          u"app:com.google.Chrome"_s, u"app:com.apple.Safari"_s, u"app:browser"_s, u"app:a"_s,
          u"site:b"_s}) {
        world.add(key, u"production"_s, seconds);
        seconds *= 2;
    }
    world.workspace.components = {u"panel"_s};
    world.workspace.locations[u"tool"_s] = u"/System/Library/Tool.app"_s;
    world.browsers.known = {u"browser"_s};
    saveAndRestart();
    EXPECT_EQ(world.tracker->total(Category::production), 128 + 256);

    // One that turns out to be a component only when it is in front, and nobody has told.
    world.front("browser");
    world.workspace.components.insert(u"a"_s);
    world.workspace.front = RunningApplication{u"a"_s, {}, {}, {}};
    world.browsers.answer(u"a.org"_s); // Looks at what is in front.
    EXPECT_EQ(world.tracker->total(Category::production), 256);
    EXPECT_EQ(world.tracker->sorted(), std::vector<const Activity*>{&world.activity("site:b")});
}
