#include "Views/CategoryButton.h"

#include "Platform/Appearance.h"
#include "Views/Accessibility.h"
#include "Views/Palette.h"
#include "Views/PanelGeometry.h"
#include "Views/Text/PanelText.h"

#include <QPainter>

namespace orvanta {

namespace {

constexpr int milliseconds = 350;
constexpr double selectedOpacity = 0.2;
constexpr double unselectedOpacity = 0.6;

QColor withOpacity(QColor color, double opacity) {
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

QColor between(const QColor& a, const QColor& b, double share) {
    const auto mixed = [share](float from, float to) {
        return from + static_cast<float>(share) * (to - from);
    };
    return QColor::fromRgbF(mixed(a.redF(), b.redF()), mixed(a.greenF(), b.greenF()),
                            mixed(a.blueF(), b.blueF()), mixed(a.alphaF(), b.alphaF()));
}

} // namespace

CategoryButton::CategoryButton(const Appearance& appearance, Category category, QWidget* parent)
    : GridButton(appearance, QSize(rowHeight, rowHeight), Qt::RightEdge | Qt::BottomEdge, parent)
    , category_(category) {
    setCheckable(true);
    setLabel(
        {.text = category == Category::production ? QStringLiteral("↑") : QStringLiteral("↓")});
    fill_.setStartValue(0.0);
    fill_.setEndValue(1.0);
    fill_.setDuration(milliseconds);
    connect(&fill_, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
}

void CategoryButton::setSelected(const QString& name, bool selected, bool animated) {
    setTitles(categoryToolTip(name, category_, selected), categoryTitle(name, category_));
    setAccessibleValue(*this, categoryValueText(selected));
    const auto direction = selected ? QAbstractAnimation::Forward : QAbstractAnimation::Backward;
    if (selected != isChecked()) {
        setChecked(selected);
        fill_.setDirection(direction);
        // Out of the state it was in, in both directions.
        fill_.setEasingCurve(selected ? QEasingCurve::OutQuad : QEasingCurve::InQuad);
        if (animated && !appearance().reducesMotion()) {
            fill_.start();
            return;
        }
    } else if (animated) {
        return; // What moves, moves on.
    }
    fill_.stop();
    fill_.setCurrentTime(selected ? milliseconds : 0);
    update();
}

void CategoryButton::paintLabel(QPainter& painter, const Palette& palette) {
    const QColor& color = category_ == Category::production ? Palette::green : Palette::red;
    const double share = fill_.currentValue().toDouble();
    if (share > 0) {
        painter.fillRect(rect(), withOpacity(color, selectedOpacity * share));
    }
    painter.setPen(between(withOpacity(palette.muted, unselectedOpacity), color, share));
    painter.drawText(rect(), Qt::AlignCenter, label().text);
}

} // namespace orvanta
