#include "Linux/Applications/LinuxApplicationLauncher.h"

#include "Testing.h"

namespace orvanta {

namespace {

TEST(LinuxApplicationLauncherTest, AProgramIsStartedInItsFolderAndWhatCannotBeIsCompleteAtOnce) {
    TemporaryFolder folder;
    DesktopEntries entries{{folder.path()}};
    HandMainLoop loop;
    QStringList started;
    int completions = 0;
    LinuxApplicationLauncher launcher{
        {entries,
         loop,
         {},
         [&](qint64, const QString& identifier) { started.append(identifier); },
         [] {
         }}};
    const QString entry = folder.path(u"browser.desktop"_s);
    for (const char* exec : {R"(sh -c "printf '%%s;' \\"\\$@\\" >args" 0 %i --name=%c %U)",
                             "/gone/program", "\"unclosed", ""}) {
        folder.writeEntry(u"browser"_s, "Name[pt_BR]=O Navegador\nIcon=icon\nPath=" +
                                            QFile::encodeName(folder.path()) + "\nExec=" + exec +
                                            '\n');
        EXPECT_TRUE(!started.isEmpty() || entries.at(entry));
        launcher.openApplication(entry, {.activates = false, .hides = true},
                                 [&] { ++completions; });
    }
    launcher.openApplication(u"/gone.desktop"_s, {}, [&] { ++completions; });
    EXPECT_EQ(completions, 5);
    EXPECT_EQ(started, QStringList{u"browser"_s});
    EXPECT_EQ(loop.armedCount(), 0U);
    EXPECT_TRUE(
        eventually([&] { return folder.read(u"args"_s) == "--icon;icon;--name=O Navegador;"; }));
    EXPECT_FALSE(launcher.open(u"no-such-scheme:x"_s));
    EXPECT_FALSE(launcher.open(QString()));
}

} // namespace

} // namespace orvanta
