#pragma once

#include "Model/DayTotals.h"
#include "Views/Band.h"

#include <functional>

namespace orvanta {

class Calendar;

/// A day of the history: a square coloured by what the day was spent on.
class DayCell final : public Band {
public:
    static constexpr int pitch = 22;  ///< the place of one day, in points
    static constexpr int square = 18; ///< what is coloured of it

    /// `entered` is called when the pointer or the keyboard has come, `left` when the keyboard has
    /// gone.
    DayCell(const Appearance& appearance, std::function<void()> entered, std::function<void()> left,
            QWidget* parent = nullptr);

    const HistoryDay& day() const { return day_; }
    void setDay(const HistoryDay& day, const Calendar& calendar);
    void setHovered(bool hovered);

protected:
    void paintContent(QPainter& painter, const Palette& palette) override;
    void enterEvent(QEnterEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    std::function<void()> entered_;
    std::function<void()> left_;
    HistoryDay day_;
    bool isHovered_ = false;
};

} // namespace orvanta
