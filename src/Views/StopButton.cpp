#include "Views/StopButton.h"

#include "Platform/Appearance.h"
#include "Views/Palette.h"
#include "Views/PanelGeometry.h"

#include <QPainter>

namespace orvanta {

namespace {

constexpr int hitMargin = 3; // Around what is seen, to be hit more easily.
constexpr int buttonHeight = 24;

} // namespace

StopButton::StopButton(const Appearance& appearance, QWidget* parent)
    : GridButton(appearance, QSize(seenWidth + 2 * hitMargin, buttonHeight), {}, parent) {
    setLabel({.symbol = Symbol::xmarkSquare, .size = 10, .ink = Ink::muted});
}

void StopButton::placeAt(int x) {
    move(x - hitMargin, (rowHeight - buttonHeight) / 2);
}

void StopButton::setRevealed(bool revealed) {
    if (revealed != isRevealed_) {
        isRevealed_ = revealed;
        update();
    }
}

void StopButton::paintEvent(QPaintEvent* event) {
    if (hasKeyboard()) {
        GridButton::paintEvent(event);
    } else if (isRevealed_) {
        QPainter painter(this);
        paintLabel(painter, Palette(appearance().colorScheme()));
    }
}

} // namespace orvanta
