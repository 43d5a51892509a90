#pragma once

#include <QString>

#include <functional>

namespace orvanta {

class Appearance;
class Calendar;
class MainLoop;
class Tracker;

/// Why nothing can be counted on this desktop.
struct DesktopProblem {
    QString text; ///< one sentence; empty when nothing stands in the way
    /// What the person can do about it by a click; null when nothing.
    std::function<void()> solve;
};

/// What the panel is given. All that is referred to outlives it.
struct PanelSurroundings {
    Tracker& tracker;
    const Calendar& calendar; ///< the one that the tracker has
    const Appearance& appearance;
    MainLoop& mainLoop;
    std::function<void()> openSettings;
    std::function<void()> quit;
    std::function<DesktopProblem()> desktopProblem;
};

} // namespace orvanta
