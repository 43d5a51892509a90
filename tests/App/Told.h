#pragma once

#include "Model/ActivityStore.h"
#include "Model/Calendar.h"
#include "Model/Category.h"
#include "Model/DayTotals.h"
#include "Model/DurationText.h"
#include "Model/PropertyList.h"
#include "Model/Sqlite.h"
#include "Tracking/KeyOrder.h"
#include "Views/Text/PanelText.h"
#include "Views/Text/StatusText.h"

#include <QFile>
#include <QStringList>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace orvanta {

/// What another process finds in the store and the preferences, and what the panel is then to say,
/// computed plainly.
class Told {
public:
    struct Row {
        QString key;
        QString name;
        Category category;
        double seconds;
        std::optional<Date> lastUsedAt;
    };

    Told(const QString& folder, std::function<bool(const QString& bundleID)> isLeftOut)
        : isLeftOut_(std::move(isLeftOut)) {
        readPreferences(folder);
        Database store(folder + QStringLiteral("/com.brindlework.orvanta/Activities.store"),
                       Database::Access::Read);
        Statement activities(store, "SELECT ZKEY, ZNAME, ZCATEGORYVALUE, ZSECONDS, ZLASTUSEDAT "
                                    "FROM ZACTIVITY ORDER BY Z_PK");
        while (activities.step()) {
            const auto category = categoryFromRawValue(activities.text(2));
            rows.push_back(
                {activities.text(0), activities.text(1), category.value_or(Category::pending),
                 activities.real(3),
                 activities.isNull(4) ? std::nullopt : std::optional(Date{activities.real(4)})});
        }
        Statement records(store, "SELECT ZDAY, ZKEY, ZSECONDS FROM ZDAYACTIVITY ORDER BY Z_PK");
        while (records.step()) {
            days[records.text(0)][records.text(1)] += records.real(2);
        }
    }

    void readPreferences(const QString& folder) {
        QFile file(folder + QStringLiteral("/com.brindlework.orvanta.plist"));
        const auto defaults =
            file.open(QIODevice::ReadOnly) ? PropertyList::parse(file.readAll()) : std::nullopt;
        ASSERT_TRUE(defaults);
        paused = defaults->boolean(QStringLiteral("paused")).value_or(false);
        resetDate = defaults->date(QStringLiteral("resetDate"));
        const auto disabled = defaults->texts(QStringLiteral("disabledBrowsers"));
        disabledBrowsers = disabled.value_or(QStringList());
    }

    std::vector<Row> rows;
    std::map<QString, std::map<QString, double>> days; ///< seconds by day and key
    bool paused = false;
    std::optional<Date> resetDate;
    QStringList disabledBrowsers;

    bool isIgnored(const QString& key) const {
        return std::ranges::any_of(rows, [&](const Row& row) {
            return row.key == key && row.category == Category::ignored;
        });
    }
    std::map<QString, double> secondsByKey() const {
        std::map<QString, double> result;
        for (const auto& [day, seconds] : days) {
            for (const auto& [key, value] : seconds) {
                result[key] += value;
            }
        }
        return result;
    }
    DayTotals session() const {
        DayTotals totals;
        for (const Row& row : rows) {
            add(totals, row.key, row.category, row.seconds);
        }
        return totals;
    }
    StatusTotals status() const {
        const auto [production, consumption, pending] = session();
        return {production, consumption, pending};
    }
    DayTotals ofDay(const QString& day) const {
        DayTotals totals;
        const auto found = days.find(day);
        for (const Row& row : found != days.end() ? rows : std::vector<Row>()) {
            const auto seconds = found->second.find(row.key);
            add(totals, row.key, row.category,
                seconds != found->second.end() ? seconds->second : 0);
        }
        return totals;
    }
    int daysWithTime() const {
        return static_cast<int>(std::ranges::count_if(
            days, [this](const auto& day) { return all(ofDay(day.first)) > 0; }));
    }
    static double all(const DayTotals& totals) {
        return totals.production + totals.consumption + totals.pending;
    }

    /// The rows of a listing from top to bottom.
    std::vector<Row> listed(Listing listing, const std::optional<QString>& active, bool showsAll,
                            Date now) const {
        std::vector<Row> result = classifiable();
        std::erase_if(result, [&](const Row& row) {
            if (listing == Listing::unmonitored) {
                return row.category != Category::ignored;
            }
            const bool isRecent = row.lastUsedAt && now - *row.lastUsedAt < 300;
            const bool isShown = row.key == active ||
                                 (row.seconds > 0 && (showsAll || row.seconds >= 60 || isRecent));
            return row.category == Category::ignored || !isShown;
        });
        std::ranges::stable_sort(result, [&](const Row& a, const Row& b) {
            const bool isActive = listing == Listing::activities && a.key == active;
            const bool isOther = listing == Listing::activities && b.key == active;
            return isActive != isOther      ? isActive
                   : a.seconds != b.seconds ? a.seconds > b.seconds
                                            : compareKeys(a.key, b.key) < 0;
        });
        return result;
    }
    std::vector<Row> classifiable() const {
        std::vector<Row> result = rows;
        std::erase_if(result, [this](const Row& row) { return !isEligible(row.key); });
        return result;
    }

    /// What a screen reader finds in a row.
    static QStringList lines(const Row& row, Listing listing, bool isTimed) {
        const QString name = QStringLiteral("Text ") + row.name + QStringLiteral(", ") +
                             duration(row.seconds) +
                             (isTimed ? QStringLiteral(", Ativo") : QString());
        const auto button = [](const QString& title) {
            return QStringLiteral("Button ") + title;
        };
        if (listing == Listing::unmonitored) {
            return {row.name, name, button(resumeTitle(row.name))};
        }
        QStringList result{row.name, name, button(stopTitle(row.name))};
        for (const Category category : {Category::production, Category::consumption}) {
            result += button(categoryTitle(row.name, category)) + QStringLiteral(" = ") +
                      categoryValueText(row.category == category);
        }
        return result;
    }

private:
    bool isEligible(const QString& key) const {
        return !key.startsWith(QStringLiteral("unknown:")) &&
               !(key.startsWith(QStringLiteral("app:")) && isLeftOut_(key.mid(4)));
    }
    void add(DayTotals& totals, const QString& key, Category category, double seconds) const {
        if (isEligible(key)) {
            switch (category) {
            case Category::production:
                totals.production += seconds;
                break;
            case Category::consumption:
                totals.consumption += seconds;
                break;
            case Category::pending:
                totals.pending += seconds;
                break;
            default:
                break;
            }
        }
    }

    std::function<bool(const QString&)> isLeftOut_;
};

} // namespace orvanta
