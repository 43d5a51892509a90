#pragma once

#include <QString>

#include <array>
#include <cstdint>
#include <optional>

namespace orvanta {

/// How a person judges the time that an activity takes.
enum class Category : std::uint8_t {
    production,
    consumption,
    pending, ///< not yet classified; also what a stored text that is no category counts as
    ignored, ///< not monitored
    neutral, ///< stored by older versions only
};

/// In the order in which lists and pickers show them.
inline constexpr std::array allCases{Category::production, Category::consumption, Category::pending,
                                     Category::ignored, Category::neutral};

/// The text under which the store keeps a category; also its identity in lists and pickers.
QString rawValue(Category category);

/// The category that `rawValue` is the text of, compared exactly; none for any other text.
std::optional<Category> categoryFromRawValue(QStringView rawValue);

/// What the person reads.
QString label(Category category);

} // namespace orvanta
