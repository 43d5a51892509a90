#include "Linux/Screens.h"

#include "Linux/Display.h"
#include "Linux/Windows/X11Screens.h"

#include <QGuiApplication>
#include <QScreen>

namespace orvanta {

namespace {

// Qt scales each monitor from its own top left corner, which stays where it is.

QRect toPixels(const QScreen& screen) {
    const QRect area = screen.geometry();
    return {area.topLeft(), (QSizeF(area.size()) * screen.devicePixelRatio()).toSize()};
}

QRect fromPixels(const QRect& pixels, const QScreen& screen) {
    const QPoint origin = screen.geometry().topLeft();
    const qreal ratio = screen.devicePixelRatio();
    const QPointF topLeft = QPointF(pixels.topLeft() - origin) / ratio;
    const QSizeF size = QSizeF(pixels.size()) / ratio;
    return {origin + QPoint(qCeil(topLeft.x()), qCeil(topLeft.y())),
            QSize(qFloor(size.width()), qFloor(size.height()))};
}

} // namespace

std::vector<ScreenArea> screenAreas() {
    const QList<QScreen*> screens = QGuiApplication::screens();
    std::vector<ScreenArea> result;
    for (const QScreen* screen : screens) {
        result.push_back({screen->geometry(), screen->availableGeometry()});
    }
    // Of what panels leave on X11 Qt hears no more.
    if (xcb_connection_t* connection = qtX11Connection()) {
        std::vector<QRect> monitors;
        for (const QScreen* screen : screens) {
            monitors.push_back(toPixels(*screen));
        }
        const std::vector<QRect> areas = x11WorkAreas(connection, monitors);
        for (size_t i = 0; i < areas.size(); ++i) {
            result[i].workArea =
                fromPixels(areas[i], *screens[static_cast<qsizetype>(i)]) & result[i].geometry;
        }
    }
    return result;
}

} // namespace orvanta
