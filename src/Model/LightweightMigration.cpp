#include "Model/LightweightMigration.h"

#include "Model/Sqlite.h"
#include "Model/StoreMetadata.h"

#include <sqlite3.h>

#include <algorithm>
#include <set>

namespace orvanta {

namespace {

const std::set<QByteArray> bookkeepingColumns{"Z_PK", "Z_ENT", "Z_OPT"};

/// In upper case; none when there is no such table.
std::set<QByteArray> columnsOf(Database& database, const QByteArray& table) {
    Statement rows(database, "SELECT UPPER(name) FROM pragma_table_info(?1)");
    rows.bind(1, QString::fromLatin1(table));
    std::set<QByteArray> names;
    while (rows.step()) {
        names.insert(rows.utf8(0).toByteArray());
    }
    return names;
}

bool hasIndex(Database& database, const QByteArray& name) {
    Statement row(database, "SELECT 1 FROM sqlite_master WHERE type = 'index' AND name = ?1");
    return row.bind(1, QString::fromLatin1(name)).step();
}

std::set<QString> entitiesOfModel(Database& database) {
    try {
        return StoreMetadata::entityNames(StoreMetadata::read(database).value_or(QByteArray()));
    } catch (const ModelError& error) {
        // Without a list that can be read, the tables alone say what the store is.
        if (error.domain() != ModelError::propertyListDomain) {
            throw;
        }
        return {};
    }
}

void require(const std::set<QByteArray>& columns, const QByteArray& column,
             const QByteArray& table) {
    if (!columns.contains(column)) {
        throw ModelError(
            ModelError::storageDomain, SQLITE_SCHEMA,
            QStringLiteral("O arquivo não contém os dados do orvanta (falta %1 em %2).")
                .arg(QLatin1StringView(column), QLatin1StringView(table)));
    }
}

[[noreturn]] void refuseLater(const QString& unknown) {
    throw ModelError(
        ModelError::storageDomain, SQLITE_SCHEMA,
        QStringLiteral("O arquivo é de uma versão mais nova do orvanta (%1).").arg(unknown));
}

} // namespace

LightweightMigration::LightweightMigration(Database& database, const Schema& schema)
    : database_(database)
    , schema_(schema) {
    if (database.integer("SELECT COUNT(*) FROM sqlite_master") == 0) {
        isNeeded_ = true;
        return;
    }
    require(columnsOf(database, "Z_METADATA"), "Z_PLIST", "Z_METADATA");
    // The first entity is as old as the store itself.
    const Entity& oldest = schema.entities.front();
    require(columnsOf(database, oldest.table()), oldest.uniqueColumn(), oldest.table());

    isNeeded_ = !isModelComplete();
    for (const Entity& entity : schema.entities) {
        isNeeded_ |= !isComplete(entity);
    }
}

bool LightweightMigration::isComplete(const Entity& entity) const {
    std::set<QByteArray> columns = columnsOf(database_, entity.table());
    if (columns.empty()) {
        return false;
    }
    for (const QByteArray& column : bookkeepingColumns) {
        require(columns, column, entity.table());
        columns.erase(column);
    }
    require(columns, entity.uniqueColumn(), entity.table());
    const auto lacking =
        std::ranges::count_if(entity.attributes, [&columns](const Attribute& attribute) {
            return columns.erase(attribute.column()) == 0;
        });
    if (!columns.empty()) {
        refuseLater(QLatin1StringView(*columns.begin()) + QStringLiteral(" em ") +
                    QLatin1StringView(entity.table()));
    }
    return lacking == 0 && hasIndex(database_, entity.uniqueIndex());
}

bool LightweightMigration::isModelComplete() const {
    std::set<QString> lackingInModel;
    for (const Entity& entity : schema_.entities) {
        lackingInModel.insert(QString::fromLatin1(entity.name));
    }
    for (const QString& name : entitiesOfModel(database_)) {
        if (!lackingInModel.erase(name)) {
            refuseLater(name);
        }
    }

    std::size_t numbered = 0;
    if (!columnsOf(database_, "Z_PRIMARYKEY").empty()) {
        // From 16001 on the framework numbers the entities of its own change history.
        Statement rows(database_, "SELECT Z_ENT, Z_NAME FROM Z_PRIMARYKEY WHERE Z_ENT <= 16000");
        while (rows.step()) {
            const bool isOurs =
                std::ranges::any_of(schema_.entities, [&rows](const Entity& entity) {
                    return rows.integer(0) == entity.number && rows.utf8(1) == entity.name;
                });
            if (!isOurs) {
                refuseLater(rows.text(1));
            }
            ++numbered;
        }
    }
    return lackingInModel.empty() && numbered == schema_.entities.size();
}

void LightweightMigration::run() {
    Transaction::Statements statements(database_);
    Transaction transaction(statements);
    for (const Entity& entity : schema_.entities) {
        const std::set<QByteArray> columns = columnsOf(database_, entity.table());
        for (const Attribute& attribute : entity.attributes) {
            if (!columns.empty() && !columns.contains(attribute.column())) {
                database_.execute("ALTER TABLE " + entity.table() + " ADD COLUMN " +
                                  attribute.column() + " " + attribute.columnType);
            }
        }
    }
    for (const QByteArray& statement : schema_.createTables()) {
        database_.execute(statement);
    }
    for (const Entity& entity : schema_.entities) {
        // Only a damaged store holds something twice; then an index that allows it has to do.
        const bool isUnique =
            database_.integer("SELECT NOT EXISTS (SELECT 1 FROM " + entity.table() + " WHERE " +
                              entity.uniqueColumn() + " NOT NULL GROUP BY " +
                              entity.uniqueColumn() + " HAVING COUNT(*) > 1)") != 0;
        database_.execute(entity.createIndex(isUnique));
        const QByteArray number = QByteArray::number(entity.number);
        database_.execute("INSERT OR IGNORE INTO Z_PRIMARYKEY (Z_ENT, Z_NAME, Z_SUPER, Z_MAX) "
                          "VALUES (" +
                          number + ", '" + entity.name + "', 0, 0)");
        database_.execute("UPDATE Z_PRIMARYKEY SET Z_MAX = MAX(IFNULL(Z_MAX, 0), (SELECT "
                          "IFNULL(MAX(Z_PK), 0) FROM " +
                          entity.table() + ")) WHERE Z_ENT = " + number);
    }
    StoreMetadata::write(database_, schema_);
    transaction.commit();
}

} // namespace orvanta
