#include "Fakes/QtPrinters.h"
#include "Linux/BrowserBridge/BrowserPreparation.h"
#include "Linux/BrowserBridge/ExtensionIdentity.h"
#include "Linux/BrowserBridge/ExtensionInstallation.h"
#include "Linux/BrowserBridge/NativeManifests.h"

#include <QCryptographicHash>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace orvanta {

namespace {

using Family = BrowserFamily;
using Outcome = ExtensionInstallation::Outcome;

QString text(const char* latin1) {
    return QString::fromLatin1(latin1);
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QJsonObject jsonOf(const QString& path) {
    return QJsonDocument::fromJson(contentOf(path)).object();
}

mode_t modeOf(const QString& path) {
    struct stat status {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode : 0;
}

class BrowserInstallation : public ::testing::Test {
protected:
    QString make(const char* folder) {
        const QString path = home(folder);
        QDir().mkpath(path);
        return path;
    }

    QString put(const char* file, const QByteArray& content) {
        const QString path = home(file);
        QDir().mkpath(QFileInfo(path).path());
        QFile opened(path);
        EXPECT_TRUE(opened.open(QIODevice::WriteOnly));
        opened.write(content);
        return path;
    }

    QString home(const char* below = "") const { return folder_.filePath(text(below)); }

    QStringList everything() const {
        QStringList found;
        QDirIterator entries(home(), QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            found.append(entries.next().mid(home().size()));
        }
        found.sort();
        return found;
    }

    QTemporaryDir folder_;
};

} // namespace

TEST(ExtensionIdentity, IsThatOfTheExtension) {
    const QJsonObject manifest =
        jsonOf(text(ORVANTA_BROWSER_FOLDER) + text("/extension/manifest.json"));
    const QByteArray key =
        QByteArray::fromBase64(manifest.value(text("key")).toString().toLatin1());
    QByteArray id = QCryptographicHash::hash(key, QCryptographicHash::Sha256).first(16).toHex();
    for (char& digit : id) {
        digit = char(digit <= '9' ? digit - '0' + 'a' : digit - 'a' + 'k');
    }
    EXPECT_EQ(id, QByteArray(extensionChromiumId));
    EXPECT_EQ(manifest.value(text("version")).toString(), text(extensionVersion));
    EXPECT_EQ(manifest.value(text("browser_specific_settings"))
                  .toObject()
                  .value(text("gecko"))
                  .toObject()
                  .value(text("id"))
                  .toString(),
              text(extensionGeckoId));
    EXPECT_TRUE(contentOf(text(ORVANTA_BROWSER_FOLDER) + text("/extension/bg.js"))
                    .contains(QByteArray("\"") + nativeHostName + "\""));
}

TEST_F(BrowserInstallation, KnowsTheBrowsersThatHaveBeenUsed) {
    EXPECT_TRUE(findBrowserFolders(home(), home(".config")).isEmpty());
    make(".config/chromium");
    make(".config/BraveSoftware/Brave-Browser");
    make(".config/mozilla"); // A Firefox whose profiles are in the new place.
    make(".librewolf");
    put(".config/opera", "a file");
    EXPECT_EQ(findBrowserFolders(home(), home(".config")),
              (QList<BrowserFolder>{{Family::Chromium, home(".config/chromium")},
                                    {Family::Chromium, home(".config/BraveSoftware/Brave-Browser")},
                                    {Family::Gecko, home(".mozilla")},
                                    {Family::Gecko, home(".librewolf")}}));
}

TEST_F(BrowserInstallation, WritesManifestsAndLeavesNoTraceWhenTheyAreRemoved) {
    const BrowserFolder chromium{Family::Chromium, make(".config/chromium")}; // as yet empty
    const BrowserFolder firefox{Family::Gecko, home(".mozilla")};             // made on the way
    const QStringList before = everything();

    ::umask(077);
    NativeManifests(text("/old")).write(chromium);
    const NativeManifests manifests(text("/opt/orvanta-browser-host"));
    struct Row {
        BrowserFolder browser;
        const char* path;
        const char* key;
        QString allowed;
    };
    for (const Row& row :
         {Row{chromium, ".config/chromium/NativeMessagingHosts/com.brindlework.orvanta.json",
              "allowed_origins", text("chrome-extension://odbokjgdmdbheojmnkbkjhabohflpkpk/")},
          Row{firefox, ".mozilla/native-messaging-hosts/com.brindlework.orvanta.json",
              "allowed_extensions", text("orvanta@brindlework.com")}}) {
        EXPECT_FALSE(manifests.write(row.browser)) << row.path;
        EXPECT_EQ(jsonOf(home(row.path)),
                  (QJsonObject{{text("name"), text("com.brindlework.orvanta")},
                               {text("description"), text("Orvanta")},
                               {text("path"), text("/opt/orvanta-browser-host")},
                               {text("type"), text("stdio")},
                               {text(row.key), QJsonArray{row.allowed}}}));
        EXPECT_EQ(modeOf(home(row.path)), mode_t(S_IFREG | 0644));
    }
    ::umask(022);
    for (int times = 0; times < 2; ++times) {
        EXPECT_FALSE(manifests.remove(chromium));
        EXPECT_FALSE(manifests.remove(firefox));
        EXPECT_EQ(everything(), before);
    }
}

TEST_F(BrowserInstallation, LeavesAloneWhatIsNotItsOwn) {
    const NativeManifests manifests(text("/opt/orvanta-browser-host"));
    const BrowserFolder browser{Family::Chromium, make("browser")};
    put("browser/NativeMessagingHosts/org.other.json", "theirs");
    ASSERT_FALSE(manifests.write(browser));
    ASSERT_FALSE(manifests.remove(browser));
    EXPECT_EQ(contentOf(home("browser/NativeMessagingHosts/org.other.json")), "theirs");

    const QString target = put("target", "theirs");
    ASSERT_TRUE(QFile::link(target, NativeManifests::path(browser)));
    for (const auto& problem : {manifests.write(browser), manifests.remove(browser)}) {
        ASSERT_TRUE(problem);
        EXPECT_EQ(problem->path, NativeManifests::path(browser));
        EXPECT_FALSE(problem->reason.isEmpty());
    }
    EXPECT_EQ(contentOf(target), "theirs");

    // A file where the folder should be: nothing can be written, and that is said.
    const BrowserFolder broken{Family::Chromium, put("file", "theirs")};
    ASSERT_TRUE(manifests.write(broken));
    EXPECT_EQ(contentOf(home("file")), "theirs");
}

TEST_F(BrowserInstallation, PutsTheExtensionWhereTheBrowserTakesIt) {
    put("packages/orvanta.crx", "Cr24");
    const BrowserFolder chromium{Family::Chromium, make(".config/chromium")};
    const BrowserFolder firefox{Family::Gecko, home(".mozilla")};
    const ExtensionInstallation installation(home("packages"), home("share"));

    // Without a package.
    const auto missing = installation.install(firefox);
    EXPECT_EQ(missing.outcome, Outcome::Failed);
    ASSERT_TRUE(missing.problem);
    EXPECT_EQ(missing.problem->path, home("packages/orvanta.xpi"));

    // Without a signature.
    put("packages/orvanta.xpi", "PK manifest.json");
    const QStringList before = everything();
    EXPECT_EQ(installation.install(firefox).outcome, Outcome::NotPossible);
    EXPECT_EQ(everything(), before);

    put("packages/orvanta.xpi", "PK META-INF/mozilla.rsa");
    EXPECT_EQ(installation.install(firefox).outcome, Outcome::AfterConfirmation);
    EXPECT_EQ(contentOf(home(".mozilla/extensions/{ec8030f7-c20a-464f-9b0e-13a3a9e97384}/"
                             "orvanta@brindlework.com.xpi")),
              "PK META-INF/mozilla.rsa");
    EXPECT_EQ(installation.install(chromium).outcome, Outcome::AfterRestart);
    EXPECT_EQ(jsonOf(home(".config/chromium/External Extensions/"
                          "odbokjgdmdbheojmnkbkjhabohflpkpk.json")),
              (QJsonObject{{text("external_crx"), home("packages/orvanta.crx")},
                           {text("external_version"), text(ORVANTA_VERSION)}}));
    EXPECT_FALSE(installation.remove(firefox));
    EXPECT_FALSE(installation.remove(chromium));
    EXPECT_EQ(everything(), before);

    // For everybody on the machine: nothing is left to do.
    make("share/chromium/extensions/orvanta");
    put("share/mozilla/extensions/{ec8030f7-c20a-464f-9b0e-13a3a9e97384}/"
        "orvanta@brindlework.com.xpi",
        "PK");
    const QStringList installed = everything();
    for (const BrowserFolder& browser : {chromium, firefox}) {
        EXPECT_EQ(installation.install(browser).outcome, Outcome::Installed);
    }
    EXPECT_EQ(everything(), installed);
}

TEST_F(BrowserInstallation, AProgramThatHasMovedIsFoundAgain) {
    const QString references = make(".config/chromium") + text("/External Extensions");
    const auto preparation = [this](const char* prefix) {
        put((QByteArray(prefix) + "/orvanta.crx").constData(), "Cr24");
        return BrowserPreparation({.home = home(),
                                   .configHome = home(".config"),
                                   .hostExecutable = home(prefix) + text("/host"),
                                   .packageFolder = home(prefix)});
    };
    preparation("old").renew(text("chromium"));
    EXPECT_FALSE(QFileInfo::exists(references)) << "nobody agreed to an extension";
    preparation("old").prepare(text("chromium"));
    preparation("new").renew(text("chromium"));
    EXPECT_EQ(jsonOf(home(".config/chromium/NativeMessagingHosts/com.brindlework.orvanta.json"))
                  .value(text("path")),
              home("new/host"));
    EXPECT_EQ(jsonOf(references + text("/odbokjgdmdbheojmnkbkjhabohflpkpk.json"))
                  .value(text("external_crx")),
              home("new/orvanta.crx"));
}

} // namespace orvanta
