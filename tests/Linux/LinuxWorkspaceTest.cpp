#include "Linux/LinuxWorkspace.h"

#include "Testing.h"

using namespace orvanta;

namespace {

class ScriptedWindowWatcher final : public WindowWatcher {
public:
    ScriptedWindowWatcher()
        : WindowWatcher(State::Watching) {}

    void show(const QString& wmClass, qint64 process, quint64 id = 1) {
        Window window;
        window.id = id;
        window.wmClass = wmClass;
        window.processIdentifier = process;
        setActiveWindow(window);
    }
    using WindowWatcher::setActiveWindow;
};

TEST(LinuxWorkspaceTest, AnotherApplicationIsAnnouncedAnotherWindowIsNot) {
    // No process has these numbers.
    constexpr qint64 first = 1'000'000'001;
    constexpr qint64 second = 1'000'000'002;
    constexpr qint64 own = 1'000'000'003;
    const TemporaryFolder applications;
    applications.writeEntry(u"org.example.App"_s);
    DesktopEntries entries{{applications.path()}};
    NotificationCenter notifications;
    ScriptedWindowWatcher watcher;
    watcher.show(u"Before"_s, first);
    const LinuxWorkspace workspace{watcher, entries, notifications, own, u"own"_s};
    const auto frontmost = [&] {
        const auto* application = workspace.frontmostApplication();
        return application != nullptr ? application->bundleIdentifier : u"none"_s;
    };
    std::vector<QString> announced;
    notifications.addObserver(Notification::DidActivateApplication,
                              [&] { announced.push_back(frontmost()); });

    EXPECT_EQ(frontmost(), u"Before"_s);
    watcher.show(u"A"_s, first);
    watcher.show(u"A"_s, first, 2);
    watcher.show(u"A"_s, second, 2);
    watcher.show(u"B"_s, second, 2);
    watcher.show(u"Whatever"_s, own);
    watcher.setActiveWindow(std::nullopt);
    EXPECT_THAT(announced, testing::ElementsAre(u"A"_s, u"A"_s, u"B"_s, u"own"_s, u"none"_s));

    EXPECT_EQ(workspace.installLocation(u"org.example.App"_s),
              applications.path(u"org.example.App.desktop"_s));
    EXPECT_TRUE(workspace.isSystemComponent(u"xfdesktop"_s));
    EXPECT_FALSE(workspace.isSystemComponent(u"org.example.App"_s));
}

} // namespace
