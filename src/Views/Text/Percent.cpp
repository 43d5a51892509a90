#include "Views/Text/Percent.h"

#include <cmath>

namespace orvanta {

int percent(double share) {
    return static_cast<int>(std::nearbyint(share * 100));
}

} // namespace orvanta
