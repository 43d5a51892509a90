#include "Linux/LinuxWorkspace.h"

#include "Applications.h"

#include <gmock/gmock.h>

namespace orvanta {

namespace {

class ScriptedWindowWatcher final : public WindowWatcher {
public:
    ScriptedWindowWatcher()
        : WindowWatcher(State::Watching) {}

    void show(const char* wmClass, std::optional<qint64> process, quint64 id = 1) {
        Window window;
        window.id = id;
        window.wmClass = QString::fromUtf8(wmClass);
        window.processIdentifier = process;
        setActiveWindow(window);
    }
    void showNone() { setActiveWindow(std::nullopt); }
};

class LinuxWorkspaceTest : public testing::Test {
protected:
    LinuxWorkspaceTest() {
        notifications.addObserver(Notification::DidActivateApplication, [this] { ++announced; });
    }

    QString frontmost() const {
        const auto* application = workspace.frontmostApplication();
        return application != nullptr ? application->bundleIdentifier : QStringLiteral("none");
    }

    // No process has these numbers.
    static constexpr qint64 first = 1'000'000'001;
    static constexpr qint64 second = 1'000'000'002;
    static constexpr qint64 own = 1'000'000'003;

    TemporaryFolder applications;
    DesktopEntries entries{{applications.path()}};
    NotificationCenter notifications;
    ScriptedWindowWatcher watcher;
    LinuxWorkspace workspace{watcher, entries, notifications, own,
                             QStringLiteral("com.brindlework.orvanta")};
    int announced = 0;
};

TEST_F(LinuxWorkspaceTest, AnotherApplicationIsAnnouncedAnotherWindowIsNot) {
    EXPECT_EQ(frontmost(), QStringLiteral("none"));
    watcher.show("A", first);
    EXPECT_EQ(announced, 1);
    EXPECT_EQ(frontmost(), QStringLiteral("A"));
    watcher.show("A", first, 2);
    EXPECT_EQ(announced, 1);
    watcher.show("A", second, 2);
    EXPECT_EQ(announced, 2);
    EXPECT_EQ(workspace.frontmostApplication()->processIdentifier, second);
    watcher.show("B", second, 2);
    EXPECT_EQ(announced, 3);
    watcher.showNone();
    EXPECT_EQ(announced, 4);
    EXPECT_EQ(frontmost(), QStringLiteral("none"));
}

TEST_F(LinuxWorkspaceTest, ObserversAlreadySeeTheNewAnswer) {
    QString seen;
    notifications.addObserver(Notification::DidActivateApplication, [&] { seen = frontmost(); });
    watcher.show("A", first);
    EXPECT_EQ(seen, QStringLiteral("A"));
    watcher.show("Whatever", own);
    EXPECT_EQ(seen, workspace.ownBundleIdentifier());
}

TEST_F(LinuxWorkspaceTest, AWindowFromBeforeAnyQuestionIsIdentifiedWhenAsked) {
    watcher.show("A", first);
    LinuxWorkspace late{watcher, entries, notifications, own, QStringLiteral("own")};
    EXPECT_EQ(late.frontmostApplication()->bundleIdentifier, QStringLiteral("A"));
}

TEST_F(LinuxWorkspaceTest, ItAnswersForIdentifiers) {
    applications.writeEntry(QStringLiteral("org.example.App"));
    EXPECT_EQ(workspace.installLocation(QStringLiteral("org.example.App")),
              applications.path(QStringLiteral("org.example.App.desktop")));
    EXPECT_EQ(workspace.installLocation(QStringLiteral("org.example.Other")), std::nullopt);
    EXPECT_TRUE(workspace.isSystemComponent(QStringLiteral("xfdesktop")));
    EXPECT_FALSE(workspace.isSystemComponent(workspace.ownBundleIdentifier()));
}

} // namespace

} // namespace orvanta
