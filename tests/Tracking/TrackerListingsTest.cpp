#include "Fakes/World.h"
#include "Tracking/KeyOrder.h"

using namespace orvanta;

namespace {

struct TrackerListingsTest : testing::Test {
    World world;
    Tracker& tracker = world.begin();

    Activity& add(const QString& key, double seconds, Category category = Category::pending,
                  std::optional<double> usedAgo = {}) {
        Activity& activity = world.context().activities().append(key, key, category, seconds);
        if (usedAgo) {
            activity.setLastUsedAt(world.date() - *usedAgo);
        }
        return activity;
    }
    static QStringList keys(const std::vector<const Activity*>& activities) {
        QStringList result;
        for (const Activity* activity : activities) {
            result.append(activity->key());
        }
        return result;
    }
    QStringList sorted() { return keys(tracker.sorted()); }
};

} // namespace

TEST_F(TrackerListingsTest, ABriefActivityIsListedForFiveMinutes) {
    struct Row {
        const char* what;
        double seconds;
        std::optional<double> usedAgo;
        bool listed;
        bool listedWithAll;
    };
    int number = 0;
    for (const Row& row : {Row{"brief, just used", 59, 299, true, true},
                           {"brief, used by a clock that was ahead", 1, -1000, true, true},
                           {"brief, used five minutes ago", 59, 300, false, true},
                           {"nearly a minute", 59.999, 299.999, true, true},
                           {"brief, never used", 59, {}, false, true},
                           {"a minute", 60, 100000, true, true},
                           {"a minute, never used", 60, {}, true, true},
                           {"nothing", 0, 10, false, false},
                           {"less than nothing", -1, 10, false, false}}) {
        const QString key = QStringLiteral("app:%1").arg(++number);
        add(key, row.seconds, Category::pending, row.usedAgo);
        EXPECT_EQ(sorted().contains(key), row.listed) << row.what;
        tracker.setShowAllActivities(true);
        EXPECT_EQ(sorted().contains(key), row.listedWithAll) << row.what;
        tracker.setShowAllActivities(false);
        EXPECT_TRUE(keys(tracker.classifiableActivities()).contains(key)) << row.what;
    }
}

TEST_F(TrackerListingsTest, TheTimedOneStandsFirstFromItsFirstMoment) {
    add(QStringLiteral("app:long"), 1000);
    add(QStringLiteral("app:b"), 100);
    add(QStringLiteral("app:a"), 100);
    world.front("new");
    const QStringList expected{QStringLiteral("app:new"), QStringLiteral("app:long"),
                               QStringLiteral("app:a"), QStringLiteral("app:b")};
    EXPECT_EQ(sorted(), expected);
    tracker.setShowAllActivities(true);
    EXPECT_EQ(sorted(), expected);
    world.nothingInFront(); // After no time at all it is not listed.
    EXPECT_EQ(sorted(), expected.mid(1));
    world.front("b");
    world.pass(901); // Overtakes "long" on the way.
    EXPECT_EQ(sorted(), (QStringList{expected[3], expected[1], expected[2]}));
    world.nothingInFront();
    EXPECT_EQ(sorted(), (QStringList{expected[3], expected[1], expected[2]}));
}

TEST_F(TrackerListingsTest, WhatCannotBeListedIsInNoListAndNoTotal) {
    world.browsers.known = {QStringLiteral("org.browser")};
    for (const char* key : {"unknown:x", "app:com.apple.dock", "app:com.apple.Safari",
                            "app:com.google.Chrome", "app:org.browser", "app:com.apple.finder.x"}) {
        add(QString::fromLatin1(key), 100, Category::production);
    }
    EXPECT_EQ(tracker.total(Category::production), 0);
    EXPECT_EQ(sorted(), QStringList());
    EXPECT_TRUE(tracker.classifiableActivities().empty());
    EXPECT_TRUE(tracker.unmonitored().empty()); // "app:com.apple.finder" is ignored, of course.

    // Nor is what turns out to be a part of the desktop, as soon as it is seen.
    add(QStringLiteral("app:panel"), 100, Category::production);
    EXPECT_EQ(tracker.total(Category::production), 100);
    EXPECT_EQ(sorted().size(), 1);
    world.browsers.known = {QStringLiteral("browser")};
    world.front("browser");
    world.workspace.components = {QStringLiteral("panel")};
    world.workspace.front = RunningApplication{QStringLiteral("panel"), {}, {}, {}};
    world.browsers.answer(QStringLiteral("a.org")); // Looks at what is in front.
    EXPECT_EQ(tracker.total(Category::production), 0);
    EXPECT_EQ(sorted(), QStringList());
    EXPECT_EQ(tracker.dayTotals().size(), 0U);
}

