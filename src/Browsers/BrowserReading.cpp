#include "Browsers/BrowserReading.h"

namespace orvanta {

BrowserReading::~BrowserReading() = default;

} // namespace orvanta
