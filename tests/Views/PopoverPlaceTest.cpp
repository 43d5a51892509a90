#include "Views/PopoverPlace.h"

#include <gtest/gtest.h>

using namespace orvanta;

TEST(PopoverPlaceTest, ItLiesAtTheClickAndInsideTheWorkAreaOfItsMonitor) {
    const auto screen = [](int left, int top, int right, int bottom) {
        const QRect monitor(0, 0, 1280, 800);
        return std::vector<ScreenArea>{{monitor, monitor.adjusted(left, top, -right, -bottom)}};
    };
    const std::vector<ScreenArea> two{
        {QRect(0, 0, 1280, 800), QRect(0, 28, 1280, 772)},
        {QRect(1280, -200, 1920, 1080), QRect(1280, -200, 1920, 1040)},
    };
    const struct {
        const char* what;
        std::vector<ScreenArea> screens;
        std::optional<QPoint> clicked;
        QPoint place;
    } rows[]{
        {"panel above, at its end", screen(0, 28, 0, 0), QPoint(1270, 14), {960, 28}},
        {"panel above, at its beginning", screen(0, 28, 0, 0), QPoint(3, 14), {0, 28}},
        {"panel below", screen(0, 0, 0, 40), QPoint(1000, 780), {840, 408}},
        {"panel before", screen(64, 0, 0, 0), QPoint(32, 700), {64, 448}},
        {"panel after", screen(0, 0, 64, 0), QPoint(1250, 100), {896, 0}},
        {"no panel, room below", screen(0, 0, 0, 0), QPoint(600, 100), {440, 112}},
        {"no panel, no room below", screen(0, 0, 0, 0), QPoint(600, 700), {440, 336}},
        {"no click, panel below", screen(0, 0, 0, 40), {}, {960, 408}},
        {"no click, two panels", screen(0, 24, 0, 48), {}, {960, 400}},
        {"no click, panel before", screen(64, 0, 0, 0), {}, {64, 0}},
        {"at the first monitor's end", two, QPoint(1279, 14), {960, 28}},
        {"on the second monitor", two, QPoint(1281, 870), {1280, 488}},
        {"no click, two monitors", two, {}, {960, 28}},
        {"an area that is too small", screen(0, 20, 980, 600), QPoint(10, 10), {0, 20}},
        {"no monitor", {}, QPoint(10, 10), {10, 10}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(popoverPlace(row.clicked, row.screens, {320, 352}), row.place) << row.what;
    }
}