TEST_F(TrackerListingsTest, CategoriesDecideWhatIsCountedWhere) {
    add(QStringLiteral("site:p"), 100, Category::production);
    add(QStringLiteral("site:c"), 60.25, Category::consumption);
    add(QStringLiteral("site:i2"), 0, Category::ignored);
    add(QStringLiteral("site:i3"), 300, Category::ignored);
    add(QStringLiteral("site:i1"), 0, Category::ignored);
    add(QStringLiteral("site:n"), 70, Category::neutral);
    EXPECT_EQ(tracker.total(Category::pending), 0);
    add(QStringLiteral("site:?"), 80, Category::pending).setCategoryValue(QStringLiteral("?"));
    const std::array expected{100.0, 60.25, 80.0, 300.0, 70.0};
    for (const Category category : allCases) {
        EXPECT_EQ(tracker.total(category), expected[static_cast<std::size_t>(category)]);
    }
    EXPECT_EQ(sorted(), (QStringList{QStringLiteral("site:p"), QStringLiteral("site:?"),
                                     QStringLiteral("site:n"), QStringLiteral("site:c")}));
    EXPECT_EQ(keys(tracker.unmonitored()),
              (QStringList{QStringLiteral("site:i3"), QStringLiteral("site:i1"),
                           QStringLiteral("site:i2")}));
}

TEST_F(TrackerListingsTest, ABriefActivityLeavesTheOpenPanelWhenItsTimeIsOver) {
    world.front("a");
    world.pass(30);
    tracker.togglePause();
    tracker.setInspecting(true);
    world.pass(299.5);
    EXPECT_EQ(sorted(), QStringList{QStringLiteral("app:a")});
    std::vector<QStringList> seen;
    QObject::connect(&tracker, &Tracker::revisionChanged, [&] { seen.push_back(sorted()); });
    world.pass(1000);
    EXPECT_EQ(seen, std::vector<QStringList>{{}});
}

TEST(KeyOrderTest, IsThatOfTheComposedCharacters) {
    const auto sign = [](std::weak_ordering order) {
        return order < 0 ? -1 : order > 0 ? 1 : 0;
    };
    const QString eAcute = QStringLiteral("\u00e9");
    const QString eAndAccent = QStringLiteral("e\u0301");
    const QString fox = QStringLiteral("\U0001F98A");
    const QString fullWidth = QStringLiteral("\uFF21");
    for (const auto& [a, b, expected] : {
             std::tuple(QString(), QStringLiteral("a"), -1),
             {QStringLiteral("app:B"), QStringLiteral("app:a"), -1},
             {QStringLiteral("app:a"), QStringLiteral("app:a.b"), -1},
             {QStringLiteral("app:a"), QStringLiteral("app:a"), 0},
             {QStringLiteral("z"), eAcute, -1},
             {eAcute, eAndAccent, 0},
             {QStringLiteral("f"), eAndAccent, -1},
             {eAcute + QStringLiteral("a"), eAndAccent + QStringLiteral("b"), -1},
             {fullWidth, fox, -1},
             {QStringLiteral("\U00010000"), QStringLiteral("\uE000"), 1},
             {QStringLiteral("\u212B"), QStringLiteral("\u00C5"), 0}, // Ångström.
         }) {
        EXPECT_EQ(sign(compareKeys(a, b)), expected) << qPrintable(a) << " " << qPrintable(b);
        EXPECT_EQ(sign(compareKeys(b, a)), -expected) << qPrintable(b) << " " << qPrintable(a);
    }
}
