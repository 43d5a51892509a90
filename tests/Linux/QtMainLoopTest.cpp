#include "Linux/MainLoop/QtMainLoop.h"

#include "Eventually.h"

#include <gtest/gtest.h>

using namespace orvanta;
using namespace std::chrono_literals;
using Duration = MainLoop::Duration;

namespace {

class QtMainLoopTest : public testing::Test {
protected:
    void wait(Duration delay) {
        bool passed = false;
        const auto timer = loop.once(delay, [&] { passed = true; });
        ASSERT_TRUE(eventually([&] { return passed; }));
    }

    QtMainLoop loop;
};

TEST_F(QtMainLoopTest, OnceFiresOnceAndNeverEarly) {
    for (const double delay : {0.0, 0.0001, 0.0035, 0.02}) {
        int fired = 0;
        double after = 0;
        const auto start = std::chrono::steady_clock::now();
        const auto timer = loop.once(Duration(delay), [&] {
            ++fired;
            after = Duration(std::chrono::steady_clock::now() - start).count();
        });
        wait(Duration(delay) + 20ms);
        EXPECT_EQ(fired, 1);
        EXPECT_GE(after, delay);
    }
}

TEST_F(QtMainLoopTest, EveryGoesOnUntilItIsDestroyedEvenByItsAction) {
    for (const auto tolerance : {0ms, 5ms}) {
        int fired = 0;
        const auto captured = std::make_shared<int>(0);
        std::unique_ptr<MainLoopTimer> timer;
        timer = loop.every(5ms, tolerance, [&timer, &fired, captured] {
            if (++fired == 3) {
                timer.reset();
                ++*captured; // What the action holds is still there.
            }
        });
        ASSERT_TRUE(eventually([&] { return *captured > 0; }));
        wait(20ms);
        EXPECT_EQ(fired, 3);
        EXPECT_EQ(captured.use_count(), 1);
    }
}

TEST_F(QtMainLoopTest, AMonthIsNotShortened) {
    bool fired = false;
    const auto fire = [&] {
        fired = true;
    };
    const auto month = loop.once(std::chrono::hours(24 * 30), fire);
    const auto months = loop.every(std::chrono::hours(24 * 30), 0ms, fire);
    const auto forever = loop.once(Duration(std::numeric_limits<double>::infinity()), fire);
    wait(20ms);
    EXPECT_FALSE(fired);
}

} // namespace
