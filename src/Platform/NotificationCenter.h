#pragma once

#include <functional>
#include <memory>
#include <vector>

namespace orvanta {

/// What a desktop announces to the tracker.
enum class Notification {
    DidActivateApplication, ///< another application, or none, has the focus
    CalendarDayChanged,     ///< local midnight has passed, or the clock or time zone moved
    WillSleep,              ///< the machine is about to sleep
    DidWake,
    ScreensDidSleep, ///< the displays are off
    ScreensDidWake,
    SessionDidResignActive, ///< another session has the seat
    SessionDidBecomeActive,
    ScreenIsLocked,
    ScreenIsUnlocked,
};

/// Hands notifications from those who see an event to those who asked for it, at once and on the
/// main thread.
///
/// Handlers may add and remove observers, themselves too: one removed is not called any more, one
/// added is called from the next `post` on.
class NotificationCenter {
public:
    using Handler = std::function<void()>;

    /// Names one registration; never given out twice by one centre.
    enum class Token : unsigned long long {};

    NotificationCenter();
    ~NotificationCenter();
    NotificationCenter(const NotificationCenter&) = delete;
    NotificationCenter& operator=(const NotificationCenter&) = delete;

    Token addObserver(Notification name, Handler handler);

    /// Does nothing for a token already removed.
    void removeObserver(Token token);

    /// Calls the handlers of this name, in the order in which they were added.
    void post(Notification name);

private:
    struct Observer;
    std::vector<std::shared_ptr<Observer>> observers_;
    unsigned long long lastToken_ = 0;
};

} // namespace orvanta
