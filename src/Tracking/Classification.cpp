#include "Tracking/Classification.h"

#include "Model/ActivityKey.h"

#include <QUrl>

#include <algorithm>
#include <array>
#include <string_view>

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

/// Whether browsers take the text for a host's name (WHATWG's URL Standard, "forbidden domain code
/// point"). QUrl is stricter: it refuses names that are visited.
bool isName(QStringView text) {
    constexpr std::u16string_view forbidden = u"#%/:<>?@[\\]^|";
    return !text.isEmpty() && std::ranges::all_of(text, [forbidden](QChar c) {
        return c > u' ' && c < QChar(0x7F) && forbidden.find(c.unicode()) == forbidden.npos;
    });
}

bool isIPv6Address(QStringView text) {
    constexpr std::u16string_view parts = u"0123456789abcdefABCDEF:.";
    return text.contains(u':') && std::ranges::all_of(text, [parts](QChar c) {
               return parts.find(c.unicode()) != parts.npos;
           });
}

/// The host of what follows the two slashes, in ASCII; empty when there is none.
QString hostOf(QStringView rest) {
    const auto end = std::ranges::find_if(
        rest, [](QChar c) { return c == u'/' || c == u'\\' || c == u'?' || c == u'#'; });
    QStringView authority(rest.begin(), end);
    authority = authority.sliced(authority.lastIndexOf(u'@') + 1);
    if (authority.startsWith(u'[')) {
        const auto address =
            authority.sliced(1, std::max<qsizetype>(authority.indexOf(u']'), 1) - 1);
        return isIPv6Address(address) ? address.toString() : QString();
    }
    const auto port = authority.indexOf(u':');
    QString name = authority.first(port < 0 ? authority.size() : port).toString();
    if (isName(name)) {
        return name;
    }
    QString ascii = QString::fromLatin1(QUrl::toAce(QUrl::fromPercentEncoding(name.toUtf8())));
    return isName(ascii) ? ascii : QString();
}

/// Whether the host is one of the sites or below one.
bool belongsTo(const QString& host, const auto& sites) {
    return std::ranges::any_of(sites, [&](QLatin1StringView site) {
        return host.endsWith(site) && (host.size() == site.size() ||
                                       host[host.size() - site.size() - 1] == QLatin1Char('.'));
    });
}

} // namespace

std::optional<QString> host(const QString& address) {
    const auto colon = address.indexOf(u':');
    const QString scheme = address.first(std::max<qsizetype>(colon, 0)).toLower();
    if ((scheme != QLatin1StringView("http") && scheme != QLatin1StringView("https")) ||
        !QStringView(address).sliced(colon + 1).startsWith(QLatin1StringView("//"))) {
        return std::nullopt;
    }
    QString host = hostOf(QStringView(address).sliced(colon + 3)).toLower();
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
