#include "Fakes/World.h"

#include <limits>

using namespace orvanta;
using namespace Qt::StringLiterals;

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
             // A Sunday, in whose night the clocks change, and the Monday after it.
             {"2024-03-10T12:00:00", "America/New_York", 1, 2, "2024-03-03", 1, 8},
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
         }) {
        SCOPED_TRACE(testing::Message() << row.now << " " << row.zone << " " << row.firstWeekday);
        World world(row.now, row.zone);
        world.calendar = Calendar(QTimeZone(row.zone), row.firstWeekday);
        world.begin();
        const auto rows = world.tracker->historyWeeks(row.weeks);
        ASSERT_EQ(rows.size(), static_cast<std::size_t>(row.weeks));
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
        for (const int none :
             {0, -1, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
            EXPECT_TRUE(world.tracker->historyWeeks(none).empty()) << none;
        }
    }
}

TEST(TrackerHistoryTest, ClearingErasesEveryDayAndKeepsTheSession) {
    World world;
    world.begin();
    Database other(world.storePath());
    const auto rows = [&other] {
        return other.integer("SELECT COUNT(*) FROM ZDAYACTIVITY");
    };
    const Activity& old = world.add(u"site:old"_s, u"production"_s);
    for (const char* day : {"2020-01-01", "2024-03-03", "2024-03-04"}) {
        world.record(day, old, 5);
    }
    world.record("2024-03-02", old, 0);
    EXPECT_EQ(world.tracker->historyDayCount(), 3); // One has no time.
    other.execute("UPDATE Z_PRIMARYKEY SET Z_MAX = 700 WHERE Z_ENT = 2");
    world.front("a");
    world.pass(6); // Has saved.
    // A row that no history can show, and one that is ahead of the counter.
    other.execute("INSERT INTO ZDAYACTIVITY VALUES (900, 2, 1, 5, 'someday', 'someday|x', 'x')");
    world.tracker->stop();
    world.restart(); // The older days are not read yet.
    world.pass(2.5);
    other.execute("BEGIN IMMEDIATE");
    world.tracker->clearHistory();
    EXPECT_TRUE(world.tracker->storageError());
    EXPECT_EQ(world.tracker->dayTotals().size(), 0U);
    EXPECT_EQ(world.tracker->total(Category::pending), 8.5);
    EXPECT_EQ(world.activity("site:old").category(), Category::production);
    world.pass(1.5); // New time makes new records.
    EXPECT_EQ(world.daySeconds("2024-03-05", "app:a"), 1.5);
    other.execute("ROLLBACK");
    EXPECT_EQ(rows(), 6);

    for (int save = 0; save < 2; ++save) { // The erasing is done once.
        world.pass(5);
        EXPECT_FALSE(world.tracker->storageError());
        EXPECT_EQ(rows(), 1);
        EXPECT_EQ(other.integer("SELECT Z_PK FROM ZDAYACTIVITY"), 901);
        EXPECT_EQ(other.integer("SELECT Z_MAX FROM Z_PRIMARYKEY WHERE Z_ENT = 2"), 901);
    }
    world.tracker->stop();
    world.restart();
    EXPECT_EQ(world.days(), (std::map<QString, double>{{u"2024-03-05|app:a"_s, 11.5}}));
    EXPECT_EQ(world.seconds("app:a"), 20);
}
