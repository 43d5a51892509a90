#pragma once

#include <QColor>
#include <QRect>
#include <QTransform>
#include <QtCore/qnamespace.h>

QT_BEGIN_NAMESPACE
class QPainter;
QT_END_NAMESPACE

namespace orvanta {

/// A painter in whole pixels of its device, as long as this lives. What is drawn on them is sharp
/// at every ratio of points to pixels.
class DeviceGrid {
public:
    explicit DeviceGrid(QPainter& painter);
    ~DeviceGrid();
    DeviceGrid(const DeviceGrid&) = delete;
    DeviceGrid& operator=(const DeviceGrid&) = delete;

    /// How many pixels a point has.
    double ratio() const { return ratio_; }
    /// The nearest pixels to an area in points.
    QRect pixels(const QRectF& area) const;

private:
    QPainter& painter_;
    QTransform toDevice_;
    double ratio_;
};

/// A line of half a point along an edge of an area, inside of it: as near to that as whole pixels
/// come, and at least one.
void drawRule(QPainter& painter, const QRectF& area, Qt::Edge edge, const QColor& color);

} // namespace orvanta
