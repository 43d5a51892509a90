#pragma once

#include "Model/DayTotals.h"

#include <QStringList>
#include <QWidget>

#include <functional>
#include <vector>

namespace orvanta {

class Appearance;
class Calendar;
class DayCell;

/// The last weeks, a column each, under the names of their months. One day at a time is looked at,
/// by the pointer or by the keyboard, whose arrows go from day to day.
class HistoryGrid final : public QWidget {
public:
    using Weeks = std::vector<std::vector<HistoryDay>>;

    /// `calendar` and `appearance` outlive the grid; `hoveredDayChanged` is called when another day
    /// is looked at, or none.
    HistoryGrid(const Appearance& appearance, const Calendar& calendar,
                std::function<void()> hoveredDayChanged, QWidget* parent = nullptr);

    void setWeeks(const Weeks& weeks);

    /// Null when none is looked at.
    const HistoryDay* hoveredDay() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void build(const Weeks& weeks);
    void hover(DayCell* cell);
    /// One of the days is where Tab leads to.
    void setTabStop(DayCell* cell);

    const Appearance& appearance_;
    const Calendar& calendar_;
    std::function<void()> hoveredDayChanged_;
    QWidget* days_;
    std::vector<DayCell*> cells_; ///< in order of time
    DayCell* hovered_ = nullptr;
    DayCell* tabStop_ = nullptr;
    QStringList monthLabels_;
    int labelsTop_ = 0;
    int labelsHeight_ = 0;
};

} // namespace orvanta
