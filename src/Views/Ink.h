#pragma once

#include <QColor>
#include <QFont>

QT_BEGIN_NAMESPACE
class QPalette;
QT_END_NAMESPACE

namespace orvanta {

/// For texts that explain others. Fainter than those, and easily read all the same.
QColor secondaryInk(const QPalette& palette);

/// For what takes something away for good.
QColor destructiveInk(const QPalette& palette);

/// The size for texts that explain those of this font.
QFont captionFont(QFont font);

} // namespace orvanta
