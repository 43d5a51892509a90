#pragma once

#include <QString>

#include <gtest/gtest.h>
#include <sqlite3.h>

namespace orvanta {

/// Another program at work on the same store.
class OtherProgram {
public:
    explicit OtherProgram(const QString& folder) {
        const QByteArray path =
            (folder + QStringLiteral("/com.brindlework.orvanta/Activities.store")).toUtf8();
        EXPECT_EQ(sqlite3_open(path.constData(), &handle_), SQLITE_OK);
    }
    ~OtherProgram() { sqlite3_close(handle_); }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

    void run(const char* sql) {
        EXPECT_EQ(sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr), SQLITE_OK)
            << sqlite3_errmsg(handle_);
    }
    double number(const char* sql) {
        sqlite3_stmt* statement = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(handle_, sql, -1, &statement, nullptr), SQLITE_OK);
        const double result =
            sqlite3_step(statement) == SQLITE_ROW ? sqlite3_column_double(statement, 0) : -1;
        sqlite3_finalize(statement);
        return result;
    }

private:
    sqlite3* handle_ = nullptr;
};

} // namespace orvanta
