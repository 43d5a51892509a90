#pragma once

namespace orvanta {

/// A share from 0 to 1 in whole percent, as C's "%.0f" rounds it: halves go to the even number.
int percent(double share);

} // namespace orvanta
