#include "Fakes/World.h"

#include <limits>

using namespace orvanta;
using namespace Qt::StringLiterals;

TEST(TrackerDayTest, ADayOfEventsIsBookedToTheSecond) {
    World world("2018-11-03T09:00:00", "America/Sao_Paulo");
    world.browsers.known = {u"browser"_s};
    world.workspace.components = {u"panel"_s};
    world.begin();
    const auto editorHas = [&world](double before, double on4th, double on5th) {
        EXPECT_EQ(world.daySeconds("2018-11-03", "app:editor"), before);
        EXPECT_EQ(world.daySeconds("2018-11-04", "app:editor"), on4th);
        EXPECT_EQ(world.daySeconds("2018-11-05", "app:editor"), on5th);
    };
    world.front("editor");
    world.pass(600.5);
    editorHas(600, 0, 0);
    for (const char* nobodys : {"panel", "com.brindlework.orvanta"}) {
        world.front(nobodys);
        world.pass(5);
    }
    world.front("browser");
    world.browsers.answer(u"a.org"_s);
    world.pass(299.5);
    world.browsers.answer(u"b.org"_s);
    world.distributedCenter.post(Notification::ScreenIsLocked);
    world.pass(3600);
    world.front("editor");
    world.distributedCenter.post(Notification::ScreenIsUnlocked);
    world.pass(60);
    world.workspaceCenter.post(Notification::WillSleep);
    world.wallShift += 8 * 3600; // The monotonic clock stands still.
    world.workspaceCenter.post(Notification::DidWake);
    editorHas(660.5, 0, 0);
    world.setDate("2018-11-03T23:59:50");
    world.pass(20); // This night there is no midnight: 23:59:59 is followed by 01:00:00.
    editorHas(670.5, 10, 0);
    world.travel("Asia/Tokyo"); // 2018-11-04 12:00 there.
    world.pass(10);
    editorHas(670.5, 20, 0);
    world.setDate("2018-11-04T23:59:57");
    world.pass(3);
    EXPECT_EQ(world.tracker->resetDate(), world.dateOf("2018-11-05T00:00:00"));
    EXPECT_EQ(world.defaults->date(u"resetDate"_s), world.tracker->resetDate());
    EXPECT_FALSE(world.context().hasChanges()); // A new day is saved at once.
    world.pass(7);
    editorHas(670.5, 23, 7);
    world.travel("America/Sao_Paulo"); // Where it is still the 4th.
    world.pass(10);
    editorHas(670.5, 33, 7);
    EXPECT_EQ(world.seconds("app:editor"), 17); // The session goes on.
    world.pass(1.5);
    world.tracker->togglePause();
    EXPECT_FALSE(world.context().hasChanges());
    world.pass(1000);
    world.tracker->stop();
    world.restart(); // It is still paused.
    world.pass(1000);
    editorHas(670.5, 34.5, 7);
    world.tracker->togglePause();
    world.pass(5);
    editorHas(670.5, 39.5, 7);
    EXPECT_FALSE(world.defaults->boolValue(u"paused"_s));
    EXPECT_EQ(world.daySeconds("2018-11-03", "site:a.org"), 299.5);
    EXPECT_EQ(world.days().size(), 4U);
    EXPECT_EQ(world.find("app:panel"), nullptr);
}

TEST(HistoryWeeksTest, AreWholeWeeksUpToToday) {
    struct Row {
        const char *now, *zone;
        int firstWeekday, weeks;
        const char* first;
        std::size_t lastRow, days;
    };
    for (const auto& [now, zone, firstWeekday, weeks, first, lastRow, days] : {
             // A Wednesday.
             Row{"2024-03-06T12:00:00", "UTC", 1, 13, "2023-12-10", 4, 88},
             {"2024-03-06T23:59:59.9", "UTC", 2, 13, "2023-12-11", 3, 87},
             {"2024-03-06T00:00:00", "UTC", 4, 1, "2024-03-06", 1, 1},
             {"2024-03-06T12:00:00", "UTC", 5, 1, "2024-02-29", 7, 7},
             // No midnight on the first day of the grid, on its last, and on one between.
             {"2018-11-07T12:00:00", "America/Sao_Paulo", 1, 1, "2018-11-04", 4, 4},
             {"2018-11-04T12:00:00", "America/Sao_Paulo", 1, 2, "2018-10-28", 1, 8},
             {"2018-11-12T12:00:00", "America/Sao_Paulo", 1, 3, "2018-10-28", 2, 16},
             // No 30th of December.
             {"2012-01-05T12:00:00", "Pacific/Apia", 1, 2, "2011-12-25", 5, 11},
         }) {
        SCOPED_TRACE(testing::Message() << now << " " << zone << " " << firstWeekday);
        World world(now, zone);
        world.calendar = Calendar(QTimeZone(zone), firstWeekday);
        world.begin();
        const auto rows = world.tracker->historyWeeks(weeks);
        ASSERT_EQ(rows.size(), static_cast<std::size_t>(weeks));
        EXPECT_EQ(rows.front().front().id, QLatin1StringView(first));
        EXPECT_EQ(rows.back().size(), lastRow);
        EXPECT_EQ(rows.back().back().date, world.calendar.startOfDay(world.date()));
        std::set<QString> ids;
        for (const auto& week : rows) {
            for (const HistoryDay& day : week) {
                EXPECT_EQ(day.id, world.calendar.day(day.date).text());
                EXPECT_EQ(day.date, world.calendar.startOfDay(day.date + 3600));
                EXPECT_TRUE(ids.empty() || *ids.rbegin() < day.id);
                ids.insert(day.id);
            }
        }
        EXPECT_EQ(ids.size(), days);
        for (const int none :
             {0, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
            EXPECT_TRUE(world.tracker->historyWeeks(none).empty()) << none;
        }
    }
}
