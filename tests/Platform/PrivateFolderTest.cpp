#include "Platform/PrivateFolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

using namespace orvanta;
using namespace Qt::StringLiterals;

TEST(PrivateFolder, IsMadeAndKeptForThisPersonAlone) {
    const QTemporaryDir home;
    const QString made = home.filePath(u".local/share/ours"_s);
    const QString older = home.filePath(u"older"_s);
    const QString file = home.filePath(u"file"_s);
    const auto modeOf = [](const QString& path) {
        return static_cast<mode_t>(std::filesystem::status(path.toStdString()).permissions());
    };
    constexpr auto nothing = static_cast<mode_t>(std::filesystem::perms::unknown);
    const mode_t mask = ::umask(0);
    ASSERT_TRUE(QDir().mkdir(older) && QFile(file).open(QIODevice::WriteOnly));
    const struct {
        QString path;
        mode_t before;
        bool isMade;
        mode_t after;
    } rows[] = {
        {made, 0, true, 0700},
        {older, 0777, true, 0700},
        {older, 0555, true, 0500},
        {file, 0644, false, 0644},
        {file + u"/below"_s, 0, false, nothing},
    };
    for (const auto& [path, before, isMade, after] : rows) {
        ::chmod(qPrintable(path), before);
        EXPECT_EQ(makePrivateFolder(path), isMade) << qPrintable(path);
        EXPECT_TRUE(before == 0 || modeOf(path) == before) << "what is there is not ours to change";
        narrowFolder(path);
        EXPECT_EQ(modeOf(path), after) << qPrintable(path);
    }
    EXPECT_EQ(modeOf(home.filePath(u".local"_s)), 0700U) << "what is missing on the way, too";
    ::umask(mask);

    EXPECT_TRUE(isPrivateFolder(made));
    ASSERT_TRUE(QFile::link(made, home.filePath(u"link"_s)));
    for (const auto& [path, mode] : {std::pair(older, 0720U), // Others may write there.
                                     {older, 0702U},
                                     {home.filePath(u"link"_s), 0700U},
                                     {file, 0700U},
                                     {u"/nowhere"_s, 0U}}) {
        ::chmod(qPrintable(path), mode);
        EXPECT_FALSE(isPrivateFolder(path)) << qPrintable(path) << mode;
    }
}
