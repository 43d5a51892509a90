#pragma once

#include <QString>

namespace orvanta {

/// A name that a program gave itself, fit to be shown in one line: without line breaks and other
/// control characters, and without the marks that turn the direction of what follows (Unicode's
/// embeddings, overrides and isolates). Letters that are written from right to left stay as they
/// are. Longer than 200 UTF-16 units, it is cut and ends in "…".
QString cleanName(const QString& name);

/// The identifier as it is if it is clean and not longer than 255 UTF-16 units; else its head,
/// cleaned, and a hash of the whole, so that different ones stay different.
QString boundedIdentifier(const QString& identifier);

} // namespace orvanta
