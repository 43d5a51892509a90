// What the panel reads while it is open: for the first time, after each tick, and after a category
// was changed.

#include "FilledStore.h"
#include "Machine.h"

#include <benchmark/benchmark.h>

using namespace orvanta;

namespace {

const auto listings = [](const Tracker& tracker) {
    benchmark::DoNotOptimize(tracker.total(Category::production));
    benchmark::DoNotOptimize(tracker.sorted().data());
};
const auto dayTotals = [](const Tracker& tracker) {
    benchmark::DoNotOptimize(tracker.dayTotals().size());
};
const auto history = [](const Tracker& tracker) {
    constexpr int weeks = 13;
    benchmark::DoNotOptimize(tracker.historyWeeks(weeks));
    benchmark::DoNotOptimize(tracker.historyDayCount());
};
const auto everything = [](const Tracker& tracker) {
    listings(tracker);
    dayTotals(tracker);
    history(tracker);
};
const auto nothing = [](const Tracker&) {
};

/// With the records in memory, where the process has them soon after its start.
template <typename Read>
void atFirst(benchmark::State& state, Read read) {
    const FilledStore store(state.range(0));
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        auto machine = std::make_unique<Machine>(store.folder());
        machine->tracker().completeHistory();
        state.ResumeTiming();
        read(machine->tracker());
        state.PauseTiming();
        machine.reset();
        state.ResumeTiming();
    }
}

template <typename Read>
void afterATick(benchmark::State& state, Read read) {
    const FilledStore store(state.range(0));
    Machine machine(store.folder());
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        machine.book();
        state.ResumeTiming();
        read(machine.tracker());
    }
}

/// Classifies an activity that is not in front, which saves, and reads.
template <typename Read>
void classify(benchmark::State& state, Read read) {
    const FilledStore store(state.range(0));
    Machine machine(store.folder());
    Tracker& tracker = machine.tracker();
    tracker.completeHistory();
    const Activity& activity = tracker.activities()[tracker.activities().size() / 2];
    for ([[maybe_unused]] auto _ : state) {
        tracker.classify(activity, activity.category() == Category::production
                                       ? Category::consumption
                                       : Category::production);
        read(tracker);
    }
}

void clearHistory(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        auto store = std::make_unique<FilledStore>(state.range(0));
        auto machine = std::make_unique<Machine>(store->folder());
        machine->tracker().completeHistory();
        state.ResumeTiming();
        machine->tracker().clearHistory();
        state.PauseTiming();
        machine.reset();
        store.reset();
        state.ResumeTiming();
    }
}

void years(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgName("years")->Arg(1)->Arg(10)->Unit(benchmark::kMicrosecond);
}
void fewTimes(benchmark::internal::Benchmark* benchmark) {
    constexpr int times = 20;
    years(benchmark);
    benchmark->Iterations(times);
}
BENCHMARK_CAPTURE(atFirst, listings, listings)->Apply(fewTimes);
BENCHMARK_CAPTURE(atFirst, dayTotals, dayTotals)->Apply(fewTimes);
BENCHMARK_CAPTURE(atFirst, history, history)->Apply(fewTimes);
BENCHMARK_CAPTURE(afterATick, listings, listings)->Apply(years);
BENCHMARK_CAPTURE(afterATick, dayTotals, dayTotals)->Apply(years);
BENCHMARK_CAPTURE(afterATick, history, history)->Apply(years);
BENCHMARK_CAPTURE(classify, alone, nothing)->Apply(years);
BENCHMARK_CAPTURE(classify, andRead, everything)->Apply(years);
BENCHMARK(clearHistory)->Apply(years)->Iterations(3);

} // namespace
