#include "Linux/Applications/LinuxBundles.h"

#include "Applications.h"
#include "Browsers/Browser.h"
#include "Browsers/BrowserDialect.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace orvanta {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// As the engine finds it, without its cache.
std::optional<BrowserDialect> dialect(const Bundles& bundles, const QString& id) {
    const auto location = bundles.locationOfApplication(id);
    const auto bundle = location ? bundles.bundle(*location) : std::nullopt;
    if (!bundle || !BrowserDialect::opensWebPages(bundle->infoDictionary)) {
        return std::nullopt;
    }
    const QVariant name = bundle->infoDictionary.value(QStringLiteral("OSAScriptingDefinition"));
    const auto text = name.typeId() == QMetaType::QString
                          ? bundles.resource(*location, name.toString())
                          : std::nullopt;
    return text ? BrowserDialect::ofSdef(QString::fromUtf8(*text)) : std::nullopt;
}

/// Two folders of entries, and programs of our own: "@" stands for where they are.
class LinuxBundlesTest : public testing::Test {
protected:
    void write(const char* path, QByteArray content) const {
        folder.write(QString::fromUtf8(path), content.replace('@', folder.path().toUtf8() + '/'));
        QFile::setPermissions(folder.path(QString::fromUtf8(path)),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    void link(const char* target, const char* path) const {
        write(path, "");
        QFile::remove(folder.path(QString::fromUtf8(path)));
        ASSERT_TRUE(QFile::link(folder.path(QString::fromUtf8(target)),
                                folder.path(QString::fromUtf8(path))));
    }
    void gecko(const std::string& path, const QByteArray& version = "128.4.0") const {
        write((path + "/libxul.so").c_str(), "");
        write((path + "/platform.ini").c_str(), "[Build]\nMilestone=" + version + "\n");
        write((path + "/program").c_str(), "\x7f"
                                           "ELF");
    }
    void chromium(const std::string& path, const char* more = "resources.pak") const {
        write((path + "/icudtl.dat").c_str(), "");
        write((path + "/brand_100_percent.pak").c_str(), "");
        write((path + '/' + more).c_str(), "");
        write((path + "/program").c_str(), "\x7f"
                                           "ELF");
    }
    void entry(const char* id, const QByteArray& lines,
               const char* place = "system/applications/") const {
        write((place + std::string(id) + ".desktop").c_str(),
              "[Desktop Entry]\nType=Application\nName=" + QByteArray(id) + '\n' + lines);
    }
    std::vector<std::string> ids(const char* address = "https:") const {
        std::vector<std::string> ids;
        const QStringList locations = bundles.applicationsToOpen(QString::fromUtf8(address));
        for (const QString& location : locations) {
            ids.push_back(bundles.bundle(location)->bundleIdentifier->toStdString());
        }
        return ids;
    }

    TemporaryFolder folder;
    QStringList applications{folder.path(QStringLiteral("user/applications")),
                             folder.path(QStringLiteral("system/applications"))};
    DesktopEntries entries{applications};
    LinuxBundles bundles{
        entries,
        {{{folder.path(QStringLiteral("config")), folder.path(QStringLiteral("xdg"))},
          applications,
          {QStringLiteral("Budgie"), QStringLiteral("GNOME")}},
         {{folder.path(QStringLiteral("bin"))},
          {folder.path(QStringLiteral("flatpak"))},
          {folder.path(QStringLiteral("snap"))}}}};
};

constexpr char browser[] = "Categories=Network;WebBrowser;\n"
                           "MimeType=text/html;x-scheme-handler/http;x-scheme-handler/https;\n";

TEST_F(LinuxBundlesTest, AnEntrySaysWhatItOpens) {
    entry("web", QByteArray("Name[pt_BR]=Navegador\n") + browser);
    const auto location = bundles.locationOfApplication(QStringLiteral("web"));
    ASSERT_TRUE(location);
    const auto bundle = bundles.bundle(*location);
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->bundleIdentifier, QStringLiteral("web"));
    EXPECT_TRUE(BrowserDialect::opensWebPages(bundle->infoDictionary));
    EXPECT_EQ(bundles.displayName(*location), QStringLiteral("Navegador"));
    EXPECT_FALSE(bundles.resource(*location, QStringLiteral("web.desktop")));

    entry("mail", "MimeType=x-scheme-handler/mailto;application/xhtml+xml;\n");
    const auto mail = bundles.bundle(*bundles.locationOfApplication(QStringLiteral("mail")));
    EXPECT_EQ(
        mail->infoDictionary,
        (QVariantMap{{QStringLiteral("CFBundleURLTypes"),
                      QVariantList{QVariantMap{{QStringLiteral("CFBundleURLSchemes"),
                                                QStringList{QStringLiteral("mailto")}}}}},
                     {QStringLiteral("CFBundleDocumentTypes"),
                      QVariantList{QVariantMap{{QStringLiteral("LSItemContentTypes"),
                                                QStringList{QStringLiteral("public.html")}}}}}}));

    QFile::remove(*location);
    EXPECT_FALSE(bundles.bundle(*location));
    EXPECT_FALSE(bundles.bundle(QStringLiteral("/etc/hosts")));
}

TEST_F(LinuxBundlesTest, ABrowserIsKnownByWhatLiesBesideItsProgram) {
    gecko("lib/fox");
    gecko("lib/old", "60.9.1");
    chromium("lib/chrome");
    chromium("lib/electron", "resources/app.asar");
    chromium("lib/cef", "libcef.so");
    link("lib/fox/program", "bin/fox");
    link("bin/circle", "bin/circle");
    write("bin/by-name",
          "#!/bin/sh\nF=\"$(command -v x)\"\n[ -x \"$F.r\" ] && exec \"$F.r\" \"$@\"\n"
          "exec $NICE fox \"$@\"\n");
    write("bin/by-variables",
          "#!/bin/sh\n# It's unbalanced\nexport NAME=program\nD=@lib/none\n"
          "if [ ! -r $D/$NAME ]; then\n    D=\"@lib\"\nfi\n"
          "LIB=${D:-/usr}/chrome\nif true; then exec $NO nice $LIB/$NAME; fi\n");
    write("bin/in-turn", "#!/bin/sh\n" + QByteArray("@bin/in-turn\n").repeated(20) + "@bin/back\n");
    write("bin/back", "#!/bin/sh\n\"@bin/in-turn\" \"$@\"\n@bin/by-name\n");
    write("bin/doubling",
          "#!/bin/sh\nA=/////////\n" + QByteArray("A=$A$A\n").repeated(64) + "exec ${A $A ${ $\n");
    write("bin/mentions", "#!/bin/sh\necho @lib/fox/program\n");
    write("bin/huge", "#!/bin/sh\n" + QByteArray(1 << 20, '\n') + "exec @lib/fox/program\n");
    for (const char* name : {"flatpak", "snap", "webkit"}) {
        write((std::string("bin/") + name).c_str(), "\x7f"
                                                    "ELF");
    }
    gecko("flatpak/app/org.fox/current/active/files/lib/fox");
    chromium("snap/web/current/usr/lib/arch/web");
    link("bin/snap", "snap/bin/web.beta");

    constexpr auto gecko = BrowserDialect::safari;
    constexpr auto blink = BrowserDialect::chromium;
    const std::string web = browser;
    const struct {
        const char* id;
        std::string lines;
        std::optional<BrowserDialect> expected;
    } rows[]{
        {"program", web + "Exec=@lib/fox/program %u", gecko},
        {"link", web + "Exec=@bin/fox %u", gecko},
        {"environment", web + "Exec=env A=1 @bin/fox %u", gecko},
        {"quoted", web + "Exec=\"@lib/chrome/program\" %U", blink},
        {"by-name", web + "Exec=@bin/by-name %u", gecko},
        {"by-variables", web + "Exec=@bin/by-variables %u", blink},
        {"in-turn", web + "Exec=@bin/in-turn %u", gecko},
        {"flatpak", web + "Exec=@bin/flatpak run --command=fox org.fox @@u %u @@", gecko},
        {"snap", web + "Exec=env HINT=x @snap/bin/web.beta %U", blink},
        {"org.mozilla.firefox", web + "Exec=@bin/flatpak run org.mozilla.firefox", gecko},
        {"com.brave.Browser", web + "Exec=@bin/flatpak run com.brave.Browser", blink},

        {"electron", web + "Exec=@lib/electron/program %U", std::nullopt},
        {"cef", web + "Exec=@lib/cef/program %U", std::nullopt},
        {"librewolf", web + "Exec=@lib/old/program %u", std::nullopt},
        {"webkit", web + "Exec=@bin/webkit %U", std::nullopt},
        {"doubling", web + "Exec=@bin/doubling", std::nullopt},
        {"mentions", web + "Exec=@bin/mentions %u", std::nullopt},
        {"huge", web + "Exec=@bin/huge %u", std::nullopt},
        {"circle", web + "Exec=env @bin/circle", std::nullopt},
        {"missing", web + "Exec=env @lib/fox/missing", std::nullopt},
        {"nothing", web + "Exec=env A=1", std::nullopt},
        {"firefox", web + "DBusActivatable=true", std::nullopt},
        {"no-flatpak", web + "Exec=@bin/flatpak run", std::nullopt},
        {"outside", web + "Exec=@bin/flatpak run ../app/org.fox", std::nullopt},

        {"chrome-aabbccdd-Default",
         web + "Exec=@lib/chrome/program --profile-directory=Default --app-id=aabbccdd %U",
         std::nullopt},
        {"app", web + "Exec=@lib/chrome/program --app=file:///a", std::nullopt},
        {"site", web + "Exec=@bin/fox --class Site https://a.test/", std::nullopt},
        {"private", web + "Exec=@bin/fox --private-window %u", std::nullopt},
        {"helper", web + "NoDisplay=true\nExec=@bin/fox %u", std::nullopt},
        {"mail",
         "Categories=Network;Email;\nMimeType=text/html;x-scheme-handler/http;x-scheme-handler/"
         "https;"
         "\nExec=@lib/fox/program %u",
         std::nullopt},
        {"reader",
         "Categories=WebBrowser;\nMimeType=x-scheme-handler/http;x-scheme-handler/https;"
         "\nExec=@bin/fox %u",
         std::nullopt},
    };
    for (const auto& row : rows) {
        entry(row.id, QByteArray::fromStdString(row.lines + '\n'));
    }
    for (const auto& row : rows) {
        EXPECT_TRUE(bundles.locationOfApplication(QString::fromUtf8(row.id))) << row.id;
        EXPECT_EQ(dialect(bundles, QString::fromUtf8(row.id)), row.expected) << row.id;
    }
}

class AssociationsTest : public LinuxBundlesTest {
protected:
    void SetUp() override {
        for (const char* id : {"a", "b", "c"}) {
            entry(id, browser);
        }
        entry("text", "MimeType=text/html;\n");
        entry("mine", browser, "user/applications/");
    }
    static QByteArray list(const QByteArray& group, const QByteArray& ids) {
        return '[' + group +
               "]\nx-scheme-handler/http=text.desktop\nx-scheme-handler/https=" + ids + "\n";
    }
};

TEST_F(AssociationsTest, WithoutListsTheFoldersOrderCounts) {
    EXPECT_THAT(ids(), ElementsAre("mine", "a", "b", "c"));
    EXPECT_EQ(bundles.applicationToOpen(QStringLiteral("https:")),
              bundles.locationOfApplication(QStringLiteral("mine")));
    write("system/applications/mimeinfo.cache",
          list("MIME Cache", "gone.desktop;text.desktop;c.desktop;b.desktop;"));
    EXPECT_THAT(ids("https://a.test:80/b"), ElementsAre("mine", "c", "b", "a"));
    EXPECT_THAT(ids("gopher:"), IsEmpty());
    EXPECT_FALSE(bundles.applicationToOpen(QStringLiteral("gopher:")));
    EXPECT_THAT(ids(""), IsEmpty());
}

TEST_F(AssociationsTest, TheMostImportantDefaultThatIsInstalledComesFirst) {
    write("system/applications/mimeapps.list", list("Default Applications", "c.desktop"));
    EXPECT_THAT(ids(), ElementsAre("c", "mine", "a", "b"));
    write("xdg/gnome-mimeapps.list", list("Default Applications", "b.desktop;"));
    write("xdg/kde-mimeapps.list", list("Default Applications", "a.desktop;"));
    write("xdg/mimeapps.list", list("Default Applications", "a.desktop;"));
    EXPECT_THAT(ids(), ElementsAre("b", "mine", "a", "c"));
    write("xdg/budgie-mimeapps.list", list("Default Applications", "gone.desktop;a;text.desktop"));
    EXPECT_THAT(ids(), ElementsAre("text", "mine", "a", "b", "c"));
    write("config/mimeapps.list", list("Default Applications", "gone.desktop"));
    EXPECT_EQ(bundles.applicationToOpen(QStringLiteral("https:")),
              bundles.locationOfApplication(QStringLiteral("text")));
    write("config/mimeapps.list",
          "[Default Applications]\nx-scheme-handler/https=a.desktop\nbroken");
    EXPECT_THAT(ids(), ElementsAre("text", "mine", "a", "b", "c"));
}

TEST_F(AssociationsTest, AssociationsAreAddedAndRemovedFromTheirFolderOn) {
    write("config/mimeapps.list",
          list("Added Associations", "text.desktop;gone.desktop;c.desktop;") +
              list("Removed Associations", "b.desktop"));
    EXPECT_THAT(ids(), ElementsAre("text", "c", "mine", "a"));
    write("xdg/mimeapps.list",
          list("Added Associations", "b.desktop") + list("Default Applications", "b.desktop"));
    write("system/applications/mimeapps.list",
          list("Removed Associations", "mine.desktop;a.desktop"));
    write("xdg/gnome-mimeapps.list", list("Removed Associations", "text.desktop;"));
    EXPECT_THAT(ids(), ElementsAre("text", "c", "mine"));

    entry("apart", "", "user/applications/");
    write("system/applications/mimeapps.list", list("Added Associations", "apart.desktop"));
    EXPECT_THAT(ids(), ElementsAre("text", "c", "mine", "a"));
}

TEST_F(AssociationsTest, WhatIsUninstalledIsGone) {
    write("config/mimeapps.list", list("Default Applications", "b.desktop"));
    EXPECT_THAT(ids(), ElementsAre("b", "mine", "a", "c"));
    QFile::remove(folder.path(QStringLiteral("system/applications/b.desktop")));
    EXPECT_THAT(ids(), ElementsAre("mine", "a", "c"));
}

TEST(InstalledBrowsersTest, ThoseOfThisSystemAreFound) {
    const auto places = LinuxBundles::Places::ofThisProcess();
    DesktopEntries entries(places.associations.applications);
    const LinuxBundles bundles(entries, places);
    EXPECT_EQ(dialect(bundles, QStringLiteral("chromium")), BrowserDialect::chromium);
    EXPECT_EQ(dialect(bundles, QStringLiteral("firefox-esr")), BrowserDialect::safari);
    for (const char* id : {"org.xfce.mousepad", "debian-xterm"}) {
        EXPECT_TRUE(bundles.locationOfApplication(QString::fromUtf8(id))) << id;
        EXPECT_EQ(dialect(bundles, QString::fromUtf8(id)), std::nullopt) << id;
    }
    std::vector<std::string> found;
    for (const Browser& each : Browser::installed(bundles)) {
        found.push_back(each.id.toStdString());
    }
    EXPECT_THAT(found, testing::IsSupersetOf({"chromium", "firefox-esr"}));
}

TEST(InstalledBrowsersTest, TheirFilesTellWhateverTheyAreCalled) {
    const TemporaryFolder folder;
    const auto places = LinuxBundles::Places::ofThisProcess();
    DesktopEntries installed(places.associations.applications);
    DesktopEntries entries({folder.path()});
    const LinuxBundles bundles(entries, places);
    for (const char* id : {"chromium", "firefox-esr"}) {
        const auto entry = installed.withId(QString::fromUtf8(id));
        ASSERT_TRUE(entry &&
                    QFile::link(entry->path,
                                folder.path(QStringLiteral("other-%1.desktop").arg(entry->id))));
    }
    EXPECT_EQ(dialect(bundles, QStringLiteral("other-chromium")), BrowserDialect::chromium);
    EXPECT_EQ(dialect(bundles, QStringLiteral("other-firefox-esr")), BrowserDialect::safari);
}

} // namespace

} // namespace orvanta
