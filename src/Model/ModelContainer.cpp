#include "Model/ModelContainer.h"

#include "Model/LightweightMigration.h"
#include "Model/SiteKeys.h"
#include "Model/Sqlite.h"

#include <QFile>
#include <QFileInfo>

#include <sqlite3.h>
#include <sys/stat.h>

namespace orvanta {

namespace {

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

/// Gives an empty database, or one that was written elsewhere, the pages of our own. They only save
/// writing, so what hinders it (another reader, a full disk) hinders nothing else.
void takeOurLayout(Database& database) {
    if (database.integer("PRAGMA page_size") == 512 &&
        database.integer("PRAGMA auto_vacuum") == 2) {
        return;
    }
    try {
        database.execute("PRAGMA journal_mode = DELETE"); // In a log, the pages have their size.
        database.execute("PRAGMA temp_store = MEMORY");   // Nobody else is to find a copy.
        database.execute("PRAGMA page_size = 512");
        database.execute("PRAGMA auto_vacuum = INCREMENTAL");
        database.execute("VACUUM");
    } catch (const ModelError&) {
        // Harmless: the store works in the layout that it has, only writing more.
    }
}

} // namespace

ModelContainer::ModelContainer(const Schema& schema, const QString& path) {
    makePrivate(path);
    database_ = std::make_unique<Database>(path);
    constexpr int patience = 2000;
    database_->setBusyTimeout(patience);
    // A store that is refused stays as it is, with what stands only in its log.
    database_->setCheckpointOnClose(QFileInfo(path + QStringLiteral("-wal")).size() == 0);
    LightweightMigration migration(*database_, schema);
    if (database_->isReadOnly()) {
        throw ModelError(ModelError::storageDomain, SQLITE_READONLY,
                         QString::fromUtf8(sqlite3_errstr(SQLITE_READONLY)));
    }
    database_->setCheckpointOnClose(true);
    takeOurLayout(*database_);
    if (migration.isNeeded()) {
        migration.run();
    }
    try {
        convertSiteKeys(*database_);
    } catch (const ModelError&) {
        // Harmless: nothing is changed, and the next start tries again.
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
