#include "Linux/Applications/LinuxBundles.h"

#include "Browsers/Browser.h"
#include "Browsers/BrowserDialect.h"
#include "Testing.h"

namespace orvanta {

namespace {

/// As the engine finds it, without its cache.
std::optional<BrowserDialect> dialect(const Bundles& bundles, const QString& id) {
    const auto location = bundles.locationOfApplication(id);
    const auto bundle = location ? bundles.bundle(*location) : std::nullopt;
    if (!bundle || !BrowserDialect::opensWebPages(bundle->infoDictionary)) {
        return std::nullopt;
    }
    const QVariant name = bundle->infoDictionary.value(u"OSAScriptingDefinition"_s);
    const auto text = name.typeId() == QMetaType::QString
                          ? bundles.resource(*location, name.toString())
                          : std::nullopt;
    return text ? BrowserDialect::ofSdef(QString::fromUtf8(*text)) : std::nullopt;
}

/// Two folders of entries, and programs of our own: "@" stands for where they are.
class LinuxBundlesTest : public testing::Test {
protected:
    void write(const QString& path, QByteArray content = "\x7f"
                                                         "ELF") const {
        folder.write(path, content.replace('@', folder.path().toUtf8() + '/'));
        QFile::setPermissions(folder.path(path),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    void browserIn(const QString& path, const QStringList& files,
                   const QByteArray& version = "128.4.0") const {
        for (const QString& file : files + QStringList{u"program"_s}) {
            write(path + u'/' + file, "[Build]\nMilestone=" + version + '\n');
        }
    }
    void entry(const QString& id, const QByteArray& lines,
               const QString& place = u"system/applications/"_s) const {
        write(place + id + u".desktop"_s,
              "[Desktop Entry]\nType=Application\nName=" + id.toUtf8() + '\n' + lines);
    }
    std::string order(const QString& address = u"https:"_s) const {
        QStringList ids;
        for (const QString& location : bundles.applicationsToOpen(address)) {
            ids += bundles.bundle(location)->bundleIdentifier.value();
        }
        return ids.join(u' ').toStdString();
    }

    TemporaryFolder folder;
    QStringList applications{folder.path(u"user/applications"_s),
                             folder.path(u"system/applications"_s)};
    DesktopEntries entries{applications};
    LinuxBundles bundles{
        entries,
        {{{folder.path(u"config"_s), folder.path(u"xdg"_s)},
          applications,
          {u"Budgie"_s, u"GNOME"_s}},
         {{folder.path(u"bin"_s)}, {folder.path(u"flatpak"_s)}, {folder.path(u"snap"_s)}}}};
};

constexpr char browser[] = "Categories=Network;WebBrowser;\n"
                           "MimeType=text/html;x-scheme-handler/http;x-scheme-handler/https;\n";

TEST_F(LinuxBundlesTest, AnEntrySaysWhatItOpens) {
    entry(u"web"_s, QByteArray("Name[pt_BR]=Navegador\n") + browser);
    const auto location = bundles.locationOfApplication(u"web"_s);
    ASSERT_TRUE(location);
    const auto bundle = bundles.bundle(*location);
    ASSERT_TRUE(bundle);
    EXPECT_EQ(bundle->bundleIdentifier, u"web"_s);
    EXPECT_TRUE(BrowserDialect::opensWebPages(bundle->infoDictionary));
    EXPECT_EQ(bundles.displayName(*location), u"Navegador"_s);
    EXPECT_FALSE(bundles.resource(*location, u"web.desktop"_s));

    QFile::remove(*location);
    EXPECT_FALSE(bundles.bundle(*location));
    EXPECT_FALSE(bundles.bundle(u"/etc/hosts"_s));
}

TEST_F(LinuxBundlesTest, ABrowserIsKnownByWhatLiesBesideItsProgram) {
    const QStringList gecko{u"libxul.so"_s, u"platform.ini"_s};
    const QStringList chromium{u"icudtl.dat"_s, u"brand_100_percent.pak"_s};
    browserIn(u"lib/fox"_s, gecko);
    browserIn(u"lib/old"_s, gecko, "60.9.1");
    browserIn(u"lib/chrome"_s, chromium);
    browserIn(u"lib/electron"_s, chromium + QStringList{u"resources/app.asar"_s});
    browserIn(u"lib/cef"_s, chromium + QStringList{u"libcef.so"_s});
    folder.link(folder.path(u"lib/fox/program"_s), u"bin/fox"_s);
    folder.link(folder.path(u"bin/circle"_s), u"bin/circle"_s);
    write(u"bin/by-name"_s,
          "#!/bin/sh\nF=\"$(command -v x)\"\n[ -x \"$F.r\" ] && exec \"$F.r\" \"$@\"\n"
          "exec $NICE fox \"$@\"\n");
    write(u"bin/by-variables"_s,
          "#!/bin/sh\n# It's unbalanced\nexport NAME=program\nD=@lib/none\n"
          "if [ ! -r $D/$NAME ]; then\n    D=\"@lib\"\nfi\n"
          "LIB=${D:-/usr}/chrome\nif true; then exec $NO nice $LIB/$NAME; fi\n");
    write(u"bin/in-turn"_s,
          "#!/bin/sh\n" + QByteArray("@bin/in-turn\n").repeated(20) + "@bin/back\n");
    write(u"bin/back"_s, "#!/bin/sh\n\"@bin/in-turn\" \"$@\"\n@bin/by-name\n");
    write(u"bin/doubling"_s,
          "#!/bin/sh\nA=/////////\n" + QByteArray("A=$A$A\n").repeated(64) + "exec ${A $A ${ $\n");
    write(u"bin/mentions"_s, "#!/bin/sh\necho @lib/fox/program\n");
    write(u"bin/huge"_s, "#!/bin/sh\n" + QByteArray(1 << 20, '\n') + "exec @lib/fox/program\n");
    for (const QString& name : {u"flatpak"_s, u"snap"_s, u"webkit"_s}) {
        write(u"bin/"_s + name);
    }
    browserIn(u"flatpak/app/org.fox/current/active/files/lib/fox"_s, gecko);
    browserIn(u"snap/web/current/usr/lib/arch/web"_s, chromium);
    folder.link(folder.path(u"bin/snap"_s), u"snap/bin/web.beta"_s);

    const std::pair<const char*, std::vector<const char*>> rows[]{
        {"safari",
         {"program Exec=@lib/fox/program %u", "link Exec=@bin/fox %u",
          "environment Exec=env A=1 @bin/fox %u", "by-name Exec=@bin/by-name %u",
          "in-turn Exec=@bin/in-turn %u",
          "flatpak Exec=@bin/flatpak run --command=fox org.fox @@u %u @@",
          "org.mozilla.firefox Exec=@bin/flatpak run org.mozilla.firefox"}},
        {"chromium",
         {"quoted Exec=\"@lib/chrome/program\" %U", "by-variables Exec=@bin/by-variables %u",
          "snap Exec=env HINT=x @snap/bin/web.beta %U",
          "com.brave.Browser Exec=@bin/flatpak run com.brave.Browser"}},
        {"none",
         {"electron Exec=@lib/electron/program %U",
          "cef Exec=@lib/cef/program %U",
          "librewolf Exec=@lib/old/program %u",
          "webkit Exec=@bin/webkit %U",
          "doubling Exec=@bin/doubling",
          "mentions Exec=@bin/mentions %u",
          "huge Exec=@bin/huge %u",
          "circle Exec=env @bin/circle",
          "missing Exec=env @lib/fox/missing",
          "nothing Exec=env A=1",
          "firefox DBusActivatable=true",
          "no-flatpak Exec=@bin/flatpak run",
          "outside Exec=@bin/flatpak run ../app/org.fox",
          "chrome-aabbccdd-Default Exec=@lib/chrome/program --profile-directory=Default "
          "--app-id=aabbccdd %U",
          "app Exec=@lib/chrome/program --app=file:///a",
          "site Exec=@bin/fox --class Site https://a.test/",
          "private Exec=@bin/fox --private-window %u",
          "helper NoDisplay=true\nExec=@bin/fox %u",
          "mail "
          "Categories=Network;Email;\nMimeType=text/html;x-scheme-handler/http;x-scheme-handler/"
          "https;\nExec=@bin/fox %u",
          "reader Categories=WebBrowser;\nMimeType=x-scheme-handler/https;\nExec=@bin/fox %u"}}};
    for (const auto& [expected, lines] : rows) {
        for (const QByteArray line : lines) {
            const QString id = QString::fromUtf8(line.first(line.indexOf(' ')));
            const QByteArray own = line.mid(id.size() + 1) + '\n';
            entry(id, own.contains("MimeType=") ? own : browser + own);
            EXPECT_TRUE(bundles.locationOfApplication(id)) << line.constData();
            const auto found = dialect(bundles, id);
            EXPECT_STREQ(!found                             ? "none"
                         : *found == BrowserDialect::safari ? "safari"
                                                            : "chromium",
                         expected)
                << line.constData();
        }
    }
}

/// Lists come one after the other. Each is told as its file, then of its groups the initials with
/// the ids that they give; and what opens a page from then on, in order.
TEST_F(LinuxBundlesTest, TheListsOfAssociationsGiveTheOrder) {
    const std::map<char, QByteArray> groups{{'A', "Added Associations"},
                                            {'D', "Default Applications"},
                                            {'M', "MIME Cache"},
                                            {'R', "Removed Associations"}};
    const std::vector<std::pair<const char*, const char*>> stories[] = {
        {{"system/applications/mimeinfo.cache M gone text c b", "mine c b a"}},
        {{"system/applications/mimeapps.list D c", "c mine a b"},
         {"xdg/gnome-mimeapps.list D b", "b mine a c"},
         {"xdg/kde-mimeapps.list D a", "b mine a c"}, // of another desktop
         {"xdg/mimeapps.list D a", "b mine a c"},
         {"xdg/budgie-mimeapps.list D gone a? text", "text mine a b c"},
         {"config/mimeapps.list D gone", "text mine a b c"},
         {"config/mimeapps.list D a broken", "text mine a b c"}},
        // Associations are added and removed from their folder on.
        {{"config/mimeapps.list A text gone c R b", "text c mine a"},
         {"xdg/mimeapps.list A b D b", "text c mine a"},
         {"system/applications/mimeapps.list R mine a", "text c mine"},
         {"xdg/gnome-mimeapps.list R text", "text c mine"},
         {"system/applications/mimeapps.list A apart", "text c mine a"}}};
    for (const auto& story : stories) {
        for (const char* each : {"system", "user", "xdg", "config"}) {
            QDir(folder.path(QString::fromUtf8(each))).removeRecursively();
        }
        for (const char* id : {"a", "b", "c"}) {
            entry(QString::fromUtf8(id), browser);
        }
        entry(u"text"_s, "MimeType=text/html;\n");
        entry(u"mine"_s, browser, u"user/applications/"_s);
        entry(u"apart"_s, "", u"user/applications/"_s);
        EXPECT_EQ(order(), "mine a b c");
        for (const auto& [told, expected] : story) {
            QByteArray list;
            const auto words = QByteArray(told).split(' ').sliced(1);
            for (const QByteArray& word : words) {
                list += word == "broken" ? "\nbroken"
                        : word.size() == 1 && groups.contains(word[0])
                            ? "\n[" + groups.at(word[0]) +
                                  "]\nx-scheme-handler/http=text.desktop\nx-scheme-handler/https="
                            : word + ".desktop;";
            }
            write(QString::fromUtf8(QByteArray(told).split(' ')[0]), list.trimmed() + '\n');
            EXPECT_EQ(order(), expected) << told;
            EXPECT_EQ(
                bundles.applicationToOpen(u"https:"_s),
                bundles.locationOfApplication(QString::fromUtf8(expected).section(u' ', 0, 0)));
        }
        EXPECT_EQ(order(u"gopher:"_s) + order(QString()), "");
        EXPECT_FALSE(bundles.applicationToOpen(u"gopher:"_s));
    }
    QFile::remove(folder.path(u"system/applications/c.desktop"_s));
    EXPECT_EQ(order(u"https://a.test:80/b"_s), "text mine a");
}

TEST(InstalledBrowsersTest, ThoseOfThisSystemAreFound) {
    const auto places = LinuxBundles::Places::ofThisProcess();
    DesktopEntries entries(places.associations.applications);
    const LinuxBundles bundles(entries, places);
    EXPECT_EQ(dialect(bundles, u"chromium"_s), BrowserDialect::chromium);
    EXPECT_EQ(dialect(bundles, u"firefox-esr"_s), BrowserDialect::safari);
    EXPECT_EQ(dialect(bundles, u"debian-xterm"_s), std::nullopt);
    QStringList found;
    for (const Browser& each : Browser::installed(bundles)) {
        found.append(each.id);
    }
    EXPECT_TRUE(found.contains(u"chromium"_s) && found.contains(u"firefox-esr"_s));
}

} // namespace

} // namespace orvanta
