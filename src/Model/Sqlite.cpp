#include "Model/Sqlite.h"

#include <QFile>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace orvanta {

ModelError databaseError(sqlite3* connection) {
    return {ModelError::storageDomain, sqlite3_errcode(connection),
            QString::fromUtf8(sqlite3_errmsg(connection))};
}

Database::Database(const QString& path, Access access) {
    const QByteArray file = QFile::encodeName(path);
    // One thread uses a connection: a mutex around every call would cost a tenth of the reading.
    int flags = SQLITE_OPEN_NOMUTEX;
    switch (access) {
    case Access::Read:
        flags |= SQLITE_OPEN_READONLY;
        break;
    case Access::Create: {
        flags |= SQLITE_OPEN_CREATE;
        // SQLite would create the file readable by everybody, behind a link too; side files take
        // over the main file's mode. One that is there is not opened: to close it would give up the
        // locks of other connections.
        struct stat status {};
        if (::stat(file.constData(), &status) != 0 && errno == ENOENT) {
            const int created = ::open(file.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
            if (created >= 0) {
                ::close(created);
            }
        }
        [[fallthrough]];
    }
    case Access::Write:
        flags |= SQLITE_OPEN_READWRITE;
        break;
    }
    sqlite3* handle = nullptr;
    const int result = sqlite3_open_v2(file.constData(), &handle, flags, nullptr);
    handle_.reset(handle);
    if (result != SQLITE_OK) {
        throw databaseError(handle);
    }
}

void Database::Close::operator()(sqlite3* handle) const {
    sqlite3_close_v2(handle);
}

void Database::execute(const QByteArray& sql) {
    if (sqlite3_exec(handle(), sql.constData(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw databaseError(handle());
    }
}

QString Database::text(const QByteArray& sql) {
    Statement statement(*this, sql);
    return statement.step() ? statement.text(0) : QString();
}

qint64 Database::integer(const QByteArray& sql) {
    Statement statement(*this, sql);
    return statement.step() ? statement.integer(0) : 0;
}

void Database::setBusyTimeout(int milliseconds) {
    sqlite3_busy_timeout(handle(), milliseconds);
}

bool Database::isReadOnly() const {
    return sqlite3_db_readonly(handle(), "main") == 1;
}

void Database::setCheckpointOnClose(bool checkpoint) {
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, checkpoint ? 0 : 1, nullptr);
}

int Database::changes() const {
    return sqlite3_changes(handle());
}

Statement::Statement(Database& database, const QByteArray& sql)
    : database_(database) {
    sqlite3_stmt* handle = nullptr;
    const int result = sqlite3_prepare_v3(database.handle(), sql.constData(), -1,
                                          SQLITE_PREPARE_PERSISTENT, &handle, nullptr);
    handle_.reset(handle);
    check(result);
}

void Statement::Finalize::operator()(sqlite3_stmt* handle) const {
    sqlite3_finalize(handle);
}

Statement& Statement::bind(int parameter, qint64 value) {
    check(sqlite3_bind_int64(handle_.get(), parameter, value));
    return *this;
}

Statement& Statement::bind(int parameter, double value) {
    check(sqlite3_bind_double(handle_.get(), parameter, value));
    return *this;
}

Statement& Statement::bind(int parameter, const QString& value) {
    const QByteArray utf8 = value.toUtf8();
    check(sqlite3_bind_text64(handle_.get(), parameter, utf8.constData(),
                              static_cast<sqlite3_uint64>(utf8.size()), SQLITE_TRANSIENT,
                              SQLITE_UTF8));
    return *this;
}

Statement& Statement::bind(int parameter, const QByteArray& value) {
    check(sqlite3_bind_blob64(handle_.get(), parameter, value.constData(),
                              static_cast<sqlite3_uint64>(value.size()), SQLITE_TRANSIENT));
    return *this;
}

Statement& Statement::bind(int parameter, std::optional<Date> value) {
    return value ? bind(parameter, value->sinceReference) : bindNull(parameter);
}

Statement& Statement::bindNull(int parameter) {
    check(sqlite3_bind_null(handle_.get(), parameter));
    return *this;
}

bool Statement::step() {
    const int result = sqlite3_step(handle_.get());
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        const ModelError error = databaseError(database_.handle());
        sqlite3_reset(handle_.get());
        throw ModelError(error);
    }
    return result == SQLITE_ROW;
}

void Statement::run() {
    while (step()) {
    }
    reset();
}

void Statement::reset() {
    sqlite3_reset(handle_.get());
}

bool Statement::isNull(int column) const {
    return sqlite3_column_type(handle_.get(), column) == SQLITE_NULL;
}

bool Statement::isNumber(int column) const {
    const int type = sqlite3_column_type(handle_.get(), column);
    return type == SQLITE_INTEGER || type == SQLITE_FLOAT;
}

qint64 Statement::integer(int column) const {
    return sqlite3_column_int64(handle_.get(), column);
}

double Statement::real(int column) const {
    return sqlite3_column_double(handle_.get(), column);
}

QByteArrayView Statement::utf8(int column) const {
    const auto* text = sqlite3_column_text(handle_.get(), column);
    return {text, sqlite3_column_bytes(handle_.get(), column)};
}

QByteArrayView Statement::blob(int column) const {
    const void* bytes = sqlite3_column_blob(handle_.get(), column);
    return {static_cast<const char*>(bytes), sqlite3_column_bytes(handle_.get(), column)};
}

void Statement::check(int result) {
    if (result != SQLITE_OK) {
        throw databaseError(database_.handle());
    }
}

Transaction::Statements::Statements(Database& connection)
    : database(connection)
    , begin(connection, "BEGIN IMMEDIATE")
    , commit(connection, "COMMIT") {}

Transaction::Transaction(Statements& statements)
    : statements_(statements) {
    statements_.begin.run();
}

Transaction::~Transaction() {
    // After some errors SQLite has rolled back by itself; then there is nothing left to undo.
    if (open_ && sqlite3_get_autocommit(statements_.database.handle()) == 0) {
        sqlite3_exec(statements_.database.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Transaction::commit() {
    statements_.commit.run();
    open_ = false;
}

} // namespace orvanta
