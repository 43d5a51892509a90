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

    QStringList onThisServer(const QStringList& command) const {
        return QStringList{u"DISPLAY="_s + QString::fromLatin1(server.display())} + command;
    }
    /// Of the windows that the window manager shows, and of those that it shows as icons.
    std::pair<int, int> windows() {
        std::pair<int, int> count;
        for (const xcb_window_t window : client.words(client.root(), "_NET_CLIENT_LIST")) {
            const auto state = client.words(window, "WM_STATE");
            constexpr uint32_t iconic = 3;
            ++(!state.empty() && state.front() == iconic ? count.second : count.first);
        }
        return count;
    }
    void launch(const QByteArray& command) {
        folder.writeEntry(u"program"_s,
                          "Exec=env DISPLAY=" + server.display() + ' ' + command + '\n');
        launcher.openApplication(folder.path(u"program.desktop"_s),
                                 {.activates = false, .hides = true}, [this] { ++completions; });
    }

    XServer server;
    XClient client{server};
    Program windowManager{u"env"_s, onThisServer({u"openbox"_s, u"--sm-disable"_s})};
    const TemporaryFolder folder;
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

TEST_F(X11WindowHiderTest, TheWindowsOfWhatWasStartedAreIconifiedAndNoOthers) {
    ASSERT_TRUE(
        eventually([this] { return !client.words(client.root(), "_NET_SUPPORTED").empty(); }));
    const Program other(u"env"_s, onThisServer({u"xterm"_s}));
    ASSERT_TRUE(eventually([this] { return windows() == std::pair(1, 0); }));
    // The first window is of a child, as where a script starts a browser.
    launch("sh -c \"xterm & sleep 0.3; exec xterm\"");
    EXPECT_EQ(completions, 0);
    EXPECT_TRUE(eventually([this] { return completions == 1; }));
    EXPECT_TRUE(eventually([this] { return windows() == std::pair(1, 2); }));

    loop.advance(2);
    EXPECT_EQ(loop.armedCount(), 0U) << "from now on its windows are the person's";
    ::kill(static_cast<pid_t>(started.back()), SIGKILL);
    loop.advance(10);
    EXPECT_EQ(completions, 1);
}

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
