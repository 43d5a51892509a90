#pragma once

#include <QColor>
#include <QRect>

#include <cstdint>

QT_BEGIN_NAMESPACE
class QPainter;
QT_END_NAMESPACE

namespace orvanta {

enum class Symbol : std::uint8_t {
    squareGrid3x3,
    eyeSlash,
    xmarkSquare,
    play,
    pause,
    plusSquare,
    checkmark,
};

/// Draws the symbol in the middle of an area, as large as beside a text of `size` points.
void drawSymbol(QPainter& painter, Symbol symbol, const QRectF& area, double size,
                const QColor& color);

} // namespace orvanta
