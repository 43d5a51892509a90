#include "Platform/PrivateFolder.h"

#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace orvanta {

namespace {

constexpr mode_t others = S_IRWXG | S_IRWXO;

bool isOurFolder(const struct stat& status) {
    return S_ISDIR(status.st_mode) && status.st_uid == ::geteuid();
}

} // namespace

bool makePrivateFolder(const QString& path) {
    const QByteArray file = QFile::encodeName(path);
    if (::mkdir(file.constData(), S_IRWXU) == 0) {
        return true;
    }
    if (errno == ENOENT) {
        const QString parent = QFileInfo(path).path();
        return parent != path && (QFileInfo::exists(parent) || makePrivateFolder(parent)) &&
               ::mkdir(file.constData(), S_IRWXU) == 0;
    }
    struct stat status {};
    if (errno != EEXIST || ::stat(file.constData(), &status) != 0) {
        return false;
    }
    errno = ENOTDIR;
    return S_ISDIR(status.st_mode);
}

void narrowFolder(const QString& path) {
    const QByteArray file = QFile::encodeName(path);
    struct stat status {};
    if (::stat(file.constData(), &status) == 0 && isOurFolder(status) &&
        (status.st_mode & others) != 0) {
        ::chmod(file.constData(), status.st_mode & S_IRWXU);
    }
}

bool isPrivateFolder(const QString& path) {
    struct stat status {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 && isOurFolder(status) &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

} // namespace orvanta
