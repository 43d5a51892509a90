#pragma once

#include <QString>

#include <optional>

namespace orvanta {

/// The process that started this one; absent when that is unknown, or is the first of all.
/// `processes` is the folder of the process file system.
std::optional<qint64> parentOf(qint64 process, const QString& processes = QStringLiteral("/proc"));

} // namespace orvanta
