#pragma once

#include <QPoint>

class QWindow;
struct org_kde_plasma_shell;
struct org_kde_plasma_surface;

namespace orvanta {

/// Puts a window of Qt's at a place on KWin (plasma-wayland-protocols, "plasma-shell"). Wayland's
/// own protocols leave the place to the compositor.
class PlasmaShell {
public:
    /// Asks the compositor of Qt's windows for it, and waits for the answer. Needs a
    /// QGuiApplication, which outlives this.
    PlasmaShell();
    ~PlasmaShell();
    PlasmaShell(const PlasmaShell&) = delete;
    PlasmaShell& operator=(const PlasmaShell&) = delete;

    /// For one window at a time, between its `show()` and its first picture. `place`, of the top
    /// left corner, is in the compositor's coordinates. The window is listed in no task bar and no
    /// switcher. Does nothing where the compositor is another.
    void place(QWindow& window, QPoint place);

private:
    org_kde_plasma_shell* shell_ = nullptr;
    org_kde_plasma_surface* surface_ = nullptr;
};

} // namespace orvanta
