#include "Linux/LinuxRunningApplications.h"

#include "Fakes/FakeWorkspace.h"
#include "Fakes/QtPrinters.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace orvanta {

namespace {

using namespace Qt::StringLiterals;

/// A process that does nothing until it is killed.
class Child {
public:
    Child()
        : process_(::fork()) {
        if (process_ == 0) {
            ::pause();
            ::_exit(0);
        }
    }
    ~Child() { end(); }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    qint64 process() const { return process_; }
    void end() {
        if (process_ > 0) {
            ::kill(process_, SIGKILL);
            ::waitpid(process_, nullptr, 0);
            process_ = -1;
        }
    }

private:
    pid_t process_;
};

TEST(LinuxRunningApplicationsTest, ListsWhatWasSeenOrIsConnectedAndStillRuns) {
    const QTemporaryDir folder;
    FakeWorkspace workspace;
    NotificationCenter center;
    DesktopEntries entries({folder.path()});
    std::vector<qint64> connected;
    const LinuxRunningApplications running(
        workspace, center,
        ApplicationIdentity(entries, ::getpid(), u"own"_s, folder.filePath(u"proc"_s)),
        [&connected] { return connected; });
    const auto comeToTheFront = [&](const QString& identifier, std::optional<qint64> process) {
        workspace.front = RunningApplication{identifier, {}, {}, process};
        center.post(Notification::DidActivateApplication);
    };
    using Instances = std::vector<RunningInstance>;
    EXPECT_EQ(running.instances(u"browser"_s), Instances());

    Child first;
    Child second;
    Child third;
    comeToTheFront(u"browser"_s, first.process());
    comeToTheFront(u"browser"_s, second.process());
    EXPECT_EQ(running.instances(u"browser"_s),
              (Instances{{second.process(), false}, {first.process(), false}}));
    comeToTheFront(u"terminal"_s, std::nullopt);
    EXPECT_EQ(running.instances(u"browser"_s).size(), 2U);
    EXPECT_EQ(running.instances(u"terminal"_s), Instances());

    // One whose windows were never in front is known by its program.
    QDir().mkpath(folder.filePath(u"proc/%1"_s.arg(third.process())));
    QFile::link(u"/opt/other/other-browser"_s,
                folder.filePath(u"proc/%1/exe"_s.arg(third.process())));
    connected = {third.process(), second.process()};
    EXPECT_EQ(running.instances(u"other-browser"_s), (Instances{{third.process(), false}}));
    EXPECT_EQ(running.bundleIdentifier(second.process()), u"browser"_s);
    EXPECT_EQ(running.bundleIdentifier(first.process() + 100000), QString());

    comeToTheFront(u"browser"_s, second.process());
    first.end();
    EXPECT_EQ(running.instances(u"browser"_s), (Instances{{second.process(), false}}));
    const qint64 gone = second.process();
    second.end();
    EXPECT_EQ(running.instances(u"browser"_s), (Instances{{gone, true}}));
    comeToTheFront(u"terminal"_s, std::nullopt);
    EXPECT_EQ(running.instances(u"browser"_s), Instances());
}

} // namespace

} // namespace orvanta
