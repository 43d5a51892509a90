#pragma once

#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace orvanta {

using namespace Qt::StringLiterals;

/// A private folder, as of desktop entries or of processes. An absolute path stays one.
class TemporaryFolder {
public:
    QString path(const QString& relative = {}) const {
        return QDir(folder_.path()).filePath(relative);
    }

    void write(const QString& relative, const QByteArray& content) const {
        QDir().mkpath(QFileInfo(path(relative)).path());
        QFile file(path(relative));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    }

    /// Empty also where there is none.
    QByteArray read(const QString& relative) const {
        QFile file(path(relative));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void writeProgram(const QString& relative, const QByteArray& script = {}) const {
        write(relative, "#!/bin/sh\n" + script);
        QFile::setPermissions(path(relative),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    void link(const QString& target, const QString& relative) const {
        QDir().mkpath(QFileInfo(path(relative)).path());
        QFile::remove(path(relative));
        ASSERT_TRUE(QFile::link(target, path(relative)));
    }

    /// An entry whose program exists on every system.
    void writeEntry(const QString& id, const QByteArray& lines = {}) const {
        write(id + u".desktop"_s, "[Desktop Entry]\nType=Application\nName=" + id.toUtf8() + "\n" +
                                      (lines.contains("Exec=") ? "" : "Exec=true %U\n") + lines);
    }

private:
    QTemporaryDir folder_;
};

} // namespace orvanta
