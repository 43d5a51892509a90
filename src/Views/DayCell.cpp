#include "Views/DayCell.h"

#include "Model/Calendar.h"
#include "Views/Accessibility.h"
#include "Views/DeviceGrid.h"
#include "Views/Palette.h"
#include "Views/Text/HistoryText.h"

#include <QFocusEvent>
#include <QPainter>

#include <algorithm>
#include <utility>

namespace orvanta {

namespace {

constexpr double squareMargin = (DayCell::pitch - DayCell::square) / 2.0;
constexpr float pendingOpacity = 0.35F;

} // namespace

DayCell::DayCell(const Appearance& appearance, std::function<void()> entered,
                 std::function<void()> left, QWidget* parent)
    : Band(appearance, QSize(pitch, pitch), {}, parent)
    , entered_(std::move(entered))
    , left_(std::move(left)) {}

void DayCell::setDay(const HistoryDay& day, const Calendar& calendar) {
    if (day == day_) {
        return;
    }
    day_ = day;
    setAccessibleName(dayTitle(day.date, calendar));
    setAccessibleValue(*this, dayShares(day.totals));
    update();
}

void DayCell::setHovered(bool hovered) {
    if (hovered != isHovered_) {
        isHovered_ = hovered;
        update();
    }
}

void DayCell::paintContent(QPainter& painter, const Palette& palette) {
    const auto& [production, consumption, pending] = day_.totals;
    const double classified = production + consumption;
    const DeviceGrid grid(painter);
    // All days alike, wherever they fall between the pixels.
    const int side = static_cast<int>(square * grid.ratio());
    const QRect pixels(grid.pixels(QRectF(squareMargin, squareMargin, square, square)).topLeft(),
                       QSize(side, side));
    if (classified > 0) {
        const int green = qRound(side * production / classified);
        painter.fillRect(pixels, Palette::red);
        painter.fillRect(pixels.adjusted(0, side - green, 0, 0), Palette::green);
    } else if (classified + pending > 0) {
        QColor faint = palette.muted;
        faint.setAlphaF(pendingOpacity);
        painter.fillRect(pixels, faint);
    } else {
        painter.fillRect(pixels, palette.rule);
    }
    if (isHovered_) {
        const int line = std::max(1, qRound(grid.ratio()));
        const QRegion inner(pixels.adjusted(line, line, -line, -line));
        painter.setClipRegion(QRegion(pixels) - inner);
        painter.fillRect(pixels, palette.foreground);
    }
}

void DayCell::enterEvent(QEnterEvent* event) {
    Band::enterEvent(event);
    entered_();
}

void DayCell::focusInEvent(QFocusEvent* event) {
    Band::focusInEvent(event);
    entered_();
}

void DayCell::focusOutEvent(QFocusEvent* event) {
    Band::focusOutEvent(event);
    left_();
}

} // namespace orvanta
