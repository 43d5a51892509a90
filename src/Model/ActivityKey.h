#pragma once

#include <QString>

namespace orvanta {

/// Activity keys are plain text, compared exactly. An application's is this prefix and its bundle
/// identifier,
inline constexpr QLatin1StringView appKeyPrefix{"app:"};

/// a site's is this prefix and its host.
inline constexpr QLatin1StringView siteKeyPrefix{"site:"};

/// Keys that older versions wrote for what they could not name.
inline constexpr QLatin1StringView unknownKeyPrefix{"unknown:"};

} // namespace orvanta
