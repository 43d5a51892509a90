#include "Linux/Windows/WindowWatcher.h"

#include <utility>

namespace orvanta {

void WindowWatcher::setState(State state) {
    if (state_ != state) {
        state_ = state;
        Q_EMIT stateChanged();
    }
}

void WindowWatcher::setActiveWindow(std::optional<Window> window) {
    if (activeWindow_ != window) {
        activeWindow_ = std::move(window);
        Q_EMIT activeWindowChanged();
    }
}

} // namespace orvanta
