#pragma once

#include "Platform/ColorScheme.h"

#include <QColor>

namespace orvanta {

/// The colours of the panel and of the setup: greys that follow the desktop's appearance, and the
/// green of production and the red of consumption, which do not. All are opaque sRGB.
struct Palette {
    explicit Palette(ColorScheme scheme);

    QColor background; ///< of everything
    QColor foreground; ///< of texts
    QColor muted;      ///< of what is secondary
    QColor rule;       ///< of separators

    static const QColor green;
    static const QColor red;
};

} // namespace orvanta
