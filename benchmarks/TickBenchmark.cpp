#include "Machine.h"

#include <benchmark/benchmark.h>

using namespace orvanta;

namespace {

/// This many activities, the first of them in front.
void fill(ModelContext& context, std::int64_t activities) {
    for (int i = 0; i < activities; ++i) {
        context.activities()
            .append(QStringLiteral("app:org.example.Application%1").arg(i),
                    QStringLiteral("Aplicativo %1").arg(i),
                    allCases[static_cast<std::size_t>(i) % 3], i + 0.5)
            .setLastUsedAt(Date{1});
    }
}

void tick(benchmark::State& state) {
    const QTemporaryDir folder;
    Machine machine(folder, [&](ModelContext& context) { fill(context, state.range(0)); });
    for ([[maybe_unused]] auto _ : state) {
        machine.book();
        const Tracker& tracker = machine.tracker();
        benchmark::DoNotOptimize(tracker.total(Category::production) +
                                 tracker.total(Category::consumption) +
                                 tracker.total(Category::pending));
    }
}
BENCHMARK(tick)->Arg(200)->Arg(20'000)->Unit(benchmark::kMicrosecond);

void tickWithItsShareOfSaves(benchmark::State& state) {
    const QTemporaryDir folder;
    Machine machine(folder, [&](ModelContext& context) { fill(context, state.range(0)); });
    for ([[maybe_unused]] auto _ : state) {
        machine.tick();
    }
}
BENCHMARK(tickWithItsShareOfSaves)->Arg(200)->Arg(20'000)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
