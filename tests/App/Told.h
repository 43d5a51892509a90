#pragma once

#include "Model/Category.h"
#include "Model/DayTotals.h"
#include "Model/DurationText.h"
#include "Model/Sqlite.h"
#include "Model/UserDefaults.h"
#include "Tracking/KeyOrder.h"
#include "Views/Text/PanelText.h"

#include <QStringList>

#include <algorithm>
#include <functional>
#include <map>
#include <vector>

namespace orvanta {

/// What another process finds in the store and the preferences, and what the panel is then to say,
/// computed plainly.
struct Told {
    struct Row {
        QString key;
        QString name;
        Category category;
        double seconds;
        std::optional<Date> lastUsedAt;
    };
    std::vector<Row> rows; ///< of what can be classified, in the store's order
    std::map<QString, std::map<QString, double>> days; ///< seconds by day and key
    double total = 0;                                  ///< of all days
    bool paused;
    Date resetDate;
    QStringList disabledBrowsers;

    Told(const QString& folder, const std::function<bool(const QString& bundleID)>& isLeftOut) {
        const UserDefaults defaults(folder, QStringLiteral("com.brindlework.orvanta"));
        paused = defaults.boolValue(QStringLiteral("paused"));
        resetDate = defaults.date(QStringLiteral("resetDate")).value();
        disabledBrowsers =
            defaults.stringArray(QStringLiteral("disabledBrowsers")).value_or(QStringList());
        Database store(folder + QStringLiteral("/com.brindlework.orvanta/Activities.store"),
                       Database::Access::Read);
        Statement row(store, "SELECT ZKEY, ZNAME, ZCATEGORYVALUE, ZSECONDS, ZLASTUSEDAT "
                             "FROM ZACTIVITY ORDER BY Z_PK");
        while (row.step()) {
            const QString key = row.text(0);
            if (!key.startsWith(QStringLiteral("unknown:")) &&
                !(key.startsWith(QStringLiteral("app:")) && isLeftOut(key.mid(4)))) {
                rows.push_back({key, row.text(1),
                                categoryFromRawValue(row.text(2)).value_or(Category::pending),
                                row.real(3),
                                row.isNull(4) ? std::nullopt : std::optional(Date{row.real(4)})});
            }
        }
        Statement record(store, "SELECT ZDAY, ZKEY, ZSECONDS FROM ZDAYACTIVITY");
        while (record.step()) {
            days[record.text(0)][record.text(1)] += record.real(2);
            total += record.real(2);
        }
    }

    Category categoryOf(const QString& key) const {
        const auto found = std::ranges::find(rows, key, &Row::key);
        return found != rows.end() ? found->category : Category::pending;
    }
    /// Of a day, or of the session.
    DayTotals totals(const QString& day = {}) const {
        std::map<Category, double> sum;
        for (const Row& row : rows) {
            sum[row.category] += day.isEmpty()                    ? row.seconds
                                 : days.at(day).contains(row.key) ? days.at(day).at(row.key)
                                                                  : 0;
        }
        return {sum[Category::production], sum[Category::consumption], sum[Category::pending]};
    }
    static double all(const DayTotals& totals) {
        return totals.production + totals.consumption + totals.pending;
    }
    qsizetype daysWithTime() const {
        return std::ranges::count_if(
            days, [this](const auto& day) { return all(totals(day.first)) > 0; });
    }

    /// The rows of a listing from top to bottom.
    std::vector<Row> listed(Listing listing, const std::optional<QString>& active, bool showsAll,
                            Date now) const {
        std::vector<Row> result = rows;
        std::erase_if(result, [&](const Row& row) {
            const bool isRecent = row.lastUsedAt && now - *row.lastUsedAt < 300;
            const bool isShown = row.key == active ||
                                 (row.seconds > 0 && (showsAll || row.seconds >= 60 || isRecent));
            const bool isIgnored = row.category == Category::ignored;
            return listing == Listing::unmonitored ? !isIgnored : isIgnored || !isShown;
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
    /// What a screen reader finds in a row.
    static QStringList lines(const Row& row, Listing listing, bool isTimed) {
        const auto button = [](const QString& title) {
            return QStringLiteral("Button ") + title;
        };
        QStringList result{row.name, QStringLiteral("Text ") + row.name + QStringLiteral(", ") +
                                         duration(row.seconds) +
                                         (isTimed ? QStringLiteral(", Ativo") : QString())};
        if (listing == Listing::unmonitored) {
            return result += button(resumeTitle(row.name));
        }
        result += button(stopTitle(row.name));
        for (const Category category : {Category::production, Category::consumption}) {
            result += button(categoryTitle(row.name, category)) + QStringLiteral(" = ") +
                      categoryValueText(row.category == category);
        }
        return result;
    }
};

} // namespace orvanta
