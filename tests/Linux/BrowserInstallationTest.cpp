#include "Linux/BrowserBridge/BrowserPreparation.h"
#include "Linux/BrowserBridge/ExtensionInstallation.h"
#include "Linux/BrowserBridge/NativeManifests.h"
#include "Testing.h"

#include <QDirIterator>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <sys/stat.h>

namespace orvanta {

namespace {

using Family = BrowserFamily;
using Outcome = ExtensionInstallation::Outcome;

QJsonObject jsonOf(const QByteArray& content) {
    return QJsonDocument::fromJson(content).object();
}

class BrowserInstallation : public ::testing::Test {
protected:
    QString make(const QString& name) const {
        QDir().mkpath(home(name));
        return home(name);
    }
    QString put(const QString& name, const QByteArray& content = "theirs") const {
        folder.write(name, content);
        return home(name);
    }
    QString home(const QString& below = {}) const { return folder.path(below); }
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

    TemporaryFolder folder;
    const BrowserFolder chromium{Family::Chromium, home(u".config/chromium"_s)};
    const BrowserFolder firefox{Family::Gecko, home(u".mozilla"_s)};
    const QString chromiumManifest =
        u".config/chromium/NativeMessagingHosts/com.brindlework.orvanta.json"_s;
    const QString firefoxManifest =
        u".mozilla/native-messaging-hosts/com.brindlework.orvanta.json"_s;
    const QString reference =
        u".config/chromium/External Extensions/odbokjgdmdbheojmnkbkjhabohflpkpk.json"_s;
    const QString extension =
        u"{ec8030f7-c20a-464f-9b0e-13a3a9e97384}/orvanta@brindlework.com.xpi"_s;
};

} // namespace

TEST_F(BrowserInstallation, WritesManifestsAndLeavesNoTraceWhenTheyAreRemoved) {
    make(u".config/chromium"_s); // As yet empty; the other is made on the way.
    const QStringList before = everything();
    ::umask(077);
    NativeManifests(u"/old"_s).write(chromium);
    const NativeManifests manifests(u"/opt/orvanta-browser-host"_s);
    EXPECT_FALSE(manifests.write(chromium));
    EXPECT_FALSE(manifests.write(firefox));
    ::umask(022);
    for (const auto& [path, key, allowed] :
         {std::tuple(chromiumManifest, u"allowed_origins"_s,
                     u"chrome-extension://odbokjgdmdbheojmnkbkjhabohflpkpk/"_s),
          {firefoxManifest, u"allowed_extensions"_s, u"orvanta@brindlework.com"_s}}) {
        EXPECT_EQ(jsonOf(folder.read(path))[key].toArray(), QJsonArray{allowed});
        EXPECT_EQ(jsonOf(folder.read(path))[u"path"_s], u"/opt/orvanta-browser-host"_s);
        EXPECT_EQ(QFile::permissions(home(path)).toInt() & 0x7077, 0x6044);
    }
    for (int times = 0; times < 2; ++times) {
        EXPECT_FALSE(manifests.remove(chromium));
        EXPECT_FALSE(manifests.remove(firefox));
        EXPECT_EQ(everything(), before);
    }
}

TEST_F(BrowserInstallation, LeavesAloneWhatIsNotItsOwn) {
    const NativeManifests manifests(u"/opt/orvanta-browser-host"_s);
    const QString other = u".config/chromium/NativeMessagingHosts/org.other.json"_s;
    put(other);
    ASSERT_FALSE(manifests.write(chromium));
    ASSERT_FALSE(manifests.remove(chromium));
    EXPECT_EQ(folder.read(other), "theirs");

    folder.link(put(u"target"_s), chromiumManifest);
    for (const auto& problem : {manifests.write(chromium), manifests.remove(chromium)}) {
        ASSERT_TRUE(problem);
        EXPECT_EQ(problem->path, home(chromiumManifest));
        EXPECT_FALSE(problem->reason.isEmpty());
    }
    EXPECT_EQ(folder.read(u"target"_s), "theirs");
}

TEST_F(BrowserInstallation, PutsTheExtensionWhereTheBrowserTakesIt) {
    put(u"packages/orvanta.crx"_s, "Cr24");
    make(u".config/chromium"_s);
    const ExtensionInstallation installation(home(u"packages"_s), home(u"share"_s));
    const QString package = u"packages/orvanta.xpi"_s;
    const auto missing = installation.install(firefox);
    EXPECT_EQ(missing.outcome, Outcome::Failed);
    ASSERT_TRUE(missing.problem);
    EXPECT_EQ(missing.problem->path, home(package));

    put(package, "PK manifest.json"); // Without a signature.
    const QStringList before = everything();
    EXPECT_EQ(installation.install(firefox).outcome, Outcome::NotPossible);
    EXPECT_EQ(everything(), before);

    put(package, "PK META-INF/mozilla.rsa");
    EXPECT_EQ(installation.install(firefox).outcome, Outcome::AfterConfirmation);
    EXPECT_EQ(folder.read(u".mozilla/extensions/"_s + extension), "PK META-INF/mozilla.rsa");
    EXPECT_EQ(installation.install(chromium).outcome, Outcome::AfterRestart);
    EXPECT_EQ(jsonOf(folder.read(reference))[u"external_version"_s],
              QStringLiteral(ORVANTA_VERSION));
    EXPECT_FALSE(installation.remove(firefox));
    EXPECT_FALSE(installation.remove(chromium));
    EXPECT_EQ(everything(), before);

    // For everybody on the machine: nothing is left to do.
    make(u"share/chromium/extensions/orvanta"_s);
    put(u"share/mozilla/extensions/"_s + extension);
    const QStringList installed = everything();
    EXPECT_EQ(installation.install(chromium).outcome, Outcome::Installed);
    EXPECT_EQ(installation.install(firefox).outcome, Outcome::Installed);
    EXPECT_EQ(everything(), installed);
}

TEST_F(BrowserInstallation, TheBrowsersThatHaveBeenUsedArePreparedAndAMovedProgramIsFoundAgain) {
    EXPECT_TRUE(findBrowserFolders(home(), home(u".config"_s)).isEmpty());
    make(u".config/chromium"_s);
    const QString brave = make(u".config/BraveSoftware/Brave-Browser"_s);
    make(u".config/mozilla"_s); // A Firefox whose profiles are in the new place.
    const QString librewolf = make(u".librewolf"_s);
    put(u".config/opera"_s);
    EXPECT_EQ(findBrowserFolders(home(), home(u".config"_s)),
              (QList<BrowserFolder>{
                  chromium, {Family::Chromium, brave}, firefox, {Family::Gecko, librewolf}}));

    const auto preparation = [this](const QString& prefix) {
        put(prefix + u"/orvanta.crx"_s);
        return BrowserPreparation({.home = home(),
                                   .configHome = home(u".config"_s),
                                   .hostExecutable = home(prefix + u"/host"_s),
                                   .packageFolder = home(prefix)});
    };
    preparation(u"old"_s).renew(u"chromium"_s);
    EXPECT_EQ(folder.read(reference), "") << "nobody agreed to an extension";
    preparation(u"old"_s).prepare(u"chromium"_s);
    preparation(u"new"_s).renew(u"chromium"_s);
    EXPECT_EQ(jsonOf(folder.read(chromiumManifest))[u"path"_s], home(u"new/host"_s));
    EXPECT_EQ(jsonOf(folder.read(reference))[u"external_crx"_s], home(u"new/orvanta.crx"_s));
}

} // namespace orvanta
