#pragma once

#include "Platform/WindowWatching.h"

#include <QString>

namespace orvanta {

/// One sentence for the person on why nothing is counted; empty when nothing stands in the way.
QString windowWatchingText(WindowWatching state);

} // namespace orvanta
