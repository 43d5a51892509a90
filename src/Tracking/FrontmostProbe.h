#pragma once

#include "Tracking/Focus.h"

#include <optional>

namespace orvanta {

class Workspace;

/// The workspace's frontmost application as a focus; none when no application is in front.
std::optional<Focus> frontmostFocus(const Workspace& workspace);

} // namespace orvanta
