#include "Model/ActivityList.h"
#include "Model/DayActivityList.h"
#include "Tracking/Tracker.h"

namespace orvanta {

const HistoryTotals& Tracker::dayTotals() const {
    historyCache_.update(dayRecords_, categoriesVersion(),
                         [this](KeyId key) -> std::optional<Category> {
                             const Activity* activity = activities_.find(key);
                             return activity != nullptr && isEligible(*activity)
                                        ? std::optional(activity->category())
                                        : std::nullopt;
                         });
    return historyCache_;
}

int Tracker::historyDayCount() const {
    return dayTotals().daysWithTime();
}

std::vector<std::vector<HistoryDay>> Tracker::historyWeeks(int weeks) const {
    constexpr int week = 7;
    if (weeks < 1) {
        return {};
    }
    const Date now = dateNow_();
    const int offset = (calendar_.weekday(now) - calendar_.firstWeekday() + week) % week;
    // Whole days are counted and each is asked for its start: hours that are moved from day to day
    // would stay behind by one from a day that began an hour late, and miss today.
    const Day today = calendar_.day(now);
    const auto start = Calendar::addingDays(today, -(offset + week * (qint64{weeks} - 1)));
    if (!start) {
        return {};
    }
    const HistoryTotals& totals = dayTotals();

    std::vector<std::vector<HistoryDay>> rows(static_cast<std::size_t>(weeks));
    qint64 next = 0;
    for (std::vector<HistoryDay>& row : rows) {
        row.reserve(week);
        for (int weekday = 0; weekday < week; ++weekday) {
            const auto day = Calendar::addingDays(*start, next++);
            if (!day || *day > today) {
                continue;
            }
            if (const auto date = calendar_.startOfDay(*day)) {
                row.push_back({day->text(), *date, totals.find(*day).value_or(DayTotals())});
            }
        }
    }
    return rows;
}

void Tracker::clearHistory() {
    transition(accumulator_.focus);
    dayRecords_.clear();
    bumpRevision();
    save();
}

} // namespace orvanta
