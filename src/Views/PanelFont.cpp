#include "Views/PanelFont.h"

#include <QFontDatabase>
#include <QPaintDevice>

namespace orvanta {

QFont panelFont(double size, const QPaintDevice& device) {
    constexpr double printersPointsPerInch = 72;
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    // Only a size in printer's points can have a fraction.
    font.setPointSizeF(size * printersPointsPerInch / device.logicalDpiY());
    return font;
}

} // namespace orvanta
