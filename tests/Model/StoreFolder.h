#pragma once

#include "Files.h"
#include "Model/ActivityStore.h"
#include "Model/Sqlite.h"

#include <QDir>
#include <QTemporaryDir>

#include <sqlite3.h>

#include <functional>
#include <map>

namespace orvanta {

/// A person's data folder, with a store in it or none yet.
class StoreFolder : public testing::Test {
protected:
    static constexpr Day day{2024, 3, 5};

    void SetUp() override { empty(); }
    void empty() const {
        ASSERT_TRUE(QDir(directory.path()).removeRecursively());
        ASSERT_TRUE(QDir().mkpath(folder));
    }

    /// With the records from a day in the middle of what most tests file, and so both ways of
    /// reading them.
    std::unique_ptr<ModelContainer> open(Day since = {2024, 3, 6}) const {
        auto container = ActivityStore::open(directory.path());
        container->mainContext().fetchActivities();
        container->mainContext().fetchDayActivities(since);
        return container;
    }

    /// What another program reads: rows joined by line feeds, columns by bars.
    static QByteArray read(const QString& database, const char* sql) {
        QByteArray all;
        const auto row = [](void* result, int count, char** values, char**) {
            auto& text = *static_cast<QByteArray*>(result);
            for (int i = 0; i < count; ++i) {
                text += i > 0 ? "|" : text.isEmpty() ? "" : "\n";
                text += values[i] ? values[i] : "NULL";
            }
            return 0;
        };
        Database other(database, Database::Access::Write);
        EXPECT_EQ(sqlite3_exec(other.handle(), sql, row, &all, nullptr), SQLITE_OK)
            << sqlite3_errmsg(other.handle());
        return all;
    }
    QByteArray read(const char* sql) const { return read(path, sql); }
    void write(const char* sql) const { Database(path).execute(sql); }

    /// Every file of the folder with something in it, and its bytes, but for what SQLite shares
    /// between processes.
    std::map<QString, QByteArray> files() const {
        std::map<QString, QByteArray> all;
        for (const QString& name : QDir(folder).entryList(QDir::Files | QDir::Hidden)) {
            const QByteArray content = contentOf(folder + u'/' + name);
            if (!content.isEmpty() && !name.endsWith(QLatin1StringView("-shm"))) {
                all[name] = content;
            }
        }
        return all;
    }

    static void expectError(const std::function<void()>& what, QLatin1StringView domain, int code,
                            const QString& mention = {}) {
        try {
            what();
            ADD_FAILURE() << "no error";
        } catch (const ModelError& error) {
            EXPECT_EQ(error.domain(), domain) << error.what();
            EXPECT_EQ(error.code(), code) << error.what();
            EXPECT_FALSE(error.localizedDescription().isEmpty());
            EXPECT_TRUE(error.localizedDescription().contains(mention)) << error.what();
        }
    }

    QTemporaryDir directory;
    const QString folder = directory.filePath(QStringLiteral("com.brindlework.orvanta"));
    const QString path = folder + QStringLiteral("/Activities.store");
    const QString older = directory.filePath(QStringLiteral("com.local.Orvanta/Activities.store"));
};

} // namespace orvanta
