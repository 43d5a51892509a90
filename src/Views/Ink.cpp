#include "Views/Ink.h"

#include <QPalette>

namespace orvanta {

QColor secondaryInk(const QPalette& palette) {
    constexpr float share = 0.72F; // Of the text's colour, the rest being the background's.
    const QColor text = palette.color(QPalette::Active, QPalette::WindowText);
    const QColor background = palette.color(QPalette::Active, QPalette::Window);
    const auto mixed = [](float a, float b) {
        return a * share + b * (1 - share);
    };
    return QColor::fromRgbF(mixed(text.redF(), background.redF()),
                            mixed(text.greenF(), background.greenF()),
                            mixed(text.blueF(), background.blueF()));
}

QColor destructiveInk(const QPalette& palette) {
    const bool isDark = palette.color(QPalette::Active, QPalette::Button).lightnessF() < 0.5F;
    return isDark ? QColor(0xFF, 0x8A, 0x80) : QColor(0xB3, 0x1B, 0x1B);
}

QFont captionFont(QFont font) {
    constexpr double share = 0.85;
    if (font.pointSizeF() > 0) {
        font.setPointSizeF(font.pointSizeF() * share);
    } else {
        font.setPixelSize(qRound(font.pixelSize() * share));
    }
    return font;
}

} // namespace orvanta
