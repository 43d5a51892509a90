#include "Views/GridButton.h"

#include "Platform/Appearance.h"
#include "Views/Accessibility.h"
#include "Views/DeviceGrid.h"
#include "Views/Palette.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QPainter>

namespace orvanta {

namespace {

constexpr double pressedTint = 0.14;
constexpr double hoverTint = 0.06;

/// Windows and menus that come and go take the focus and give it back; that is not worth showing.
bool isWindows(Qt::FocusReason reason) {
    return reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason;
}

QColor color(GridButton::Ink ink, const Palette& palette) {
    switch (ink) {
    case GridButton::Ink::foreground:
        return palette.foreground;
    case GridButton::Ink::muted:
        return palette.muted;
    case GridButton::Ink::green:
        return Palette::green;
    case GridButton::Ink::red:
        break;
    }
    return Palette::red;
}

} // namespace

GridButton::GridButton(const Appearance& appearance, const QSize& size, Qt::Edges rules,
                       QWidget* parent)
    : QAbstractButton(parent)
    , appearance_(appearance)
    , rules_(rules) {
    setFixedSize(size);
    setAccessibleRole(*this, QAccessible::Button);
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::TabFocus); // A click leaves the keyboard where it was.
}

void GridButton::setLabel(const Label& label) {
    if (label != label_) {
        label_ = label;
        update();
    }
}

void GridButton::setTitles(const QString& toolTip, const QString& accessibleName) {
    if (toolTip != this->toolTip()) {
        setToolTip(toolTip);
        setAccessibleDescription(toolTip); // The same, but readers are told that it has changed.
    }
    if (accessibleName != this->accessibleName()) {
        setAccessibleName(accessibleName);
    }
}

void GridButton::setPointerOver(bool over) {
    if (over != underMouse()) {
        setAttribute(Qt::WA_UnderMouse, over);
        update();
    }
}

double GridButton::tint() const {
    if (isDown()) {
        return pressedTint;
    }
    return underMouse() || hasKeyboard_ ? hoverTint : 0;
}

void GridButton::paintLabel(QPainter& painter, const Palette& palette) {
    const QColor ink = color(label_.ink, palette);
    if (label_.symbol) {
        drawSymbol(painter, *label_.symbol, rect(), label_.size, ink);
    } else {
        painter.setPen(ink);
        painter.drawText(rect(), Qt::AlignCenter, label_.text);
    }
}

void GridButton::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const Palette palette(appearance_.colorScheme());
    if (const double opacity = tint(); opacity > 0) {
        QColor primary = appearance_.colorScheme() == ColorScheme::dark ? Qt::white : Qt::black;
        primary.setAlphaF(static_cast<float>(opacity));
        painter.fillRect(rect(), primary);
    }
    paintLabel(painter, palette);
    for (const Qt::Edge edge : {Qt::TopEdge, Qt::LeftEdge, Qt::RightEdge, Qt::BottomEdge}) {
        if (rules_.testFlag(edge)) {
            drawRule(painter, rect(), edge, palette.rule);
        }
    }
}

void GridButton::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!event->isAutoRepeat()) {
            click();
        }
        break;
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Left:
    case Qt::Key_Right:
        event->ignore(); // Whoever holds the button knows what is there.
        break;
    default:
        QAbstractButton::keyPressEvent(event);
        break;
    }
}

void GridButton::focusInEvent(QFocusEvent* event) {
    if (!isWindows(event->reason())) {
        hasKeyboard_ = true;
    }
    QAbstractButton::focusInEvent(event);
}

void GridButton::focusOutEvent(QFocusEvent* event) {
    if (!isWindows(event->reason())) {
        hasKeyboard_ = false;
    }
    QAbstractButton::focusOutEvent(event);
}

} // namespace orvanta
