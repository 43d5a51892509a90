#include "Fakes/CoreDataStore.h"
#include "Model/PropertyList.h"
#include "StoreFolder.h"

#include <optional>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

constexpr const char* olderRows =
    "INSERT INTO ZACTIVITY VALUES"
    "(1, 1, 7, 700000000, 12.5, 'production', 'app:com.apple.Xcode', 'Xcode'),"
    "(2, 1, 1, 731548800.123456, 0.1, 'Production', 'site:xn--ao-siap.example', 'Ação 日本 "
    "🦊'),"
    "(4, 1, 2, NULL, 3, NULL, 'app:b', NULL),"
    "(9, NULL, NULL, 'x', NULL, 'ignored', NULL, '')";

constexpr const char* laterRows =
    "INSERT INTO ZACTIVITY VALUES (9, 1, 3, 5.5, 60, 'ignored', 'app:a', 'A', 'pending');"
    "INSERT INTO ZDAYACTIVITY VALUES (2, 2, 1, 60, '2024-03-05', '2024-03-05|app:a', 'app:a'),"
    "(3, 2, 1, 1, 'monday', 'monday|app:a', 'app:a'), (4, 2, 1, 2, '2024-03-01', NULL, 'app:a')";

constexpr const char* activities = "SELECT Z_PK, Z_ENT, Z_OPT, typeof(ZLASTUSEDAT), ZLASTUSEDAT, "
                                   "typeof(ZSECONDS), ZSECONDS, ZCATEGORYVALUE, ZKEY, ZNAME "
                                   "FROM ZACTIVITY";

class ImportTest : public StoreFolder {
protected:
    QByteArray metadata() const { return read("SELECT hex(Z_PLIST) FROM Z_METADATA"); }

    static QByteArray giveList(const QByteArray& list) {
        return "UPDATE Z_METADATA SET Z_PLIST = x'" + list.toHex() + '\'';
    }
    static QByteArray giveEntities(const QStringList& entities) {
        return giveList(CoreDataStore::metadata(entities).toBinary());
    }

    const QString oldest = directory.filePath(u"default.store"_s);
};

} // namespace

TEST_F(ImportTest, BringsEveryRecordOfAnOlderStoreUpToToday) {
    CoreDataStore::make(older, olderRows);
    const QByteArray rowless = contentOf(older);
    {
        const auto container = open();
        ModelContext& context = container->mainContext();
        ASSERT_EQ(context.activities().size(), 4U);
        EXPECT_EQ(context.dayActivities().size(), 0U);
        const Activity& second = context.activities()[1];
        EXPECT_EQ(second.category(), Category::pending);
        EXPECT_FALSE(second.previousCategoryValue());
        EXPECT_EQ(read(activities), read(older, activities));

        context.activities()[0].setPreviousCategoryValue(u"pending"_s);
        context.activities().append(u"app:new"_s, u"New"_s, Category::pending, 1);
        context.dayActivities().setSeconds(day, second.keyId(), 4);
        context.save();
    }
    EXPECT_EQ(read("SELECT Z_PK, Z_OPT, ZPREVIOUSCATEGORYVALUE FROM ZACTIVITY WHERE Z_PK <> 2"),
              "1|8|pending\n4|2|NULL\n9|NULL|NULL\n10|1|NULL");
    EXPECT_EQ(read("SELECT * FROM ZDAYACTIVITY"),
              "1|2|1|4.0|2024-03-05|2024-03-05|site:xn--ao-siap.example|site:xn--ao-siap.example");
    EXPECT_EQ(read("SELECT * FROM Z_PRIMARYKEY"),
              "1|Activity|0|10\n2|DayActivity|0|1\n16001|CHANGE|0|3\n16002|TRANSACTION|0|3\n"
              "16003|TRANSACTIONSTRING|0|1");
    EXPECT_EQ(read("SELECT * FROM ACHANGE"), "3|9");
    EXPECT_EQ(read("SELECT hex(Z_CONTENT) FROM Z_MODELCACHE"), "62766E");
    EXPECT_EQ(read("SELECT Z_VERSION, Z_UUID FROM Z_METADATA"), "1|E3A8C1F0");
    EXPECT_EQ(read("PRAGMA page_size") + read("PRAGMA journal_mode"), "512wal");
    EXPECT_EQ(read("PRAGMA integrity_check"), "ok");

    const PropertyList list = PropertyList::parse(QByteArray::fromHex(metadata())).value();
    EXPECT_EQ(list.integer(u"NSPersistenceMaximumFrameworkVersion"_s), 1526);
    EXPECT_EQ(list.dictionary(u"NSStoreModelVersionHashes"_s)->keys().size(), 2);
    EXPECT_TRUE(list.text(u"NSStoreModelVersionHashesDigest"_s));

    // SQLite took the log over into the older store, and nothing else happened to it.
    EXPECT_EQ(contentOf(older).first(4096).sliced(40), rowless.first(4096).sliced(40));
    EXPECT_EQ(read(older, "SELECT COUNT(*) FROM ZACTIVITY"), "4");
    EXPECT_EQ(modeOf(path), 0600U);
}

