#include "FailingDisk.h"
#include "Fakes/CoreDataStore.h"
#include "StoreFolder.h"

#include <algorithm>
#include <random>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

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
};

} // namespace

TEST_F(DurabilityTest, WhereverTheDiskFailsTheNextStartFindsTheOldOrTheNew) {
    const FailingDisk disk;
    const char* keys = "SELECT group_concat(ZKEY) FROM (SELECT ZKEY FROM ZACTIVITY ORDER BY Z_PK)";
    for (const auto& [imports, onlyOnce] :
         {std::pair(false, false), {false, true}, {true, false}, {true, true}}) {
        const QByteArray old = imports ? "app:a,app:b"_ba : "NULL"_ba;
        const QByteArray changed = imports ? old + ",app:new"_ba : "app:new"_ba;
        bool hasFailed = true;
        for (int change = 1; hasFailed; ++change) {
            SCOPED_TRACE(testing::Message() << imports << " " << onlyOnce << " " << change);
            ASSERT_LT(change, 2000);
            empty();
            if (imports) {
                CoreDataStore::make(older, "INSERT INTO ZACTIVITY (Z_PK, ZKEY) VALUES (1, "
                                           "'app:a'), (2, 'app:b')");
            }
            disk.failAt(change, onlyOnce);
            fileUnder(u"app:new"_s);
            disk.repair();
            hasFailed = disk.hasFailed();

            EXPECT_TRUE(QDir(folder).entryList({u"import-*"_s}, QDir::Files).isEmpty());
            open();
            const QByteArray found = read(keys);
            EXPECT_TRUE(found == changed || (hasFailed && found == old)) << found.constData();
            EXPECT_EQ(read("SELECT COUNT(*) FROM ZDAYACTIVITY").toInt(), found == changed);
            EXPECT_EQ(read("PRAGMA integrity_check"), "ok");
            if (imports) {
                EXPECT_EQ(read(older, keys), old);
            }
            fileUnder(u"app:next"_s);
            EXPECT_EQ(read(keys), found == "NULL" ? "app:next"_ba : found + ",app:next"_ba);
            ASSERT_FALSE(HasFailure());
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
    constexpr qsizetype page = 512;
    std::mt19937 random(1);
    int opened = 0;
    for (qsizetype at = 0; at < whole.size(); at += page) {
        QByteArray garbage = whole;
        std::generate_n(garbage.begin() + at, page, [&] { return static_cast<char>(random()); });
        for (const QByteArray& bytes : {garbage, whole.first(at + 100)}) {
            empty();
            putFile(path, bytes);
            const int before = readable();
            fileUnder(u"app:new"_s);
            EXPECT_GE(readable(), before);
            opened += readable() > before ? 1 : 0;
        }
    }
    EXPECT_GT(opened, 0); // Where the page held nothing that matters.
}

TEST_F(DurabilityTest, WhatMayNotBeWrittenIsLeftAsItIs) {
    for (const auto& [which, mode, code] :
         {std::tuple(path, 0444, SQLITE_READONLY), // May only be read.
          {path, 0, SQLITE_CANTOPEN},              // May not even be read.
          {folder, 0555, SQLITE_READONLY}}) {      // Nothing can be made beside it.
        empty();
        fileUnder(u"app:a"_s);
        const auto before = files();
        chmod(qPrintable(directory.path()), 0755);
        chmod(qPrintable(folder), 0777);
        chmod(qPrintable(path), 0666);
        chmod(qPrintable(which), static_cast<mode_t>(mode));
        {
            const WithoutPrivileges somebody;
            expectError([this] { open(); }, "Orvanta.Storage"_L1, code);
        }
        chmod(qPrintable(folder), 0777);
        EXPECT_EQ(files(), before) << qPrintable(which) << mode;
    }
    ASSERT_TRUE(QDir(folder).removeRecursively());
    putFile(folder, {});
    expectError([this] { open(); }, "POSIX"_L1, ENOTDIR);
}
