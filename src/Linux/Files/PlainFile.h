#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace orvanta {

/// What could not be done to which file, in the system's words.
struct FileProblem {
    QString path;
    QString reason;
};

/// Puts the content into a file of mode 0644, which is the old or the new one at any moment, making
/// its folder where there is none. Something else than a plain file of that name is left alone.
std::optional<FileProblem> replaceFile(const QString& path, const QByteArray& content);

/// Removes a plain file. Something else of that name is left alone, and is a problem; nothing there
/// is none.
std::optional<FileProblem> removePlainFile(const QString& path);

} // namespace orvanta
