#include "Fakes/World.h"

#include <random>

using namespace orvanta;

namespace {

/// Every booking as one line: what each record of a day gained since the last look.
class BookingLog {
public:
    explicit BookingLog(World& world)
        : world_(world)
        , last_(world.days()) {}

    void note(const char* event) {
        const auto now = world_.days();
        for (const auto& [id, seconds] : now) {
            const double gained = seconds - (last_.contains(id) ? last_.at(id) : 0);
            if (gained != 0) {
                lines.push_back(QStringLiteral("%1: %2 +%3")
                                    .arg(QLatin1StringView(event), id)
                                    .arg(gained, 0, 'f', 3));
            }
        }
        last_ = now;
        world_.checkInvariants();
    }

    QStringList lines;

private:
    World& world_;
    std::map<QString, double> last_;
};

} // namespace

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
    EXPECT_EQ(world.defaults->date(QStringLiteral("resetDate")), tracker.resetDate());
    world.checkInvariants();
}

TEST(TrackerDayTest, AStretchIsSpreadOverTheDaysThatItCovers) {
    struct Row {
        const char* begin;
        double seconds;
        std::map<QString, double> days;
    };
    const auto id = [](const char* day) {
        return QString::fromLatin1(day) + QStringLiteral("|app:a");
    };
    for (const Row& row :
         {Row{"2024-03-05T11:59:55", 10, {{id("2024-03-05"), 10}}},
          {"2024-03-04T23:59:00", 90, {{id("2024-03-04"), 60}, {id("2024-03-05"), 30}}},
          {"2024-03-04T23:59:10", 50, {{id("2024-03-04"), 50}}},
          {"2024-03-03T23:59:53",
           7 + 86400 + 3600,
           {{id("2024-03-03"), 7}, {id("2024-03-04"), 86400}, {id("2024-03-05"), 3600}}}}) {
        World world(row.begin);
        world.begin();
        world.front("a");
        world.stall(row.seconds);
        world.nothingInFront();
        EXPECT_EQ(world.days(), row.days) << row.begin;
        EXPECT_NEAR(world.seconds("app:a"), world.daySeconds("2024-03-05", "app:a"), 1e-6);
    }
}

TEST(TrackerDayTest, AResetDuringTheDayBeginsNoNewDay) {
    World world("2024-03-05T12:00:00");
    world.defaults->setDate(QStringLiteral("resetDate"), world.dateOf("2024-03-05T11:00:00"));
    world.begin();
    world.front("a");
    world.pass(3);
    EXPECT_EQ(world.tracker->resetDate(), world.dateOf("2024-03-05T11:00:00"));
    EXPECT_EQ(world.seconds("app:a"), 3);
}

TEST(TrackerDayTest, ADayOfEventsIsBookedToTheSecond) {
    World world("2018-11-03T09:00:00", "America/Sao_Paulo");
    world.browsers.known = {QStringLiteral("browser")};
    world.begin();
    BookingLog log(world);

    world.front("editor");
    world.pass(600.5);
    log.note("morning");
    world.front("browser");
    world.browsers.answer(QStringLiteral("a.org"));
    world.pass(299.5);
    log.note("a site");
    world.browsers.answer(QStringLiteral("b.org"));
    world.distributedCenter.post(Notification::ScreenIsLocked);
    world.pass(3600);
    log.note("lunch");
    world.front("editor");
    world.distributedCenter.post(Notification::ScreenIsUnlocked);
    world.pass(60);
    world.workspaceCenter.post(Notification::WillSleep);
    log.note("before sleep");
    world.wallShift += 8 * 3600; // The monotonic clock stands still.
    world.workspaceCenter.post(Notification::DidWake);
    log.note("after sleep");
    world.setDate("2018-11-03T23:59:50");
    world.pass(20); // This night there is no midnight: 23:59:59 is followed by 01:00:00.
    log.note("summer time begins");
    world.travel("Asia/Tokyo"); // 2018-11-04 12:00 there.
    world.pass(10);
    log.note("in Tokyo");
    world.setDate("2018-11-04T23:59:55");
    world.pass(10);
    log.note("midnight in Tokyo");
    world.travel("America/Sao_Paulo"); // Where it is still the 4th.
    world.pass(10);
    log.note("back home");
    world.tracker->togglePause();
    world.pass(1000);
    world.tracker->togglePause();
    log.note("after a pause");
    world.tracker->stop();
    world.restart();
    world.pass(5);
    log.note("after a restart");

    EXPECT_EQ(log.lines, (QStringList{
                             QStringLiteral("morning: 2018-11-03|app:editor +600.000"),
                             QStringLiteral("a site: 2018-11-03|app:editor +0.500"),
                             QStringLiteral("a site: 2018-11-03|site:a.org +299.500"),
                             QStringLiteral("before sleep: 2018-11-03|app:editor +60.000"),
                             QStringLiteral("summer time begins: 2018-11-03|app:editor +10.000"),
                             QStringLiteral("summer time begins: 2018-11-04|app:editor +10.000"),
                             QStringLiteral("in Tokyo: 2018-11-04|app:editor +10.000"),
                             QStringLiteral("midnight in Tokyo: 2018-11-04|app:editor +5.000"),
                             QStringLiteral("midnight in Tokyo: 2018-11-05|app:editor +5.000"),
                             QStringLiteral("back home: 2018-11-04|app:editor +10.000"),
                             QStringLiteral("after a restart: 2018-11-04|app:editor +5.000"),
                         }));
}

