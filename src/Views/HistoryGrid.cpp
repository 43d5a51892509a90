#include "Views/HistoryGrid.h"

#include "Platform/Appearance.h"
#include "Views/Accessibility.h"
#include "Views/DayCell.h"
#include "Views/Palette.h"
#include "Views/PanelFont.h"
#include "Views/PanelGeometry.h"
#include "Views/Text/HistoryText.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QPainter>

#include <algorithm>
#include <iterator>
#include <utility>

namespace orvanta {

namespace {

constexpr int daysPerWeek = 7;
constexpr int monthsSpacing = 6; // Between the months' names and the days.
constexpr double labelSize = 10;

} // namespace

HistoryGrid::HistoryGrid(const Appearance& appearance, const Calendar& calendar,
                         std::function<void()> hoveredDayChanged, QWidget* parent)
    : QWidget(parent)
    , appearance_(appearance)
    , calendar_(calendar)
    , hoveredDayChanged_(std::move(hoveredDayChanged))
    , days_(new QWidget(this)) {
    setFixedSize(panelWidth, contentHeight);
    days_->installEventFilter(this);
    setAccessibleRole(*days_, QAccessible::List);
    days_->setAccessibleName(QStringLiteral("Histórico por dia"));
}

void HistoryGrid::setWeeks(const Weeks& weeks) {
    std::size_t count = 0;
    for (const auto& week : weeks) {
        count += week.size();
    }
    if (count != cells_.size()) {
        build(weeks);
    }
    std::size_t next = 0;
    for (const auto& week : weeks) {
        for (const HistoryDay& day : week) {
            cells_[next++]->setDay(day, calendar_);
        }
    }
    if (const QStringList labels = monthLabels(weeks, calendar_); labels != monthLabels_) {
        monthLabels_ = labels;
        update();
    }
}

void HistoryGrid::build(const Weeks& weeks) {
    hover(nullptr);
    tabStop_ = nullptr;
    qDeleteAll(cells_);
    cells_.clear();
    std::size_t mostDays = 0;
    for (std::size_t column = 0; column < weeks.size(); ++column) {
        for (std::size_t row = 0; row < weeks[column].size(); ++row) {
            const auto index = cells_.size();
            auto* const cell = new DayCell(
                appearance_, [this, index] { hover(cells_[index]); }, [this] { hover(nullptr); },
                days_);
            cell->move(static_cast<int>(column) * DayCell::pitch,
                       static_cast<int>(row) * DayCell::pitch);
            cell->show();
            cells_.push_back(cell);
        }
        mostDays = std::max(mostDays, weeks[column].size());
    }
    if (!cells_.empty()) {
        setTabStop(cells_.back());
    }
    const int width = static_cast<int>(weeks.size()) * DayCell::pitch;
    const int height = static_cast<int>(mostDays) * DayCell::pitch;
    labelsHeight_ = QFontMetrics(panelFont(labelSize, *this), this).height();
    labelsTop_ = (contentHeight - labelsHeight_ - monthsSpacing - height) / 2;
    days_->setGeometry((panelWidth - width) / 2, labelsTop_ + labelsHeight_ + monthsSpacing, width,
                       height);
}

const HistoryDay* HistoryGrid::hoveredDay() const {
    return hovered_ != nullptr ? &hovered_->day() : nullptr;
}

void HistoryGrid::hover(DayCell* cell) {
    if (cell == hovered_) {
        return;
    }
    if (hovered_ != nullptr) {
        hovered_->setHovered(false);
    }
    hovered_ = cell;
    if (hovered_ != nullptr) {
        hovered_->setHovered(true);
    }
    hoveredDayChanged_();
}

void HistoryGrid::setTabStop(DayCell* cell) {
    if (tabStop_ != nullptr) {
        tabStop_->setFocusPolicy(Qt::NoFocus);
    }
    tabStop_ = cell;
    tabStop_->setFocusPolicy(Qt::TabFocus);
}

void HistoryGrid::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setFont(panelFont(labelSize, *this));
    painter.setPen(Palette(appearance_.colorScheme()).muted);
    int x = days_->x() + (DayCell::pitch - DayCell::square) / 2;
    for (const QString& text : monthLabels_) {
        painter.drawText(QRect(x, labelsTop_, panelWidth, labelsHeight_),
                         Qt::AlignLeft | Qt::AlignVCenter, text);
        x += DayCell::pitch;
    }
}

void HistoryGrid::keyPressEvent(QKeyEvent* event) {
    std::ptrdiff_t step = 0;
    switch (event->key()) {
    case Qt::Key_Up:
        step = -1;
        break;
    case Qt::Key_Down:
        step = 1;
        break;
    case Qt::Key_Left:
        step = -daysPerWeek;
        break;
    case Qt::Key_Right:
        step = daysPerWeek;
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    const auto current = std::ranges::find(cells_, tabStop_);
    const std::ptrdiff_t next = std::distance(cells_.begin(), current) + step;
    if (next >= 0 && next < std::ssize(cells_)) {
        setTabStop(cells_[static_cast<std::size_t>(next)]);
        tabStop_->setFocus(Qt::TabFocusReason);
    }
}

bool HistoryGrid::eventFilter(QObject* watched, QEvent* event) {
    if (watched == days_ && event->type() == QEvent::Leave) {
        hover(nullptr);
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace orvanta
