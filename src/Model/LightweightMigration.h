#pragma once

#include "Model/Schema.h"

namespace orvanta {

class Database;

/// The way of an older store to the schema: what Core Data calls a lightweight migration.
///
/// A store is judged by its entities and columns. Older ones lack the entity `DayActivity` or
/// columns that came later; an empty database lacks everything. What a store has beside the
/// schema's tables is left alone.
class LightweightMigration {
public:
    /// Compares the two and changes nothing. Throws `ModelError` when the store is of no older
    /// shape: then it is another program's, or a later version's.
    LightweightMigration(Database& database, const Schema& schema);

    bool isNeeded() const { return isNeeded_; }

    /// Adds what the store lacks, as one unit. Every record keeps its values; in a new column it
    /// has none. Throws `ModelError`; then the store is as it was.
    void run();

private:
    // Both throw for what the schema does not know.
    bool isModelComplete() const;
    bool isComplete(const Entity& entity) const;

    Database& database_;
    const Schema& schema_;
    bool isNeeded_;
};

} // namespace orvanta
