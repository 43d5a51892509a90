#include "Model/ActivityStore.h"
#include "Model/PropertyList.h"
#include "Model/Sqlite.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QUuid>

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace orvanta {

namespace {

using namespace Qt::StringLiterals;

class StoreTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(directory.isValid()); }

    /// With the records from a day in the middle of what most tests file, and so both ways of
    /// reading them.
    std::unique_ptr<ModelContainer> open(Day since = {2024, 3, 6}) const {
        auto container = ActivityStore::open(directory.path());
        container->mainContext().fetchActivities();
        container->mainContext().fetchDayActivities(since);
        return container;
    }

    /// What another program reads: rows joined by line feeds, columns by bars.
    QByteArray read(const char* sql) const {
        QByteArray all;
        const auto row = [](void* result, int count, char** values, char**) {
            auto& text = *static_cast<QByteArray*>(result);
            for (int i = 0; i < count; ++i) {
                text += i > 0 ? "|" : text.isEmpty() ? "" : "\n";
                text += values[i] ? values[i] : "NULL";
            }
            return 0;
        };
        Database other(path);
        EXPECT_EQ(sqlite3_exec(other.handle(), sql, row, &all, nullptr), SQLITE_OK)
            << sqlite3_errmsg(other.handle());
        return all;
    }

    void write(const char* sql) const { Database(path).execute(sql); }

    /// Every file of the store and its bytes.
    std::map<QString, QByteArray> files() const {
        std::map<QString, QByteArray> all;
        for (const QString& name : QDir(folder).entryList(QDir::Files | QDir::Hidden)) {
            QFile file(folder + u'/' + name);
            EXPECT_TRUE(file.open(QIODevice::ReadOnly));
            all[name] = file.readAll();
        }
        return all;
    }

    static ModelError errorOf(const std::function<void()>& what) {
        try {
            what();
        } catch (const ModelError& error) {
            EXPECT_FALSE(error.localizedDescription().isEmpty());
            return error;
        }
        ADD_FAILURE() << "no error";
        return {ModelError::storageDomain, 0, QString()};
    }

    /// A save that fails with this code changes nothing in the store and nothing in memory.
    void expectSaveFails(ModelContext& context, int code) const {
        const char* everything = "SELECT * FROM ZACTIVITY UNION ALL SELECT *, 0, 0 FROM "
                                 "ZDAYACTIVITY UNION ALL SELECT *, 0, 0, 0, 0, 0 FROM Z_PRIMARYKEY";
        const QByteArray before = read(everything);
        const ModelError error = errorOf([&] { context.save(); });
        EXPECT_EQ(error.domain(), "Orvanta.Storage"_L1);
        EXPECT_EQ(error.code(), code) << error.what();
        EXPECT_TRUE(context.hasChanges());
        EXPECT_EQ(read(everything), before);
    }

    static constexpr Day day{2024, 3, 5};
    QTemporaryDir directory;
    QString folder = directory.filePath(u"com.brindlework.orvanta"_s);
    QString path = folder + u"/Activities.store"_s;
};

