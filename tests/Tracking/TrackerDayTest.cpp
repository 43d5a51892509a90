#include "Fakes/World.h"

using namespace orvanta;
using namespace Qt::StringLiterals;

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
    world.workspace.components = {u"panel"_s};
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
