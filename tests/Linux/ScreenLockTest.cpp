#include "Fakes/HandMainLoop.h"
#include "Linux/Presence/Calm.h"
#include "Linux/Presence/ScreenLock.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace orvanta {

namespace {

/// Each letter is something that the desktop says: L and U ask to lock and to unlock; h, n and ?
/// are the hint's yes, no and unknown; s and o the saver's on and off; w waits half a minute, and
/// i an instant less. The answer after each is X for locked, s for only saved, . for neither.
TEST(ScreenLockTest, TellsALockFromASaverAndNeverStaysDeaf) {
    const std::vector<std::pair<std::string, std::string>> rows{
        {"hn", "X."},           // the hint alone
        {"so", "X."},           // a saver where no hint is known
        {"nsho", ".sXX"},       // a saver, then its lock
        {"nsono", ".s..."},     // a saver without a lock
        {"Lw", "X."},           // nobody locks
        {"LiL", "XXX"},         // asked again
        {"Liiw", "XX.."},       // dropped once, and for good
        {"LU", "X."},           // asked back
        {"nLhwn", ".XXX."},     // confirmed by the hint: stands until that goes
        {"nLswwo", ".XXXX."},   // confirmed by the saver alone: a lock, not only a saver
        {"nsLwwno", ".sXXXX."}, // confirmed before it was asked for
        {"nLshon", ".XXXX."},   // both
        {"hU", "X."},           // the locker left its hint behind
        {"hUshno", "X.XXs."},   // and its successor is believed again
        {"h?", "X."},           // logind is gone
        {"nLn", ".XX"},         // the hint's "no" is no news while the locker starts
    };
    for (const auto& [said, expected] : rows) {
        HandMainLoop loop;
        ScreenLock lock(loop, [] {});
        std::string seen;
        for (const char word : said) {
            switch (word) {
            case 'L':
                lock.requestLock();
                break;
            case 'U':
                lock.requestUnlock();
                break;
            case 'h':
                lock.setHint(true);
                break;
            case 'n':
                lock.setHint(false);
                break;
            case '?':
                lock.setHint(std::nullopt);
                break;
            case 's':
                lock.setSaverActive(true);
                break;
            case 'o':
                lock.setSaverActive(false);
                break;
            case 'w':
                loop.advance(30.0);
                break;
            default:
                loop.advance(29.9);
            }
            EXPECT_FALSE(lock.isLocked() && lock.isOnlySaved()) << said;
            seen += lock.isLocked() ? 'X' : lock.isOnlySaved() ? 's' : '.';
        }
        EXPECT_EQ(seen, expected) << said;
        loop.advance(30.0);
        EXPECT_EQ(loop.armedCount(), 0U) << said;
    }
}

TEST(CalmTest, PassesTheFirstAndTheLastOfAStormOn) {
    HandMainLoop loop;
    std::vector<std::pair<double, bool>> passed;
    Calm calm(loop, [&](bool state) { passed.emplace_back(loop.now(), state); });
    calm.set(false);
    EXPECT_TRUE(passed.empty());
    for (int i = 0; i < 10'001; ++i) {
        calm.set(i % 2 == 0);
    }
    calm.set(false);
    loop.advance(0.9);
    calm.set(true);
    calm.set(false);
    loop.advance(10.0);
    calm.set(true);
    using Pair = std::pair<double, bool>;
    EXPECT_THAT(passed, testing::ElementsAre(Pair(0.0, true), Pair(1.0, false), Pair(10.9, true)));
    loop.advance(1.0);
    EXPECT_EQ(loop.armedCount(), 0U);
}

} // namespace

} // namespace orvanta
