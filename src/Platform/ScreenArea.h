#pragma once

#include <QRect>

namespace orvanta {

/// One monitor, in device-independent pixels of the desktop's coordinates.
struct ScreenArea {
    QRect geometry; ///< all of it
    QRect workArea; ///< what panels and docks leave of it; never empty

    friend bool operator==(const ScreenArea&, const ScreenArea&) = default;
};

} // namespace orvanta
