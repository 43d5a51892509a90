#pragma once

#include <chrono>
#include <functional>

namespace orvanta {

class MainLoop;
class NotificationCenter;
class Workspace;

/// Everything that the engine asks of the desktop, handed in as one. What is referred to outlives
/// whoever holds this.
struct Platform {
    Workspace& workspace;

    /// Applications coming to the front; sleep, displays and session.
    NotificationCenter& workspaceNotifications;
    /// The day change.
    NotificationCenter& defaultNotifications;
    /// Lock and unlock of the screen.
    NotificationCenter& distributedNotifications;

    MainLoop& mainLoop;

    /// The current date.
    std::function<std::chrono::system_clock::time_point()> systemTime;
};

} // namespace orvanta
