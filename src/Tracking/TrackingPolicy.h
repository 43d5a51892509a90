#pragma once

#include <QString>

#include <optional>

namespace orvanta::TrackingPolicy {

/// Whether an application is a part of the operating system's own shell, by its identifier (in any
/// case) or, where that says nothing, by where it is installed.
bool isSystemComponent(const QString& bundleIdentifier, const std::optional<QString>& path);

} // namespace orvanta::TrackingPolicy
