#include "Fakes/World.h"

using namespace orvanta;
using namespace Qt::StringLiterals;

TEST(TrackerDayTest, MidnightSplitsTheStretchAndBeginsANewSession) {
    World world("2024-03-05T23:59:00");
    Tracker& tracker = world.begin();
    world.front("b");
    world.pass(5);
    world.front("a");
    world.pass(54.5); // 23:59:59.5; the next look comes at 00:00:00.5 of the next day.
    EXPECT_EQ(world.seconds("app:a"), 54);
    world.pass(1);
    EXPECT_EQ(world.daySeconds("2024-03-05", "app:a"), 55);
    EXPECT_EQ(world.daySeconds("2024-03-06", "app:a"), 0);
    EXPECT_FALSE(world.context().hasChanges());
    world.pass(1);
    EXPECT_EQ(world.daySeconds("2024-03-06", "app:a"), 1);
    EXPECT_EQ(world.seconds("app:a"), 1);
    EXPECT_EQ(world.seconds("app:b"), 0);
    EXPECT_EQ(tracker.resetDate(), world.dateOf("2024-03-06T00:00:00"));
    EXPECT_EQ(world.defaults->date(u"resetDate"_s), tracker.resetDate());
    world.checkInvariants();
}

TEST(TrackerDayTest, AStretchIsSpreadOverTheDaysThatItCovers) {
    struct Row {
        const char* zone;
        const char* begin;
        double seconds;
        std::map<QString, double> days;
    };
    const auto id = [](const char* day) {
        return QLatin1StringView(day) + u"|app:a"_s;
    };
    for (const Row& row :
         {Row{"UTC", "2024-03-05T11:59:55", 10, {{id("2024-03-05"), 10}}},
          {"UTC", "2024-03-04T23:59:00", 90, {{id("2024-03-04"), 60}, {id("2024-03-05"), 30}}},
          {"UTC", "2024-03-04T23:59:10", 50, {{id("2024-03-04"), 50}}},
          {"Europe/Berlin", // Where one day has 25 hours.
           "2024-10-26T23:59:53",
           7 + 90000 + 3600,
           {{id("2024-10-26"), 7}, {id("2024-10-27"), 90000}, {id("2024-10-28"), 3600}}}}) {
        World world(row.begin, row.zone);
        world.begin();
        world.front("a");
        world.stall(row.seconds);
        world.nothingInFront();
        EXPECT_EQ(world.days(), row.days) << row.begin;
        world.checkInvariants();
    }
}

TEST(TrackerDayTest, ADayOfEventsIsBookedToTheSecond) {
    World world("2018-11-03T09:00:00", "America/Sao_Paulo");
    world.browsers.known = {u"browser"_s};
    world.begin();
    const auto editorHas = [&world](double before, double on4th, double on5th) {
        EXPECT_EQ(world.daySeconds("2018-11-03", "app:editor"), before);
        EXPECT_EQ(world.daySeconds("2018-11-04", "app:editor"), on4th);
        EXPECT_EQ(world.daySeconds("2018-11-05", "app:editor"), on5th);
        world.checkInvariants();
    };
    world.front("editor");
    world.pass(600.5);
    editorHas(600, 0, 0);
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
    world.setDate("2018-11-04T23:59:55");
    world.pass(10);
    editorHas(670.5, 25, 5);
    world.travel("America/Sao_Paulo"); // Where it is still the 4th.
    world.pass(10);
    editorHas(670.5, 35, 5);
    world.tracker->togglePause();
    world.pass(1000);
    world.tracker->togglePause();
    world.tracker->stop();
    world.restart();
    world.pass(5);
    editorHas(670.5, 40, 5);
    EXPECT_EQ(world.daySeconds("2018-11-03", "site:a.org"), 299.5);
    EXPECT_EQ(world.days().size(), 4U);
}

TEST(TrackerDayTest, AClockSetBackTakesNothingAwayAndCountsNothingTwice) {
    World world("2024-03-06T00:10:00");
    world.begin();
    world.front("a");
    world.pass(60);
    world.setDate("2024-03-05T23:59:30");
    world.defaultCenter.post(Notification::CalendarDayChanged);
    world.pass(60);
    EXPECT_EQ(world.daySeconds("2024-03-05", "app:a"), 30);
    EXPECT_EQ(world.daySeconds("2024-03-06", "app:a"), 60 + 30);
    EXPECT_EQ(world.seconds("app:a"), 120); // The session goes on.
    world.checkInvariants(false);
}
