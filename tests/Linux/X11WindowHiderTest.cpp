#include "Linux/Applications/LinuxApplicationLauncher.h"
#include "Testing.h"
#include "XServer.h"

using namespace orvanta;

namespace {

class X11WindowHiderTest : public testing::Test {
protected:
    ~X11WindowHiderTest() override {
        for (const qint64 each : started) {
            ::kill(static_cast<pid_t>(each), SIGKILL);
        }
    }

    void launch(const QByteArray& command) {
        folder.writeEntry(u"program"_s,
                          "Exec=env DISPLAY=" + server.display() + ' ' + command + '\n');
        launcher.openApplication(folder.path(u"program.desktop"_s),
                                 {.activates = false, .hides = true}, [this] { ++completions; });
    }

    XServer server;
    TemporaryFolder folder;
    DesktopEntries entries{{folder.path()}};
    HandMainLoop loop;
    std::vector<qint64> started;
    LinuxApplicationLauncher launcher{
        {entries, loop, server.display(),
         [this](qint64 process, const QString&) { started.push_back(process); },
         [] {
         }}};
    int completions = 0;
};

TEST_F(X11WindowHiderTest, WithoutAWindowItIsWaitedForTenSeconds) {
    launch("sleep 60");
    loop.advance(9.9);
    EXPECT_EQ(completions, 0);
    loop.advance(0.1);
    EXPECT_EQ(completions, 1);

    launch("sleep 60");
    ::kill(static_cast<pid_t>(started.back()), SIGKILL);
    EXPECT_TRUE(eventually([this] { return completions == 2; }));
    EXPECT_EQ(loop.armedCount(), 0U);

    server.kill();
    launch("sleep 60");
    loop.advance(0);
    EXPECT_EQ(completions, 3);
}

} // namespace