TEST(TrackerDayTest, TheLongDayAtTheEndOfSummerTimeHasTwentyFiveHours) {
    World world("2024-10-26T23:59:59", "Europe/Berlin");
    world.begin();
    world.front("a");
    world.stall(1 + 25 * 3600 + 2);
    world.nothingInFront();
    EXPECT_EQ(world.daySeconds("2024-10-26", "app:a"), 1);
    EXPECT_EQ(world.daySeconds("2024-10-27", "app:a"), 25 * 3600);
    EXPECT_EQ(world.daySeconds("2024-10-28", "app:a"), 2);
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

/// Whatever happens in whatever order, every second in front is in the day records once.
TEST(TrackerDayTest, RandomWalksLoseNoSecond) {
    for (const unsigned seed : {1U, 2U, 3U, 4U, 5U}) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto upTo = [&](int n) {
            return static_cast<int>(random() % static_cast<unsigned>(n));
        };
        World world("2024-02-28T22:00:00");
        world.workspace.components = {QStringLiteral("panel")};
        world.begin();
        const std::vector<const char*> applications{"a", "b", "c", "panel"};
        const std::vector<const char*> zones{"America/Sao_Paulo", "Asia/Tokyo", "Europe/Berlin",
                                             "Pacific/Apia"};
        std::map<QString, double> expected;
        const char* front = nullptr;
        bool locked = false;
        bool asleep = false;
        const auto count = [&](double seconds) {
            if (front != nullptr && front != applications.back() && !locked && !asleep &&
                !world.tracker->paused()) {
                expected[QStringLiteral("app:") + QLatin1StringView(front)] += seconds;
            }
        };

        for (int step = 0; step < 400; ++step) {
            switch (upTo(12)) {
            case 0:
                front = nullptr;
                world.nothingInFront();
                break;
            case 1:
                world.tracker->togglePause();
                break;
            case 2:
                locked = !locked;
                world.distributedCenter.post(locked ? Notification::ScreenIsLocked
                                                    : Notification::ScreenIsUnlocked);
                break;
            case 3:
                asleep = !asleep;
                world.workspaceCenter.post(asleep ? Notification::WillSleep
                                                  : Notification::DidWake);
                break;
            case 4:
                world.wallShift += upTo(200000) - 60000;
                world.defaultCenter.post(Notification::CalendarDayChanged);
                break;
            case 5:
                world.travel(zones[static_cast<std::size_t>(upTo(4))]);
                break;
            case 6: {
                const double seconds = upTo(100000) / 8.0;
                world.stall(seconds);
                count(seconds);
                break;
            }
            case 7:
                locked = asleep = false; // A new process finds the person at work.
                world.tracker->stop();
                world.restart();
                break;
            case 8:
            case 9: {
                const double seconds = upTo(400) / 8.0;
                world.pass(seconds);
                count(seconds);
                break;
            }
            default:
                front = applications[static_cast<std::size_t>(upTo(4))];
                world.front(front);
            }
            world.tracker->refreshFocus();
            world.checkInvariants(false);
            std::map<QString, double> booked;
            for (const auto& [id, seconds] : world.days()) {
                booked[id.section(QLatin1Char('|'), 1)] += seconds;
            }
            for (const auto& [key, seconds] : expected) {
                ASSERT_NEAR(booked[key], seconds, 1e-5) << qPrintable(key) << " step " << step;
            }
        }
        const auto before = world.days();
        world.tracker->stop();
        world.restart();
        EXPECT_EQ(world.days(), before);
    }
}
