#include "Browsers/Browser.h"

#include "Browsers/BrowserDialect.h"
#include "Fakes/FakeBundles.h"
#include "Fakes/QtPrinters.h"

#include <gtest/gtest.h>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

constexpr auto safariCodes = "<property code=\"cTab\"/><property code=\"pURL\"/>";
constexpr auto chromiumCodes = "<property code=\"acTa\"/><property code=\"URL \"/>";

QVariantMap information(const QVariant& schemes, const QVariant& types) {
    return {
        {u"CFBundleURLTypes"_s,
         QVariantList{QVariantMap{}, QVariantMap{{u"CFBundleURLSchemes"_s, schemes}}}},
        {u"CFBundleDocumentTypes"_s, QVariantList{QVariantMap{{u"LSItemContentTypes"_s, types}}}}};
}

} // namespace

TEST(BrowserDialectTest, WebPagesAreOpenedByWhatSaysSo) {
    const QStringList web{u"http"_s, u"https"_s};
    for (const auto& [what, info, opens] : {
             std::tuple("three schemes",
                        information(QStringList{u"HTTP"_s, u"Https"_s, u"FILE"_s}, {}), true),
             {"two and the type", information(web, QStringList{u"x"_s, u"public.html"_s}), true},
             {"two only", information(web, {}), false},
             {"one and the type",
              information(QStringList{u"https"_s}, QStringList{u"public.html"_s}), false},
             {"the type in capitals", information(web, QStringList{u"PUBLIC.HTML"_s}), false},
             {"no list", information(u"http https file"_s, u"public.html"_s), false},
             {"no dictionaries", {{u"CFBundleURLTypes"_s, QStringList{u"http"_s}}}, false},
         }) {
        EXPECT_EQ(BrowserDialect::opensWebPages(info), opens) << what;
    }
}

TEST(BrowserDialectTest, ADefinitionDeclaresBothCodesOfADialect) {
    const QString chromium = QString::fromLatin1(chromiumCodes);
    for (const auto& [text, dialect] : {
             std::pair<QString, std::optional<BrowserDialect>>(chromium, BrowserDialect::chromium),
             {chromium + QString::fromLatin1(safariCodes), BrowserDialect::safari},
             {u"code=\"cTab\" code=\"URL \""_s, std::nullopt},
             {u"code=\"acTa\" code=\"URL\""_s, std::nullopt},
             {u"cTab pURL acTa URL "_s, std::nullopt},
             {u"code=\"CTAB\" code=\"PURL\""_s, std::nullopt},
         }) {
        EXPECT_EQ(BrowserDialect::ofSdef(text), dialect) << qPrintable(text);
    }
}

TEST(BrowserDialectTest, IsFoundOnceAndKept) {
    FakeBundles bundles;
    const auto of = [&bundles](const QString& id) {
        return BrowserDialect::of(id, bundles);
    };
    EXPECT_FALSE(of(u"kept.late"_s));
    bundles.install(u"/a/kept.late"_s, u"Late"_s, chromiumCodes);
    EXPECT_EQ(of(u"kept.late"_s), BrowserDialect::chromium);

    const auto install = [&bundles](const QString& id, const QByteArray& sdef) -> auto& {
        bundles.install(u"/a/"_s + id, id, sdef);
        return bundles.applications.at(u"/a/"_s + id);
    };
    install(u"kept.without"_s, "").resources.clear();
    install(u"kept.latin"_s, QByteArray(safariCodes) + "\xe9");
    install(u"kept.unnamed"_s, safariCodes).bundle.infoDictionary[u"OSAScriptingDefinition"_s] = 7;
    install(u"kept.mail"_s, safariCodes).bundle.infoDictionary.remove(u"CFBundleURLTypes"_s);
    for (const char* name : {"without", "without", "latin", "latin", "unnamed", "mail"}) {
        EXPECT_FALSE(of(u"kept."_s + QLatin1StringView(name))) << name;
    }
    EXPECT_EQ(bundles.resourcesRead, 3) << "each once";

    bundles.applications.clear();
    EXPECT_EQ(of(u"kept.late"_s), BrowserDialect::chromium);
    EXPECT_FALSE(of(u"KEPT.LATE"_s));
}

TEST(BrowserTest, ThoseInstalledAreListedTheDefaultFirstThenByName) {
    FakeBundles bundles;
    bundles.install(u"/a/listed.zeta"_s, u"Zeta.app"_s, safariCodes);
    bundles.install(u"/a/listed.ten"_s, u"Beta 10"_s, safariCodes);
    bundles.install(u"/b/listed.ten"_s, u"Second copy"_s, safariCodes);
    bundles.install(u"/a/listed.alpha"_s, u"alpha"_s, chromiumCodes);
    bundles.install(u"/a/listed.nine"_s, u"Beta 9"_s, chromiumCodes);
    bundles.install(u"/a/listed.nine.too"_s, u"beta 9"_s, chromiumCodes);
    bundles.install(u"/a/listed.capital"_s, u"Épsilon.APP"_s, chromiumCodes);
    bundles.install(u"/a/listed.none"_s, u"Not a browser"_s, "");
    bundles.install(u"/a/listed.nameless"_s, u"No identifier"_s, safariCodes);
    bundles.applications.at(u"/a/listed.nameless"_s).bundle.bundleIdentifier.reset();
    bundles.webHandlers.append(u"/a/gone"_s);
    const auto names = [&bundles] {
        QStringList result;
        for (const Browser& browser : Browser::installed(bundles)) {
            result.append(browser.name + (browser.isDefault ? u"*"_s : QString()));
        }
        return result;
    };
    const QStringList rest{u"alpha"_s, u"Beta 9"_s, u"beta 9"_s, u"Beta 10"_s, u"Épsilon.APP"_s};
    EXPECT_EQ(names(), rest + QStringList{u"Zeta"_s});
    bundles.defaultHandler = u"/a/listed.zeta"_s;
    EXPECT_EQ(names(), QStringList{u"Zeta*"_s} + rest);
    bundles.defaultHandler = u"/a/gone"_s;
    EXPECT_EQ(names(), rest + QStringList{u"Zeta"_s});
}