TEST_F(StoreTest, ANewOneHasTheLayoutThatOtherProgramsKnow) {
    open();
    EXPECT_EQ(read("SELECT sql FROM sqlite_master ORDER BY rowid"),
              "CREATE TABLE ZACTIVITY ( Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, "
              "ZLASTUSEDAT TIMESTAMP, ZSECONDS FLOAT, ZCATEGORYVALUE VARCHAR, ZKEY VARCHAR, "
              "ZNAME VARCHAR, ZPREVIOUSCATEGORYVALUE VARCHAR )\n"
              "CREATE UNIQUE INDEX Z_Activity_UNIQUE_key ON ZACTIVITY (ZKEY COLLATE BINARY ASC)\n"
              "CREATE TABLE ZDAYACTIVITY ( Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, "
              "ZSECONDS FLOAT, ZDAY VARCHAR, ZID VARCHAR, ZKEY VARCHAR )\n"
              "CREATE UNIQUE INDEX Z_DayActivity_UNIQUE_id ON ZDAYACTIVITY (ZID COLLATE BINARY "
              "ASC)\n"
              "CREATE TABLE Z_PRIMARYKEY (Z_ENT INTEGER PRIMARY KEY, Z_NAME VARCHAR, Z_SUPER "
              "INTEGER, Z_MAX INTEGER)\n"
              "CREATE TABLE Z_METADATA (Z_VERSION INTEGER PRIMARY KEY, Z_UUID VARCHAR(255), "
              "Z_PLIST BLOB)\n"
              "CREATE TABLE Z_MODELCACHE (Z_CONTENT BLOB)");
    EXPECT_EQ(read("SELECT * FROM Z_PRIMARYKEY"), "1|Activity|0|0\n2|DayActivity|0|0");
    EXPECT_EQ(read("PRAGMA page_size"), "512");
    EXPECT_EQ(read("PRAGMA auto_vacuum"), "2");
    EXPECT_EQ(read("PRAGMA journal_mode"), "wal");

    Database other(path);
    Statement row(other, "SELECT * FROM Z_METADATA");
    ASSERT_TRUE(row.step());
    EXPECT_EQ(row.integer(0), 1);
    const QString uuid = row.text(1);
    EXPECT_EQ(uuid, QUuid(uuid).toString(QUuid::WithoutBraces).toUpper());
    EXPECT_FALSE(QUuid(uuid).isNull());
    const QByteArray bytes = row.blob(2).toByteArray();
    EXPECT_FALSE(row.step());

    EXPECT_TRUE(bytes.startsWith("bplist00"));
    const auto list = PropertyList::parse(bytes);
    ASSERT_TRUE(list);
    const auto hashes = list->dictionary(u"NSStoreModelVersionHashes"_s);
    ASSERT_TRUE(hashes);
    QStringList names = hashes->keys();
    names.sort();
    ASSERT_EQ(names, (QStringList{u"Activity"_s, u"DayActivity"_s}));
    const QByteArray activity = hashes->data(names[0]).value_or("");
    const QByteArray dayActivity = hashes->data(names[1]).value_or("");
    EXPECT_EQ(activity.size(), 32);
    EXPECT_EQ(dayActivity.size(), 32);
    EXPECT_NE(activity, dayActivity);
    const auto hash = [](const QByteArray& of, QCryptographicHash::Algorithm algorithm) {
        return QString::fromLatin1(QCryptographicHash::hash(of, algorithm).toBase64());
    };
    EXPECT_EQ(
        list->text(u"NSStoreModelVersionHashesDigest"_s),
        hash("Activity" + activity + "DayActivity" + dayActivity, QCryptographicHash::Sha512));
    EXPECT_EQ(list->text(u"NSStoreModelVersionChecksumKey"_s),
              hash(activity + dayActivity, QCryptographicHash::Sha256));
    EXPECT_EQ(list->texts(u"NSStoreModelVersionIdentifiers"_s), QStringList{u"1.0.0"_s});
    EXPECT_EQ(list->integer(u"NSStoreModelVersionHashesVersion"_s), 3);
    EXPECT_GT(list->integer(u"NSPersistenceFrameworkVersion"_s), 0);
    EXPECT_EQ(list->text(u"NSStoreType"_s), u"SQLite"_s);
    EXPECT_EQ(list->text(u"_NSAutoVacuumLevel"_s), u"2"_s);
    EXPECT_EQ(list->keys().size(), 8);
}

TEST_F(StoreTest, OnlyItsOwnerCanReadIt) {
    const auto modes = [this] {
        std::map<QString, unsigned> all;
        for (const auto& [name, bytes] : files()) {
            struct stat status {};
            stat(QFile::encodeName(folder + u'/' + name).constData(), &status);
            all[name] = status.st_mode & 07777;
        }
        return all;
    };
    const std::map<QString, unsigned> expected{{u"Activities.store"_s, 0600},
                                               {u"Activities.store-shm"_s, 0600},
                                               {u"Activities.store-wal"_s, 0600}};
    const mode_t mask = umask(0);
    {
        const auto created = open();
        EXPECT_EQ(modes(), expected);
        // One that was brought here, with its side files, for everybody to read.
        for (const auto& [name, mode] : expected) {
            chmod(QFile::encodeName(folder + u'/' + name).constData(), 0644);
        }
        const auto brought = open();
        EXPECT_EQ(modes(), expected);
    }
    umask(mask);
}

