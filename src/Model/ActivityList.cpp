#include "Model/ActivityList.h"

#include <utility>

namespace orvanta {

ActivityList::ActivityList(KeyTable& keys)
    : keys_(keys) {}

Activity* ActivityList::find(const QString& key) {
    const auto id = keys_.find(key);
    return id ? find(*id) : nullptr;
}

Activity* ActivityList::find(KeyId key) {
    return const_cast<Activity*>(std::as_const(*this).find(key));
}

const Activity* ActivityList::find(KeyId key) const {
    const auto index = static_cast<std::size_t>(key);
    if (index >= rowOfKey_.size() || rowOfKey_[index] < 0) {
        return nullptr;
    }
    return &activities_[static_cast<std::size_t>(rowOfKey_[index])];
}

Activity& ActivityList::append(const QString& key, const QString& name, Category category,
                               double seconds) {
    Activity& activity = append(key, name, rawValue(category), seconds);
    activity.changed();
    return activity;
}

Activity& ActivityList::append(const Stored& stored) {
    if (Activity* const made = find(stored.key); made != nullptr && made->primaryKey_ == 0) {
        join(*made, stored);
        return *made;
    }
    Activity& activity = append(stored.key, stored.name, stored.categoryValue, stored.seconds);
    activity.primaryKey_ = stored.primaryKey;
    activity.lastUsedAt_ = stored.lastUsedAt;
    activity.previousCategoryValue_ = stored.previousCategoryValue;
    return activity;
}

void ActivityList::join(Activity& made, const Stored& stored) {
    made.primaryKey_ = stored.primaryKey;
    made.name_ = stored.name;
    made.setCategoryValue(stored.categoryValue);
    made.setPreviousCategoryValue(stored.previousCategoryValue);
    made.setSeconds(made.seconds() + stored.seconds);
    if (!made.lastUsedAt()) {
        made.setLastUsedAt(stored.lastUsedAt);
    }
}

Activity& ActivityList::append(const QString& key, const QString& name,
                               const QString& categoryValue, double seconds) {
    const KeyId id = keys_.intern(key);
    const std::size_t row = activities_.size();
    if (static_cast<std::size_t>(id) >= rowOfKey_.size()) {
        rowOfKey_.resize(static_cast<std::size_t>(id) + 1, -1);
    }
    if (rowOfKey_[static_cast<std::size_t>(id)] < 0) {
        rowOfKey_[static_cast<std::size_t>(id)] = static_cast<std::int32_t>(row);
    }
    noteChange(row);
    ++categoryGeneration_;
    seconds_.push_back(seconds);
    categories_.push_back(categoryFromRawValue(categoryValue).value_or(Category::pending));
    return activities_.emplace_back(Activity::Passkey{}, *this, row, id, name, categoryValue);
}

void ActivityList::noteChange(std::size_t row) {
    ++generation_;
    if (std::exchange(lastChanged_, row) != row) {
        ++othersGeneration_;
    }
}

std::vector<ActivityList::Pending> ActivityList::pending() {
    std::vector<Pending> result;
    result.reserve(changed_.size());
    for (const std::size_t row : changed_) {
        result.push_back({activities_[row], activities_[row].primaryKey_});
    }
    return result;
}

void ActivityList::settle() {
    for (const std::size_t row : changed_) {
        activities_[row].changed_ = false;
    }
    changed_.clear();
}

} // namespace orvanta
