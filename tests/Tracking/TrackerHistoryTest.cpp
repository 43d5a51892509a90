#include "Fakes/OtherProgram.h"
#include "Fakes/World.h"

#include <limits>

using namespace orvanta;

namespace {

/// A world with records of its own making.
struct TrackerHistoryTest : testing::Test {
    TrackerHistoryTest() { world.begin(); }

    World world;
    OtherProgram other{world.folder.path()};

    Activity& add(const char* key, Category category) {
        return world.context().activities().append(QString::fromLatin1(key), QString(), category,
                                                   0);
    }
    void record(const char* day, const Activity& activity, double seconds) {
        world.context().dayActivities().add(*Day::fromText(day), activity.keyId(), seconds);
    }
    std::map<QString, DayTotals> totals() {
        std::map<QString, DayTotals> result;
        for (const auto& [day, totals] : world.tracker->dayTotals()) {
            result[day.text()] = totals;
        }
        return result;
    }
};

} // namespace

TEST_F(TrackerHistoryTest, ADayHasTheTimeOfWhatIsCountedByItsPresentCategory) {
    Activity& a = add("site:a", Category::production);
    Activity& b = add("site:b", Category::consumption);
    Activity& strange = add("site:c", Category::pending);
    strange.setCategoryValue(QStringLiteral("?"));
    Activity& ignored = add("site:d", Category::ignored);
    Activity& nothing = add("site:e", Category::pending);
    record("2024-03-04", a, 10);
    record("2024-03-04", b, 20.5);
    record("2024-03-04", strange, 3);
    record("2024-03-04", ignored, 100);
    record("2024-03-01", b, 7);
    record("2024-03-02", ignored, 100);
    record("2024-03-02", add("site:n", Category::neutral), 100);
    record("2024-03-02", add("app:com.apple.Safari", Category::production), 100);
    record("2024-03-02", world.activity("app:com.apple.finder"), 100);
    record("2024-03-03", nothing, 0);
    // One without an activity, and the second of two with one key.
    other.run("INSERT INTO ZDAYACTIVITY VALUES (99, 2, 1, 50, '2024-03-02', '2024-03-02|x', 'x')");
    world.tracker->stop();
    world.restart();
    add("site:a", Category::consumption);
    Tracker& reopened = *world.tracker;

    const auto check = [&](const std::map<QString, DayTotals>& expected, int count) {
        EXPECT_EQ(totals(), expected);
        EXPECT_EQ(reopened.historyDayCount(), count);
    };
    const QString first = QStringLiteral("2024-03-01");
    const QString empty = QStringLiteral("2024-03-03");
    const QString last = QStringLiteral("2024-03-04");
    check({{first, {0, 7, 0}}, {empty, {}}, {last, {10, 20.5, 3}}}, 2);
    reopened.classify(world.activity("site:b"), Category::production);
    check({{first, {7, 0, 0}}, {empty, {}}, {last, {30.5, 0, 3}}}, 2);
    reopened.classify(world.activity("site:b"), Category::ignored);
    check({{empty, {}}, {last, {10, 0, 3}}}, 1);
    EXPECT_EQ(reopened.historyWeeks(1).back().back().totals, DayTotals());
}

