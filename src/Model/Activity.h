#pragma once

#include "Model/Category.h"
#include "Model/Date.h"
#include "Model/KeyTable.h"

#include <QString>

#include <optional>

namespace orvanta {

class ActivityList;

/// An application or a site, and the seconds it had in the current session.
///
/// A record of the store, one a key: it lives in its context's `ActivityList`, keeps its address as
/// long as the context lives, and is compared by that. Every change is noted for the next save and
/// told to the context's observers.
class Activity {
public:
    Activity(const Activity&) = delete;
    Activity& operator=(const Activity&) = delete;

    const QString& key() const;
    KeyId keyId() const { return keyId_; }

    /// Given when the record was created, never changed.
    const QString& name() const { return name_; }

    /// The stored text of the category; one that is no category's counts as pending and is kept
    /// until the category is set.
    const QString& categoryValue() const { return categoryValue_; }
    void setCategoryValue(const QString& value);

    Category category() const;
    void setCategory(Category category);

    /// Seconds since the session began, ≥ 0.
    double seconds() const;
    void setSeconds(double seconds);

    /// When the activity last began or ended a timed stretch, or was timed while the store was
    /// saved.
    std::optional<Date> lastUsedAt() const { return lastUsedAt_; }
    void setLastUsedAt(std::optional<Date> date);

    /// The category text to go back to when the activity is monitored again.
    const std::optional<QString>& previousCategoryValue() const { return previousCategoryValue_; }
    void setPreviousCategoryValue(const std::optional<QString>& value);

    /// Its place in the list, which never changes.
    std::size_t row() const { return row_; }

private:
    friend class ActivityList;
    struct Passkey {};

public:
    Activity(Passkey, ActivityList& list, std::size_t row, KeyId key, const QString& name,
             const QString& categoryValue);

private:
    void changed();

    ActivityList& list_;
    std::size_t row_;
    qint64 primaryKey_ = 0; // Of the row in the store; 0 until it is first saved.
    KeyId keyId_;
    bool changed_ = false;
    QString name_;
    QString categoryValue_;
    std::optional<QString> previousCategoryValue_;
    std::optional<Date> lastUsedAt_;
};

} // namespace orvanta
