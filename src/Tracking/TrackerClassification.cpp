#include "Model/ActivityList.h"
#include "Tracking/Tracker.h"

namespace orvanta {

void Tracker::classify(const Activity& chosen, Category newCategory) {
    Activity& activity = activities_[chosen.row()];
    const bool wasIgnored = activity.category() == Category::ignored;
    // What was timed so far is booked under what it was timed for.
    transition(accumulator_.focus);
    if (newCategory == Category::ignored && activity.category() != Category::ignored) {
        activity.setPreviousCategoryValue(activity.categoryValue());
    }
    activity.setCategory(newCategory);
    refreshFocus();
    if (newCategory != Category::ignored && wasIgnored) {
        queryBrowser();
    }
    save();
}

void Tracker::selectClassification(const Activity& activity, Category category) {
    const bool selectable = category == Category::production || category == Category::consumption;
    if (selectable && activity.category() != category) {
        classify(activity, category);
    }
}

void Tracker::resumeMonitoring(const Activity& activity) {
    if (activity.category() != Category::ignored) {
        return;
    }
    const auto& previous = activity.previousCategoryValue();
    const Category target =
        previous ? categoryFromRawValue(*previous).value_or(Category::pending) : Category::pending;
    classify(activity, target == Category::ignored ? Category::pending : target);
}

void Tracker::reset() {
    trackingIdentity_.reset();
    transition(std::nullopt);
    for (Activity& activity : activities_) {
        activity.setSeconds(0);
        activity.setLastUsedAt(std::nullopt);
    }
    setResetDate(currentDate());
    refreshFocus();
    save();
}

} // namespace orvanta
