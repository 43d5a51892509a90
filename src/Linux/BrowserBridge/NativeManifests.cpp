#include "Linux/BrowserBridge/NativeManifests.h"

#include "Linux/BrowserBridge/ExtensionIdentity.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

namespace orvanta {

namespace {

// Below XDG_CONFIG_HOME.
constexpr const char* chromiumFolders[] = {
    "chromium",       "google-chrome", "google-chrome-beta",          "google-chrome-unstable",
    "microsoft-edge", "vivaldi",       "BraveSoftware/Brave-Browser", "opera",
};

// Below the home folder.
constexpr const char* geckoFolders[] = {".mozilla", ".librewolf", ".waterfox"};

// Newer versions keep profiles below XDG_CONFIG_HOME, and yet look for manifests and extensions in
// the old place.
constexpr char geckoConfigFolder[] = "mozilla";

} // namespace

QList<BrowserFolder> findBrowserFolders(const QString& home, const QString& configHome) {
    QList<BrowserFolder> found;
    for (const char* name : chromiumFolders) {
        const QString path = QDir(configHome).filePath(QString::fromLatin1(name));
        if (QFileInfo(path).isDir()) {
            found.append({BrowserFamily::Chromium, path});
        }
    }
    const bool hasNewPlace =
        QFileInfo(QDir(configHome).filePath(QString::fromLatin1(geckoConfigFolder))).isDir();
    for (const char* name : geckoFolders) {
        const QString path = QDir(home).filePath(QString::fromLatin1(name));
        if (QFileInfo(path).isDir() || (name == geckoFolders[0] && hasNewPlace)) {
            found.append({BrowserFamily::Gecko, path});
        }
    }
    return found;
}

NativeManifests::NativeManifests(QString hostExecutable)
    : hostExecutable_(std::move(hostExecutable)) {}

QString NativeManifests::path(const BrowserFolder& browser) {
    const QString folder = browser.family == BrowserFamily::Chromium
                               ? QStringLiteral("NativeMessagingHosts")
                               : QStringLiteral("native-messaging-hosts");
    return browser.path + QLatin1Char('/') + folder + QLatin1Char('/') +
           QString::fromLatin1(nativeHostName) + QStringLiteral(".json");
}

std::optional<FileProblem> NativeManifests::write(const BrowserFolder& browser) const {
    QJsonObject manifest{
        {QStringLiteral("name"), QString::fromLatin1(nativeHostName)},
        {QStringLiteral("description"), QStringLiteral("Orvanta")},
        {QStringLiteral("path"), hostExecutable_},
        {QStringLiteral("type"), QStringLiteral("stdio")},
    };
    // One that names both kinds of extension is refused by Gecko.
    if (browser.family == BrowserFamily::Chromium) {
        manifest.insert(QStringLiteral("allowed_origins"),
                        QJsonArray{QStringLiteral("chrome-extension://%1/")
                                       .arg(QString::fromLatin1(extensionChromiumId))});
    } else {
        manifest.insert(QStringLiteral("allowed_extensions"),
                        QJsonArray{QString::fromLatin1(extensionGeckoId)});
    }
    return replaceFile(path(browser), QJsonDocument(manifest).toJson());
}

std::optional<FileProblem> NativeManifests::remove(const BrowserFolder& browser) const {
    return removeFile(path(browser), browser);
}

std::optional<FileProblem> removeFile(const QString& path, const BrowserFolder& browser) {
    if (auto problem = removePlainFile(path)) {
        return problem;
    }
    // Chromium's own folder was there before. Gecko's may have been made for the file.
    const QString last =
        browser.family == BrowserFamily::Gecko ? QFileInfo(browser.path).path() : browser.path;
    QString folder = QFileInfo(path).path();
    while (folder != last && QDir().rmdir(folder)) {
        folder = QFileInfo(folder).path();
    }
    return std::nullopt;
}

} // namespace orvanta
