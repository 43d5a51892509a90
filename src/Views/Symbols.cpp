#include "Views/Symbols.h"

#include "Views/DeviceGrid.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace orvanta {

namespace {

/// The square that a symbol is drawn into, in pixels, and the width of its lines.
struct Sheet {
    double side;
    double line;

    double middle() const { return side / 2; }
    /// The border of a square whose lines fill whole pixels.
    QPainterPath border(const QRectF& outer, double radius) const {
        QPainterPath path;
        path.addRoundedRect(outer.adjusted(line / 2, line / 2, -line / 2, -line / 2), radius,
                            radius);
        return path;
    }
    QPainterPath square() const { return border(QRectF(0, 0, side, side), side / 5); }
};

QPainterPath squareGrid3x3(const Sheet& sheet) {
    // All nine alike, even where the side does not divide.
    const double cell = std::floor((sheet.side - 2 * sheet.line) / 3);
    const double start = std::floor((sheet.side - 3 * cell - 2 * sheet.line) / 2);
    QPainterPath path;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            path.addPath(sheet.border(QRectF(start + column * (cell + sheet.line),
                                             start + row * (cell + sheet.line), cell, cell),
                                      sheet.line / 2));
        }
    }
    return path;
}

QPainterPath xmarkSquare(const Sheet& sheet) {
    QPainterPath path = sheet.square();
    const double near = sheet.side * 0.32;
    const double far = sheet.side - near;
    path.moveTo(near, near);
    path.lineTo(far, far);
    path.moveTo(far, near);
    path.lineTo(near, far);
    return path;
}

QPainterPath plusSquare(const Sheet& sheet) {
    QPainterPath path = sheet.square();
    const double near = sheet.side * 0.27;
    const double far = sheet.side - near;
    path.moveTo(sheet.middle(), near);
    path.lineTo(sheet.middle(), far);
    path.moveTo(near, sheet.middle());
    path.lineTo(far, sheet.middle());
    return path;
}

QPainterPath play(const Sheet& sheet) {
    const double left = sheet.side * 0.18;
    QPainterPath path;
    path.moveTo(left, sheet.side * 0.1);
    path.lineTo(sheet.side * 0.92, sheet.middle());
    path.lineTo(left, sheet.side * 0.9);
    path.closeSubpath();
    return path;
}

QPainterPath pause(const Sheet& sheet) {
    const double width = std::round(sheet.side * 0.3);
    const double top = std::round(sheet.side * 0.08);
    const double inset = std::round(sheet.side * 0.12);
    const double height = sheet.side - 2 * top;
    QPainterPath path = sheet.border(QRectF(inset, top, width, height), sheet.line);
    path.addPath(sheet.border(QRectF(sheet.side - inset - width, top, width, height), sheet.line));
    return path;
}

QPainterPath checkmark(const Sheet& sheet) {
    QPainterPath path;
    path.moveTo(sheet.side * 0.12, sheet.side * 0.55);
    path.lineTo(sheet.side * 0.4, sheet.side * 0.85);
    path.lineTo(sheet.side * 0.88, sheet.side * 0.15);
    return path;
}

QPainterPath eye(const Sheet& sheet) {
    const double edge = sheet.line / 2;
    const double right = sheet.side - edge;
    QPainterPath path;
    path.moveTo(edge, sheet.middle());
    path.quadTo(sheet.middle(), -sheet.side * 0.1, right, sheet.middle());
    path.quadTo(sheet.middle(), sheet.side * 1.1, edge, sheet.middle());
    path.addEllipse(QPointF(sheet.middle(), sheet.middle()), sheet.side * 0.14, sheet.side * 0.14);
    return path;
}

void drawEyeSlash(QPainter& painter, const Sheet& sheet) {
    const QPointF from(sheet.side * 0.12, sheet.side * 0.1);
    const QPointF to(sheet.side * 0.88, sheet.side * 0.9);
    // The eye gives way to the stroke on both of its sides.
    QPainterPath slash(from);
    slash.lineTo(to);
    QPainterPathStroker wide;
    wide.setWidth(3 * sheet.line);
    const QPainterPathStroker lines(painter.pen());
    painter.fillPath(lines.createStroke(eye(sheet)).subtracted(wide.createStroke(slash)),
                     painter.pen().color());
    painter.drawLine(from, to);
}

} // namespace

void drawSymbol(QPainter& painter, Symbol symbol, const QRectF& area, double size,
                const QColor& color) {
    const DeviceGrid grid(painter);
    const QRect pixels = grid.pixels(area);
    const int line = std::max(1, qRound(size * grid.ratio() / 11));
    int side = qRound(size * grid.ratio() * 1.15);
    side += (side - line) % 2; // A line in the middle lies on whole pixels.
    const QPoint corner(pixels.left() + (pixels.width() - side) / 2,
                        pixels.top() + (pixels.height() - side) / 2);
    painter.translate(corner);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    // A slanting line of whole pixels would look thinner than an upright one.
    const bool isUpright = symbol == Symbol::squareGrid3x3 || symbol == Symbol::xmarkSquare ||
                           symbol == Symbol::plusSquare || symbol == Symbol::pause;
    const double width = isUpright ? line : std::max<double>(line, size * grid.ratio() / 9);
    painter.setPen(QPen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));

    const Sheet sheet{static_cast<double>(side), static_cast<double>(line)};
    switch (symbol) {
    case Symbol::squareGrid3x3:
        return painter.drawPath(squareGrid3x3(sheet));
    case Symbol::eyeSlash:
        return drawEyeSlash(painter, sheet);
    case Symbol::xmarkSquare:
        return painter.drawPath(xmarkSquare(sheet));
    case Symbol::play:
        return painter.drawPath(play(sheet));
    case Symbol::pause:
        return painter.drawPath(pause(sheet));
    case Symbol::plusSquare:
        return painter.drawPath(plusSquare(sheet));
    case Symbol::checkmark:
        return painter.drawPath(checkmark(sheet));
    }
}

} // namespace orvanta
