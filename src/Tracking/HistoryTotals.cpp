#include "Tracking/HistoryTotals.h"

#include <algorithm>
#include <array>

namespace orvanta {

std::optional<DayTotals> HistoryTotals::find(Day day) const {
    const auto place = std::ranges::lower_bound(days_, day, {}, &OneDay::day);
    return place != days_.end() && place->day == day ? std::optional(place->totals) : std::nullopt;
}

int HistoryTotals::daysWithTime() const {
    return static_cast<int>(std::ranges::count_if(days_, [](const OneDay& day) {
        return day.totals.production + day.totals.consumption + day.totals.pending > 0;
    }));
}

void HistoryTotals::update(const DayActivityList& records, CategoriesVersion version,
                           const CategoryOf& categoryOf) {
    const std::size_t count = records.dayCount(); // First: it may read the older days.
    if (version_ != version || records.replacedAt() > seen_) {
        version_ = version;
        columns_.clear();
        days_.clear();
        seen_ = 0;
    }
    if (records.generation() == seen_) {
        return;
    }
    for (std::size_t index = 0; index < count; ++index) {
        const DayActivityList::OneDay day = records.oneDay(index);
        if (day.generation > seen_) {
            set(day.day, sum(day, categoryOf));
        }
    }
    seen_ = records.generation();
}

HistoryTotals::Column HistoryTotals::columnOf(KeyId key, const CategoryOf& categoryOf) {
    const auto index = static_cast<std::size_t>(key);
    if (index >= columns_.size()) {
        columns_.resize(index + 1, Column::unknown);
    }
    Column& column = columns_[index];
    if (column == Column::unknown) {
        const std::optional<Category> category = categoryOf(key);
        column = category == Category::production    ? Column::production
                 : category == Category::consumption ? Column::consumption
                 : category == Category::pending     ? Column::pending
                                                     : Column::none;
    }
    return column;
}

std::optional<DayTotals> HistoryTotals::sum(const DayActivityList::OneDay& records,
                                            const CategoryOf& categoryOf) {
    std::array<double, 4> sums{}; // The last one for what does not count.
    bool counted = false;
    for (std::size_t index = 0; index < records.keys.size(); ++index) {
        const Column column = columnOf(records.keys[index], categoryOf);
        counted |= column != Column::none;
        sums[static_cast<std::size_t>(column)] += records.seconds[index];
    }
    return counted ? std::optional(DayTotals{sums[0], sums[1], sums[2]}) : std::nullopt;
}

void HistoryTotals::set(Day day, const std::optional<DayTotals>& totals) {
    const auto place = days_.empty() || days_.back().day < day
                           ? days_.end()
                           : std::ranges::lower_bound(days_, day, {}, &OneDay::day);
    const bool present = place != days_.end() && place->day == day;
    if (present && totals) {
        place->totals = *totals;
    } else if (present) {
        days_.erase(place);
    } else if (totals) {
        days_.insert(place, {day, *totals});
    }
}

} // namespace orvanta
