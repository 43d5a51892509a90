#include "FailingDisk.h"
#include "Fakes/CoreDataStore.h"
#include "StoreFolder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <random>

namespace orvanta {

namespace {

using namespace Qt::StringLiterals;

class DurabilityTest : public StoreFolder {
protected:
    /// Opens the store and files a record under this key, as far as that goes.
    void fileUnder(const QString& key) const {
        try {
            const auto container = open();
            ModelContext& context = container->mainContext();
            const Activity& activity =
                context.activities().append(key, u"Name"_s, Category::pending, 1);
            context.dayActivities().setSeconds(day, activity.keyId(), 1);
            context.save();
        } catch (const ModelError& error) {
            EXPECT_EQ(error.domain(), "Orvanta.Storage"_L1) << error.what();
        }
    }

    const QString older = directory.filePath(u"com.local.Orvanta/Activities.store"_s);
};

TEST_F(DurabilityTest, WhereverTheDiskFailsTheNextStartFindsTheOldOrTheNew) {
    FailingDisk disk;
    const QByteArray keys = "SELECT group_concat(ZKEY) FROM (SELECT ZKEY FROM ZACTIVITY ORDER BY "
                            "Z_PK)";
    for (const bool imports : {false, true}) {
        const QByteArray old = imports ? "app:a,app:b"_qba : "NULL"_qba;
        const QByteArray changed = imports ? old + ",app:new"_qba : "app:new"_qba;
        for (const auto failure : {FailingDisk::Failure::Once, FailingDisk::Failure::FromThenOn}) {
            for (int change = 1;; ++change) {
                SCOPED_TRACE(testing::Message() << imports << " " << int(failure) << " " << change);
                ASSERT_LT(change, 2000);
                if (imports) {
                    CoreDataStore::make(older, "INSERT INTO ZACTIVITY (Z_PK, ZKEY) VALUES (1, "
                                               "'app:a'), (2, 'app:b')");
                }
                disk.failAt(change, failure);
                fileUnder(u"app:new"_s);
                disk.repair();

                EXPECT_TRUE(QDir(folder).entryList({u"import-*"_s}, QDir::Files).isEmpty());
                open();
                const QByteArray found = read(keys);
                EXPECT_TRUE(found == old || found == changed) << found.constData();
                EXPECT_EQ(read("SELECT COUNT(*) FROM ZDAYACTIVITY").toInt(), found == changed);
                EXPECT_EQ(read("PRAGMA integrity_check"), "ok");
                if (imports) {
                    EXPECT_EQ(read(older, keys), old);
                }
                fileUnder(u"app:next"_s);
                EXPECT_EQ(read(keys), found == "NULL" ? "app:next"_qba : found + ",app:next"_qba);
                if (!disk.hasFailed()) {
                    EXPECT_EQ(found, changed);
                    break;
                }
                ASSERT_FALSE(HasFailure());
                ASSERT_TRUE(QDir(directory.path()).removeRecursively());
                ASSERT_TRUE(QDir().mkpath(folder));
            }
            ASSERT_TRUE(QDir(directory.path()).removeRecursively());
            ASSERT_TRUE(QDir().mkpath(folder));
        }
    }
}

TEST_F(DurabilityTest, ADamagedStoreIsReadAsFarAsItGoesAndGetsNoWorse) {
    {
        const auto container = open();
        ModelContext& context = container->mainContext();
        for (int i = 0; i < 300; ++i) {
            const Activity& activity =
                context.activities().append(u"app:%1"_s.arg(i), u"Name"_s, Category::pending, i);
            context.dayActivities().setSeconds(day, activity.keyId(), i);
        }
        context.save();
    }
    const QByteArray whole = contentOf(path);
    constexpr qsizetype page = 512;
    std::mt19937 random(1);
    std::vector<QByteArray> damaged;
    for (qsizetype at = 0; at < whole.size(); at += page) {
        QByteArray garbage = whole;
        std::generate_n(garbage.begin() + at, page,
                        [&random] { return static_cast<char>(random()); });
        damaged.push_back(garbage);
        damaged.push_back(whole.first(at + 100));
    }
    const auto readable = [this] {
        int count = 0;
        try {
            Database database(path, Database::Access::Write);
            Statement rows(database, "SELECT ZKEY, ZSECONDS FROM ZACTIVITY NOT INDEXED");
            while (rows.step()) {
                ++count;
            }
        } catch (const ModelError&) {
        }
        return count;
    };
    int opened = 0;
    for (const QByteArray& bytes : damaged) {
        putFile(path, bytes);
        const int before = readable();
        fileUnder(u"app:new"_s);
        EXPECT_GE(readable(), before);
        opened += readable() > before ? 1 : 0;
        for (const auto& [name, content] : files()) {
            QFile::remove(folder + u'/' + name);
        }
    }
    EXPECT_GT(opened, 0); // Where the page held nothing that matters.
}

TEST_F(DurabilityTest, WhatMayNotBeWrittenIsLeftAsItIs) {
    const struct {
        const char* what;
        QString path;
        mode_t mode;
        int code;
    } rows[] = {
        {"a file that may only be read", path, 0444, SQLITE_READONLY},
        {"a file that may not be read", path, 0, SQLITE_CANTOPEN},
        {"a folder in which nothing can be made", folder, 0555, SQLITE_READONLY},
    };
    chmod(qPrintable(directory.path()), 0755);
    for (const auto& [what, which, mode, code] : rows) {
        SCOPED_TRACE(what);
        ASSERT_TRUE(QDir().mkpath(folder));
        fileUnder(u"app:a"_s);
        const auto before = files();
        chmod(qPrintable(folder), 0777);
        chmod(qPrintable(path), 0666);
        chmod(qPrintable(which), mode);
        {
            const uid_t user = geteuid(); // Permissions do not bind root.
            ASSERT_EQ(user == 0 ? seteuid(65534) : 0, 0);
            const ModelError error = errorOf([this] { open(); });
            ASSERT_EQ(seteuid(user), 0);
            EXPECT_EQ(error.domain(), "Orvanta.Storage"_L1);
            EXPECT_EQ(error.code(), code) << error.what();
        }
        chmod(qPrintable(folder), 0777);
        EXPECT_EQ(files(), before);
        ASSERT_TRUE(QDir(folder).removeRecursively());
    }

    putFile(folder, {});
    const ModelError error = errorOf([this] { open(); });
    EXPECT_EQ(error.domain(), "POSIX"_L1);
    EXPECT_EQ(error.code(), ENOTDIR);
}

} // namespace

} // namespace orvanta
