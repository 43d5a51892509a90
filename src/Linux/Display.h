#pragma once

namespace orvanta {

/// Whether there is a display that windows can be shown on; Qt ends a process that asks in vain.
bool hasDisplay();

} // namespace orvanta
