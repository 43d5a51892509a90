#include "Model/PropertyList.h"
#include "StoreFolder.h"

#include <QCryptographicHash>
#include <QFile>
#include <QUuid>

#include <sys/stat.h>

#include <tuple>
#include <vector>

using namespace orvanta;
using namespace Qt::StringLiterals;

using StoreTest = StoreFolder;

TEST_F(StoreTest, ANewOneHasTheLayoutThatOtherProgramsKnow) {
    open();
    EXPECT_EQ(read("SELECT sql FROM sqlite_master ORDER BY rowid"),
              "CREATE TABLE ZACTIVITY ( Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, "
              "ZLASTUSEDAT TIMESTAMP, ZSECONDS FLOAT, ZCATEGORYVALUE VARCHAR, ZKEY VARCHAR, "
              "ZNAME VARCHAR, ZPREVIOUSCATEGORYVALUE VARCHAR )\n"
              "CREATE TABLE ZDAYACTIVITY ( Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER, "
              "ZSECONDS FLOAT, ZDAY VARCHAR, ZID VARCHAR, ZKEY VARCHAR )\n"
              "CREATE TABLE Z_PRIMARYKEY (Z_ENT INTEGER PRIMARY KEY, Z_NAME VARCHAR, Z_SUPER "
              "INTEGER, Z_MAX INTEGER)\n"
              "CREATE TABLE Z_METADATA (Z_VERSION INTEGER PRIMARY KEY, Z_UUID VARCHAR(255), "
              "Z_PLIST BLOB)\n"
              "CREATE TABLE Z_MODELCACHE (Z_CONTENT BLOB)\n"
              "CREATE UNIQUE INDEX Z_Activity_UNIQUE_key ON ZACTIVITY (ZKEY COLLATE BINARY ASC)\n"
              "CREATE UNIQUE INDEX Z_DayActivity_UNIQUE_id ON ZDAYACTIVITY (ZID COLLATE BINARY "
              "ASC)");
    EXPECT_EQ(read("SELECT * FROM Z_PRIMARYKEY"), "1|Activity|0|0\n2|DayActivity|0|0");
    EXPECT_EQ(read("PRAGMA page_size") + read("PRAGMA auto_vacuum") + read("PRAGMA journal_mode"),
              "5122wal");

    Database other(path);
    Statement row(other, "SELECT * FROM Z_METADATA");
    ASSERT_TRUE(row.step());
    EXPECT_EQ(row.integer(0), 1);
    EXPECT_EQ(row.text(1), QUuid(row.text(1)).toString(QUuid::WithoutBraces).toUpper());
    const auto list = PropertyList::parse(row.blob(2).toByteArray());
    const auto hashes = list.value().dictionary(u"NSStoreModelVersionHashes"_s);
    EXPECT_EQ(hashes.value().keys().size(), 2);
    const QByteArray activity = hashes->data(u"Activity"_s).value();
    const QByteArray dayActivity = hashes->data(u"DayActivity"_s).value();
    EXPECT_TRUE(activity.size() == 32 && dayActivity.size() == 32 && activity != dayActivity);
    const auto hash = [](const QByteArray& of, QCryptographicHash::Algorithm algorithm) {
        return QString::fromLatin1(QCryptographicHash::hash(of, algorithm).toBase64());
    };
    for (const auto& [key, text] :
         {std::pair(u"NSStoreModelVersionHashesDigest"_s,
                    hash("Activity" + activity + "DayActivity" + dayActivity,
                         QCryptographicHash::Sha512)),
          {u"NSStoreModelVersionChecksumKey"_s,
           hash(activity + dayActivity, QCryptographicHash::Sha256)},
          {u"NSStoreType"_s, u"SQLite"_s},
          {u"_NSAutoVacuumLevel"_s, u"2"_s}}) {
        EXPECT_EQ(list->text(key), text);
    }
    EXPECT_EQ(list->texts(u"NSStoreModelVersionIdentifiers"_s), QStringList{u"1.0.0"_s});
    EXPECT_EQ(list->integer(u"NSStoreModelVersionHashesVersion"_s), 3);
    EXPECT_GT(list->integer(u"NSPersistenceFrameworkVersion"_s), 0);
    EXPECT_EQ(list->keys().size(), 8);
}

TEST_F(StoreTest, ItAndItsFolderAreThePersonsAloneWhereverALinkPutsThem) {
    const auto expectPrivate = [](const QString& store) {
        for (const auto& file : {store, store + u"-wal"_s, store + u"-shm"_s}) {
            EXPECT_EQ(modeOf(file), 0600U) << qPrintable(file);
            chmod(qPrintable(file), 0644);
        }
    };
    const mode_t mask = umask(0);
    std::unique_ptr<ModelContainer> created;
    for (const QString& file : {directory.filePath(u"elsewhere.store"_s), path}) {
        empty();
        EXPECT_TRUE(file == path || QFile::link(file, path));
        chmod(qPrintable(folder), 0777);
        created = open();
        EXPECT_EQ(modeOf(folder), 0700U);
        expectPrivate(file);
    }
    open(); // With its side files, and for everybody to read.
    umask(mask);
    expectPrivate(path);
}

