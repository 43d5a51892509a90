#include "Tracking/Classification.h"

#include "Model/ActivityKey.h"

#include <QUrl>

#include <algorithm>
#include <array>

namespace orvanta::Classification {

namespace {

constexpr QLatin1StringView ignoredApp("app:com.apple.finder");

constexpr std::array productionApps{
    QLatin1StringView("app:com.apple.dt.Xcode"),
    QLatin1StringView("app:com.apple.Notes"),
    QLatin1StringView("app:com.figma.Desktop"),
};

constexpr std::array consumptionSites{
    QLatin1StringView("youtube.com"),   QLatin1StringView("netflix.com"),
    QLatin1StringView("x.com"),         QLatin1StringView("twitter.com"),
    QLatin1StringView("instagram.com"), QLatin1StringView("facebook.com"),
    QLatin1StringView("tiktok.com"),    QLatin1StringView("reddit.com"),
    QLatin1StringView("twitch.tv"),
};

constexpr std::array productionSites{
    QLatin1StringView("docs.google.com"),   QLatin1StringView("sheets.google.com"),
    QLatin1StringView("slides.google.com"), QLatin1StringView("figma.com"),
    QLatin1StringView("notion.so"),         QLatin1StringView("notion.site"),
    QLatin1StringView("linear.app"),        QLatin1StringView("overleaf.com"),
};

/// Whether the host is one of the sites or below one.
bool belongsTo(const QString& host, const auto& sites) {
    return std::ranges::any_of(sites, [&](QLatin1StringView site) {
        return host.endsWith(site) && (host.size() == site.size() ||
                                       host[host.size() - site.size() - 1] == QLatin1Char('.'));
    });
}

} // namespace

std::optional<QString> host(const QString& address) {
    const QUrl url(address);
    const QString scheme = url.scheme(); // QUrl lower-cases schemes and hosts.
    if (!url.isValid() ||
        (scheme != QLatin1StringView("http") && scheme != QLatin1StringView("https"))) {
        return std::nullopt;
    }
    QString host = url.host();
    constexpr QLatin1StringView prefix("www.");
    if (host.startsWith(prefix)) {
        host.remove(0, prefix.size());
    }
    return host.isEmpty() ? std::nullopt : std::optional(host);
}

Category suggested(const QString& key) {
    if (key == ignoredApp) {
        return Category::ignored;
    }
    if (std::ranges::find(productionApps, key) != productionApps.end()) {
        return Category::production;
    }
    if (!key.startsWith(siteKeyPrefix)) {
        return Category::pending;
    }
    const QString host = key.mid(siteKeyPrefix.size()).toLower();
    if (belongsTo(host, consumptionSites)) {
        return Category::consumption;
    }
    return belongsTo(host, productionSites) ? Category::production : Category::pending;
}

} // namespace orvanta::Classification
