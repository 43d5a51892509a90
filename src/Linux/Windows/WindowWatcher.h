#pragma once

#include "Linux/Windows/Window.h"

#include <QObject>

#include <optional>

namespace orvanta {

/// Knows which window has the focus on one display system, from events only.
class WindowWatcher : public QObject {
    Q_OBJECT

public:
    enum class State {
        Waiting,     ///< connected, but no window manager is there that would tell
        Watching,    ///< a window manager answered as it should
        Unsupported, ///< this desktop does not tell, or has not within the first seconds
        Ended,       ///< the display system went away, for good
    };

    State state() const { return state_; }

    /// The window with the focus as last told; absent when none has, and in every state but
    /// Watching. A cached answer.
    const std::optional<Window>& activeWindow() const { return activeWindow_; }

Q_SIGNALS:
    void activeWindowChanged();
    void stateChanged();

protected:
    explicit WindowWatcher(State state)
        : state_(state) {}

    /// Both announce a change, and nothing when the value is the same.
    void setState(State state);
    void setActiveWindow(std::optional<Window> window);

private:
    State state_;
    std::optional<Window> activeWindow_;
};

} // namespace orvanta
