#pragma once

#include "Model/Date.h"
#include "Model/ModelError.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>

struct sqlite3;
struct sqlite3_stmt;

namespace orvanta {

/// The error value for the most recent failure on a connection.
ModelError databaseError(sqlite3* connection);

/// A connection to one SQLite file, for one thread. Everything throws `ModelError`.
class Database {
public:
    enum class Access {
        Read,   ///< a missing file is an error
        Write,  ///< for reading and writing; a missing file is an error
        Create, ///< as `Write`; a missing file is created, readable by its owner only
    };
    explicit Database(const QString& path, Access access = Access::Create);

    void execute(const QByteArray& sql);

    /// The single text that a pragma or query answers; empty when it answers nothing.
    QString text(const QByteArray& sql);
    /// The single number; 0 when it answers nothing.
    qint64 integer(const QByteArray& sql);

    /// Milliseconds to wait for another process's lock.
    void setBusyTimeout(int milliseconds);

    /// Whether SQLite could open the file for reading only.
    bool isReadOnly() const;

    /// Whether closing takes the write-ahead log over into the file. It does unless told not to.
    void setCheckpointOnClose(bool checkpoint);

    int changes() const;
    sqlite3* handle() const { return handle_.get(); }

private:
    struct Close {
        void operator()(sqlite3* handle) const;
    };
    std::unique_ptr<sqlite3, Close> handle_;
};

/// A prepared statement. Parameters count from 1 and columns from 0, as SQLite counts them; views
/// of a column are valid until the next step. Everything throws `ModelError`.
class Statement {
public:
    Statement(Database& database, const QByteArray& sql);

    Statement& bind(int parameter, qint64 value);
    Statement& bind(int parameter, double value);
    Statement& bind(int parameter, const QString& value);
    Statement& bind(int parameter, const QByteArray& value);
    Statement& bind(int parameter, std::optional<Date> value);
    Statement& bindNull(int parameter);

    /// Whether there is a row.
    bool step();

    /// Runs to the end and makes ready for the next run.
    void run();
    void reset();

    bool isNull(int column) const;
    bool isNumber(int column) const;
    qint64 integer(int column) const;
    double real(int column) const;
    QByteArrayView utf8(int column) const;
    QString text(int column) const { return QString::fromUtf8(utf8(column)); }
    QByteArrayView blob(int column) const;

private:
    void check(int result);

    struct Finalize {
        void operator()(sqlite3_stmt* handle) const;
    };
    Database& database_;
    std::unique_ptr<sqlite3_stmt, Finalize> handle_;
};

/// Everything between construction and `commit` is one unit; rolled back if it is not committed.
class Transaction {
public:
    /// Parsed once for many transactions.
    struct Statements {
        explicit Statements(Database& database);
        Database& database;
        Statement begin;
        Statement commit;
    };
    explicit Transaction(Statements& statements);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void commit();

private:
    Statements& statements_;
    bool open_ = true;
};

} // namespace orvanta
