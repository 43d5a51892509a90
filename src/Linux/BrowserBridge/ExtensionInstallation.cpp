#include "Linux/BrowserBridge/ExtensionInstallation.h"

#include "Linux/BrowserBridge/ExtensionIdentity.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

namespace orvanta {

namespace {

// Firefox's own identifier, which its relatives share.
const auto geckoExtensionFile =
    QStringLiteral("/extensions/{ec8030f7-c20a-464f-9b0e-13a3a9e97384}/") +
    QString::fromLatin1(extensionGeckoId) + QStringLiteral(".xpi");

} // namespace

ExtensionInstallation::ExtensionInstallation(QString packageFolder, QString systemFolder)
    : packageFolder_(std::move(packageFolder))
    , systemFolder_(std::move(systemFolder)) {}

QString ExtensionInstallation::path(const BrowserFolder& browser) {
    if (browser.family == BrowserFamily::Gecko) {
        return browser.path + geckoExtensionFile;
    }
    return browser.path + QStringLiteral("/External Extensions/") +
           QString::fromLatin1(extensionChromiumId) + QStringLiteral(".json");
}

bool ExtensionInstallation::isInstalledForEverybody(const BrowserFolder& browser) const {
    if (browser.family == BrowserFamily::Gecko) {
        return QFileInfo::exists(systemFolder_ + QStringLiteral("/mozilla") + geckoExtensionFile);
    }
    // Debian's chromium loads each folder in there.
    return QFileInfo(browser.path).fileName() == QStringLiteral("chromium") &&
           QFileInfo(systemFolder_ + QStringLiteral("/chromium/extensions/orvanta")).isDir();
}

bool ExtensionInstallation::isInPlace(const BrowserFolder& browser) const {
    return isInstalledForEverybody(browser) || QFileInfo(path(browser)).isFile();
}

ExtensionInstallation::Result ExtensionInstallation::install(const BrowserFolder& browser) const {
    if (isInstalledForEverybody(browser)) {
        return {Outcome::Installed};
    }
    const bool isGecko = browser.family == BrowserFamily::Gecko;
    const QString packagePath = packageFolder_ + (isGecko ? QStringLiteral("/orvanta.xpi")
                                                          : QStringLiteral("/orvanta.crx"));
    QFile package(packagePath);
    if (!package.open(QIODevice::ReadOnly)) {
        return {Outcome::Failed, FileProblem{packagePath, package.errorString()}};
    }
    if (!isGecko) {
        const QJsonObject reference{
            {QStringLiteral("external_crx"), QFileInfo(packagePath).absoluteFilePath()},
            {QStringLiteral("external_version"), QString::fromLatin1(extensionVersion)},
        };
        auto problem = replaceFile(path(browser), QJsonDocument(reference).toJson());
        const auto outcome = problem ? Outcome::Failed : Outcome::AfterRestart;
        return {outcome, std::move(problem)};
    }
    const QByteArray content = package.readAll();
    // Where Mozilla's signature lies in a package. Only a browser can tell what it is worth.
    if (!content.contains("META-INF/mozilla.rsa")) {
        return {Outcome::NotPossible};
    }
    auto problem = replaceFile(path(browser), content);
    const auto outcome = problem ? Outcome::Failed : Outcome::AfterConfirmation;
    return {outcome, std::move(problem)};
}

std::optional<FileProblem> ExtensionInstallation::remove(const BrowserFolder& browser) const {
    return removeFile(path(browser), browser);
}

} // namespace orvanta