TEST_F(StoreTest, KeepsEveryFieldAsItWas) {
    const QString names[] = {u"Finder"_s, u""_s, u"Ação 日本 🦊 'x' \"y\" | %1"_s};
    const std::optional<Date> dates[] = {std::nullopt, Date{7e8}, Date{-0.1},
                                         Date{731548800.123456}};
    const std::optional<QString> previous[] = {std::nullopt, u"pending"_s, u"Nonsense"_s, u""_s};
    const double seconds[] = {0, 0.1, 86400, 1e-300};
    {
        const auto container = open();
        for (std::size_t i = 0; i < 12; ++i) {
            auto& activity = container->mainContext().activities().append(
                u"site:ключ%1"_s.arg(i), names[i % 3], allCases[i % 5], seconds[i % 4]);
            activity.setLastUsedAt(dates[i % 4]);
            activity.setPreviousCategoryValue(previous[i / 3]);
            container->mainContext().dayActivities().setSeconds(day, activity.keyId(),
                                                                seconds[i % 4]);
        }
        container->mainContext().activities()[0].setCategoryValue(u"Production"_s);
        container->mainContext().save();
    }
    const auto container = open();
    ModelContext& context = container->mainContext();
    ASSERT_EQ(context.activities().size(), 12U);
    ASSERT_EQ(context.dayActivities().size(), 12U);
    for (std::size_t i = 0; i < 12; ++i) {
        const Activity& activity = context.activities()[i];
        EXPECT_EQ(activity.key(), u"site:ключ%1"_s.arg(i));
        EXPECT_EQ(activity.name(), names[i % 3]);
        EXPECT_EQ(activity.seconds(), seconds[i % 4]);
        EXPECT_EQ(activity.lastUsedAt(), dates[i % 4]);
        EXPECT_EQ(activity.previousCategoryValue(), previous[i / 3]);
        EXPECT_EQ(activity.category(), i == 0 ? Category::pending : allCases[i % 5]);
        EXPECT_EQ(context.dayActivities().seconds(day, activity.keyId()), seconds[i % 4]);
    }
    EXPECT_EQ(context.activities()[0].categoryValue(), u"Production"_s);
    EXPECT_FALSE(context.hasChanges());
    EXPECT_EQ(read("SELECT typeof(ZLASTUSEDAT), ZLASTUSEDAT FROM ZACTIVITY WHERE Z_PK IN (1, 2)"),
              "null|NULL\ninteger|700000000");
    EXPECT_EQ(read("SELECT Z_ENT, ZDAY, ZID, ZKEY FROM ZDAYACTIVITY WHERE Z_PK = 1"),
              "2|2024-03-05|2024-03-05|site:ключ0|site:ключ0");
}

TEST_F(StoreTest, WhatForeignRowsHoldNeedNotMakeSense) {
    open();
    write("INSERT INTO ZACTIVITY (ZKEY, ZLASTUSEDAT) VALUES ('app:a', 9e999), (NULL, 'x');"
          "INSERT INTO ZDAYACTIVITY (ZID, ZDAY, ZKEY, ZSECONDS) VALUES ('1', 'monday', 'app:a', 1),"
          "('2', NULL, 'app:a', 2), ('3', '2024-03-05', 'app:a', 3), ('4', '2024-03-05', 'app:a', "
          "4)");
    const auto container = open();
    ModelContext& context = container->mainContext();
    ASSERT_EQ(context.activities().size(), 2U);
    EXPECT_FALSE(context.activities()[0].lastUsedAt());
    EXPECT_EQ(context.activities()[0].category(), Category::pending);
    EXPECT_EQ(context.dayActivities().size(), 1U);
    EXPECT_EQ(context.dayActivities().seconds(day, context.activities()[0].keyId()), 3);
    EXPECT_EQ(read("SELECT COUNT(*) FROM ZDAYACTIVITY"), "4");
}

