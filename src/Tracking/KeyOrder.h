#pragma once

#include <QStringView>

#include <compare>

namespace orvanta {

/// The order of keys in the listings: that of their Unicode characters, composed. Plain character
/// codes for ASCII; two spellings of one text are equivalent.
std::weak_ordering compareKeys(QStringView a, QStringView b);

} // namespace orvanta
