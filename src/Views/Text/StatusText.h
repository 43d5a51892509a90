#pragma once

#include "Platform/StatusItem.h"

#include <QString>

namespace orvanta {

/// Seconds of the session by category, as far as the status item speaks of them.
struct StatusTotals {
    double production = 0;
    double consumption = 0;
    double pending = 0;
};

/// The status item's title: an arrow and the shares of production and consumption.
StatusTitle statusTitle(const StatusTotals& totals, bool paused);

/// The same in words, with the time counted; also what a screen reader says.
QString statusToolTip(const StatusTotals& totals, bool paused);

} // namespace orvanta
