#pragma once

#include <QString>

namespace orvanta {

/// A share from 0 to 1 as C's "%.0f" of its percent: halves go to the even number. Without a sign.
QString percent(double share);

} // namespace orvanta
