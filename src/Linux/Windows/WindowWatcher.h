#pragma once

#include "Linux/Windows/Window.h"
#include "Platform/WindowWatching.h"

#include <QObject>

#include <optional>

namespace orvanta {

/// Knows which window has the focus on one display system, from events only.
class WindowWatcher : public QObject {
    Q_OBJECT

public:
    using State = WindowWatching;

    State state() const { return state_; }

    /// The window with the focus as last told; absent when none has, and in every state but
    /// Watching. A cached answer.
    const std::optional<Window>& activeWindow() const { return activeWindow_; }

    /// Asks for the window that has the focus now and waits for the answer; where the display
    /// system has nobody to ask, does nothing.
    virtual void update() {}

    /// For one that has a choice and is not watching: looks again who answers, as after a resume.
    virtual void chooseAgain() {}

    /// Where the person has let in what is missing (NeedsPermission): puts it there. Returns why
    /// that failed.
    virtual std::optional<QString> allow() { return std::nullopt; }

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
