#include "Linux/Windows/ListedWindowWatcher.h"

#include "TaskBar.h"
#include "WatcherContract.h"

using namespace orvanta;

namespace {

class ListedRoute : public WatcherRoute {
protected:
    void watch() {
        list.awaitAnother();
        watcher = std::make_unique<ListedWindowWatcher>(compositor.name());
        ASSERT_TRUE(eventually([&] { return list.isBound(); }));
        ASSERT_EQ(watcher->state(), State::Watching);
    }
    void show(const QString& name) {
        const QString last = std::exchange(visible, name);
        if (name != u"none"_s) {
            list.appear(name.toStdString());
            list.setActive(name.toStdString(), true);
        }
        if (last != u"none"_s && last != name) { // Only after the next one was told to be active.
            list.setActive(last.toStdString(), false);
        }
    }
    void end() { compositor.dropClients(); }

    const std::optional<qint64> process; ///< is not told
    Compositor compositor;
    TaskBar list{compositor};
    QString visible = u"none"_s;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Listed, WatcherContract, ListedRoute);

TEST_F(ListedRoute, TheWindowThatWasActivatedLastCounts) {
    watch();
    show(u"editor"_s);
    ASSERT_TRUE(becomes(u"editor"_s));
    const auto first = watcher->activeWindow()->id;
    wl_resource* second = list.add("editor", true); // Another of the same application.
    ASSERT_TRUE(eventually([&] { return watcher->activeWindow()->id != first; }));
    show(u"mail"_s);
    ASSERT_TRUE(becomes(u"mail"_s));
    list.setActive("editor", true);
    ASSERT_TRUE(becomes(u"editor"_s));
    list.setActive("editor", false);
    ASSERT_TRUE(becomes(u"mail"_s)) << "it is still active";

    // What is not yet done does not hold; a locker takes the activation from every window.
    wl_resource* mail = list.window("mail");
    TaskBar::sendState(mail, false);
    zwlr_foreign_toplevel_handle_v1_send_app_id(mail, "correio");
    list.setActive(second, false);
    EXPECT_EQ(active(), u"mail"_s);
    zwlr_foreign_toplevel_handle_v1_send_done(mail);
    compositor.flush();
    ASSERT_TRUE(becomes(u"none"_s));
    list.setActive(mail, true);
    ASSERT_TRUE(becomes(u"correio"_s));
    list.close(mail);
    EXPECT_TRUE(becomes(u"none"_s));
}

TEST_F(ListedRoute, HostileNamesDoNoHarm) {
    watch();
    for (const auto& [name, expected] : {std::pair(QByteArray(), QString()),
                                         {"\xff\xfe", QString::fromUtf8("\xff\xfe")},
                                         {QByteArray(3000, 'x'), QString(3000, u'x')}}) {
        list.add(name.constData(), true);
        ASSERT_TRUE(becomes(expected));
    }
}

TEST_F(ListedRoute, AListThatIsWithdrawnOrBreaksIsNoWindow) {
    watch();
    list.add("editor", true);
    ASSERT_TRUE(becomes(u"editor"_s));
    list.finish();
    ASSERT_TRUE(becomes(State::Unsupported));
    EXPECT_EQ(active(), u"none"_s);

    watch();
    wl_resource* editor = list.add("editor", true);
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

} // namespace
