#include "Model/StoreMetadata.h"

#include "Model/PropertyList.h"
#include "Model/Schema.h"
#include "Model/Sqlite.h"

#include <QUuid>

namespace orvanta::StoreMetadata {

namespace {

const auto versionHashes = QStringLiteral("NSStoreModelVersionHashes");

PropertyList parsed(const std::optional<QByteArray>& bytes) {
    try {
        const auto list = bytes ? PropertyList::parse(*bytes) : std::nullopt;
        return list.value_or(PropertyList());
    } catch (const ModelError&) {
        return {};
    }
}

} // namespace

std::optional<QByteArray> read(Database& database) {
    Statement row(database, "SELECT Z_PLIST FROM Z_METADATA");
    const QByteArrayView bytes = row.step() ? row.blob(0) : QByteArrayView();
    return bytes.isEmpty() ? std::nullopt : std::optional(bytes.toByteArray());
}

std::set<QString> entityNames(const QByteArray& list) {
    const auto root = PropertyList::parse(list);
    const auto hashes = root ? root->dictionary(versionHashes) : std::nullopt;
    const QStringList names = hashes ? hashes->keys() : QStringList();
    return {names.begin(), names.end()};
}

void write(Database& database, const Schema& schema) {
    PropertyList list = parsed(read(database));
    PropertyList hashes;
    for (const Entity& entity : schema.entities) {
        hashes.setData(QString::fromLatin1(entity.name), entity.versionHash());
    }
    constexpr qint64 hashesVersion = 3;
    constexpr qint64 frameworkVersion = 1414;
    list.setDictionary(versionHashes, hashes);
    list.setInteger(QStringLiteral("NSStoreModelVersionHashesVersion"), hashesVersion);
    list.setText(QStringLiteral("NSStoreModelVersionHashesDigest"),
                 QString::fromLatin1(schema.versionHashesDigest()));
    list.setText(QStringLiteral("NSStoreModelVersionChecksumKey"),
                 QString::fromLatin1(schema.versionChecksum()));
    list.setTexts(QStringLiteral("NSStoreModelVersionIdentifiers"), {schema.version});
    list.setInteger(QStringLiteral("NSPersistenceFrameworkVersion"), frameworkVersion);
    list.setText(QStringLiteral("NSStoreType"), QStringLiteral("SQLite"));
    list.setText(QStringLiteral("_NSAutoVacuumLevel"), QStringLiteral("2"));

    Statement(database, "UPDATE Z_METADATA SET Z_PLIST = ?1").bind(1, list.toBinary()).run();
    if (database.changes() == 0) {
        Statement(database,
                  "INSERT INTO Z_METADATA (Z_VERSION, Z_UUID, Z_PLIST) VALUES (1, ?1, ?2)")
            .bind(1, QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper())
            .bind(2, list.toBinary())
            .run();
    }
}

} // namespace orvanta::StoreMetadata
