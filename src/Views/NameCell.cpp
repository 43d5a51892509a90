#include "Views/NameCell.h"

#include "Platform/Appearance.h"
#include "Views/DeviceGrid.h"
#include "Views/Palette.h"
#include "Views/PanelGeometry.h"

#include <QFontMetrics>
#include <QPainter>

namespace orvanta {

namespace {

constexpr int iconSpacing = 6;
constexpr int dotSize = 4;

} // namespace

NameCell::NameCell(const Appearance& appearance, int buttonWidth, QWidget* parent)
    : Band(appearance, QSize(nameWidth, rowHeight), Qt::RightEdge | Qt::BottomEdge, parent)
    , buttonWidth_(buttonWidth) {}

int NameCell::durationX() const {
    return width() - cellPadding - fontMetrics().horizontalAdvance(content_.duration);
}

int NameCell::nameSpace() const {
    return durationX() - cellPadding - iconSpacing - smallestGap - iconSpacing -
           (content_.isTimed ? dotSize + iconSpacing : 0) -
           (buttonWidth_ > 0 ? buttonWidth_ + iconSpacing : 0);
}

int NameCell::buttonX() const {
    return cellPadding + fontMetrics().horizontalAdvance(name_) + iconSpacing;
}

void NameCell::setContent(const Content& content) {
    if (content == content_) {
        return;
    }
    const Content former = std::exchange(content_, content);
    const bool keepsPlaces = former.duration.size() == content.duration.size() &&
                             former.isTimed == content.isTimed && former.name == content.name;
    if (keepsPlaces && former.isMuted == content.isMuted) {
        update(durationX(), 0, width() - durationX(), height());
    } else {
        name_ = fontMetrics().elidedText(content_.name, Qt::ElideMiddle, nameSpace());
        update();
    }
    setAccessibleName(content_.name + QStringLiteral(", ") + content_.duration +
                      (content_.isTimed ? QStringLiteral(", Ativo") : QString()));
}

void NameCell::paintContent(QPainter& painter, const Palette& palette) {
    painter.setPen(content_.isMuted ? palette.muted : palette.foreground);
    const QRect cell = rect().adjusted(cellPadding, 0, -cellPadding, 0);
    constexpr int line = Qt::AlignVCenter | Qt::AlignAbsolute | Qt::TextSingleLine;
    // A name may be written from the right; it begins at the left all the same.
    painter.drawText(cell, line | Qt::AlignLeft, name_);
    painter.drawText(cell, line | Qt::AlignRight, content_.duration);
    if (content_.isTimed) {
        const DeviceGrid grid(painter);
        const QRect dot = grid.pixels(QRectF(durationX() - iconSpacing - dotSize,
                                             (height() - dotSize) / 2.0, dotSize, dotSize));
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(Palette::green);
        painter.drawEllipse(dot);
    }
}

} // namespace orvanta
