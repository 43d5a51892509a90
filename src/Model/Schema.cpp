#include "Model/Schema.h"

#include <QCryptographicHash>

namespace orvanta {

namespace {

QByteArray base64Hash(QCryptographicHash::Algorithm algorithm, const QByteArray& bytes) {
    return QCryptographicHash::hash(bytes, algorithm).toBase64();
}

} // namespace

QByteArray Entity::createTable() const {
    QByteArray sql = "CREATE TABLE IF NOT EXISTS " + table() +
                     " ( Z_PK INTEGER PRIMARY KEY, Z_ENT INTEGER, Z_OPT INTEGER";
    for (const Attribute& attribute : attributes) {
        sql += ", " + attribute.column() + " " + attribute.columnType;
    }
    return sql + " )";
}

QByteArray Entity::createIndex(bool isUnique) const {
    return QByteArray(isUnique ? "CREATE UNIQUE INDEX" : "CREATE INDEX") + " IF NOT EXISTS " +
           uniqueIndex() + " ON " + table() + " (" + uniqueColumn() + " COLLATE BINARY ASC)";
}

QByteArray Entity::versionHash() const {
    return QCryptographicHash::hash(name + "\n" + createTable() + "\n" + createIndex(true),
                                    QCryptographicHash::Sha256);
}

const Schema& Schema::current() {
    static const Schema schema{
        .entities =
            {
                {.name = "Activity",
                 .number = 1,
                 .attributes = {{"lastUsedAt", "TIMESTAMP"},
                                {"seconds", "FLOAT"},
                                {"categoryValue", "VARCHAR"},
                                {"key", "VARCHAR"},
                                {"name", "VARCHAR"},
                                {"previousCategoryValue", "VARCHAR"}},
                 .uniqueAttribute = "key"},
                {.name = "DayActivity",
                 .number = 2,
                 .attributes = {{"seconds", "FLOAT"},
                                {"day", "VARCHAR"},
                                {"id", "VARCHAR"},
                                {"key", "VARCHAR"}},
                 .uniqueAttribute = "id"},
            },
        .version = QStringLiteral("1.0.0"),
    };
    return schema;
}

std::vector<QByteArray> Schema::createTables() const {
    std::vector<QByteArray> statements;
    statements.reserve(entities.size() + 3);
    for (const Entity& entity : entities) {
        statements.push_back(entity.createTable());
    }
    statements.emplace_back("CREATE TABLE IF NOT EXISTS Z_PRIMARYKEY (Z_ENT INTEGER PRIMARY KEY, "
                            "Z_NAME VARCHAR, Z_SUPER INTEGER, Z_MAX INTEGER)");
    statements.emplace_back("CREATE TABLE IF NOT EXISTS Z_METADATA (Z_VERSION INTEGER PRIMARY KEY, "
                            "Z_UUID VARCHAR(255), Z_PLIST BLOB)");
    statements.emplace_back("CREATE TABLE IF NOT EXISTS Z_MODELCACHE (Z_CONTENT BLOB)");
    return statements;
}

QByteArray Schema::versionHashesDigest() const {
    QByteArray bytes;
    for (const Entity& entity : entities) {
        bytes += entity.name + entity.versionHash();
    }
    return base64Hash(QCryptographicHash::Sha512, bytes);
}

QByteArray Schema::versionChecksum() const {
    QByteArray bytes;
    for (const Entity& entity : entities) {
        bytes += entity.versionHash();
    }
    return base64Hash(QCryptographicHash::Sha256, bytes);
}

} // namespace orvanta