TEST_F(ImportTest, OnlyAStoreOfTheOlderShapeIsTakenAndTheFirstOfTwo) {
    const auto change = [this](const QByteArray& sql) {
        return [this, sql] {
            Database(older).execute(sql);
        };
    };
    std::unique_ptr<Database> other;
    const auto storage = "Orvanta.Storage"_L1;
    const struct {
        const char* what;
        std::function<void()> prepare; // Of two stores, with a row named "first" and "second".
        const char* taken;             // Or nothing, and the error that opening ends with.
        QLatin1StringView domain = {};
        int code = 0;
    } rows[] = {
        {"two", [] {}, "first"},
        {"the second only", [this] { QFile::remove(older); }, "second"},
        {"both entities", change(giveEntities({u"Activity"_s, u"DayActivity"_s})), "second"},
        {"another entity", change(giveEntities({u"Note"_s})), "second"},
        {"no entity", change(giveEntities({})), "second"},
        {"no metadata", change("DROP TABLE Z_METADATA"), "second"},
        {"null", change("UPDATE Z_METADATA SET Z_PLIST = NULL"), "second"},
        {"neither qualifies",
         [this] {
             putFile(older, {});
             putFile(oldest, {});
         },
         ""},
        {"no table", change("DROP TABLE ZACTIVITY"), nullptr, storage, SQLITE_ERROR},
        {"no list", change(giveList("garbage")), nullptr, "PropertyList"_L1},
        {"no database", [this] { putFile(older, QByteArray(5000, 'x')); }, nullptr, storage,
         SQLITE_NOTADB},
        {"locked",
         [this, &other] {
             other = std::make_unique<Database>(older);
             other->execute("PRAGMA journal_mode = DELETE; BEGIN EXCLUSIVE");
         },
         nullptr, storage, SQLITE_BUSY},
        {"something in the store's place",
         [this] { QFile::link(folder + u"/nowhere/store"_s, path); }, nullptr, "POSIX"_L1, EEXIST},
    };
    for (const auto& [what, prepare, taken, domain, code] : rows) {
        SCOPED_TRACE(what);
        empty();
        for (const auto& [name, key] : {std::pair(older, "first"), std::pair(oldest, "second")}) {
            CoreDataStore::make(name,
                                "INSERT INTO ZACTIVITY (Z_PK, ZKEY) VALUES (9, '"_ba + key + "')");
            Database(name).execute("PRAGMA wal_checkpoint(TRUNCATE)");
        }
        prepare();
        putFile(folder + u"/import-of-a-killed-process.store-wal"_s, "left");
        if (taken) {
            open();
            EXPECT_EQ(read("SELECT ZKEY FROM ZACTIVITY"), taken);
            // What is there now stays: the older stores are not looked at again.
            write("DELETE FROM ZACTIVITY");
            open();
            EXPECT_EQ(read("SELECT COUNT(*) FROM ZACTIVITY"), "0");
        } else {
            expectError([this] { open(); }, domain, code);
            EXPECT_FALSE(QFile::exists(path));
        }
        EXPECT_TRUE(QDir(folder).entryList({u"import-*"_s}, QDir::Files).isEmpty());
        other.reset();
    }
}

TEST_F(ImportTest, ALogThatAnEarlierStoreLeftBehindIsNotTakenForThisOnes) {
    open();
    {
        Database database(path);
        database.setCheckpointOnClose(false);
        database.execute("INSERT INTO ZACTIVITY (Z_PK, ZKEY) VALUES (1, 'app:gone')");
    }
    ASSERT_TRUE(QFile::exists(path + u"-wal"_s) && QFile::remove(path));
    CoreDataStore::make(older, olderRows);
    open();
    EXPECT_EQ(read(activities), read(older, activities));
    EXPECT_EQ(read("PRAGMA integrity_check"), "ok");
}

TEST_F(ImportTest, AStoreFromAMacOpensAndWorks) {
    CoreDataStore::make(path, laterRows, true);
    const QByteArray before = metadata();
    {
        const auto container = open();
        ModelContext& context = container->mainContext();
        ASSERT_EQ(context.activities().size(), 1U);
        const Activity& activity = context.activities()[0];
        EXPECT_EQ(activity.previousCategoryValue(), u"pending"_s);
        EXPECT_EQ(activity.lastUsedAt(), Date{5.5});
        // A row without an identifier counts, one without a day stands in no history.
        ASSERT_EQ(context.dayActivities().size(), 2U);
        context.dayActivities().add(day, activity.keyId(), 1);
        context.dayActivities().add({2024, 3, 6}, activity.keyId(), 2);
        context.save();
    }
    EXPECT_EQ(read("SELECT Z_PK, Z_OPT, ZSECONDS, ZDAY FROM ZDAYACTIVITY"),
              "2|2|61.0|2024-03-05\n3|1|1.0|monday\n4|1|2.0|2024-03-01\n5|1|2.0|2024-03-06");
    EXPECT_EQ(metadata(), before);
    EXPECT_EQ(read("PRAGMA page_size") + read("PRAGMA journal_mode"), "512wal");
    EXPECT_EQ(read("SELECT * FROM ACHANGE"), "3|9");
}

