#include "Platform/PrivateFolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace orvanta {

namespace {

using namespace Qt::StringLiterals;

mode_t modeOf(const QString& path) {
    struct stat status {};
    return ::stat(qPrintable(path), &status) == 0 ? status.st_mode & 07777 : 0;
}

TEST(PrivateFolder, IsMadeAndKeptForThisPersonAlone) {
    const QTemporaryDir home;
    const QString older = home.filePath(u"older"_s);
    const mode_t mask = ::umask(0);
    ASSERT_TRUE(QDir().mkdir(older));
    const struct {
        QString path;
        mode_t before;
        bool isMade;
        mode_t after;
    } rows[] = {
        {home.filePath(u".local/share/ours"_s), 0, true, 0700},
        {older, 0777, true, 0700},
        {older, 0555, true, 0500},
        {home.filePath(u"file"_s), 0, false, 0644},
        {home.filePath(u"file/below"_s), 0, false, 0},
    };
    QFile file(home.filePath(u"file"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.setPermissions(QFile::Permissions(0x6044)));
    for (const auto& [path, before, isMade, after] : rows) {
        if (before != 0) {
            ::chmod(qPrintable(path), before);
        }
        EXPECT_EQ(makePrivateFolder(path), isMade) << qPrintable(path);
        if (before != 0) {
            EXPECT_EQ(modeOf(path), before) << "what is there is not ours to change";
            narrowFolder(path);
        }
        EXPECT_EQ(modeOf(path), after) << qPrintable(path);
    }
    EXPECT_EQ(modeOf(home.filePath(u".local"_s)), 0700U) << "what is missing on the way, too";
    ::umask(mask);

    EXPECT_TRUE(isPrivateFolder(home.filePath(u".local/share/ours"_s)));
    for (const mode_t mode : {0720U, 0702U}) {
        ::chmod(qPrintable(older), mode);
        EXPECT_FALSE(isPrivateFolder(older)) << "others may write there";
    }
    ASSERT_TRUE(QFile::link(home.filePath(u".local"_s), home.filePath(u"link"_s)));
    for (const QString& other :
         {home.filePath(u"link"_s), home.filePath(u"file"_s), u"/nowhere"_s}) {
        EXPECT_FALSE(isPrivateFolder(other)) << qPrintable(other);
    }
}

} // namespace

} // namespace orvanta
