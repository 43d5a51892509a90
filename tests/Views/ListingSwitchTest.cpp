#include "Views/ListingSwitch.h"

#include "Fakes/HandMainLoop.h"

#include <gtest/gtest.h>

using namespace orvanta;
using enum Listing;

TEST(ListingSwitchTest, APreviewLastsAsLongAsThePointerStaysAndAClickPins) {
    HandMainLoop loop;
    Listing last = activities;
    ListingSwitch choice(loop, [&] {
        EXPECT_NE(choice.listing(), last) << "told, and nothing has changed";
        last = choice.listing();
    });
    // H and U: the pointer comes over a button; h and u: clicks it; -: leaves; +: is over the
    // content. Then so many seconds pass.
    const struct {
        const char* acts;
        double seconds;
        Listing shown;
    } rows[]{
        {"H-", 0.34, history},  {"+", 10, history},     {"-", 0.2, history},
        {"-", 0.34, history},   {"", 0.01, activities}, {"H-U", 10, unmonitored},
        {"-", 0.4, activities}, {"Hh-", 10, history},   {"U", 0, history},
        {"u", 10, unmonitored}, {"u", 0, activities},   {"H-h", 10, history},
        {"hH-", 1, activities},
    };
    for (const auto& row : rows) {
        for (const char* act = row.acts; *act != '\0'; ++act) {
            const Listing target = *act == 'H' || *act == 'h' ? history : unmonitored;
            *act == '-'                  ? choice.leave()
            : *act == '+'                ? choice.cancelDismissal()
            : *act == 'H' || *act == 'U' ? choice.enterButton(target)
                                         : choice.click(target);
        }
        loop.advance(row.seconds);
        EXPECT_EQ(choice.listing(), row.shown) << row.acts << ' ' << row.seconds;
        EXPECT_EQ(last, row.shown) << row.acts << " was not told";
    }
    {
        ListingSwitch gone(loop, [&gone] { EXPECT_EQ(gone.listing(), history); });
        gone.enterButton(history);
        gone.leave();
    }
    loop.advance(1);
    EXPECT_EQ(loop.armedCount(), 0U);
}
