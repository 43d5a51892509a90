#include "Views/DeviceGrid.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace orvanta {

DeviceGrid::DeviceGrid(QPainter& painter)
    : painter_(painter)
    , toDevice_(painter.deviceTransform())
    , ratio_(std::hypot(toDevice_.m11(), toDevice_.m12())) {
    painter.save();
    // A widget is painted somewhere on its window's surface, so that the world's transform is only
    // the last part of the way.
    const QTransform rest = painter.worldTransform().inverted() * toDevice_;
    painter.setWorldTransform(rest.inverted());
}

DeviceGrid::~DeviceGrid() {
    painter_.restore();
}

QRect DeviceGrid::pixels(const QRectF& area) const {
    const QRectF mapped = toDevice_.mapRect(area);
    return {QPoint(qRound(mapped.left()), qRound(mapped.top())),
            QPoint(qRound(mapped.right()) - 1, qRound(mapped.bottom()) - 1)};
}

void drawRule(QPainter& painter, const QRectF& area, Qt::Edge edge, const QColor& color) {
    const DeviceGrid grid(painter);
    const int thickness = std::max(1, qRound(grid.ratio() / 2));
    QRect line = grid.pixels(area);
    switch (edge) {
    case Qt::TopEdge:
        line.setHeight(thickness);
        break;
    case Qt::BottomEdge:
        line.setTop(line.bottom() + 1 - thickness);
        break;
    case Qt::LeftEdge:
        line.setWidth(thickness);
        break;
    case Qt::RightEdge:
        line.setLeft(line.right() + 1 - thickness);
        break;
    }
    painter.fillRect(line, color);
}

} // namespace orvanta
