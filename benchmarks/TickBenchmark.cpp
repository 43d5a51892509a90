#include "Fakes/FakeBrowsers.h"
#include "Fakes/FakeWorkspace.h"
#include "Fakes/HandMainLoop.h"
#include "Model/ActivityList.h"
#include "Model/ActivityStore.h"
#include "Model/Calendar.h"
#include "Model/UserDefaults.h"
#include "Platform/NotificationCenter.h"
#include "Platform/Platform.h"
#include "Tracking/FrontmostProbe.h"
#include "Tracking/Tracker.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <chrono>

using namespace orvanta;

namespace {

/// A tracker over a real store with this many activities, the first of them in front.
class Machine {
public:
    explicit Machine(int activities)
        : container_(ActivityStore::open(folder_.path()))
        , defaults_(folder_.path(), QStringLiteral("com.brindlework.orvanta")) {
        for (int i = 0; i < activities; ++i) {
            const auto category = allCases[static_cast<std::size_t>(i) % 3];
            container_->mainContext()
                .activities()
                .append(QStringLiteral("app:org.example.Application%1").arg(i),
                        QStringLiteral("Aplicativo %1").arg(i), category, i + 0.5)
                .setLastUsedAt(Date{1});
        }
        workspace_.front = RunningApplication{
            QStringLiteral("org.example.Application0"), QStringLiteral("Aplicativo 0"), {}, {}};
        const Platform platform{workspace_, center_, center_, center_, loop_, [] {
                                    return std::chrono::system_clock::now();
                                }};
        tracker_ = std::make_unique<Tracker>(
            container_->mainContext(), browsers_, defaults_,
            [this](const QString& id) { return browsers_.dialect(id); },
            [this] { return loop_.now() + seconds_; },
            [this] { return Date::from(std::chrono::system_clock::now()) + seconds_ * 1e-3; },
            calendar_, [this] { return frontmostFocus(workspace_); }, platform);
        tracker_->start();
    }

    /// A second passes and is booked, and what the status item shows is read.
    double look() {
        seconds_ += 1;
        tracker_->refreshFocus();
        return tracker_->total(Category::production) + tracker_->total(Category::consumption) +
               tracker_->total(Category::pending);
    }
    /// A second passes on the main loop: a tick, and at every fifth a save.
    void tick() { loop_.advance(1); }

private:
    QTemporaryDir folder_;
    HandMainLoop loop_;
    double seconds_ = 0;
    FakeWorkspace workspace_;
    FakeBrowsers browsers_;
    NotificationCenter center_;
    Calendar calendar_{QTimeZone("America/Sao_Paulo")};
    std::unique_ptr<ModelContainer> container_;
    UserDefaults defaults_;
    std::unique_ptr<Tracker> tracker_;
};

void tick(benchmark::State& state) {
    Machine machine(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(machine.look());
    }
}
BENCHMARK(tick)->Arg(200)->Arg(20'000)->Unit(benchmark::kMicrosecond);

void tickWithItsShareOfSaves(benchmark::State& state) {
    Machine machine(static_cast<int>(state.range(0)));
    for ([[maybe_unused]] auto _ : state) {
        machine.tick();
    }
}
BENCHMARK(tickWithItsShareOfSaves)->Arg(200)->Arg(20'000)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
