#pragma once

#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace orvanta {

using namespace Qt::StringLiterals;

/// A private folder of desktop entries, or of processes.
class TemporaryFolder {
public:
    QString path(const QString& relative = {}) const { return folder_.filePath(relative); }

    void write(const QString& relative, const QByteArray& content) const {
        QDir().mkpath(QFileInfo(path(relative)).path());
        QFile file(path(relative));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
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
