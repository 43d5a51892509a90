#pragma once

#include "Model/ActivityList.h"
#include "Model/DayActivityList.h"
#include "Model/KeyTable.h"
#include "Model/ModelError.h"

#include <memory>

namespace orvanta {

class Database;

/// The records of a store in memory, and what of them still has to be written.
///
/// Nothing is written but by `save()`. Main thread only.
class ModelContext {
public:
    /// The database holds a store of the current schema and outlives the context.
    explicit ModelContext(Database& database);
    ~ModelContext();
    ModelContext(const ModelContext&) = delete;
    ModelContext& operator=(const ModelContext&) = delete;

    /// Empty until fetched. New records are made by appending to it.
    ActivityList& activities() { return activities_; }
    DayActivityList& dayActivities() { return dayActivities_; }
    const KeyTable& keys() const { return keys_; }

    /// Reads all records of a type, in the store's order; called once, before any is made. On an
    /// error, which is thrown as `ModelError`, the list stays empty.
    void fetchActivities();
    void fetchDayActivities();

    bool hasChanges() const { return activities_.hasChanges() || dayActivities_.hasChanges(); }

    /// Writes every changed record, all of them or, with a `ModelError`, none: then they stay
    /// pending for the next save. Does nothing when nothing has changed.
    void save();

private:
    struct Statements;

    Database& database_;
    KeyTable keys_;
    ActivityList activities_;
    DayActivityList dayActivities_;
    std::unique_ptr<Statements> statements_;
};

} // namespace orvanta
