#pragma once

#include "Model/ModelContainer.h"
#include "Model/Schema.h"

#include <QString>

#include <memory>

namespace orvanta::ActivityStore {

/// The record types of the store, version 1.0.0.
const Schema& schema();

/// Opens the store "Activities.store" in the application's folder of `applicationSupport`, the
/// person's data folder; what is missing is created. Throws `ModelError`.
std::unique_ptr<ModelContainer> open(const QString& applicationSupport);

} // namespace orvanta::ActivityStore
