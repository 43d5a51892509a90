#include "Fakes/OtherProgram.h"
#include "Fakes/World.h"

using namespace orvanta;

namespace {

struct TrackerClassificationTest : testing::Test {
    World world;
    Tracker& tracker = world.begin();
    OtherProgram other{world.folder.path()};

    Activity& add(const char* key, const char* categoryValue = "pending") {
        Activity& activity = world.context().activities().append(
            QString::fromLatin1(key), QString::fromLatin1(key), Category::pending, 0);
        activity.setCategoryValue(QString::fromLatin1(categoryValue));
        return activity;
    }
    double rowsWhere(const char* condition) {
        return other.number(
            (std::string("SELECT COUNT(*) FROM ZACTIVITY WHERE ") + condition).c_str());
    }
};

using Text = std::optional<QString>;

} // namespace

TEST_F(TrackerClassificationTest, IgnoringRemembersAndResumingGivesBack) {
    struct Row {
        const char* categoryValue;
        Text previous;
        Text rememberedWhenIgnored;
        const char* resumed;
    };
    int number = 0;
    for (const Row& row : {
             Row{"production", {}, QStringLiteral("production"), "production"},
             {"consumption", QStringLiteral("production"), QStringLiteral("consumption"),
              "consumption"},
             {"neutral", {}, QStringLiteral("neutral"), "neutral"},
             {"Production", {}, QStringLiteral("Production"), "pending"},
             {"ignored", QStringLiteral("consumption"), QStringLiteral("consumption"),
              "consumption"},
             {"ignored", {}, {}, "pending"},
             {"ignored", QStringLiteral("ignored"), QStringLiteral("ignored"), "pending"},
             {"ignored", QStringLiteral("?"), QStringLiteral("?"), "pending"},
         }) {
        SCOPED_TRACE(row.categoryValue);
        Activity& activity =
            add(qPrintable(QStringLiteral("app:%1").arg(++number)), row.categoryValue);
        activity.setPreviousCategoryValue(row.previous);
        tracker.classify(activity, Category::ignored);
        EXPECT_EQ(activity.categoryValue(), QStringLiteral("ignored"));
        EXPECT_EQ(activity.previousCategoryValue(), row.rememberedWhenIgnored);
        EXPECT_FALSE(world.context().hasChanges());
        tracker.resumeMonitoring(activity);
        EXPECT_EQ(activity.categoryValue(), QLatin1StringView(row.resumed));
        EXPECT_EQ(activity.previousCategoryValue(), row.rememberedWhenIgnored);

        const quint64 revision = tracker.revision();
        tracker.resumeMonitoring(activity); // Is monitored: nothing is booked.
        EXPECT_EQ(tracker.revision(), revision);
    }
    EXPECT_EQ(rowsWhere("ZCATEGORYVALUE = 'pending' AND ZKEY LIKE 'app:_'"), 4);
}

TEST_F(TrackerClassificationTest, AButtonSelectsProductionOrConsumptionOnce) {
    for (const auto& [from, selected, to] :
         {std::tuple("pending", Category::production, "production"),
          {"?", Category::consumption, "consumption"},
          {"ignored", Category::production, "production"},
          {"production", Category::production, "production"},
          {"production", Category::pending, "production"},
          {"?", Category::pending, "?"},
          {"production", Category::ignored, "production"},
          {"production", Category::neutral, "production"}}) {
        Activity& activity = add("app:a", from);
        activity.setCategoryValue(QString::fromLatin1(from));
        const quint64 revision = tracker.revision();
        tracker.selectClassification(activity, selected);
        EXPECT_EQ(activity.categoryValue(), QLatin1StringView(to));
        EXPECT_EQ(tracker.revision() != revision, std::string(from) != to) << from;
    }
}

TEST_F(TrackerClassificationTest, WhatIsInFrontStopsAndStartsBeingTimedAtOnce) {
    world.front("a");
    world.pass(2.5);
    const Activity& a = world.activity("app:a");
    tracker.classify(a, Category::production);
    EXPECT_EQ(a.seconds(), 2.5); // Booked first.
    EXPECT_EQ(tracker.activeKey(), QStringLiteral("app:a"));
    tracker.classify(a, Category::ignored);
    EXPECT_FALSE(tracker.activeKey());
    world.pass(10);
    EXPECT_EQ(a.seconds(), 2.5);
    tracker.resumeMonitoring(a);
    EXPECT_EQ(tracker.activeKey(), QStringLiteral("app:a"));
    EXPECT_TRUE(world.browsers.reads.empty());
    world.pass(3);
    EXPECT_EQ(a.seconds(), 5.5);
    EXPECT_EQ(tracker.total(Category::production), 5.5);
}

TEST_F(TrackerClassificationTest, TheSecondsBeforeAreBookedUnderTheCategoryBefore) {
    world.front("a");
    world.pass(3.5);
    std::vector<double> pending;
    QObject::connect(&tracker, &Tracker::revisionChanged,
                     [&] { pending.push_back(tracker.total(Category::pending)); });
    tracker.classify(world.activity("app:a"), Category::production);
    EXPECT_EQ(pending, (std::vector<double>{3.5, 0}));
    EXPECT_EQ(tracker.total(Category::production), 3.5);
}

TEST_F(TrackerClassificationTest, ASiteTakenBackIsAskedForWithoutWaitingForTheTick) {
    world.browsers.known = {QStringLiteral("browser")};
    world.front("browser");
    world.browsers.answer(QStringLiteral("a.org"));
    world.pass(1.5);
    world.browsers.answer(QStringLiteral("a.org"));
    const Activity& site = world.activity("site:a.org");
    tracker.classify(site, Category::ignored);
    EXPECT_FALSE(tracker.activeKey());
    EXPECT_EQ(site.seconds(), 1.5);
    EXPECT_TRUE(world.browsers.reads.empty());

    tracker.classify(site, Category::consumption);
    ASSERT_EQ(world.browsers.reads.size(), 1U);
    world.browsers.answer(QStringLiteral("a.org"));
    EXPECT_EQ(tracker.activeKey(), QStringLiteral("site:a.org"));
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

    const auto days = world.days();
    EXPECT_EQ(days.at(QStringLiteral("2024-03-05|app:a")), 5);
    EXPECT_EQ(days.at(QStringLiteral("2024-03-05|app:b")), 2); // The running stretch, too.
    for (const Activity& activity : tracker.activities()) {
        EXPECT_EQ(activity.seconds(), 0);
        EXPECT_EQ(activity.lastUsedAt().has_value(), activity.key() == QStringLiteral("app:b"));
    }
    EXPECT_EQ(world.activity("app:a").category(), Category::ignored);
    EXPECT_EQ(world.activity("app:a").previousCategoryValue(), QStringLiteral("production"));
    EXPECT_EQ(tracker.resetDate(), world.date() + 100);
    EXPECT_EQ(world.defaults->date(QStringLiteral("resetDate")), tracker.resetDate());
    EXPECT_EQ(rowsWhere("ZSECONDS > 0"), 0);
    world.pass(3);
    EXPECT_EQ(world.seconds("app:b"), 3);
    EXPECT_EQ(world.days().at(QStringLiteral("2024-03-05|app:b")), 5);
}
