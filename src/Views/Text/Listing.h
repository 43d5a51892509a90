#pragma once

#include <cstdint>

namespace orvanta {

/// What the panel's content area shows.
enum class Listing : std::uint8_t { activities, unmonitored, history };

} // namespace orvanta
