#pragma once

#include "Model/ActivityList.h"
#include "Model/DayActivityList.h"
#include "Model/KeyTable.h"
#include "Model/ModelError.h"

#include <map>
#include <memory>
#include <optional>
#include <vector>

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

    /// Read all records of a type, in the store's order; each is called once, before any is made.
    /// On an error, which is thrown as `ModelError`, the list stays empty. The activities are then
    /// read by the next save, which else would make again what the store has.
    void fetchActivities();
    /// Day records from `since` on; the older ones, ten years of which take longer than all else at
    /// a start, are read when something asks for them. Should that fail, `historyError` tells why,
    /// and there are none.
    void fetchDayActivities(Day since);

    const std::optional<ModelError>& historyError() const { return historyError_; }

    bool hasChanges() const { return activities_.hasChanges() || dayActivities_.hasChanges(); }

    /// Writes every change, all of them or, with a `ModelError`, none: then they stay pending for
    /// the next save. Does nothing when nothing has changed.
    void save();

private:
    struct Statements;

    std::vector<DayActivityList::Stored> readDayActivities(const char* sql, Day since);
    std::vector<DayActivityList::Stored> readOlderDayActivities(Day since);

    Database& database_;
    KeyTable keys_;
    ActivityList activities_;
    DayActivityList dayActivities_;
    /// Of the records that were written. The way there by their identity goes down a deep index.
    std::map<DayActivityList::Place, qint64> dayActivityRows_;
    std::optional<ModelError> historyError_;
    bool areActivitiesUnread_ = false;
    std::unique_ptr<Statements> statements_;
};

} // namespace orvanta
