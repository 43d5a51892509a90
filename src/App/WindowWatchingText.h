#pragma once

#include "Linux/Windows/WindowWatcher.h"

#include <QString>

namespace orvanta {

/// One sentence for the person on why nothing is counted; empty when nothing stands in the way.
QString windowWatchingText(WindowWatcher::State state);

} // namespace orvanta
