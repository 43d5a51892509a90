#pragma once

#include "Platform/ScreenArea.h"

#include <vector>

namespace orvanta {

/// All monitors, the main one first. Asks the X server where there is one. Needs a
/// QGuiApplication.
std::vector<ScreenArea> screenAreas();

} // namespace orvanta