TEST_F(ImportTest, WhatAnOlderStoreLacksIsAdded) {
    const struct {
        const char* change;
        const char* query;
        const char* now;
    } rows[] = {
        {"ALTER TABLE ZACTIVITY DROP COLUMN ZNAME", "SELECT COUNT(ZNAME) FROM ZACTIVITY", "2"},
        {"ALTER TABLE ZDAYACTIVITY DROP COLUMN ZSECONDS", "SELECT MAX(ZSECONDS) FROM ZDAYACTIVITY",
         "NULL"},
        {"DROP TABLE Z_PRIMARYKEY", "SELECT Z_NAME, Z_MAX FROM Z_PRIMARYKEY",
         "Activity|11\nDayActivity|4"},
        {"DELETE FROM Z_METADATA", "SELECT COUNT(Z_UUID), COUNT(Z_PLIST) FROM Z_METADATA", "1|1"},
        {"UPDATE Z_METADATA SET Z_PLIST = NULL", "SELECT COUNT(Z_PLIST) FROM Z_METADATA", "1"},
        {"UPDATE Z_METADATA SET Z_PLIST = 'garbage'",
         "SELECT CAST(substr(Z_PLIST, 1, 6) AS TEXT) FROM Z_METADATA", "bplist"},
        {"DROP INDEX Z_Activity_UNIQUE_key; INSERT INTO ZACTIVITY (Z_PK, ZKEY) VALUES (10, "
         "'app:a')",
         "SELECT COUNT(*) FROM sqlite_master WHERE name = 'Z_Activity_UNIQUE_key'", "1"},
    };
    for (const auto& [change, query, now] : rows) {
        SCOPED_TRACE(change);
        empty();
        CoreDataStore::make(path, laterRows, true);
        write(change);
        for (int time = 0; time < 2; ++time) {
            const auto container = open();
            ModelContext& context = container->mainContext();
            ASSERT_GE(context.activities().size(), 1U);
            EXPECT_EQ(context.activities()[0].seconds(), 60);
            context.activities()[0].setLastUsedAt(std::nullopt);
            context.activities().append(u"app:%1"_s.arg(time), u""_s, Category::pending, 1);
            context.save();
        }
        EXPECT_EQ(read(query), now);
    }
}

TEST_F(ImportTest, WhatIsNoneOfOursIsRefusedAndLeftAsItIs) {
    const auto changed = [this](const QByteArray& change) {
        return [this, change] {
            CoreDataStore::make(path, laterRows, true);
            Database database(path);
            database.setCheckpointOnClose(false); // The change stands in the log alone.
            database.execute(change);
        };
    };
    const struct {
        std::function<void()> make;
        const char* mention;
        int code = SQLITE_SCHEMA;
    } rows[] = {
        {[this] { putFile(path, QByteArray(1000, 'x')); }, "not a database", SQLITE_NOTADB},
        {[this] { QDir().mkpath(path + u"/inner"_s); }, "open", SQLITE_CANTOPEN},
        {[this] { write("CREATE TABLE notes (text)"); }, "Z_METADATA"}, // Another program's.
        {changed("DROP TABLE ZACTIVITY"), "ZACTIVITY"},
        {changed("DROP INDEX Z_Activity_UNIQUE_key; ALTER TABLE ZACTIVITY DROP ZKEY"), "ZKEY"},
        {changed("ALTER TABLE ZDAYACTIVITY DROP Z_ENT"), "Z_ENT"},
        {changed("ALTER TABLE ZDAYACTIVITY ADD ZDEVICE VARCHAR"), "ZDEVICE em ZDAYACTIVITY"},
        {changed("INSERT INTO Z_PRIMARYKEY VALUES (3, 'Goal', 0, 0)"), "Goal"},
        {changed("UPDATE Z_PRIMARYKEY SET Z_ENT = 3 WHERE Z_ENT = 2"), "DayActivity"},
        {changed(giveEntities({u"Activity"_s, u"Goal"_s})), "Goal"},
    };
    for (const auto& [make, mention, code] : rows) {
        SCOPED_TRACE(mention);
        empty();
        make();
        const auto before = files();
        expectError([this] { open(); }, "Orvanta.Storage"_L1, code, QString::fromLatin1(mention));
        EXPECT_EQ(files(), before);
    }
}