TEST(HistoryWeeksTest, AreWholeWeeksUpToToday) {
    struct Row {
        const char* now;
        const char* zone;
        int firstWeekday;
        int weeks;
        const char* first;
        std::size_t lastRow;
        std::size_t days;
    };
    for (const Row& row : {
             // A Wednesday.
             Row{"2024-03-06T12:00:00", "UTC", 1, 13, "2023-12-10", 4, 88},
             {"2024-03-06T23:59:59.9", "UTC", 2, 13, "2023-12-11", 3, 87},
             {"2024-03-06T00:00:00", "UTC", 4, 1, "2024-03-06", 1, 1},
             {"2024-03-06T12:00:00", "UTC", 5, 1, "2024-02-29", 7, 7},
             // A Sunday.
             {"2024-03-10T12:00:00", "America/New_York", 1, 2, "2024-03-03", 1, 8},
             {"2024-03-10T12:00:00", "America/New_York", 2, 2, "2024-02-26", 7, 14},
             // The nights in which clocks change.
             {"2024-03-11T00:00:00", "America/New_York", 2, 40, "2023-06-12", 1, 274},
             {"2024-11-04T12:00:00", "America/New_York", 1, 40, "2024-02-04", 2, 275},
             // No midnight on the first day of the grid, on its last, and on one between.
             {"2018-11-07T12:00:00", "America/Sao_Paulo", 1, 1, "2018-11-04", 4, 4},
             {"2018-11-04T12:00:00", "America/Sao_Paulo", 1, 2, "2018-10-28", 1, 8},
             {"2018-11-12T12:00:00", "America/Sao_Paulo", 1, 3, "2018-10-28", 2, 16},
             // No 30th of December, in the middle and at the beginning.
             {"2012-01-05T12:00:00", "Pacific/Apia", 1, 2, "2011-12-25", 5, 11},
             {"2012-01-05T12:00:00", "Pacific/Apia", 6, 1, "2011-12-31", 6, 6},
             {"2024-03-06T12:00:00", "UTC", 2, 3000, "1966-09-12", 3, 20996},
             {"2024-03-06T12:00:00", "UTC", 2, 0, nullptr, 0, 0},
             {"2024-03-06T12:00:00", "UTC", 2, -1, nullptr, 0, 0},
             {"2024-03-06T12:00:00", "UTC", 2, std::numeric_limits<int>::min(), nullptr, 0, 0},
             {"2024-03-06T12:00:00", "UTC", 2, std::numeric_limits<int>::max(), nullptr, 0, 0},
         }) {
        SCOPED_TRACE(testing::Message() << row.now << " " << row.zone << " " << row.firstWeekday);
        World world(row.now, row.zone);
        world.calendar = Calendar(QTimeZone(row.zone), row.firstWeekday);
        world.begin();
        const auto rows = world.tracker->historyWeeks(row.weeks);
        ASSERT_EQ(rows.size(), row.first != nullptr ? static_cast<std::size_t>(row.weeks) : 0U);
        if (rows.empty()) {
            continue;
        }
        EXPECT_EQ(rows.front().front().id, QLatin1StringView(row.first));
        EXPECT_EQ(rows.back().size(), row.lastRow);
        EXPECT_EQ(rows.back().back().date, world.calendar.startOfDay(world.date()));
        std::size_t count = 0;
        std::optional<Date> before;
        for (const auto& week : rows) {
            for (const HistoryDay& day : week) {
                EXPECT_EQ(day.id, DayActivity::day(day.date, world.calendar));
                EXPECT_EQ(day.date, world.calendar.startOfDay(day.date + 3600));
                EXPECT_TRUE(!before || *before < day.date);
                before = day.date;
                ++count;
            }
        }
        EXPECT_EQ(count, row.days);
    }
}

TEST_F(TrackerHistoryTest, ClearingErasesEveryDayAndKeepsTheSession) {
    const Activity& old = add("site:old", Category::production);
    for (const char* day : {"2020-01-01", "2024-03-03", "2024-03-04"}) {
        record(day, old, 5);
    }
    other.run("UPDATE Z_PRIMARYKEY SET Z_MAX = 700 WHERE Z_ENT = 2");
    world.front("a");
    world.pass(6); // Has saved.
    // A row that no history can show, and one that is ahead of the counter.
    other.run("INSERT INTO ZDAYACTIVITY VALUES (900, 2, 1, 5, 'someday', 'someday|x', 'x')");
    world.tracker->stop();
    world.restart(); // The older days are not read yet.
    world.pass(2.5);
    other.run("BEGIN IMMEDIATE");
    world.tracker->clearHistory();
    EXPECT_TRUE(world.tracker->storageError());
    EXPECT_EQ(world.tracker->dayTotals().size(), 0U);
    EXPECT_EQ(world.tracker->historyDayCount(), 0);
    EXPECT_EQ(world.tracker->total(Category::pending), 8.5);
    EXPECT_EQ(world.activity("site:old").category(), Category::production);
    world.pass(1.5); // New time makes new records.
    EXPECT_EQ(world.daySeconds("2024-03-05", "app:a"), 1.5);
    other.run("ROLLBACK");
    EXPECT_EQ(other.number("SELECT COUNT(*) FROM ZDAYACTIVITY"), 5);

    world.pass(5);
    EXPECT_FALSE(world.tracker->storageError());
    EXPECT_EQ(other.number("SELECT COUNT(*) FROM ZDAYACTIVITY"), 1);
    EXPECT_EQ(other.number("SELECT Z_PK FROM ZDAYACTIVITY"), 901);
    EXPECT_EQ(other.number("SELECT Z_MAX FROM Z_PRIMARYKEY WHERE Z_ENT = 2"), 901);
    world.pass(5); // The erasing was done once.
    EXPECT_EQ(other.number("SELECT Z_PK FROM ZDAYACTIVITY"), 901);
    world.tracker->stop();
    world.restart();
    EXPECT_EQ(world.days(),
              (std::map<QString, double>{{QStringLiteral("2024-03-05|app:a"), 11.5}}));
    EXPECT_EQ(world.seconds("app:a"), 20);
}
