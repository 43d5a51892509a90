#include "Model/ActivityKey.h"
#include "Model/ActivityList.h"
#include "Tracking/Tracker.h"
#include "Tracking/TrackingPolicy.h"

#include <algorithm>

namespace orvanta {

bool Tracker::isEligible(const Activity& activity) const {
    while (eligible_.size() <= activity.row()) {
        eligible_.push_back(computeEligible(activities_[eligible_.size()]) ? 1 : 0);
    }
    return eligible_[activity.row()] != 0;
}

bool Tracker::computeEligible(const Activity& activity) const {
    const QString& key = activity.key();
    return !key.startsWith(unknownKeyPrefix) && !excludedSystemKeys_.contains(key) &&
           !(key.startsWith(appKeyPrefix) &&
             TrackingPolicy::isSystemComponent(key.mid(appKeyPrefix.size()), std::nullopt)) &&
           !isBrowserApp(key);
}

void Tracker::excludeSystemKey(const QString& key) {
    if (!excludedSystemKeys_.insert(key).second) {
        return;
    }
    if (const Activity* activity = activities_.find(key)) {
        if (activity->row() < eligible_.size()) {
            eligible_[activity->row()] = 0;
        }
    }
}

double Tracker::total(Category category) const {
    if (!totalsCache_) {
        if (!activities_.empty()) {
            isEligible(activities_[activities_.size() - 1]); // Fills the column.
        }
        // Without a branch, and what is not eligible added where nobody looks: this runs every
        // second over all activities.
        std::array<double, allCases.size() + 1> sums{};
        const auto seconds = activities_.seconds();
        const auto categories = activities_.categories();
        for (std::size_t row = 0; row < seconds.size(); ++row) {
            const auto counted = static_cast<std::size_t>(categories[row]);
            sums[eligible_[row] != 0 ? counted : allCases.size()] += seconds[row];
        }
        totalsCache_.emplace();
        std::copy_n(sums.begin(), totalsCache_->size(), totalsCache_->begin());
    }
    return (*totalsCache_)[static_cast<std::size_t>(category)];
}

} // namespace orvanta
