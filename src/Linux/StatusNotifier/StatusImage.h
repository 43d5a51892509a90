#pragma once

#include "Platform/StatusItem.h"

#include <QImage>

#include <array>

namespace orvanta {

/// Edges of the square images that a host is given, in pixels: panels' usual sizes, and twice those
/// for a scale factor of 2.
inline constexpr std::array statusImageEdges{16, 22, 24, 32, 44, 48, 64};

/// Twice the height at which hosts show the wide image, so that half of it is exact, too. Pixels.
inline constexpr int wideStatusImageHeight = 42;

/// The arrow and the production share in the tone's colour, in a square of `edge` (≥ 16) pixels,
/// transparent elsewhere. To be read on light and on dark panels alike.
QImage statusImage(const StatusTitle& title, int edge);

/// The whole title in one line, `height` (≥ 16) pixels high and as wide as it needs.
QImage wideStatusImage(const StatusTitle& title, int height);

} // namespace orvanta
