#include "Browsers/Browser.h"

#include "Browsers/BrowserDialect.h"
#include "Platform/Bundles.h"

#include <QCollator>
#include <QSet>

#include <algorithm>

namespace orvanta {

namespace {

/// The order in which a file manager shows names.
QCollator nameOrder() {
    // The "C" locale orders by bytes, whatever is asked of it.
    const QLocale locale = QCollator().locale();
    QCollator collator(
        locale.language() == QLocale::C ? QLocale(QLocale::Portuguese, QLocale::Brazil) : locale);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    collator.setNumericMode(true);
    return collator;
}

} // namespace

std::vector<Browser> Browser::installed(const Bundles& bundles) {
    const QString https = QStringLiteral("https:");
    const auto identifierAt = [&bundles](const QString& location) {
        const auto bundle = bundles.bundle(location);
        return bundle ? bundle->bundleIdentifier : std::nullopt;
    };
    const auto handler = bundles.applicationToOpen(https);
    const auto defaultID = handler ? identifierAt(*handler) : std::nullopt;

    std::vector<Browser> browsers;
    QSet<QString> seen;
    const QStringList locations = bundles.applicationsToOpen(https);
    for (const QString& location : locations) {
        const auto id = identifierAt(location);
        if (!id || seen.contains(*id)) {
            continue;
        }
        seen.insert(*id);
        if (!BrowserDialect::of(*id, bundles)) {
            continue;
        }
        QString name = bundles.displayName(location);
        if (const QLatin1StringView suffix(".app"); name.endsWith(suffix)) {
            name.chop(suffix.size());
        }
        browsers.push_back({*id, name, defaultID == id});
    }

    const QCollator order = nameOrder();
    std::ranges::stable_sort(browsers, [&order](const Browser& a, const Browser& b) {
        return a.isDefault != b.isDefault ? a.isDefault : order.compare(a.name, b.name) < 0;
    });
    return browsers;
}

} // namespace orvanta
