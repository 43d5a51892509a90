#pragma once

#include <QFont>

QT_BEGIN_NAMESPACE
class QPaintDevice;
QT_END_NAMESPACE

namespace orvanta {

/// The desktop's font of equal widths, `size` points high on the device. Points are pixels
/// independent of the device here, not those of a printer, and need not be whole.
QFont panelFont(double size, const QPaintDevice& device);

} // namespace orvanta
