#pragma once

#include "Model/Activity.h"

#include <deque>
#include <span>
#include <vector>

namespace orvanta {

/// Every activity of a store, in store order; new ones are appended, none is ever removed.
///
/// What the totals read every second, the seconds and the categories, stands in columns of its own.
class ActivityList {
public:
    explicit ActivityList(KeyTable& keys);

    std::size_t size() const { return activities_.size(); }
    bool empty() const { return activities_.empty(); }
    auto begin() { return activities_.begin(); }
    auto end() { return activities_.end(); }
    auto begin() const { return activities_.begin(); }
    auto end() const { return activities_.end(); }
    Activity& operator[](std::size_t row) { return activities_[row]; }
    const Activity& operator[](std::size_t row) const { return activities_[row]; }

    /// The first activity with this key, in constant time; null when there is none.
    Activity* find(const QString& key);
    Activity* find(KeyId key);
    const Activity* find(KeyId key) const;

    /// Grows with every change of a record and with every new one.
    quint64 generation() const { return generation_; }
    /// Grows with every change of a category and with every new record.
    quint64 categoryGeneration() const { return categoryGeneration_; }
    /// The row that changed last, and a number that stays for as long as only that row changes.
    std::size_t lastChanged() const { return lastChanged_; }
    quint64 othersGeneration() const { return othersGeneration_; }

    /// By row.
    std::span<const double> seconds() const { return seconds_; }
    std::span<const Category> categories() const { return categories_; }

    /// Whether a record has changes that the store does not have.
    bool hasChanges() const { return !changed_.empty(); }

    /// A record that the store does not have yet.
    Activity& append(const QString& key, const QString& name, Category category, double seconds);

    /// A record as it stands in the store.
    struct Stored {
        qint64 primaryKey = 0;
        QString key;
        QString name;
        QString categoryValue;
        double seconds = 0;
        std::optional<Date> lastUsedAt;
        std::optional<QString> previousCategoryValue;
    };
    /// One that was made here before the store could be read has the store's seconds on top of its
    /// own, and all else from the store.
    Activity& append(const Stored& stored);

    /// The records with changes, for writing them. `primaryKey` is 0 for one that the store does
    /// not have yet.
    struct Pending {
        Activity& activity;
        qint64& primaryKey;
    };
    std::vector<Pending> pending();

    /// The store has everything now.
    void settle();

private:
    friend class Activity;
    Activity& append(const QString& key, const QString& name, const QString& categoryValue,
                     double seconds);
    void join(Activity& made, const Stored& stored);
    void noteChange(std::size_t row);

    KeyTable& keys_;
    std::deque<Activity> activities_;
    std::vector<double> seconds_;
    std::vector<Category> categories_;
    std::vector<std::int32_t> rowOfKey_; // By KeyId; -1 for a key without an activity.
    std::vector<std::size_t> changed_;   // Rows, each once.
    std::size_t lastChanged_ = 0;
    quint64 generation_ = 0;
    quint64 othersGeneration_ = 0;
    quint64 categoryGeneration_ = 0;
};

} // namespace orvanta
