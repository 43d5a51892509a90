#pragma once

#include <QString>

#include <functional>

namespace orvanta {

class Appearance;
class Calendar;
class MainLoop;
class Tracker;

/// What the panel is given. All that is referred to outlives it.
struct PanelSurroundings {
    Tracker& tracker;
    const Calendar& calendar; ///< the one that the tracker has
    const Appearance& appearance;
    MainLoop& mainLoop;
    std::function<void()> openSettings;
    std::function<void()> quit;
    /// Why nothing can be counted on this desktop, in one sentence; empty when nothing stands in
    /// the way.
    std::function<QString()> desktopProblem;
};

} // namespace orvanta
