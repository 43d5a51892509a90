#pragma once

#include "Model/Date.h"

#include <QString>

namespace orvanta {

/// Seconds of one day by category.
struct DayTotals {
    double production = 0;
    double consumption = 0;
    double pending = 0;

    friend bool operator==(const DayTotals&, const DayTotals&) = default;
};

/// One cell of the history grid.
struct HistoryDay {
    QString id; ///< the day string of `date`
    Date date;  ///< the start of the day
    DayTotals totals;

    friend bool operator==(const HistoryDay&, const HistoryDay&) = default;
};

} // namespace orvanta
