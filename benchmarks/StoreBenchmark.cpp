#include "Fakes/CoreDataStore.h"
#include "FilledStore.h"

#include <benchmark/benchmark.h>

using namespace orvanta;

namespace {

void openStore(benchmark::State& state) {
    const FilledStore store(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(store.open());
    }
}
BENCHMARK(openStore)->ArgName("years")->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

void readOlderDays(benchmark::State& state) {
    const FilledStore store(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        const auto container = store.open();
        state.ResumeTiming();
        container->mainContext().dayActivities().complete();
    }
}
BENCHMARK(readOlderDays)->ArgName("years")->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

/// An older store, all of it in its write-ahead log.
void importStore(benchmark::State& state) {
    constexpr int activities = 3000;
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
    const FilledStore store(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        store.repage();
        state.ResumeTiming();
        benchmark::DoNotOptimize(store.open());
    }
}
BENCHMARK(openFromElsewhere)->ArgName("years")->Arg(1)->Arg(10)->Unit(benchmark::kMillisecond);

} // namespace
