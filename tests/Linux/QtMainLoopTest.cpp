#include "Linux/MainLoop/QtMainLoop.h"

#include "Testing.h"

using namespace orvanta;
using namespace std::chrono_literals;
using Duration = MainLoop::Duration;

TEST(QtMainLoopTest, TimersFireAsOftenAsTheyShallAndNeverEarly) {
    QtMainLoop loop;
    bool early = false;
    const auto beEarly = [&early] {
        early = true;
    };
    // Longer than one timer of Qt's can be.
    const auto month = loop.once(std::chrono::hours(24 * 30), beEarly);
    const auto months = loop.every(std::chrono::hours(24 * 30), 0ms, beEarly);
    const auto forever = loop.once(Duration(std::numeric_limits<double>::infinity()), beEarly);

    for (const double delay : {0.0, 0.0001, 0.0035, 0.02}) {
        for (const auto tolerance : {0ms, 5ms}) {
            const auto start = std::chrono::steady_clock::now();
            int fired = 0;
            const auto once = loop.once(Duration(delay), [&] {
                ++fired;
                early |= std::chrono::steady_clock::now() - start < Duration(delay);
            });
            int repeated = 0;
            const auto captured = std::make_shared<int>(0);
            std::unique_ptr<MainLoopTimer> timer;
            timer = loop.every(5ms, tolerance, [&timer, &repeated, captured] {
                if (++repeated == 3) {
                    timer.reset();
                    ++*captured; // What the action holds is still there.
                }
            });
            bool passed = false;
            const auto later = loop.once(Duration(delay) + 50ms, [&] { passed = true; });
            ASSERT_TRUE(eventually([&] { return passed && *captured > 0; }));
            EXPECT_EQ(fired, 1);
            EXPECT_EQ(repeated, 3);
            EXPECT_EQ(captured.use_count(), 1);
        }
    }
    EXPECT_FALSE(early);
}
