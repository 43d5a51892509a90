#include "Fakes/HandMainLoop.h"
#include "Linux/LinuxWorkspace.h"
#include "Linux/Windows/X11WindowWatcher.h"
#include "XServer.h"

#include <QFile>

#include <gmock/gmock.h>
#include <unistd.h>

#include <optional>

namespace orvanta {

namespace {

using State = WindowWatcher::State;

/// The watcher and the workspace on a desktop of real programs.
class X11DesktopTest : public testing::Test {
protected:
    X11DesktopTest() {
        startWindowManager();
        EXPECT_TRUE(becomes(State::Watching));
    }

    /// Returns once it gives the focus to new windows: it announces itself earlier.
    void startWindowManager() {
        QFile::remove(started);
        windowManager = server.start(
            "openbox", {QStringLiteral("--startup"), QStringLiteral("touch ") + started});
        ASSERT_TRUE(eventually([this] { return QFile::exists(started); }));
    }

    bool becomes(State state) {
        return eventually([&] { return watcher.state() == state; });
    }
    bool becomesActive(xcb_window_t window) {
        return eventually(
            [&] { return watcher.activeWindow() && watcher.activeWindow()->id == window; });
    }
    bool becomesNone() {
        const bool pending = eventually([&] { return loop.armedCount() == 1; });
        loop.advance(1);
        return pending && !watcher.activeWindow();
    }
    xcb_window_t open(const char* wmClass) {
        const auto window = client.create(wmClass, wmClass);
        client.map(window);
        client.activate(window);
        return window;
    }
    const RunningApplication* application(const char* id) {
        const bool seen = eventually([&] {
            const auto* application = workspace.frontmostApplication();
            return application != nullptr && application->bundleIdentifier == QLatin1String(id);
        });
        return seen ? workspace.frontmostApplication() : nullptr;
    }

    XServer server;
    XClient client{server};
    HandMainLoop loop;
    X11WindowWatcher watcher{server.display(), loop};
    DesktopEntries entries{{QStringLiteral("/usr/share/applications")}};
    NotificationCenter notifications;
    LinuxWorkspace workspace{watcher, entries, notifications, ::getpid(), QStringLiteral("own.id")};
    QTemporaryDir folder;
    QString started = folder.filePath(QStringLiteral("started"));
    std::unique_ptr<Program> windowManager;
};

TEST_F(X11DesktopTest, FocusIsFollowedUntilTheLastWindowCloses) {
    const auto a = open("A");
    ASSERT_TRUE(becomesActive(a));
    const auto b = open("B");
    ASSERT_TRUE(becomesActive(b));
    EXPECT_EQ(watcher.activeWindow()->wmClass, QStringLiteral("B"));
    EXPECT_EQ(watcher.activeWindow()->processIdentifier, ::getpid());
    EXPECT_EQ(workspace.frontmostApplication()->bundleIdentifier, QStringLiteral("own.id"));
    client.activate(a);
    ASSERT_TRUE(becomesActive(a));
    client.destroy(b);
    client.destroy(a);
    EXPECT_TRUE(becomesNone());
    EXPECT_EQ(workspace.frontmostApplication(), nullptr);
}

TEST_F(X11DesktopTest, AWindowManagerThatIsKilledAndStartedAgainIsFollowed) {
    const auto a = open("A");
    ASSERT_TRUE(becomesActive(a));
    windowManager->kill();
    ASSERT_TRUE(becomes(State::Waiting));
    EXPECT_FALSE(watcher.activeWindow());
    startWindowManager();
    ASSERT_TRUE(becomes(State::Watching));
    client.activate(a);
    EXPECT_TRUE(becomesActive(a));
}

TEST_F(X11DesktopTest, TheServerTakesTheWatcherWithIt) {
    ASSERT_TRUE(becomesActive(open("A")));
    server.kill();
    EXPECT_TRUE(becomes(State::Ended));
    EXPECT_EQ(workspace.frontmostApplication(), nullptr);
}

TEST_F(X11DesktopTest, ATerminalIsRecognised) {
    const auto xterm = server.start("xterm");
    const auto* application = this->application("debian-xterm");
    ASSERT_NE(application, nullptr);
    EXPECT_EQ(application->localizedName, QStringLiteral("XTerm"));
    EXPECT_EQ(application->installLocation,
              QStringLiteral("/usr/share/applications/debian-xterm.desktop"));
    EXPECT_EQ(application->processIdentifier, xterm->id());
}

TEST_F(X11DesktopTest, AnEditorIsRecognisedAndItsEndSeen) {
    const auto mousepad = server.start("mousepad", {QStringLiteral("--disable-server")});
    const auto* application = this->application("org.xfce.mousepad");
    ASSERT_NE(application, nullptr);
    EXPECT_EQ(application->localizedName, QStringLiteral("Mousepad"));
    EXPECT_EQ(application->processIdentifier, mousepad->id());
    int announced = 0;
    notifications.addObserver(Notification::DidActivateApplication, [&] { ++announced; });
    mousepad->kill();
    EXPECT_TRUE(becomesNone());
    EXPECT_EQ(announced, 1);
}

} // namespace

} // namespace orvanta
