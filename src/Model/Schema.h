#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace orvanta {

/// One attribute of an entity and its column.
struct Attribute {
    QByteArray name;       ///< as the model names it
    QByteArray columnType; ///< as Core Data declares it in SQLite

    QByteArray column() const { return "Z" + name.toUpper(); }
};

/// One record type and its table.
struct Entity {
    QByteArray name;
    int number;                        ///< Z_ENT: entities count from 1 in alphabetical order
    std::vector<Attribute> attributes; ///< in the order of the columns
    QByteArray uniqueAttribute;

    QByteArray table() const { return "Z" + name.toUpper(); }
    QByteArray uniqueColumn() const { return "Z" + uniqueAttribute.toUpper(); }
    QByteArray uniqueIndex() const { return "Z_" + name + "_UNIQUE_" + uniqueAttribute; }

    // What exists already stays as it is.
    QByteArray createTable() const;
    QByteArray createIndex(bool isUnique) const;

    /// 32 bytes that change when the entity does. Ours are our own: what Apple's framework would
    /// put here cannot be known, and they are never compared.
    QByteArray versionHash() const;
};

/// The record types of the store, in the layout in which Core Data keeps them in SQLite.
struct Schema {
    std::vector<Entity> entities;
    QString version;

    /// Version 1.0.0: `Activity` and `DayActivity`.
    static const Schema& current();

    /// A statement for each table of a store; what exists already stays as it is.
    std::vector<QByteArray> createTables() const;

    /// Base64 of SHA-512 over name and hash of each entity.
    QByteArray versionHashesDigest() const;
    /// Base64 of SHA-256 over the hashes.
    QByteArray versionChecksum() const;
};

} // namespace orvanta
