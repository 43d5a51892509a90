#include "Browsers/BrowserDialect.h"

#include "Platform/Bundles.h"

#include <QHash>
#include <QMutex>
#include <QSet>
#include <QStringDecoder>

namespace orvanta {

namespace {

/// The codes as scripting definitions write them.
struct Properties {
    const char (&tab)[5];
    const char (&address)[5];
};

const Properties& propertiesOf(BrowserDialect::Case dialect) {
    static constexpr Properties safari{"cTab", "pURL"};
    static constexpr Properties chromium{"acTa", "URL "};
    return dialect == BrowserDialect::safari ? safari : chromium;
}

bool declares(const QString& sdef, const char (&code)[5]) {
    return sdef.contains(QStringLiteral("code=\"%1\"").arg(QLatin1StringView(code)));
}

/// All texts that stand in lists under `inner`, in the dictionaries that the list under `outer`
/// consists of.
QStringList texts(const QVariantMap& info, const QString& outer, const QString& inner) {
    QStringList result;
    const QVariantList dictionaries = info.value(outer).toList();
    for (const QVariant& dictionary : dictionaries) {
        if (dictionary.typeId() != QMetaType::QVariantMap) {
            return {};
        }
        const QVariant list = dictionary.toMap().value(inner);
        if (list.typeId() == QMetaType::QStringList) {
            result += list.toStringList();
        }
    }
    return result;
}

std::optional<BrowserDialect> read(const QString& location, const Bundles& bundles) {
    const auto bundle = bundles.bundle(location);
    if (!bundle || !BrowserDialect::opensWebPages(bundle->infoDictionary)) {
        return std::nullopt;
    }
    const QVariant name = bundle->infoDictionary.value(QStringLiteral("OSAScriptingDefinition"));
    if (name.typeId() != QMetaType::QString) {
        return std::nullopt;
    }
    const auto bytes = bundles.resource(location, name.toString());
    if (!bytes) {
        return std::nullopt;
    }
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(*bytes);
    return decoder.hasError() ? std::nullopt : BrowserDialect::ofSdef(text);
}

} // namespace

std::optional<BrowserDialect> BrowserDialect::of(const QString& bundleID, const Bundles& bundles) {
    static QMutex lock;
    static QHash<QString, std::optional<BrowserDialect>> cache;

    const QMutexLocker locker(&lock);
    if (const auto found = cache.constFind(bundleID); found != cache.cend()) {
        return *found;
    }
    const auto location = bundles.locationOfApplication(bundleID);
    if (!location) {
        return std::nullopt; // It may be installed later.
    }
    return *cache.insert(bundleID, read(*location, bundles));
}

bool BrowserDialect::opensWebPages(const QVariantMap& info) {
    QSet<QString> schemes;
    for (const QString& scheme :
         texts(info, QStringLiteral("CFBundleURLTypes"), QStringLiteral("CFBundleURLSchemes"))) {
        schemes.insert(scheme.toLower());
    }
    return schemes.contains(QStringLiteral("http")) && schemes.contains(QStringLiteral("https")) &&
           (schemes.contains(QStringLiteral("file")) ||
            texts(info, QStringLiteral("CFBundleDocumentTypes"),
                  QStringLiteral("LSItemContentTypes"))
                .contains(QStringLiteral("public.html")));
}

std::optional<BrowserDialect> BrowserDialect::ofSdef(const QString& text) {
    for (const Case dialect : {safari, chromium}) {
        const Properties& properties = propertiesOf(dialect);
        if (declares(text, properties.tab) && declares(text, properties.address)) {
            return dialect;
        }
    }
    return std::nullopt;
}

FourCharCode BrowserDialect::tabProperty() const {
    return fourCharCode(propertiesOf(case_).tab);
}

FourCharCode BrowserDialect::addressProperty() const {
    return fourCharCode(propertiesOf(case_).address);
}

} // namespace orvanta
