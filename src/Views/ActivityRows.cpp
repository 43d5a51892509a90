#include "Views/ActivityRows.h"

#include "Model/Activity.h"
#include "Views/Accessibility.h"
#include "Views/ActivityRow.h"
#include "Views/GridButton.h"
#include "Views/PanelGeometry.h"
#include "Views/TextBlock.h"

#include <QCursor>
#include <QKeyEvent>
#include <QScrollBar>

#include <algorithm>

namespace orvanta {

namespace {

constexpr int mostVisible = contentHeight / rowHeight + 1;
constexpr int poolSize = mostVisible + 2;

} // namespace

ActivityRows::ActivityRows(const Appearance& appearance, Listing listing, QWidget* parent)
    : QScrollArea(parent)
    , canvas_(new QWidget)
    , empty_(new TextBlock(
          appearance,
          {.size = 11, .padding = cellPadding, .minHeight = rowHeight, .isCentred = true},
          panelWidth, canvas_)) {
    setFixedSize(panelWidth, contentHeight);
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setAutoFillBackground(false);
    verticalScrollBar()->setSingleStep(rowHeight / 2);
    setAccessibleRole(*canvas_, QAccessible::List);
    for (int i = 0; i < poolSize; ++i) {
        auto* const row = new ActivityRow(appearance, listing, canvas_);
        row->hide();
        connect(row, &ActivityRow::pointerCame, this, [this, row] { setHovered(row); });
        connect(row, &ActivityRow::pointerWent, this, [this] { setHovered(nullptr); });
        connect(row, &ActivityRow::stopRequested, this, &ActivityRows::stopRequested);
        connect(row, &ActivityRow::classificationRequested, this,
                &ActivityRows::classificationRequested);
        connect(row, &ActivityRow::resumeRequested, this, &ActivityRows::resumeRequested);
        rows_.push_back(row);
    }
    setWidget(canvas_);
    canvas_->setAutoFillBackground(false);
}

void ActivityRows::setActivities(const std::vector<const Activity*>& activities,
                                 const std::optional<QString>& timedKey) {
    const auto before = keyboard();
    activities_ = activities;
    timedKey_ = timedKey;
    canvas_->resize(panelWidth, std::max(1, count()) * rowHeight);
    empty_->setVisible(activities_.empty());
    showRows();
    if (before) {
        keepKeyboard(*before, false);
    }
}

void ActivityRows::setEmptyText(const QString& text) {
    empty_->setText(text);
}

ActivityRow* ActivityRows::rowOf(const Activity& activity) const {
    const auto found = std::ranges::find_if(rows_, [&](const ActivityRow* row) {
        return !row->isHidden() && row->activity() == &activity;
    });
    return found != rows_.end() ? *found : nullptr;
}

void ActivityRows::scrollContentsBy(int dx, int dy) {
    const auto before = keyboard();
    QScrollArea::scrollContentsBy(dx, dy);
    showRows();
    if (before) {
        keepKeyboard(*before, true);
    }
    // The pointer stays where it is while the rows go by.
    const auto isUnderPointer = [isOver = viewport()->underMouse()](const QWidget* widget) {
        return isOver && widget->isVisible() &&
               widget->rect().contains(widget->mapFromGlobal(QCursor::pos()));
    };
    const auto under = std::ranges::find_if(rows_, isUnderPointer);
    setHovered(under != rows_.end() ? *under : nullptr);
    for (const ActivityRow* row : rows_) {
        for (GridButton* control : row->controls()) {
            control->setPointerOver(isUnderPointer(control));
        }
    }
}

void ActivityRows::setHovered(const ActivityRow* hovered) {
    for (ActivityRow* row : rows_) {
        row->setHovered(row == hovered);
    }
}

void ActivityRows::showRows() {
    const int top = verticalScrollBar()->value();
    const int first = std::max(0, top / rowHeight - 1);
    const int end = std::min(count(), (top + contentHeight - 1) / rowHeight + 2);
    for (int i = first; i < end; ++i) {
        ActivityRow* const row = rowAt(i);
        const Activity& activity = *activities_[static_cast<std::size_t>(i)];
        row->show(activity, activity.key() == timedKey_);
        row->move(0, i * rowHeight);
        row->QWidget::show();
    }
    for (int i = std::max(0, end - first); i < poolSize; ++i) {
        rowAt(first + i)->hide();
    }
}

std::optional<ActivityRows::Keyboard> ActivityRows::keyboard() const {
    for (const ActivityRow* row : rows_) {
        for (std::size_t i = 0; i < row->controls().size(); ++i) {
            if (row->controls()[i]->hasFocus()) {
                return Keyboard{row->activity(), row->y() / rowHeight, i};
            }
        }
    }
    return std::nullopt;
}

/// The keyboard belongs to an activity, not to a place: what moves takes it along. When the person
/// scrolls it away, or when it goes, the nearest one gets it.
void ActivityRows::keepKeyboard(const Keyboard& before, bool isScrolling) {
    if (const auto now = keyboard(); now && now->activity == before.activity) {
        return;
    }
    if (activities_.empty()) {
        return;
    }
    int index = before.index;
    if (isScrolling) {
        const int top = verticalScrollBar()->value();
        index = std::clamp(index, (top + rowHeight - 1) / rowHeight,
                           (top + contentHeight) / rowHeight - 1);
    } else if (const auto found = std::ranges::find(activities_, before.activity);
               found != activities_.end()) {
        index = static_cast<int>(found - activities_.begin());
    }
    giveKeyboard(index, before.control);
}

void ActivityRows::giveKeyboard(int index, std::size_t control) {
    index = std::clamp(index, 0, count() - 1);
    ensureVisible(0, index * rowHeight + rowHeight / 2, 0, rowHeight / 2);
    rowAt(index)->controls()[control]->setFocus(Qt::OtherFocusReason);
}

/// Up and down lead to the same control of another row.
void ActivityRows::keyPressEvent(QKeyEvent* event) {
    const auto current = keyboard();
    if (current && (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down)) {
        giveKeyboard(current->index + (event->key() == Qt::Key_Up ? -1 : 1), current->control);
    } else {
        QScrollArea::keyPressEvent(event);
    }
}

} // namespace orvanta
