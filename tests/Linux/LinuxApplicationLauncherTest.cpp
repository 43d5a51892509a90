#include "Linux/Applications/LinuxApplicationLauncher.h"

#include "Linux/LinuxRunningApplications.h"
#include "Testing.h"

namespace orvanta {

namespace {

class LinuxApplicationLauncherTest : public testing::Test {
protected:
    QString makeEntry(const QByteArray& exec) {
        folder.writeEntry(u"browser"_s, "Name[pt_BR]=O Navegador\nIcon=icon\nPath=" +
                                            QFile::encodeName(folder.path()) + "\nExec=" + exec +
                                            '\n');
        return folder.path(u"browser.desktop"_s);
    }

    const TemporaryFolder folder;
    DesktopEntries entries{{folder.path()}};
    HandMainLoop loop;
    FakeWorkspace workspace;
    NotificationCenter center;
    LinuxRunningApplications running{workspace, center,
                                     ApplicationIdentity(entries, ::getpid(), u"own"_s), [] {
                                         return std::vector<qint64>();
                                     }};
    LinuxApplicationLauncher launcher{
        {entries,
         loop,
         {},
         [this](qint64 process, const QString& identifier) { running.add(process, identifier); },
         [] {
         }}};
};

TEST_F(LinuxApplicationLauncherTest, AProgramIsStartedWithItsWordsAndIsKnownToRun) {
    const QString entry =
        makeEntry(R"(sh -c "printf '%%s;' \\"\\$@\\" >args; exec sleep 60" 0 %i --name=%c %U)");
    std::vector<RunningInstance> instances;
    launcher.openApplication(entry, {.activates = false, .hides = true},
                             [&] { instances = running.instances(u"browser"_s); });
    ASSERT_EQ(instances.size(), 1U);
    EXPECT_FALSE(instances.front().isTerminated);
    EXPECT_TRUE(
        eventually([&] { return folder.read(u"args"_s) == "--icon;icon;--name=O Navegador;"; }));
    ::kill(static_cast<pid_t>(instances.front().processIdentifier), SIGKILL);
}

TEST_F(LinuxApplicationLauncherTest, WhatCannotBeStartedIsCompleteAtOnce) {
    int completions = 0;
    launcher.openApplication(u"/gone.desktop"_s, {}, [&] { ++completions; });
    const QString entry = makeEntry("sh");
    EXPECT_TRUE(entries.at(entry));
    for (const char* exec : {"/gone/program", "\"unclosed", ""}) {
        makeEntry(exec);
        launcher.openApplication(entry, {.activates = false, .hides = true},
                                 [&] { ++completions; });
    }
    EXPECT_EQ(completions, 4);
    EXPECT_FALSE(launcher.open(u"no-such-scheme:x"_s));
    EXPECT_FALSE(launcher.open(QString()));
    EXPECT_TRUE(running.instances(u"browser"_s).empty());
    EXPECT_EQ(loop.armedCount(), 0U);
}

} // namespace

} // namespace orvanta
