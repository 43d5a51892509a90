#include "Machine.h"
#include "Views/ClassificationSettings.h"

#include <QApplication>
#include <QLineEdit>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <ctime>

using namespace orvanta;

namespace {

void fill(ModelContext& context) {
    constexpr std::size_t activities = 3000;
    for (std::size_t i = 0; i < activities; ++i) {
        context.activities().append(QStringLiteral("site:pagina%1.example.org").arg(i),
                                    QStringLiteral("Página %1").arg(i * 7919 % activities),
                                    allCases[i % 3], 0);
    }
}

/// From the request to the list on the screen.
void listActivities(benchmark::State& state) {
    const QTemporaryDir folder;
    Machine machine(folder, fill);
    for ([[maybe_unused]] auto _ : state) {
        ClassificationSettings settings(machine.tracker());
        settings.resize(540, 400);
        settings.show();
        settings.grab();
    }
}

/// A search is typed and taken back letter by letter; "worst" is the slowest of them, in seconds of
/// CPU.
void searchActivities(benchmark::State& state) {
    const QTemporaryDir folder;
    Machine machine(folder, fill);
    ClassificationSettings settings(machine.tracker());
    settings.resize(540, 400);
    settings.show();
    settings.grab();
    auto& field = *settings.findChild<QLineEdit*>();
    const std::array texts{QStringLiteral("1"), QStringLiteral("12"), QStringLiteral("1"),
                           QString(),           QStringLiteral("p"),  QStringLiteral("p7"),
                           QStringLiteral("p"), QStringLiteral("á"),  QString()};
    std::size_t next = 0;
    double worst = 0;
    for ([[maybe_unused]] auto _ : state) {
        const std::clock_t start = std::clock();
        field.setText(texts.at(next++ % texts.size()));
        QApplication::processEvents();
        settings.grab();
        const auto taken = static_cast<double>(std::clock() - start);
        worst = std::max(worst, taken / CLOCKS_PER_SEC);
    }
    state.counters["worst"] = worst;
}

BENCHMARK(listActivities)->Unit(benchmark::kMillisecond);
BENCHMARK(searchActivities)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
