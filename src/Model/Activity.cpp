#include "Model/Activity.h"

#include "Model/ActivityList.h"

namespace orvanta {

Activity::Activity(Passkey /*only the list makes records*/, ActivityList& list, std::size_t row,
                   KeyId key, const QString& name, const QString& categoryValue)
    : list_(list)
    , row_(row)
    , keyId_(key)
    , name_(name)
    , categoryValue_(categoryValue) {}

const QString& Activity::key() const {
    return list_.keys_.text(keyId_);
}

void Activity::setCategoryValue(const QString& value) {
    if (categoryValue_ == value) {
        return;
    }
    categoryValue_ = value;
    list_.categories_[row_] = categoryFromRawValue(value).value_or(Category::pending);
    ++list_.categoryGeneration_;
    changed();
}

Category Activity::category() const {
    return list_.categories_[row_];
}

void Activity::setCategory(Category category) {
    setCategoryValue(rawValue(category));
}

double Activity::seconds() const {
    return list_.seconds_[row_];
}

void Activity::setSeconds(double seconds) {
    if (list_.seconds_[row_] != seconds) {
        list_.seconds_[row_] = seconds;
        changed();
    }
}

void Activity::setLastUsedAt(std::optional<Date> date) {
    if (lastUsedAt_ != date) {
        lastUsedAt_ = date;
        changed();
    }
}

void Activity::setPreviousCategoryValue(const std::optional<QString>& value) {
    if (previousCategoryValue_ != value) {
        previousCategoryValue_ = value;
        changed();
    }
}

void Activity::changed() {
    if (!changed_) {
        changed_ = true;
        list_.changed_.push_back(row_);
    }
    list_.noteChange(row_);
}

} // namespace orvanta
