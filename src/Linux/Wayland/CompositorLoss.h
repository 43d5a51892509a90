#pragma once

#include <functional>

namespace orvanta {

/// Lives on when the Wayland compositor goes away. Qt does not: on whichever thread it notices, it
/// says "The Wayland connection …" and ends the process by `_exit`. Before that the program is
/// started anew in its process, where it waits for the compositor to come back.
///
/// One at a time, made and destroyed on the main thread.
class CompositorLoss {
public:
    /// For how long a compositor that comes back is waited for, in seconds.
    static constexpr int patience = 30;

    /// Whether these are the arguments of a program that was started anew.
    static bool isBehind(int argc, char* const argv[]);

    /// Waits, for `patience` at most, until a compositor listens where $WAYLAND_DISPLAY says.
    /// Whether it does.
    static bool waitForCompositor();

    /// `save` is called on the main thread. Where the connection is lost within five seconds, as by
    /// a fault of ours, the process ends after it.
    explicit CompositorLoss(std::function<void()> save);
    ~CompositorLoss();
    CompositorLoss(const CompositorLoss&) = delete;
    CompositorLoss& operator=(const CompositorLoss&) = delete;
};

} // namespace orvanta
