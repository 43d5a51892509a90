#pragma once

#include <QString>

namespace orvanta {

/// A number of seconds as people read it: "h:mm:ss" from an hour on (hours are not capped), "m:ss"
/// below. Fractions are cut off; less than nothing, and what is no number, is "0:00".
QString duration(double seconds);

} // namespace orvanta
