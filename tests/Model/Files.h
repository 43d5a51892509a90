#pragma once

#include "Fakes/QtPrinters.h"

#include <QFile>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvanta {

inline void putFile(const QString& name, const QByteArray& bytes) {
    QFile file(name);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

inline QByteArray contentOf(const QString& name) {
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

inline mode_t modeOf(const QString& name) {
    struct stat status {};
    stat(QFile::encodeName(name).constData(), &status);
    return status.st_mode & 07777;
}

/// Permissions do not bind root: while this exists, the test runs as somebody who is not.
class WithoutPrivileges {
public:
    WithoutPrivileges() { EXPECT_EQ(user_ == 0 ? seteuid(65534) : 0, 0); }
    ~WithoutPrivileges() { EXPECT_EQ(seteuid(user_), 0); }
    WithoutPrivileges(const WithoutPrivileges&) = delete;
    WithoutPrivileges& operator=(const WithoutPrivileges&) = delete;

private:
    const uid_t user_ = geteuid();
};

} // namespace orvanta
