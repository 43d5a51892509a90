#include "Views/Palette.h"

namespace orvanta {

namespace {

QColor grey(double white) {
    return QColor::fromRgbF(static_cast<float>(white), static_cast<float>(white),
                            static_cast<float>(white));
}

} // namespace

Palette::Palette(ColorScheme scheme)
    : background(grey(scheme == ColorScheme::dark ? 0.063 : 0.98))
    , foreground(grey(scheme == ColorScheme::dark ? 0.9 : 0.12))
    , muted(grey(scheme == ColorScheme::dark ? 0.43 : 0.53))
    , rule(grey(scheme == ColorScheme::dark ? 0.125 : 0.89)) {}

const QColor Palette::green = QColor::fromRgbF(0.25F, 0.76F, 0.29F);
const QColor Palette::red = QColor::fromRgbF(0.82F, 0.14F, 0.23F);

} // namespace orvanta
