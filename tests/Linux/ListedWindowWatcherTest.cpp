#include "Linux/Windows/ListedWindowWatcher.h"

#include "Eventually.h"
#include "Fakes/QtPrinters.h"
#include "PlasmaWindows.h"
#include "TaskBar.h"

#include <gmock/gmock.h>

#include <optional>
#include <string>

using namespace orvanta;
using namespace Qt::StringLiterals;
using State = WindowWatcher::State;

namespace {

class ListedWindowWatcherTest : public testing::Test {
protected:
    void watch() {
        bar.awaitAnother();
        watcher.emplace(compositor.name());
        ASSERT_TRUE(eventually([&] { return bar.isBound(); }));
        ASSERT_EQ(watcher->state(), State::Watching);
    }
    QString active() const {
        return watcher->activeWindow() ? watcher->activeWindow()->wmClass : u"none"_s;
    }
    bool becomes(const QString& appId) {
        return eventually([&] { return active() == appId; });
    }
    bool becomes(State state) {
        return eventually([&] { return watcher->state() == state; });
    }

    Compositor compositor;
    TaskBar bar{compositor};
    std::optional<ListedWindowWatcher> watcher;
};

TEST_F(ListedWindowWatcherTest, TheWindowThatWasActivatedLastCounts) {
    watch();
    wl_resource* editor = bar.add("editor", true);
    ASSERT_TRUE(becomes(u"editor"_s));
    const auto first = watcher->activeWindow()->id;
    std::vector<QString> seen;
    QObject::connect(&*watcher, &WindowWatcher::activeWindowChanged, &*watcher,
                     [&] { seen.push_back(active()); });

    // A second one of the same application; the first is told to be inactive only afterwards.
    wl_resource* second = bar.add("editor", true);
    ASSERT_TRUE(eventually([&] { return watcher->activeWindow()->id != first; }));
    bar.setActive(editor, false);
    wl_resource* mail = bar.add("mail", true);
    bar.setActive(second, false);
    ASSERT_TRUE(becomes(u"mail"_s));
    bar.setActive(editor, true);
    bar.setActive(mail, false);
    ASSERT_TRUE(becomes(u"editor"_s));
    EXPECT_EQ(watcher->activeWindow()->id, first);

    // What is not yet done does not hold; a locker takes the activation from every window.
    TaskBar::sendState(editor, false);
    zwlr_foreign_toplevel_handle_v1_send_app_id(mail, "correio");
    bar.setActive(mail, false);
    bar.setActive(second, false);
    EXPECT_EQ(active(), u"editor"_s);
    zwlr_foreign_toplevel_handle_v1_send_done(editor);
    compositor.flush();
    ASSERT_TRUE(becomes(u"none"_s));
    bar.setActive(mail, true);
    ASSERT_TRUE(becomes(u"correio"_s));
    bar.close(mail);
    ASSERT_TRUE(becomes(u"none"_s));
    EXPECT_THAT(seen, testing::ElementsAre(u"editor"_s, u"mail"_s, u"editor"_s, u"none"_s,
                                           u"correio"_s, u"none"_s));
}

TEST_F(ListedWindowWatcherTest, HostileNamesDoNoHarm) {
    watch();
    bar.add("", true);
    ASSERT_TRUE(becomes(QString()));
    bar.add("\xff\xfe", true);
    ASSERT_TRUE(becomes(QString::fromUtf8("\xff\xfe")));
    bar.add(std::string(3000, 'x').c_str(), true);
    ASSERT_TRUE(becomes(QString(3000, u'x')));
}

TEST_F(ListedWindowWatcherTest, AListThatIsWithdrawnOrACompositorThatGoesIsNoWindow) {
    watch();
    bar.add("editor", true);
    ASSERT_TRUE(becomes(u"editor"_s));
    bar.finish();
    ASSERT_TRUE(becomes(State::Unsupported));
    EXPECT_EQ(active(), u"none"_s);

    watch();
    bar.add("editor", true);
    ASSERT_TRUE(becomes(u"editor"_s));
    compositor.dropClients();
    ASSERT_TRUE(becomes(State::Ended));
    EXPECT_EQ(active(), u"none"_s);

    watch();
    wl_resource* editor = bar.add("editor", true);
    ASSERT_TRUE(becomes(u"editor"_s)); // libwayland leaks what it has not handed on by then.
    wl_resource_post_error(editor, 1, "of the test");
    compositor.flush();
    ASSERT_TRUE(becomes(State::Ended));
}

TEST(ListedWindowWatcherAloneTest, WhereNoListIsOfferedItIsUnsupported) {
    ListedWindowWatcher nobody("/nonexistent/wayland-0");
    EXPECT_EQ(nobody.state(), State::Unsupported);
    Compositor compositor;
    ListedWindowWatcher watcher(compositor.name());
    EXPECT_EQ(watcher.state(), State::Waiting);
    EXPECT_TRUE(eventually([&] { return watcher.state() == State::Unsupported; }));
}

TEST(ListedWindowWatcherPlasmaTest, WindowsComeAndGoInAnyOrder) {
    Compositor compositor;
    PlasmaWindows windows(compositor);
    ListedWindowWatcher watcher(compositor.name());
    ASSERT_TRUE(eventually([&] { return windows.isBound(); }));
    const auto appears = [&](const char* uuid) {
        windows.announce(uuid);
        return eventually([&] { return windows.window(uuid) != nullptr; });
    };
    const auto becomes = [&](const QString& appId) {
        return eventually([&] {
            return (watcher.activeWindow() ? watcher.activeWindow()->wmClass : u"none"_s) == appId;
        });
    };
    ASSERT_TRUE(appears("{1}") && appears("{2}"));
    windows.tell("{1}", "org.kde.dolphin", 4711, true);
    ASSERT_TRUE(becomes(u"org.kde.dolphin"_s));
    const Window dolphin = *watcher.activeWindow();
    EXPECT_EQ(dolphin.processIdentifier, 4711);

    // The next one is active before the last one is not, and is told of its name late.
    windows.setActive("{2}", true);
    ASSERT_TRUE(becomes(QString()));
    windows.setActive("{1}", false);
    windows.tell("{2}", "xterm", 0, true);
    ASSERT_TRUE(becomes(u"xterm"_s));
    EXPECT_EQ(watcher.activeWindow()->processIdentifier, std::nullopt);
    windows.setActive("{1}", true);
    windows.unmap("{2}");
    ASSERT_TRUE(becomes(u"org.kde.dolphin"_s));
    EXPECT_EQ(watcher.activeWindow(), dolphin);
    windows.unmap("{1}");
    ASSERT_TRUE(becomes(u"none"_s));
    EXPECT_EQ(watcher.state(), State::Watching);
}

} // namespace
