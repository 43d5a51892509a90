// Fills a store with the day records of a life with the computer, for the measurements:
//     orvanta-seed-store FOLDER YEARS ACTIVITIES
// makes FOLDER/com.brindlework.orvanta/Activities.store with some fifty records a day up to
// yesterday.

#include "Model/ActivityList.h"
#include "Model/ActivityStore.h"
#include "Model/Calendar.h"
#include "Model/DayActivityList.h"

#include <QFile>
#include <QTimeZone>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>

int main(int argc, char* argv[]) {
    using namespace orvanta;
    if (argc != 4) {
        std::fputs("usage: orvanta-seed-store FOLDER YEARS ACTIVITIES\n", stderr);
        return EXIT_FAILURE;
    }
    const int days = std::atoi(argv[2]) * 365;
    const int activities = std::atoi(argv[3]);
    constexpr int recordsPerDay = 49;
    if (days <= 0 || activities < recordsPerDay) {
        std::fputs("At least one year and 49 activities.\n", stderr);
        return EXIT_FAILURE;
    }

    const auto container = ActivityStore::open(QFile::decodeName(argv[1]));
    ModelContext& context = container->mainContext();
    const Calendar calendar(QTimeZone::systemTimeZone());
    const Date today = calendar.startOfDay(Date::from(std::chrono::system_clock::now()));
    std::mt19937 random(1);
    for (int i = 0; i < activities; ++i) {
        const bool site = i % 3 != 0;
        context.activities().append(site ? QStringLiteral("site:pagina%1.example.org").arg(i)
                                         : QStringLiteral("app:org.example.Aplicativo%1").arg(i),
                                    site ? QStringLiteral("pagina%1.example.org").arg(i)
                                         : QStringLiteral("Aplicativo %1").arg(i),
                                    allCases[random() % 4], 0);
    }
    for (int day = days; day > 0; --day) {
        const Day filed = calendar.day(*calendar.addingDays(today, -day));
        for (int i = 0; i < recordsPerDay; ++i) {
            // A few activities nearly every day, many now and then.
            const auto row = i < recordsPerDay / 2 ? static_cast<std::size_t>(i)
                                                   : random() % static_cast<unsigned>(activities);
            context.dayActivities().add(filed, context.activities()[row].keyId(),
                                        random() % 7200 + random() % 1000 / 1000.0);
        }
    }
    context.save();
    std::printf("%zu activities, %zu day records\n", context.activities().size(),
                context.dayActivities().size());
    return EXIT_SUCCESS;
}
