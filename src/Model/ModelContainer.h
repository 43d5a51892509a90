#pragma once

#include "Model/ModelContext.h"
#include "Model/Schema.h"

#include <QString>

#include <memory>

namespace orvanta {

class Database;

/// An open store: one SQLite file in Core Data's layout, and the context over it.
///
/// Pages of 512 bytes in write-ahead mode, synchronised when the log is taken over into the file.
/// Every five seconds two or three rows change, and these settings write the least for that while
/// other programs can read the store: docs/store.md has the figures. A process killed at any moment
/// loses nothing that was saved; a power cut may cost the last half minute and leaves the store
/// whole.
class ModelContainer {
public:
    /// Opens the store at `path`; a missing or empty file becomes a new, empty store. Files are
    /// readable by their owner only. Throws `ModelError` when the file cannot be opened for reading
    /// and writing, is no database, or holds tables of another shape; then it is left as it was.
    ModelContainer(const Schema& schema, const QString& path);
    ~ModelContainer();
    ModelContainer(const ModelContainer&) = delete;
    ModelContainer& operator=(const ModelContainer&) = delete;

    ModelContext& mainContext() { return *context_; }

private:
    std::unique_ptr<Database> database_;
    std::unique_ptr<ModelContext> context_;
};

} // namespace orvanta
