#pragma once

#include <QByteArray>

#include <optional>

namespace orvanta {

/// The whole content of a regular file of at most `limit` bytes. Absent for anything else: no such
/// file, no permission, a longer file, one that grows meanwhile, a folder, a pipe (which is not
/// waited for). The last component of the path may be a symbolic link only if `followLink`.
std::optional<QByteArray> readBounded(const QByteArray& path, qsizetype limit, bool followLink);

} // namespace orvanta
