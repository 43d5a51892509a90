#pragma once

#include "Model/DayTotals.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace orvanta {

class Calendar;

/// As "SEG 4 MAR".
QString dayTitle(Date date, const Calendar& calendar);

/// A day's shares in words.
QString dayShares(const DayTotals& totals);

/// For every week the name of the month above it: of the one that begins in it, and of the first
/// week's if that month has two more. Empty for the others.
QStringList monthLabels(const std::vector<std::vector<HistoryDay>>& weeks,
                        const Calendar& calendar);

} // namespace orvanta
