#include "Linux/MainLoop/QtMainLoop.h"

#include "Eventually.h"

#include <gmock/gmock.h>

namespace orvanta {

namespace {

using namespace std::chrono_literals;
using Duration = MainLoop::Duration;

class QtMainLoopTest : public testing::Test {
protected:
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
        bool later = false;
        const auto check = loop.once(Duration(delay) + 20ms, [&] { later = true; });
        ASSERT_TRUE(eventually([&] { return later; }));
        EXPECT_EQ(fired, 1);
        EXPECT_GE(after, delay);
    }
}

TEST_F(QtMainLoopTest, EveryGoesOnUntilItIsDestroyed) {
    int precise = 0;
    int coarse = 0;
    auto first = loop.every(5ms, 0ms, [&] { ++precise; });
    auto second = loop.every(5ms, 5ms, [&] { ++coarse; });
    ASSERT_TRUE(eventually([&] { return precise >= 3 && coarse >= 3; }));
    first.reset();
    const int stopped = precise;
    ASSERT_TRUE(eventually([&] { return coarse >= 6; }));
    EXPECT_EQ(precise, stopped);
}

TEST_F(QtMainLoopTest, AnActionCanDestroyItsOwnTimer) {
    std::unique_ptr<MainLoopTimer> timer;
    const auto captured = std::make_shared<int>(0);
    timer = loop.every(1ms, 0ms, [&timer, captured] {
        timer.reset();
        ++*captured; // What the action holds is still there.
    });
    ASSERT_TRUE(eventually([&] { return *captured > 0; }));
    bool later = false;
    timer = loop.once(20ms, [&] { later = true; });
    ASSERT_TRUE(eventually([&] { return later; }));
    EXPECT_EQ(*captured, 1);
    EXPECT_EQ(captured.use_count(), 1);
}

TEST_F(QtMainLoopTest, AMonthIsNotShortened) {
    bool fired = false;
    const auto month = loop.once(std::chrono::hours(24 * 30), [&] { fired = true; });
    const auto months = loop.every(std::chrono::hours(24 * 30), 0ms, [&] { fired = true; });
    const auto forever =
        loop.once(Duration(std::numeric_limits<double>::infinity()), [&] { fired = true; });
    bool later = false;
    const auto check = loop.once(20ms, [&] { later = true; });
    ASSERT_TRUE(eventually([&] { return later; }));
    EXPECT_FALSE(fired);
}

} // namespace

} // namespace orvanta
