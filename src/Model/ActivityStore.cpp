#include "Model/ActivityStore.h"

#include "Model/Sqlite.h"
#include "Model/StoreMetadata.h"
#include "Platform/PrivateFolder.h"

#include <QDir>
#include <QFile>
#include <QUuid>

#include <sqlite3.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <system_error>

namespace orvanta::ActivityStore {

namespace {

namespace fs = std::filesystem;

fs::path filePath(const QString& path) {
    return QFile::encodeName(path).toStdString();
}

void check(const std::error_code& error) {
    if (error) {
        throw ModelError(ModelError::systemDomain, error.value(),
                         QString::fromLocal8Bit(error.message()));
    }
}

/// What SQLite keeps beside a database.
void removeSideFiles(const QString& path) {
    for (const char* suffix : {"-wal", "-shm", "-journal"}) {
        QFile::remove(path + QLatin1StringView(suffix));
    }
}

/// Copies a database, with what of it stands only in its write-ahead log, into one file.
void snapshot(const QString& from, const QString& to) {
    Database source(from, Database::Access::Write);
    Database target(to, Database::Access::Create);
    constexpr int patience = 2000;
    source.setBusyTimeout(patience);
    sqlite3_backup* backup = sqlite3_backup_init(target.handle(), "main", source.handle(), "main");
    if (backup == nullptr) {
        throw databaseError(target.handle());
    }
    const int step = sqlite3_backup_step(backup, -1);
    const int finish = sqlite3_backup_finish(backup); // Reports the step's failure on the target.
    if (step != SQLITE_DONE || finish != SQLITE_OK) {
        throw databaseError(target.handle());
    }
    target.execute("PRAGMA journal_mode = DELETE"); // No side files.
}

/// Whether this is a store of the shape that older versions wrote, with one entity.
bool isActivityStore(const QString& path) {
    Database store(path, Database::Access::Read);
    std::optional<QByteArray> metadata;
    try {
        metadata = StoreMetadata::read(store);
    } catch (const ModelError&) {
        return false; // Some other database.
    }
    if (!metadata ||
        StoreMetadata::entityNames(*metadata) != std::set{QStringLiteral("Activity")}) {
        return false;
    }
    const Statement records(store, "SELECT 1 FROM ZACTIVITY LIMIT 1"); // Throws without a table.
    return true;
}

/// Moves a copy of the store `from` to `to` if it is one of an older version; returns whether it
/// was. The store itself is only read.
bool importLegacy(const QString& from, const QString& to) {
    struct Temporary {
        QString path;
        ~Temporary() {
            QFile::remove(path);
            removeSideFiles(path);
        }
    };
    const Temporary copy{QFileInfo(to).path() + QStringLiteral("/import-") +
                         QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper() +
                         QStringLiteral(".store")};
    snapshot(from, copy.path);
    const bool qualifies = isActivityStore(copy.path);
    if (qualifies) {
        if (fs::exists(fs::symlink_status(filePath(to)))) {
            check(std::make_error_code(std::errc::file_exists));
        }
        // SQLite would take a log that an earlier store left behind for part of this one.
        removeSideFiles(to);
        std::error_code error;
        fs::rename(filePath(copy.path), filePath(to), error);
        check(error);
    }
    return qualifies;
}

/// Copies that a process left which was killed while it made them.
void removeInterruptedImports(const QString& folder) {
    QDir directory(folder);
    for (const QString& name :
         directory.entryList({QStringLiteral("import-*.store*")}, QDir::Files | QDir::Hidden)) {
        directory.remove(name);
    }
}

} // namespace

const Schema& schema() {
    return Schema::current();
}

std::unique_ptr<ModelContainer> open(const QString& applicationSupport) {
    const QString folder = applicationSupport + QStringLiteral("/com.brindlework.orvanta");
    if (!makePrivateFolder(folder)) {
        check(std::error_code(errno, std::system_category()));
    }
    narrowFolder(folder); // Older versions made it for everybody.

    const QString store = folder + QStringLiteral("/Activities.store");
    if (!QFile::exists(store)) {
        removeInterruptedImports(folder);
        const QString olderFolder =
            applicationSupport + QStringLiteral("/com.local.Orvanta/Activities.store");
        const QString defaultStore = applicationSupport + QStringLiteral("/default.store");
        if (!QFile::exists(olderFolder) || !importLegacy(olderFolder, store)) {
            if (QFile::exists(defaultStore)) {
                importLegacy(defaultStore, store);
            }
        }
    }
    return std::make_unique<ModelContainer>(schema(), store);
}

} // namespace orvanta::ActivityStore
