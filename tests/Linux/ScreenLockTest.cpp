#include "Linux/Presence/ScreenLock.h"

#include "Testing.h"

using namespace orvanta;

/// Each letter is something that the desktop says: L and U ask to lock and to unlock; h, n and ?
/// are the hint's yes, no and unknown; s and o the saver's on and off; w waits half a minute, and
/// i an instant less. The answer after each is # for locked, s for only saved, . for neither.
TEST(ScreenLockTest, TellsALockFromASaverAndNeverStaysDeaf) {
    const std::pair<std::string, std::string> rows[] = {
        {"hn", "#."},           // the hint alone
        {"so", "#."},           // a saver where no hint is known
        {"nsho", ".s##"},       // a saver, then its lock
        {"nsono", ".s..."},     // a saver without a lock
        {"Lw", "#."},           // nobody locks
        {"LiL", "###"},         // asked again
        {"Liiw", "##.."},       // dropped once, and for good
        {"LU", "#."},           // asked back
        {"nLhwn", ".###."},     // confirmed by the hint: stands until that goes
        {"nLswwo", ".####."},   // confirmed by the saver alone: a lock, not only a saver
        {"nsLwwno", ".s####."}, // confirmed before it was asked for
        {"nLshon", ".####."},   // both
        {"hU", "#."},           // the locker left its hint behind
        {"hUshno", "#.##s."},   // and its successor is believed again
        {"h?", "#."},           // logind is gone
        {"nLn", ".##"},         // the hint's "no" is no news while the locker starts
    };
    for (const auto& [said, expected] : rows) {
        HandMainLoop loop;
        ScreenLock lock(loop, [] {});
        std::map<char, std::function<void()>> words;
        words.emplace('L', [&] { lock.requestLock(); });
        words.emplace('U', [&] { lock.requestUnlock(); });
        words.emplace('h', [&] { lock.setHint(true); });
        words.emplace('n', [&] { lock.setHint(false); });
        words.emplace('?', [&] { lock.setHint(std::nullopt); });
        words.emplace('s', [&] { lock.setSaverActive(true); });
        words.emplace('o', [&] { lock.setSaverActive(false); });
        words.emplace('w', [&] { loop.advance(30.0); });
        words.emplace('i', [&] { loop.advance(29.9); });
        std::string seen;
        for (const char word : said) {
            words.at(word)();
            EXPECT_FALSE(lock.isLocked() && lock.isOnlySaved()) << said;
            seen += lock.isLocked() ? '#' : lock.isOnlySaved() ? 's' : '.';
        }
        EXPECT_EQ(seen, expected) << said;
        loop.advance(30.0);
        EXPECT_EQ(loop.armedCount(), 0U) << said;
    }
}
