#include "Views/ListingSwitch.h"

#include "Fakes/HandMainLoop.h"

#include <gtest/gtest.h>

#include <vector>

using namespace orvanta;

namespace {

struct Hand {
    HandMainLoop loop;
    std::vector<Listing> shown;
    ListingSwitch choice{loop, [this] {
                             shown.push_back(choice.listing());
                         }};
};

constexpr Listing activities = Listing::activities;
constexpr Listing unmonitored = Listing::unmonitored;
constexpr Listing history = Listing::history;

} // namespace

TEST(ListingSwitchTest, APreviewLastsAsLongAsThePointerStays) {
    Hand hand;
    hand.choice.enterButton(history);
    EXPECT_EQ(hand.choice.listing(), history);
    hand.choice.leave();
    hand.loop.advance(0.34);
    hand.choice.cancelDismissal(); // It reached the content.
    hand.loop.advance(10);
    EXPECT_EQ(hand.choice.listing(), history);
    hand.choice.leave();
    hand.loop.advance(0.2);
    hand.choice.leave();
    hand.loop.advance(0.34);
    EXPECT_EQ(hand.choice.listing(), history);
    hand.loop.advance(0.01);
    EXPECT_EQ(hand.shown, (std::vector{history, activities}));
}

TEST(ListingSwitchTest, FromOneButtonToTheOtherThePreviewFollows) {
    Hand hand;
    hand.choice.enterButton(history);
    hand.choice.leave();
    hand.choice.enterButton(unmonitored);
    hand.loop.advance(10);
    EXPECT_EQ(hand.shown, (std::vector{history, unmonitored}));
}

TEST(ListingSwitchTest, AClickPinsAndAnotherOneLetsGo) {
    Hand hand;
    hand.choice.enterButton(history);
    hand.choice.click(history);
    hand.choice.leave();
    EXPECT_EQ(hand.loop.armedCount(), 0U); // It rests there.
    hand.choice.enterButton(unmonitored);
    EXPECT_EQ(hand.choice.listing(), history);
    hand.choice.click(unmonitored);
    EXPECT_EQ(hand.choice.pinned(), unmonitored);
    hand.choice.click(unmonitored);
    EXPECT_EQ(hand.choice.pinned(), std::nullopt);
    EXPECT_EQ(hand.shown, (std::vector{history, unmonitored, activities}));
}

TEST(ListingSwitchTest, ARunningReturnEndsAtWhatIsPinnedOrNotAtAll) {
    Hand hand;
    hand.choice.enterButton(history);
    hand.choice.leave();
    hand.choice.click(history);
    EXPECT_EQ(hand.loop.armedCount(), 0U);
    hand.choice.click(history);
    hand.choice.enterButton(history);
    hand.choice.leave();
    {
        Hand gone;
        gone.choice.enterButton(history);
        gone.choice.leave();
    }
    hand.loop.advance(1);
    EXPECT_EQ(hand.choice.listing(), activities);
}
