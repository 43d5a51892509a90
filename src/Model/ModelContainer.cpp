#include "Model/ModelContainer.h"

#include "Model/PropertyList.h"
#include "Model/Sqlite.h"

#include <QFile>
#include <QUuid>

#include <sqlite3.h>
#include <sys/stat.h>

namespace orvanta {

namespace {

bool isEmpty(Database& database) {
    Statement tables(database, "SELECT COUNT(*) FROM sqlite_master");
    return tables.step() && tables.integer(0) == 0;
}

/// What Core Data keeps of a store's model, as a binary property list.
QByteArray metadata(const Schema& schema) {
    PropertyList hashes;
    for (const Entity& entity : schema.entities) {
        hashes.setData(QString::fromLatin1(entity.name), entity.versionHash());
    }
    constexpr qint64 hashesVersion = 3;
    constexpr qint64 frameworkVersion = 1414;
    PropertyList list;
    list.setDictionary(QStringLiteral("NSStoreModelVersionHashes"), hashes);
    list.setInteger(QStringLiteral("NSStoreModelVersionHashesVersion"), hashesVersion);
    list.setText(QStringLiteral("NSStoreModelVersionHashesDigest"),
                 QString::fromLatin1(schema.versionHashesDigest()));
    list.setText(QStringLiteral("NSStoreModelVersionChecksumKey"),
                 QString::fromLatin1(schema.versionChecksum()));
    list.setTexts(QStringLiteral("NSStoreModelVersionIdentifiers"), {schema.version});
    list.setInteger(QStringLiteral("NSPersistenceFrameworkVersion"), frameworkVersion);
    list.setText(QStringLiteral("NSStoreType"), QStringLiteral("SQLite"));
    list.setText(QStringLiteral("_NSAutoVacuumLevel"), QStringLiteral("2"));
    return list.toBinary();
}

void create(Database& database, const Schema& schema) {
    // Both take effect only before the first table.
    database.execute("PRAGMA page_size = 512");
    database.execute("PRAGMA auto_vacuum = INCREMENTAL");
    database.execute("PRAGMA journal_mode = WAL");

    Transaction transaction(database);
    if (!isEmpty(database)) {
        return; // Another process was faster.
    }
    for (const QByteArray& statement : schema.createStatements()) {
        database.execute(statement.constData());
    }
    Statement(database, "INSERT INTO Z_METADATA VALUES (1, ?1, ?2)")
        .bind(1, QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper())
        .bind(2, metadata(schema))
        .run();
    transaction.commit();
}

/// Before SQLite makes side files, which take over the mode; a store that was brought here may have
/// its own already. A failure shows at the opening.
void makePrivate(const QString& path) {
    for (const char* suffix : {"", "-wal", "-shm"}) {
        const QByteArray file = QFile::encodeName(path) + suffix;
        struct stat status {};
        if (::stat(file.constData(), &status) == 0 && S_ISREG(status.st_mode)) {
            ::chmod(file.constData(), S_IRUSR | S_IWUSR);
        }
    }
}

/// That every table and column of the schema is there.
void checkShape(Database& database, const Schema& schema) {
    Statement column(database, "SELECT 1 FROM pragma_table_info(?1) WHERE name = ?2");
    const auto require = [&](const QByteArray& table, const QByteArray& name) {
        const bool found =
            column.bind(1, QString::fromLatin1(table)).bind(2, QString::fromLatin1(name)).step();
        column.reset();
        if (!found) {
            throw ModelError(
                ModelError::storageDomain, SQLITE_SCHEMA,
                QStringLiteral("O arquivo não contém os dados do orvanta (falta %1 em %2).")
                    .arg(QLatin1StringView(name), QLatin1StringView(table)));
        }
    };
    for (const Entity& entity : schema.entities) {
        for (const char* name : {"Z_PK", "Z_ENT", "Z_OPT"}) {
            require(entity.table(), name);
        }
        for (const Attribute& attribute : entity.attributes) {
            require(entity.table(), attribute.column());
        }
    }
    require("Z_PRIMARYKEY", "Z_MAX");
    require("Z_METADATA", "Z_PLIST");
}

} // namespace

ModelContainer::ModelContainer(const Schema& schema, const QString& path) {
    makePrivate(path);
    database_ = std::make_unique<Database>(path);
    constexpr int patience = 2000;
    database_->setBusyTimeout(patience);
    if (isEmpty(*database_)) {
        create(*database_, schema);
    }
    checkShape(*database_, schema);
    if (database_->isReadOnly()) {
        throw ModelError(ModelError::storageDomain, SQLITE_READONLY,
                         QString::fromUtf8(sqlite3_errstr(SQLITE_READONLY)));
    }
    database_->execute("PRAGMA journal_mode = WAL");
    database_->execute("PRAGMA synchronous = NORMAL");
    database_->execute("PRAGMA cache_size = -256"); // KiB. The records are in memory anyway.

    // Saving happens on the main thread and is tried again five seconds later.
    constexpr int briefly = 250;
    database_->setBusyTimeout(briefly);
    context_ = std::make_unique<ModelContext>(*database_);
}

ModelContainer::~ModelContainer() = default;

} // namespace orvanta
