#include "Views/Band.h"

#include "Platform/Appearance.h"
#include "Views/Accessibility.h"
#include "Views/DeviceGrid.h"
#include "Views/Palette.h"
#include "Views/PanelGeometry.h"

#include <QFontMetrics>
#include <QPainter>

namespace orvanta {

Band::Band(const Appearance& appearance, const QSize& size, Qt::Edges rules, QWidget* parent)
    : QWidget(parent)
    , appearance_(appearance)
    , rules_(rules) {
    setFixedSize(size);
    setAccessibleRole(*this, QAccessible::StaticText);
}

void Band::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const Palette palette(appearance_.colorScheme());
    paintContent(painter, palette);
    for (const Qt::Edge edge : {Qt::TopEdge, Qt::LeftEdge, Qt::RightEdge, Qt::BottomEdge}) {
        if (rules_.testFlag(edge)) {
            drawRule(painter, rect(), edge, palette.rule);
        }
    }
}

TextBand::TextBand(const Appearance& appearance, const QSize& size, Qt::Edges rules, Tone tone,
                   QWidget* parent)
    : Band(appearance, size, rules, parent)
    , tone_(tone) {}

void TextBand::setTexts(const QString& leading, const QString& trailing) {
    if (leading == leading_ && trailing == trailing_) {
        return;
    }
    const auto trailingX = [this] {
        return width() - cellPadding - fontMetrics().horizontalAdvance(trailing_);
    };
    const int formerX = trailingX();
    const bool isOnlyTrailing = leading == leading_;
    leading_ = leading;
    trailing_ = trailing;
    setAccessibleName(trailing.isEmpty() ? leading : leading + u' ' + trailing);
    if (isOnlyTrailing && trailingX() == formerX) {
        update(formerX, 0, width() - formerX, height()); // The first text has the room it had.
    } else {
        update();
    }
}

void TextBand::paintContent(QPainter& painter, const Palette& palette) {
    const QRect cell = rect().adjusted(cellPadding, 0, -cellPadding, 0);
    const QFontMetrics metrics = painter.fontMetrics();
    const int trailingWidth =
        trailing_.isEmpty() ? 0 : metrics.horizontalAdvance(trailing_) + smallestGap;
    painter.setPen(tone_ == Tone::muted ? palette.muted : palette.foreground);
    painter.drawText(cell, Qt::AlignVCenter | Qt::AlignRight, trailing_);
    painter.drawText(cell, Qt::AlignVCenter | Qt::AlignLeft,
                     metrics.elidedText(leading_, Qt::ElideMiddle, cell.width() - trailingWidth));
}

} // namespace orvanta
