#include "Linux/LinuxRunningApplications.h"

#include "Testing.h"

namespace orvanta {

namespace {

TEST(LinuxRunningApplicationsTest, ListsWhatWasSeenOrIsConnectedAndStillRuns) {
    const TemporaryFolder folder;
    FakeWorkspace workspace;
    NotificationCenter center;
    DesktopEntries entries({folder.path()});
    std::vector<qint64> connected;
    const LinuxRunningApplications running(
        workspace, center,
        ApplicationIdentity(entries, ::getpid(), u"own"_s, folder.path(u"proc"_s)),
        [&connected] { return connected; });
    const auto comeToTheFront = [&](const QString& identifier, std::optional<qint64> process) {
        workspace.front = RunningApplication{identifier, {}, {}, process};
        center.post(Notification::DidActivateApplication);
    };
    using Instances = std::vector<RunningInstance>;
    EXPECT_EQ(running.instances(u"browser"_s), Instances());

    Program first(u"sleep"_s, {u"600"_s});
    Program second(u"sleep"_s, {u"600"_s});
    Program third(u"sleep"_s, {u"600"_s});
    comeToTheFront(u"browser"_s, first.process());
    comeToTheFront(u"browser"_s, second.process());
    EXPECT_EQ(running.instances(u"browser"_s),
              (Instances{{second.process(), false}, {first.process(), false}}));
    comeToTheFront(u"terminal"_s, std::nullopt);
    EXPECT_EQ(running.instances(u"browser"_s).size(), 2U);
    EXPECT_EQ(running.instances(u"terminal"_s), Instances());

    // One whose windows were never in front is known by its program.
    folder.link(u"/opt/other/other-browser"_s, u"proc/%1/exe"_s.arg(third.process()));
    connected = {third.process(), second.process()};
    EXPECT_EQ(running.instances(u"other-browser"_s), (Instances{{third.process(), false}}));
    EXPECT_EQ(running.bundleIdentifier(second.process()), u"browser"_s);
    EXPECT_EQ(running.bundleIdentifier(first.process() + 100000), QString());

    comeToTheFront(u"browser"_s, second.process());
    first.kill();
    EXPECT_EQ(running.instances(u"browser"_s), (Instances{{second.process(), false}}));
    const qint64 gone = second.process();
    second.kill();
    EXPECT_EQ(running.instances(u"browser"_s), (Instances{{gone, true}}));
    comeToTheFront(u"terminal"_s, std::nullopt);
    EXPECT_EQ(running.instances(u"browser"_s), Instances());
}

} // namespace

} // namespace orvanta
