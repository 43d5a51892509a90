#pragma once

#include "Model/Category.h"

#include <QString>

#include <optional>

namespace orvanta::Classification {

/// The host that names the site of an address: lower case, without a leading "www.". Absent for an
/// address that is none of the web's (schemes "http" and "https").
std::optional<QString> host(const QString& address);

/// The category that an activity begins with.
Category suggested(const QString& key);

} // namespace orvanta::Classification
