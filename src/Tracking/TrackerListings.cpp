#include "Model/ActivityKey.h"
#include "Model/ActivityList.h"
#include "Tracking/KeyOrder.h"
#include "Tracking/Tracker.h"
#include "Tracking/TrackingPolicy.h"

#include <algorithm>
#include <utility>

namespace orvanta {

namespace {

/// Sorts what is nearly sorted: from one look to the next hardly anything changes places.
template <typename Before>
void repairOrder(std::vector<std::uint32_t>& rows, const Before& before) {
    std::size_t moves = 0;
    const std::size_t worthwhile = 8 * rows.size();
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const std::uint32_t row = rows[i];
        std::size_t place = i;
        for (; place > 0 && before(row, rows[place - 1]); --place) {
            rows[place] = rows[place - 1];
        }
        rows[place] = row;
        moves += i - place;
        if (moves > worthwhile) {
            std::ranges::sort(rows, before);
            return;
        }
    }
}

} // namespace

Tracker::ListingVersion Tracker::listingVersion() const {
    return {activities_.generation(), eligibleGeneration_};
}

HistoryTotals::CategoriesVersion Tracker::categoriesVersion() const {
    return {activities_.categoryGeneration(), eligibleGeneration_};
}

bool Tracker::isEligible(const Activity& activity) const {
    return eligibleRows()[activity.row()] != 0;
}

const std::vector<std::uint8_t>& Tracker::eligibleRows() const {
    while (eligible_.size() < activities_.size()) {
        eligible_.push_back(computeEligible(activities_[eligible_.size()]) ? 1 : 0);
    }
    return eligible_;
}

bool Tracker::computeEligible(const Activity& activity) const {
    const QString& key = activity.key();
    return !key.startsWith(unknownKeyPrefix) && !excludedSystemKeys_.contains(key) &&
           !(key.startsWith(appKeyPrefix) &&
             TrackingPolicy::isSystemComponent(key.mid(appKeyPrefix.size()), std::nullopt)) &&
           !isBrowserApp(key);
}

void Tracker::excludeSystemKey(const QString& key) {
    const bool isNew = excludedSystemKeys_.insert(key).second;
    const Activity* excluded = isNew ? activities_.find(key) : nullptr;
    if (excluded == nullptr) {
        return;
    }
    for (std::size_t row = excluded->row(); row < eligible_.size(); ++row) {
        if (activities_[row].keyId() == excluded->keyId()) {
            eligible_[row] = 0;
        }
    }
    ++eligibleGeneration_;
}

double Tracker::total(Category category) const {
    const auto seconds = activities_.seconds();
    const auto categories = activities_.categories();
    const auto& eligible = eligibleRows();
    const std::size_t last = activities_.lastChanged();
    const std::pair version(activities_.othersGeneration(), eligibleGeneration_);
    if (totalsCache_.version != version) {
        totalsCache_ = {version, {}};
        for (std::size_t row = 0; row < seconds.size(); ++row) {
            if (row != last && eligible[row] != 0) {
                totalsCache_.seconds[static_cast<std::size_t>(categories[row])] += seconds[row];
            }
        }
    }
    const double others = totalsCache_.seconds[static_cast<std::size_t>(category)];
    const bool counts =
        last < seconds.size() && eligible[last] != 0 && categories[last] == category;
    return counts ? others + seconds[last] : others;
}

const std::vector<const Activity*>& Tracker::sorted() const {
    const Date now = dateNow_();
    RowsInputs inputs{listingVersion(), revision_, showAllActivities_,
                      static_cast<qint64>(now.since1970()), activeKey_};
    if (rowsCache_.inputs == inputs) {
        return rowsCache_.rows;
    }
    rowsCache_.inputs = std::move(inputs);

    const Activity* timed = activeKey_ ? activities_.find(*activeKey_) : nullptr;
    const auto active = timed != nullptr ? std::optional(timed->keyId()) : std::nullopt;
    std::vector<std::uint8_t>& listed = rowsCache_.listed;
    listed.resize(activities_.size());
    const auto& eligible = eligibleRows();
    const auto categories = activities_.categories();
    const auto seconds = activities_.seconds();
    const double enough = showAllActivities_ ? 0 : briefSeconds;
    for (std::size_t row = 0; row < listed.size(); ++row) {
        bool isListed = eligible[row] != 0 && categories[row] != Category::ignored;
        if (isListed && !(seconds[row] > 0 && seconds[row] >= enough)) {
            const Activity& activity = activities_[row];
            const auto used = activity.lastUsedAt();
            isListed = activity.keyId() == active ||
                       (seconds[row] > 0 && used && now - *used < briefStays);
        }
        listed[row] = isListed ? 1 : 0;
    }

    // First what is still listed, in the order that it had, then what has come.
    std::vector<std::uint32_t>& order = rowsCache_.order;
    std::erase_if(
        order, [&](std::uint32_t row) { return std::exchange(listed[row], std::uint8_t{}) == 0; });
    for (std::uint32_t row = 0; row < listed.size(); ++row) {
        if (listed[row] != 0) {
            order.push_back(row);
        }
    }
    repairOrder(order, [&](std::uint32_t a, std::uint32_t b) {
        return seconds[a] != seconds[b] ? seconds[a] > seconds[b] : precedes(a, b);
    });

    std::vector<const Activity*>& rows = rowsCache_.rows;
    rows.clear();
    for (const std::uint32_t row : order) {
        rows.push_back(&activities_[row]);
    }
    if (active) {
        const auto place = std::ranges::find(rows, *active, &Activity::keyId);
        if (place != rows.end()) {
            std::rotate(rows.begin(), place, place + 1);
        }
    }
    return rows;
}

bool Tracker::precedes(std::size_t a, std::size_t b) const {
    const auto seconds = activities_.seconds();
    if (seconds[a] != seconds[b]) {
        return seconds[a] > seconds[b];
    }
    const auto keys = compareKeys(activities_[a].key(), activities_[b].key());
    return keys != 0 ? keys < 0 : a < b;
}

std::vector<const Activity*> Tracker::classifiableActivities() const {
    std::vector<const Activity*> result;
    for (const Activity& activity : activities_) {
        if (isEligible(activity)) {
            result.push_back(&activity);
        }
    }
    return result;
}

std::vector<const Activity*> Tracker::unmonitored() const {
    std::vector<const Activity*> result = classifiableActivities();
    std::erase_if(
        result, [](const Activity* activity) { return activity->category() != Category::ignored; });
    std::ranges::sort(result, [this](const Activity* a, const Activity* b) {
        return precedes(a->row(), b->row());
    });
    return result;
}

} // namespace orvanta
