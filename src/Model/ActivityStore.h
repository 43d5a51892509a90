#pragma once

#include "Model/ModelContainer.h"
#include "Model/Schema.h"

#include <QString>

#include <memory>

namespace orvanta::ActivityStore {

/// The record types of the store, version 1.0.0.
const Schema& schema();

/// Opens the store "Activities.store" in the application's folder of `applicationSupport`, the
/// person's data folder; folders that are missing are created.
///
/// Where there is no store yet, that of an older version is copied, with all its records: the one
/// in the folder "com.local.Orvanta" or else "default.store", if it is one. Neither is changed,
/// apart from what SQLite does when it opens a write-ahead log. Without either, the store is new.
///
/// Throws `ModelError`; then nothing was lost, and no partial copy is left.
std::unique_ptr<ModelContainer> open(const QString& applicationSupport);

} // namespace orvanta::ActivityStore