TEST_F(StoreTest, ASaveWritesWhatHasChangedAndNothingElse) {
    const auto container = open();
    ModelContext& context = container->mainContext();
    Activity& a = context.activities().append(u"app:a"_s, u"A"_s, Category::pending, 0);
    Activity& b = context.activities().append(u"app:b"_s, u"B"_s, Category::pending, 0);
    context.dayActivities().add({2024, 3, 6}, a.keyId(), 1);
    context.dayActivities().add(day, b.keyId(), 1); // Rows are numbered by day.
    context.save();
    EXPECT_FALSE(context.hasChanges());
    const auto unchanged = files();
    context.save();
    EXPECT_EQ(files(), unchanged);

    a.setSeconds(5);
    context.dayActivities().add(day, b.keyId(), 1);
    context.save();
    EXPECT_EQ(read("SELECT Z_PK, Z_OPT, ZKEY, ZSECONDS FROM ZACTIVITY"),
              "1|2|app:a|5.0\n2|1|app:b|0.0");
    EXPECT_EQ(read("SELECT Z_PK, Z_OPT, ZDAY, ZSECONDS FROM ZDAYACTIVITY"),
              "1|2|2024-03-05|2.0\n2|1|2024-03-06|1.0");
    EXPECT_EQ(read("SELECT Z_MAX FROM Z_PRIMARYKEY"), "2\n2");
}

TEST_F(StoreTest, RowsThatAnotherProgramDeletedAreWrittenAnewUnderNewKeys) {
    const auto container = open();
    ModelContext& context = container->mainContext();
    Activity& a = context.activities().append(u"app:a"_s, u"A"_s, Category::pending, 1);
    context.dayActivities().setSeconds(day, a.keyId(), 1);
    context.save();
    write("DELETE FROM ZACTIVITY; DELETE FROM ZDAYACTIVITY");
    for (int i = 2; i < 4; ++i) { // The second time it is there.
        a.setSeconds(i);
        context.dayActivities().setSeconds(day, a.keyId(), i);
        context.save();
    }
    EXPECT_EQ(read("SELECT Z_PK, Z_OPT, ZKEY, ZNAME, ZSECONDS FROM ZACTIVITY"), "2|2|app:a|A|3.0");
    EXPECT_EQ(read("SELECT Z_PK, Z_OPT, ZKEY, ZSECONDS FROM ZDAYACTIVITY"), "2|2|app:a|3.0");
    EXPECT_EQ(read("SELECT Z_MAX FROM Z_PRIMARYKEY"), "2\n2");
}

TEST_F(StoreTest, ASaveThatFailsInTheMiddleWritesNothingAndIsMadeUpForLater) {
    const auto container = open();
    ModelContext& context = container->mainContext();
    Activity& old = context.activities().append(u"app:old"_s, u"Old"_s, Category::pending, 1);
    context.save();
    const struct {
        const char* obstacle;
        const char* removal;
    } rows[] = {{"INSERT INTO ZACTIVITY (Z_PK, ZKEY) VALUES (90, 'app:new0')",
                 "DELETE FROM ZACTIVITY WHERE Z_PK = 90"},
                {"INSERT INTO ZDAYACTIVITY (Z_PK, ZID) VALUES (90, '2024-03-05|app:new1')",
                 "DELETE FROM ZDAYACTIVITY WHERE Z_PK = 90"}};
    for (int i = 0; i < 2; ++i) {
        old.setSeconds(10 + i);
        const Activity& added =
            context.activities().append(u"app:new%1"_s.arg(i), u"New"_s, Category::pending, i);
        context.dayActivities().setSeconds(day, added.keyId(), i);
        write(rows[i].obstacle);
        expectSaveFails(context, SQLITE_CONSTRAINT);
        expectSaveFails(context, SQLITE_CONSTRAINT);
        write(rows[i].removal);
        context.save();
        EXPECT_FALSE(context.hasChanges());
    }
    EXPECT_EQ(read("SELECT Z_PK, Z_OPT, ZKEY, ZSECONDS FROM ZACTIVITY"),
              "1|3|app:old|11.0\n2|1|app:new0|0.0\n3|1|app:new1|1.0");
    EXPECT_EQ(read("SELECT Z_PK, ZID FROM ZDAYACTIVITY"),
              "1|2024-03-05|app:new0\n2|2024-03-05|app:new1");
}

