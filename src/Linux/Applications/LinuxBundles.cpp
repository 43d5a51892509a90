#include "Linux/Applications/LinuxBundles.h"

#include "Linux/Applications/KeyFile.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <array>
#include <utility>

namespace orvanta {

namespace {

constexpr QLatin1StringView schemeHandler("x-scheme-handler/");

struct Definition {
    BrowserFamily family;
    QLatin1StringView name;
    const char* text;
};

/// As browsers declare the two properties that lead from a window to the address it shows.
constexpr std::array definitions{
    Definition{BrowserFamily::Gecko, QLatin1StringView("safari.sdef"), R"(<?xml version="1.0"?>
<dictionary title="Browser">
    <suite name="Browser" code="BrOw">
        <class name="window" code="cwin">
            <property name="current tab" code="cTab" type="tab"/>
        </class>
        <class name="tab" code="bTab">
            <property name="URL" code="pURL" type="text"/>
        </class>
    </suite>
</dictionary>
)"},
    Definition{BrowserFamily::Chromium, QLatin1StringView("chromium.sdef"), R"(<?xml version="1.0"?>
<dictionary title="Browser">
    <suite name="Browser" code="BrOw">
        <class name="window" code="cwin">
            <property name="active tab" code="acTa" type="tab"/>
        </class>
        <class name="tab" code="CrTb">
            <property name="URL" code="URL " type="text"/>
        </class>
    </suite>
</dictionary>
)"},
};

/// A list of the one dictionary that has one key.
QVariantList dictionaries(const QString& key, const QStringList& values) {
    return {QVariantMap{{key, values}}};
}

} // namespace

LinuxBundles::Places LinuxBundles::Places::ofThisProcess() {
    using Paths = QStandardPaths;
    const auto names = [](const char* variable) {
        return qEnvironmentVariable(variable).split(QLatin1Char(':'), Qt::SkipEmptyParts);
    };
    return {{Paths::standardLocations(Paths::GenericConfigLocation),
             Paths::standardLocations(Paths::ApplicationsLocation), names("XDG_CURRENT_DESKTOP")},
            {names("PATH"),
             {Paths::writableLocation(Paths::GenericDataLocation) + QStringLiteral("/flatpak"),
              QStringLiteral("/var/lib/flatpak")},
             {QStringLiteral("/snap"), QStringLiteral("/var/lib/snapd/snap")}}};
}

LinuxBundles::LinuxBundles(DesktopEntries& entries, Places places)
    : entries_(entries)
    , associations_(entries, std::move(places.associations))
    , programs_(std::move(places.programs)) {}

std::optional<QString> LinuxBundles::locationOfApplication(const QString& bundleIdentifier) const {
    const auto entry = entries_.withId(bundleIdentifier);
    return entry ? std::optional(entry->path) : std::nullopt;
}

std::optional<QString> LinuxBundles::applicationToOpen(const QString& address) const {
    const QStringList all = applicationsToOpen(address);
    return all.isEmpty() ? std::nullopt : std::optional(all.front());
}

QStringList LinuxBundles::applicationsToOpen(const QString& address) const {
    const QString scheme = address.first(std::max<qsizetype>(address.indexOf(QLatin1Char(':')), 0));
    return scheme.isEmpty() ? QStringList()
                            : associations_.applicationsFor((schemeHandler + scheme).toUtf8());
}

std::optional<Bundle> LinuxBundles::bundle(const QString& location) const {
    const auto entry = entries_.at(location);
    const auto file = entry ? KeyFile::read(QFile::encodeName(location)) : std::nullopt;
    if (!file) {
        return std::nullopt;
    }
    const QStringList types =
        file->list(G_KEY_FILE_DESKTOP_GROUP, G_KEY_FILE_DESKTOP_KEY_MIME_TYPE);
    QStringList schemes;
    for (const QString& type : types) {
        if (type.startsWith(schemeHandler)) {
            schemes += type.sliced(schemeHandler.size());
        }
    }
    Bundle bundle;
    bundle.bundleIdentifier = entry->id;
    bundle.infoDictionary.insert(QStringLiteral("CFBundleURLTypes"),
                                 dictionaries(QStringLiteral("CFBundleURLSchemes"), schemes));
    if (types.contains(QLatin1StringView("text/html")) ||
        types.contains(QLatin1StringView("application/xhtml+xml"))) {
        bundle.infoDictionary.insert(
            QStringLiteral("CFBundleDocumentTypes"),
            dictionaries(QStringLiteral("LSItemContentTypes"), {QStringLiteral("public.html")}));
    }
    if (const auto family = browserFamily(entry->id, *file, programs_)) {
        const auto* const definition = std::ranges::find(definitions, *family, &Definition::family);
        bundle.infoDictionary.insert(QStringLiteral("OSAScriptingDefinition"),
                                     QString(definition->name));
    }
    return bundle;
}

std::optional<QByteArray> LinuxBundles::resource(const QString& /*location*/,
                                                 const QString& name) const {
    const auto* const definition = std::ranges::find(definitions, name, &Definition::name);
    return definition == definitions.end() ? std::nullopt
                                           : std::optional(QByteArray(definition->text));
}

QString LinuxBundles::displayName(const QString& location) const {
    const auto entry = entries_.at(location);
    return entry && !entry->name.isEmpty() ? entry->name : QFileInfo(location).completeBaseName();
}

} // namespace orvanta
