#pragma once

namespace orvanta {

/// Whether the desktop is drawn dark on light or light on dark.
enum class ColorScheme { light, dark };

} // namespace orvanta