TEST_F(StoreTest, ALockedStoreIsWrittenOnceItIsFree) {
    const auto container = open();
    ModelContext& context = container->mainContext();
    context.activities().append(u"app:a"_s, u"A"_s, Category::pending, 1);
    {
        Database other(path);
        Transaction held(other);
        expectSaveFails(context, SQLITE_BUSY);
        EXPECT_NO_THROW(open()); // Reading goes on.
    }
    context.save();
    EXPECT_EQ(read("SELECT ZKEY FROM ZACTIVITY"), "app:a");
}

TEST_F(StoreTest, AFullDiskLosesNothing) {
    const auto container = open();
    ModelContext& context = container->mainContext();
    for (int i = 0; i < 2000; ++i) {
        context.activities().append(u"app:%1"_s.arg(i), u"A name"_s, Category::pending, i);
    }
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    // The log fills up at several depths.
    for (const rlim_t limit : {4096U, 40000U, 100000U}) {
        const rlimit small{limit, before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
        const ModelError error = errorOf([&] { context.save(); });
        setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_EQ(error.domain(), "Orvanta.Storage"_L1);
        EXPECT_TRUE(error.code() == SQLITE_FULL || error.code() == SQLITE_IOERR) << error.what();
        EXPECT_TRUE(context.hasChanges());
        EXPECT_EQ(read("SELECT COUNT(*), (SELECT MAX(Z_MAX) FROM Z_PRIMARYKEY) FROM ZACTIVITY"),
                  "0|0");
    }
    std::signal(SIGXFSZ, handler);
    context.save();
    EXPECT_FALSE(context.hasChanges());
    EXPECT_EQ(read("SELECT COUNT(*), MAX(Z_PK), SUM(ZSECONDS) FROM ZACTIVITY"),
              "2000|2000|1999000.0");
    EXPECT_EQ(read("PRAGMA integrity_check"), "ok");
}

TEST_F(StoreTest, WhatIsNoStoreIsRefusedAndLeftAsItIs) {
    const auto database = [this](const char* sql) {
        return [this, sql] {
            write(sql);
        };
    };
    const auto without = [this](const char* sql) {
        return [this, sql] {
            open();
            write(sql);
            write("PRAGMA wal_checkpoint(TRUNCATE)");
        };
    };
    const struct {
        const char* what;
        std::function<void()> make;
        int code;
        QString mention;
    } rows[] = {
        {"text",
         [this] {
             QFile file(path);
             ASSERT_TRUE(file.open(QIODevice::WriteOnly));
             file.write(QByteArray(1000, 'x'));
         },
         SQLITE_NOTADB, u"not a database"_s},
        {"a folder", [this] { QDir().mkpath(path + u"/inner"_s); }, SQLITE_CANTOPEN, u"open"_s},
        {"another program's tables", database("CREATE TABLE notes (text)"), SQLITE_SCHEMA,
         u"ZACTIVITY"_s},
        {"a missing column", without("ALTER TABLE ZDAYACTIVITY DROP COLUMN ZSECONDS"),
         SQLITE_SCHEMA, u"ZSECONDS"_s},
        {"a missing table", without("DROP TABLE Z_PRIMARYKEY"), SQLITE_SCHEMA, u"Z_PRIMARYKEY"_s},
    };
    for (const auto& [what, make, code, mention] : rows) {
        SCOPED_TRACE(what);
        ASSERT_TRUE(QDir().mkpath(folder));
        make();
        const auto before = files();
        struct stat status {};
        stat(QFile::encodeName(path).constData(), &status);
        const auto mode = status.st_mode;
        const ModelError error = errorOf([this] { open(); });
        EXPECT_EQ(error.domain(), "Orvanta.Storage"_L1);
        EXPECT_EQ(error.code(), code);
        EXPECT_TRUE(error.localizedDescription().contains(mention)) << error.what();
        EXPECT_EQ(files(), before);
        stat(QFile::encodeName(path).constData(), &status);
        EXPECT_TRUE(S_ISREG(mode) || status.st_mode == mode);
        ASSERT_TRUE(QDir(folder).removeRecursively());
    }
}

TEST_F(StoreTest, AFolderThatCannotBeMadeIsTheSystemsError) {
    QFile file(folder);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    const ModelError error = errorOf([this] { open(); });
    EXPECT_EQ(error.domain(), "POSIX"_L1);
    EXPECT_EQ(error.code(), ENOTDIR);
    file.remove();
    directory.remove();
    EXPECT_NO_THROW(open()); // With every folder above it.
}

TEST_F(StoreTest, OneWhoseMakingWasCutShortOpensAsNew) {
    const std::function<void()> steps[] = {
        [this] { ASSERT_TRUE(QFile(path).open(QIODevice::WriteOnly)); },
        [this] {
            write("PRAGMA page_size = 512; PRAGMA auto_vacuum = INCREMENTAL;"
                  "PRAGMA journal_mode = WAL");
            ASSERT_GT(QFile(path).size(), 0);
        },
    };
    for (const auto& step : steps) {
        ASSERT_TRUE(QDir().mkpath(folder));
        step();
        {
            const auto container = open();
            container->mainContext().activities().append(u"app:a"_s, u"A"_s, Category::pending, 1);
            container->mainContext().save();
        }
        EXPECT_EQ(open()->mainContext().activities().size(), 1U);
        EXPECT_EQ(read("PRAGMA page_size"), "512");
        EXPECT_EQ(read("PRAGMA auto_vacuum"), "2");
        EXPECT_EQ(read("SELECT COUNT(*) FROM Z_METADATA"), "1");
        ASSERT_TRUE(QDir(folder).removeRecursively());
    }
}

TEST_F(StoreTest, TenYearsAreReadWhole) {
    open();
    write("BEGIN;"
          "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 2999)"
          "INSERT INTO ZACTIVITY (Z_PK, ZKEY, ZNAME, ZCATEGORYVALUE, ZSECONDS)"
          "SELECT i + 1, 'app:' || i, 'Name', 'production', i FROM n;"
          "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 179999)"
          "INSERT INTO ZDAYACTIVITY (Z_PK, ZSECONDS, ZDAY, ZKEY, ZID) SELECT i + 1, i, d, k,"
          "d || '|' || k FROM (SELECT i, date('2015-01-01', (i / 50) || ' days') AS d,"
          "'app:' || (i % 3000) AS k FROM n);"
          "COMMIT");
    const auto container = open();
    ModelContext& context = container->mainContext();
    ASSERT_EQ(context.activities().size(), 3000U);
    const DayActivityList& list = context.dayActivities();
    ASSERT_EQ(list.size(), 180000U);
    ASSERT_EQ(list.dayCount(), 3600U);
    EXPECT_EQ(list.oneDay(3599).day, (Day{2024, 11, 8}));
    std::size_t i = 0;
    for (std::size_t n = 0; n < list.dayCount(); ++n) {
        const auto one = list.oneDay(n);
        for (std::size_t j = 0; j < one.keys.size(); ++j, ++i) {
            ASSERT_EQ(one.seconds[j], static_cast<double>(i));
            ASSERT_EQ(one.keys[j], context.activities()[i % 3000].keyId());
        }
    }
}

} // namespace

} // namespace orvanta
