#pragma once

#include "Platform/ScreenArea.h"

#include <QPoint>
#include <QSize>

#include <optional>
#include <vector>

namespace orvanta {

/// The top left corner of a popover of this size: at what was clicked, below it where there is
/// room, and within the work area of its monitor. Where nothing was clicked, the corner of the
/// first monitor's work area that lies at its panel. Areas may be empty.
QPoint popoverPlace(std::optional<QPoint> clicked, const std::vector<ScreenArea>& screens,
                    QSize size);

} // namespace orvanta
