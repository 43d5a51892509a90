#include "Linux/Windows/ListedWindowWatcher.h"

#include "PlasmaWindows.h"
#include "TaskBar.h"
#include "WatcherContract.h"

using namespace orvanta;

namespace {

/// By the list of wlroots.
class ListedRoute : public WatcherRoute {
protected:
    void watch() {
        bar.awaitAnother();
        watcher = std::make_unique<ListedWindowWatcher>(compositor.name());
        ASSERT_TRUE(eventually([&] { return bar.isBound(); }));
        ASSERT_EQ(watcher->state(), State::Watching);
    }
    void show(const QString& name) {
        wl_resource* const last = std::exchange(shown, nullptr);
        if (name != u"none"_s) {
            auto& handle = windows[name];
            shown = handle = handle ? handle : bar.add(qPrintable(name));
            bar.setActive(handle, true);
        }
        if (last && last != shown) {
            bar.setActive(last, false); // Only after the next one was told to be active.
        }
    }
    void end() { compositor.dropClients(); }

    const std::optional<qint64> process;
    Compositor compositor;
    TaskBar bar{compositor};
    std::map<QString, wl_resource*> windows;
    wl_resource* shown = nullptr;
};

class PlasmaRoute : public WatcherRoute {
protected:
    void watch() {
        watcher = std::make_unique<ListedWindowWatcher>(compositor.name());
        ASSERT_TRUE(eventually([&] { return list.isBound(); }));
        ASSERT_EQ(watcher->state(), State::Watching);
    }
    void appear(const QString& name) {
        if (!list.window(name.toStdString())) {
            list.announce(qPrintable(name));
            ASSERT_TRUE(eventually([&] { return list.window(name.toStdString()) != nullptr; }));
            list.tell(name.toStdString(), qPrintable(name), 4711, false);
        }
    }
    void show(const QString& name) {
        const QString last = std::exchange(shown, name);
        if (name != u"none"_s) {
            appear(name);
            list.setActive(name.toStdString(), true);
        }
        if (last != u"none"_s && last != shown) {
            list.setActive(last.toStdString(), false);
        }
    }
    void end() { compositor.dropClients(); }

    const std::optional<qint64> process = 4711;
    Compositor compositor;
    PlasmaWindows list{compositor};
    QString shown = u"none"_s;
};

using Routes = testing::Types<ListedRoute, PlasmaRoute>;
INSTANTIATE_TYPED_TEST_SUITE_P(Listed, WatcherContract, Routes);

TEST_F(ListedRoute, TheWindowThatWasActivatedLastCounts) {
    watch();
    show(u"editor"_s);
    ASSERT_TRUE(becomes(u"editor"_s));
    const auto first = watcher->activeWindow()->id;
    wl_resource* second = bar.add("editor", true); // Another of the same application.
    ASSERT_TRUE(eventually([&] { return watcher->activeWindow()->id != first; }));
    show(u"mail"_s);
    ASSERT_TRUE(becomes(u"mail"_s));

    // What is not yet done does not hold; a locker takes the activation from every window.
    wl_resource* mail = windows[u"mail"_s];
    TaskBar::sendState(mail, false);
    zwlr_foreign_toplevel_handle_v1_send_app_id(mail, "correio");
    bar.setActive(second, false);
    EXPECT_EQ(active(), u"mail"_s);
    zwlr_foreign_toplevel_handle_v1_send_done(mail);
    compositor.flush();
    ASSERT_TRUE(becomes(u"none"_s));
    bar.setActive(mail, true);
    ASSERT_TRUE(becomes(u"correio"_s));
    bar.close(mail);
    EXPECT_TRUE(becomes(u"none"_s));
}

TEST_F(ListedRoute, HostileNamesDoNoHarm) {
    watch();
    for (const auto& [name, expected] : {std::pair(QByteArray(), QString()),
                                         {"\xff\xfe", QString::fromUtf8("\xff\xfe")},
                                         {QByteArray(3000, 'x'), QString()}}) {
        bar.add(name.constData(), true);
        ASSERT_TRUE(becomes(expected));
    }
}

TEST_F(ListedRoute, AListThatIsWithdrawnOrBreaksIsNoWindow) {
    watch();
    bar.add("editor", true);
    ASSERT_TRUE(becomes(u"editor"_s));
    bar.finish();
    ASSERT_TRUE(becomes(State::Unsupported));
    EXPECT_EQ(active(), u"none"_s);

    watch();
    wl_resource* editor = bar.add("editor", true);
    ASSERT_TRUE(becomes(u"editor"_s)); // libwayland leaks what it has not handed on by then.
    wl_resource_post_error(editor, 1, "of the test");
    compositor.flush();
    EXPECT_TRUE(becomes(State::Ended));
}

TEST(ListedWindowWatcherAloneTest, WhereNoListIsOfferedItIsUnsupported) {
    EXPECT_EQ(ListedWindowWatcher("/nonexistent/wayland-0").state(), WindowWatching::Unsupported);
    Compositor compositor;
    ListedWindowWatcher watcher(compositor.name());
    EXPECT_EQ(watcher.state(), WindowWatching::Waiting);
    EXPECT_TRUE(eventually([&] { return watcher.state() == WindowWatching::Unsupported; }));
}

TEST_F(PlasmaRoute, WindowsComeAndGoInAnyOrder) {
    watch();
    show(u"{1}"_s);
    ASSERT_TRUE(becomes(u"{1}"_s));
    const Window first = *watcher->activeWindow();
    // The next one is told of its name late.
    list.announce("{2}");
    ASSERT_TRUE(eventually([&] { return list.window("{2}") != nullptr; }));
    list.setActive("{2}", true);
    ASSERT_TRUE(becomes(QString()));
    list.setActive("{1}", false);
    list.tell("{2}", "xterm", 0, true);
    ASSERT_TRUE(becomes(u"xterm"_s));
    EXPECT_EQ(watcher->activeWindow()->processIdentifier, std::nullopt);
    list.setActive("{1}", true);
    list.unmap("{2}");
    ASSERT_TRUE(becomes(u"{1}"_s));
    EXPECT_EQ(watcher->activeWindow(), first);
    list.unmap("{1}");
    EXPECT_TRUE(becomes(u"none"_s));
}

} // namespace
