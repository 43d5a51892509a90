#pragma once

#include "Model/ActivityList.h"
#include "Model/ActivityStore.h"
#include "Model/Calendar.h"
#include "Model/DayActivityList.h"
#include "Model/Sqlite.h"
#include "Model/UserDefaults.h"

#include <QTemporaryDir>
#include <QTimeZone>

#include <chrono>
#include <memory>

namespace orvanta {

/// A store of 3,000 activities, each with more than a minute in this session, and this many years
/// of days with 49 records each, up to today.
class FilledStore {
public:
    explicit FilledStore(std::int64_t years) {
        UserDefaults defaults(folder_.path(), QStringLiteral("com.brindlework.orvanta"));
        defaults.setBool(QStringLiteral("historySeededV1"), true); // Today has 49 records, too.
        const auto container = ActivityStore::open(folder_.path());
        ModelContext& context = container->mainContext();
        constexpr std::size_t activities = 3000;
        for (std::size_t i = 0; i < activities; ++i) {
            const double seconds = 60.5 + static_cast<double>(i * 7919 % activities);
            context.activities().append(
                i % 3 == 0 ? QStringLiteral("app:org.example.Application%1").arg(i)
                           : QStringLiteral("site:pagina%1.example.org").arg(i),
                QStringLiteral("Atividade %1").arg(i), allCases[i % 3], seconds);
        }
        constexpr int recordsPerDay = 49;
        for (std::int64_t day = years * 365; day >= 0; --day) {
            const Day filed = *Calendar::addingDays(today_, -day);
            for (int i = 0; i < recordsPerDay; ++i) {
                const auto row = static_cast<std::size_t>(day * 7 + i * 13) % activities;
                context.dayActivities().add(filed, context.activities()[row].keyId(), i + 0.25);
            }
        }
        context.save();
    }

    const QTemporaryDir& folder() const { return folder_; }

    std::unique_ptr<ModelContainer> open() const {
        auto container = ActivityStore::open(folder_.path());
        container->mainContext().fetchActivities();
        container->mainContext().fetchDayActivities(today_);
        return container;
    }

    /// Gives it the pages that another system's framework would have chosen.
    void repage() const {
        Database database(
            folder_.filePath(QStringLiteral("com.brindlework.orvanta/Activities.store")));
        database.execute("PRAGMA journal_mode = DELETE; PRAGMA page_size = 4096; VACUUM;"
                         "PRAGMA journal_mode = WAL");
    }

private:
    QTemporaryDir folder_;
    Day today_ =
        Calendar(QTimeZone("America/Sao_Paulo")).day(Date::from(std::chrono::system_clock::now()));
};

} // namespace orvanta
