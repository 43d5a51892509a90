#pragma once

#include "Model/Category.h"
#include "Model/DayActivityList.h"
#include "Model/DayTotals.h"
#include "Model/KeyTable.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace orvanta {

/// The totals of every day that has a counted record, in order of time.
///
/// They follow the records: what is brought up to date adds up the days that have changed since,
/// and all days when a category has. Either way the records of a day are added in their order, so
/// that the sums are the same to the last bit.
class HistoryTotals {
public:
    struct OneDay {
        Day day;
        DayTotals totals;
    };

    std::size_t size() const { return days_.size(); }
    auto begin() const { return days_.begin(); }
    auto end() const { return days_.end(); }

    /// Absent for a day without a counted record.
    std::optional<DayTotals> find(Day day) const;

    /// How many days have more than nothing.
    int daysWithTime() const;

    /// The category that a key's seconds count for; none when they do not count at all.
    using CategoryOf = std::function<std::optional<Category>(KeyId)>;
    /// Stands for everything that `categoryOf` answers: a different one when an answer may differ.
    using CategoriesVersion = std::pair<quint64, quint64>;

    void update(const DayActivityList& records, CategoriesVersion version,
                const CategoryOf& categoryOf);

private:
    enum class Column : std::uint8_t { production, consumption, pending, none, unknown };

    Column columnOf(KeyId key, const CategoryOf& categoryOf);
    std::optional<DayTotals> sum(const DayActivityList::OneDay& records,
                                 const CategoryOf& categoryOf);
    void set(Day day, const std::optional<DayTotals>& totals);

    std::vector<OneDay> days_;
    std::vector<Column> columns_; // By key, as far as they were asked for.
    CategoriesVersion version_;
    quint64 seen_ = 0; // The generation of the records that is added up here.
};

} // namespace orvanta