TEST_F(StoreTest, KeepsEveryFieldAsItWas) {
    using Fields = std::tuple<QString, QString, QString, std::optional<QString>,
                              std::optional<Date>, double, std::optional<double>>;
    const std::vector<Fields> rows{
        {u"app:a"_s, u"Finder"_s, u"production"_s, {}, {}, 0, 0},
        {u"site:ключ"_s, u""_s, u"Production"_s, u"pending"_s, Date{7e8}, 0.1, 86400},
        {u""_s, u"Ação 日本 🦊 'x' \"y\" | %1"_s, u"ignored"_s, u"?"_s, Date{-0.1}, 8,
         1e-300},
        {u"app:b"_s, u"A"_s, u""_s, u""_s, Date{731548800.123456}, 1e-300, {}}};
    {
        const auto container = open();
        ModelContext& context = container->mainContext();
        for (const auto& [key, name, category, previous, used, seconds, inDay] : rows) {
            Activity& activity = context.activities().append(key, name, Category::pending, seconds);
            activity.setCategoryValue(category);
            activity.setLastUsedAt(used);
            activity.setPreviousCategoryValue(previous);
            inDay ? context.dayActivities().setSeconds(day, activity.keyId(), *inDay) : void();
        }
        context.save();
    }
    const auto container = open();
    ModelContext& context = container->mainContext();
    std::vector<Fields> found;
    for (const Activity& a : context.activities()) {
        found.emplace_back(a.key(), a.name(), a.categoryValue(), a.previousCategoryValue(),
                           a.lastUsedAt(), a.seconds(),
                           context.dayActivities().seconds(day, a.keyId()));
    }
    EXPECT_TRUE(found == rows);
    EXPECT_FALSE(context.hasChanges());
    EXPECT_EQ(read("SELECT typeof(ZLASTUSEDAT), ZLASTUSEDAT FROM ZACTIVITY WHERE Z_PK IN (1, 2)"),
              "null|NULL\ninteger|700000000");
    EXPECT_EQ(read("SELECT Z_ENT, ZDAY, ZID, ZKEY FROM ZDAYACTIVITY WHERE Z_PK = 2"),
              "2|2024-03-05|2024-03-05|site:ключ|site:ключ");
}

TEST_F(StoreTest, ASaveWritesWhatHasChangedAndNothingElse) {
    const auto container = open();
    ModelContext& context = container->mainContext();
    Activity& a = context.activities().append(u"app:a"_s, u"A"_s, Category::pending, 0);
    Activity& b = context.activities().append(u"app:b"_s, u"B"_s, Category::pending, 0);
    context.dayActivities().add({2024, 3, 6}, a.keyId(), 1);
    context.dayActivities().add(day, b.keyId(), 1); // Rows are numbered by day.
    context.save();
    const auto unchanged = files();
    context.save();
    EXPECT_EQ(files(), unchanged);
    for (int i = 0; i < 2; ++i) {
        a.setSeconds(5);
        a.setLastUsedAt(Date{6.0 + i});
        context.dayActivities().setSeconds(day, b.keyId(), 2);
        context.save();
    }
    EXPECT_EQ(read("SELECT Z_PK, Z_OPT, ZKEY, ZSECONDS, ZLASTUSEDAT FROM ZACTIVITY"),
              "1|3|app:a|5.0|7\n2|1|app:b|0.0|NULL");
    EXPECT_EQ(read("SELECT Z_PK, Z_OPT, ZDAY, ZSECONDS FROM ZDAYACTIVITY"),
              "1|3|2024-03-05|2.0\n2|1|2024-03-06|1.0");
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

    // Another program may also have given a record another row, or made one before us.
    write("UPDATE ZDAYACTIVITY SET Z_PK = 7; INSERT INTO ZDAYACTIVITY (Z_PK, ZID, ZDAY, ZKEY) "
          "VALUES (8, '2024-03-06|app:a', '2024-03-06', 'app:a')");
    context.dayActivities().setSeconds(day, a.keyId(), 4);
    context.dayActivities().setSeconds({2024, 3, 6}, a.keyId(), 5);
    context.save();
    EXPECT_EQ(read("SELECT Z_PK, ZDAY, ZSECONDS FROM ZDAYACTIVITY"),
              "7|2024-03-05|4.0\n8|2024-03-06|5.0");
}

TEST_F(StoreTest, ASaveThatFailsInTheMiddleWritesNothingAndIsMadeUpForLater) {
    const auto container = open();
    ModelContext& context = container->mainContext();
    context.activities().append(u"app:old"_s, u"Old"_s, Category::pending, 1);
    context.save();
    context.activities()[0].setSeconds(10);
    context.dayActivities().setSeconds(
        day, context.activities().append(u"app:new"_s, u"New"_s, Category::pending, 0).keyId(), 1);
    write("CREATE TRIGGER obstacle BEFORE INSERT ON ZDAYACTIVITY "
          "BEGIN SELECT RAISE(ABORT, 'full'); END");
    for (int time = 0; time < 2; ++time) {
        expectError([&] { context.save(); }, "Orvanta.Storage"_L1, SQLITE_CONSTRAINT);
        EXPECT_TRUE(context.hasChanges());
        EXPECT_EQ(read("SELECT ZKEY, ZSECONDS FROM ZACTIVITY"), "app:old|1.0");
        EXPECT_EQ(read("SELECT Z_MAX FROM Z_PRIMARYKEY"), "1\n0");
    }
    write("DROP TRIGGER obstacle");
    context.save();
    EXPECT_EQ(read("SELECT Z_PK, ZKEY, ZSECONDS FROM ZACTIVITY"), "1|app:old|10.0\n2|app:new|0.0");
    EXPECT_EQ(read("SELECT Z_PK, ZID FROM ZDAYACTIVITY"), "1|2024-03-05|app:new");
}
