#include "Fakes/CoreDataStore.h"
#include "Model/ActivityList.h"
#include "Model/ActivityStore.h"
#include "Model/DayActivityList.h"

#include <QTemporaryDir>
#include <QTimeZone>

#include <benchmark/benchmark.h>

#include <chrono>

using namespace orvanta;

namespace {

constexpr int recordsPerDay = 49;
constexpr int activities = 3000;

/// A store with this many years of history, up to today.
class FilledStore {
public:
    explicit FilledStore(int years)
        : today_(calendar_.day(now_)) {
        const auto container = ActivityStore::open(folder_.path());
        ModelContext& context = container->mainContext();
        for (int i = 0; i < activities; ++i) {
            context.activities().append(QStringLiteral("site:pagina%1.example.org").arg(i),
                                        QStringLiteral("pagina%1.example.org").arg(i),
                                        allCases[static_cast<std::size_t>(i) % 4], 0);
        }
        for (int day = years * 365; day >= 0; --day) {
            const Day filed = calendar_.day(*calendar_.addingDays(now_, -day));
            for (int i = 0; i < recordsPerDay; ++i) {
                const auto row = static_cast<std::size_t>(day * 7 + i * 13) % activities;
                context.dayActivities().add(filed, context.activities()[row].keyId(), i + 0.25);
            }
        }
        context.save();
    }

    std::unique_ptr<ModelContainer> start() const {
        auto container = ActivityStore::open(folder_.path());
        container->mainContext().fetchActivities();
        container->mainContext().fetchDayActivities(today_);
        return container;
    }

    /// Gives it the pages that the framework would have chosen.
    void repage() const {
        Database database(
            folder_.filePath(QStringLiteral("com.brindlework.orvanta/Activities.store")));
        database.execute("PRAGMA journal_mode = DELETE; PRAGMA page_size = 4096; VACUUM;"
                         "PRAGMA journal_mode = WAL");
    }

private:
    QTemporaryDir folder_;
    Calendar calendar_{QTimeZone::utc()};
    Date now_ = Date::from(std::chrono::system_clock::now());
    Day today_;
};

void openStore(benchmark::State& state) {
    const FilledStore store(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(store.start());
    }
}
BENCHMARK(openStore)->ArgName("years")->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

void readOlderDays(benchmark::State& state) {
    const FilledStore store(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        const auto container = store.start();
        state.ResumeTiming();
        container->mainContext().dayActivities().complete();
    }
}
BENCHMARK(readOlderDays)->ArgName("years")->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

/// An older store, all of it in its write-ahead log.
void importStore(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        const QTemporaryDir folder;
        CoreDataStore::make(
            folder.filePath(QStringLiteral("default.store")),
            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
                QByteArray::number(activities) +
                ") INSERT INTO ZACTIVITY SELECT i, 1, 1, 700000000.5, i, 'production', "
                "'site:pagina' || i || '.example.org', 'pagina' || i || '.example.org' FROM n");
        state.ResumeTiming();
        const auto container = ActivityStore::open(folder.path());
        container->mainContext().fetchActivities();
        if (container->mainContext().activities().size() != activities) {
            state.SkipWithError("not imported");
        }
    }
}
BENCHMARK(importStore)->Unit(benchmark::kMillisecond);

/// A store with both entities, the first time that it is opened here.
void openFromElsewhere(benchmark::State& state) {
    const FilledStore store(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        store.repage();
        state.ResumeTiming();
        benchmark::DoNotOptimize(store.start());
    }
}
BENCHMARK(openFromElsewhere)->ArgName("years")->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

} // namespace
