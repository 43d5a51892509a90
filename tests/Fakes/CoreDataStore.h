#pragma once

#include "Model/PropertyList.h"
#include "Model/Sqlite.h"

#include <QDir>
#include <QFileInfo>

namespace orvanta::CoreDataStore {

/// A store's metadata as the framework writes it, for a model with these entities.
inline PropertyList metadata(const QStringList& entities) {
    PropertyList hashes;
    for (const QString& entity : entities) {
        hashes.setData(entity, QByteArray(32, static_cast<char>(entity.size())));
    }
    PropertyList list;
    list.setDictionary(QStringLiteral("NSStoreModelVersionHashes"), hashes);
    list.setInteger(QStringLiteral("NSStoreModelVersionHashesVersion"), 3);
    list.setTexts(QStringLiteral("NSStoreModelVersionIdentifiers"), {QString()});
    list.setText(QStringLiteral("NSStoreType"), QStringLiteral("SQLite"));
    list.setInteger(QStringLiteral("NSPersistenceMaximumFrameworkVersion"), 1526);
    return list;
}

/// Writes a store as the framework leaves it: pages of 4 KiB, its tables of change history, a model
/// cache, and in the end whatever `rows` says, which then stands only in the write-ahead log.
///
/// Without `later`, it is one of the first version: one entity, and an `Activity` that remembers no
/// earlier category. With it, both entities are as they are today.
inline void make(const QString& path, const QByteArray& rows, bool later = false) {
    QDir().mkpath(QFileInfo(path).path());
    Database database(path);
    database.execute(R"(
        PRAGMA page_size = 4096; PRAGMA auto_vacuum = INCREMENTAL; PRAGMA journal_mode = WAL;
        CREATE TABLE ZACTIVITY ( Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER,
            ZLASTUSEDAT TIMESTAMP, ZSECONDS FLOAT, ZCATEGORYVALUE VARCHAR, ZKEY VARCHAR,
            ZNAME VARCHAR );
        CREATE UNIQUE INDEX Z_Activity_UNIQUE_key ON ZACTIVITY (ZKEY COLLATE BINARY ASC);
        CREATE TABLE Z_PRIMARYKEY (Z_ENT INTEGER PRIMARY KEY, Z_NAME VARCHAR, Z_SUPER INTEGER,
            Z_MAX INTEGER);
        INSERT INTO Z_PRIMARYKEY VALUES (1, 'Activity', 0, 9), (16001, 'CHANGE', 0, 3),
            (16002, 'TRANSACTION', 0, 3), (16003, 'TRANSACTIONSTRING', 0, 1);
        CREATE TABLE Z_METADATA (Z_VERSION INTEGER PRIMARY KEY, Z_UUID VARCHAR(255), Z_PLIST BLOB);
        CREATE TABLE Z_MODELCACHE (Z_CONTENT BLOB);
        INSERT INTO Z_MODELCACHE VALUES (x'62766e');
        CREATE TABLE ACHANGE ( Z_PK INTEGER PRIMARY KEY, ZENTITYPK INTEGER );
        INSERT INTO ACHANGE VALUES (3, 9))");
    QStringList entities{QStringLiteral("Activity")};
    if (later) {
        entities.append(QStringLiteral("DayActivity"));
        database.execute(R"(
            ALTER TABLE ZACTIVITY ADD COLUMN ZPREVIOUSCATEGORYVALUE VARCHAR;
            CREATE TABLE ZDAYACTIVITY ( Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER,
                ZSECONDS FLOAT, ZDAY VARCHAR, ZID VARCHAR, ZKEY VARCHAR );
            CREATE UNIQUE INDEX Z_DayActivity_UNIQUE_id ON ZDAYACTIVITY (ZID COLLATE BINARY ASC);
            INSERT INTO Z_PRIMARYKEY VALUES (2, 'DayActivity', 0, 4))");
    }
    Statement(database, "INSERT INTO Z_METADATA VALUES (1, 'E3A8C1F0', ?1)")
        .bind(1, metadata(entities).toBinary())
        .run();
    database.execute("PRAGMA wal_checkpoint(TRUNCATE)");
    database.setCheckpointOnClose(false);
    database.execute(rows);
}

} // namespace orvanta::CoreDataStore
