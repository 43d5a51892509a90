#include "Linux/Files/PlainFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace orvanta {

namespace {

std::optional<FileProblem> notAPlainFile(const QFileInfo& file) {
    if (!file.isSymLink() && (!file.exists() || file.isFile())) {
        return std::nullopt;
    }
    const int reason = file.isSymLink() ? ELOOP : file.isDir() ? EISDIR : EEXIST;
    return FileProblem{file.filePath(), qt_error_string(reason)};
}

} // namespace

std::optional<FileProblem> replaceFile(const QString& path, const QByteArray& content) {
    const QFileInfo info(path);
    if (auto problem = notAPlainFile(info)) {
        return problem;
    }
    // Unlike Qt's, it tells why a folder cannot be made.
    std::error_code error;
    std::filesystem::create_directories(QFile::encodeName(info.path()).toStdString(), error);
    if (error) {
        return FileProblem{info.path(), qt_error_string(error.value())};
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() ||
        !file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup |
                             QFile::ReadOther) ||
        !file.commit()) {
        return FileProblem{path, file.errorString()};
    }
    return std::nullopt;
}

std::optional<FileProblem> removePlainFile(const QString& path) {
    if (auto problem = notAPlainFile(QFileInfo(path))) {
        return problem;
    }
    QFile file(path);
    if (file.exists() && !file.remove()) {
        return FileProblem{path, file.errorString()};
    }
    return std::nullopt;
}

} // namespace orvanta
