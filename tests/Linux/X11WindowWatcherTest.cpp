#include "Linux/Windows/X11WindowWatcher.h"

#include "Linux/MainLoop/QtMainLoop.h"
#include "Testing.h"
#include "WatcherContract.h"
#include "XServer.h"

using namespace orvanta;
using namespace std::string_literals;

namespace {

class X11Route : public WatcherRoute {
protected:
    // What a window manager says, exactly as a test dictates.
    void manageWindows() {
        support({"_NET_SUPPORTED", "_NET_ACTIVE_WINDOW"});
        client.set(client.root(), "_NET_SUPPORTING_WM_CHECK", "WINDOW", {check});
        pointTo(check);
    }
    void support(const std::vector<std::string_view>& hints) {
        std::vector<uint32_t> atoms;
        for (const auto& hint : hints) {
            atoms.push_back(client.atom(hint));
        }
        client.set(client.root(), "_NET_SUPPORTED", "ATOM", atoms);
    }
    /// What the check window says of itself.
    void pointTo(xcb_window_t window) {
        client.set(check, "_NET_SUPPORTING_WM_CHECK", "WINDOW", {window});
    }
    void setActive(xcb_window_t window) {
        client.set(client.root(), "_NET_ACTIVE_WINDOW", "WINDOW", {window});
    }
    void setClients(const std::vector<uint32_t>& all) {
        client.set(client.root(), "_NET_CLIENT_LIST", "WINDOW", all);
    }

    void make() { watcher = std::make_unique<X11WindowWatcher>(server.display(), loop); }
    void watch() {
        manageWindows();
        make();
        ASSERT_EQ(watcher->state(), State::Watching);
        ASSERT_EQ(loop.armedCount(), 0U);
    }
    void show(const QString& name) {
        if (name != u"none"_s && !windows.contains(name)) {
            windows[name] = client.create("instance", name.toStdString());
        }
        setActive(windows[name]); // 0 for none
    }
    void end() { server.kill(); }
    /// "None" is held back until it has stood a while.
    bool noneIsPending() {
        return eventually([&] { return loop.armedCount() == 1; });
    }
    bool becomesNone() { return noneIsPending() && becomes(u"none"_s); }
    /// Shows a window and sees it, so that what came before has been read.
    void showMarker() {
        show(u"Marker"_s);
        ASSERT_TRUE(becomes(u"Marker"_s));
    }

    const std::optional<qint64> process = ::getpid(); ///< as the server knows
    XServer server;
    XClient client{server};
    const xcb_window_t check = client.create(client.newId());
    std::map<QString, xcb_window_t> windows;
};
INSTANTIATE_TYPED_TEST_SUITE_P(X11, WatcherContract, X11Route);

TEST_F(X11Route, AWindowIsReadWithItsIdentity) {
    watch();
    const auto window = client.create("instance", "Klass");
    client.setText(window, "_GTK_APPLICATION_ID", "UTF8_STRING", "org.example.App");
    client.setText(window, "_KDE_NET_WM_DESKTOP_FILE", "UTF8_STRING", "org.example.file");
    client.set(window, "_NET_WM_PID", "CARDINAL", {1}); // The server knows better.
    setActive(window);
    watcher->update(); // Who cannot wait asks.
    EXPECT_EQ(watcher->activeWindow(),
              (Window{window, u"instance"_s, u"Klass"_s, u"org.example.App"_s,
                      u"org.example.file"_s, process}));
}

TEST_F(X11Route, NoneBetweenTwoWindowsIsNoise) {
    watch();
    showMarker();
    QStringList seen;
    QObject::connect(watcher.get(), &WindowWatcher::activeWindowChanged, [&] { seen += active(); });
    setActive(XCB_WINDOW_NONE);
    ASSERT_TRUE(noneIsPending());
    loop.advance(0.09);
    setActive(client.create("b", "B"));
    ASSERT_TRUE(eventually([&] { return active() == u"B"_s; }));
    EXPECT_EQ(loop.armedCount(), 0U);
    setActive(XCB_WINDOW_NONE);
    EXPECT_TRUE(becomesNone());
    EXPECT_EQ(seen, (QStringList{u"B"_s, u"none"_s}));
    watcher->disconnect();
}

TEST_F(X11Route, WhatIsNoWindowOfAnApplicationIsNone) {
    watch();
    const auto typed = [&](const char* type) {
        const auto window = client.create("typed", "Typed");
        client.set(window, "_NET_WM_WINDOW_TYPE", "ATOM", {client.atom(type)});
        return window;
    };
    const auto destroyed = client.create("gone", "Gone");
    client.destroy(destroyed);
    for (const xcb_window_t window :
         {typed("_NET_WM_WINDOW_TYPE_DESKTOP"), typed("_NET_WM_WINDOW_TYPE_DOCK"), client.root(),
          check, destroyed, xcb_window_t{0xdeadbeef}}) {
        showMarker();
        setActive(window);
        EXPECT_TRUE(becomesNone()) << window;
    }
    // A closed window's id may be left behind.
    const auto normal = typed("_NET_WM_WINDOW_TYPE_NORMAL");
    setClients({normal});
    setActive(normal);
    ASSERT_TRUE(becomes(u"Typed"_s));
    setClients({});
    EXPECT_TRUE(becomesNone());
}

TEST_F(X11Route, AClassThatComesLateIsSeenAlsoUnderAReusedId) {
    watch();
    const auto id = client.newId();
    for (const char* wmClass : {"First", "Second"}) {
        client.create(id);
        setActive(id);
        ASSERT_TRUE(becomes(QString()));
        client.setText(id, "WM_NAME", "STRING", "title");
        client.setClass(id, wmClass, wmClass);
        ASSERT_TRUE(becomes(QString::fromLatin1(wmClass)));
        client.destroy(id);
    }
}

TEST_F(X11Route, HostileClassesDoNoHarm) {
    watch();
    const auto window = client.create(client.newId());
    struct Row {
        std::string bytes;
        QString instance;
        const char* wmClass;
        std::string_view type = "STRING";
        uint8_t format = 8;
    };
    for (const Row& row :
         {Row{"a\0B"s, u"a"_s, "B"},
          {"alone"s, u"alone"_s, ""},
          {"caf\xc3\xa9\0B\0"s, u"café"_s, "B", "UTF8_STRING"},
          {"caf\xe9\0B\0"s, u"café"_s, "B"},
          {std::string(1021, 'a') + "\0B\0"s, QString(1021, u'a'), "B"}, // The longest.
          {std::string(1 << 20, 'x'), {}, ""},
          {std::string(64, 'x'), {}, "", "STRING", 32},
          {"a\0B\0"s, {}, "", "CARDINAL"}}) {
        SCOPED_TRACE(row.bytes.substr(0, 10));
        showMarker();
        client.set(window, "WM_CLASS", row.type, row.format, row.bytes.data(),
                   row.bytes.size() / (row.format / 8));
        setActive(window);
        ASSERT_TRUE(becomes(QString::fromLatin1(row.wmClass)));
        EXPECT_EQ(watcher->activeWindow()->wmInstance, row.instance);
    }
}

TEST_F(X11Route, AWindowManagerMustBeAliveAndTellTheActiveWindow) {
    // What a window manager that was killed may leave behind, and one that is half there.
    for (const xcb_window_t left : {xcb_window_t{0xdeadbeef}, client.root()}) {
        client.set(client.root(), "_NET_SUPPORTING_WM_CHECK", "WINDOW", {left});
        make();
        EXPECT_EQ(watcher->state(), State::Waiting);
    }
    loop.advance(9.99);
    EXPECT_EQ(watcher->state(), State::Waiting);
    loop.advance(0.01);
    EXPECT_EQ(watcher->state(), State::Unsupported);
    manageWindows(); // It may come later still.
    ASSERT_TRUE(becomes(State::Watching));
    EXPECT_EQ(loop.armedCount(), 0U);
    support({"_NET_SUPPORTED"});
    ASSERT_TRUE(becomes(State::Waiting));
    support({"_NET_ACTIVE_WINDOW"});
    ASSERT_TRUE(becomes(State::Watching));
}

TEST_F(X11Route, AFloodOfChangesStarvesNobody) {
    watch();
    const auto a = client.create("a", "A");
    bool served = false;
    int round = 0;
    // Each read of the watcher finds another change that came in meanwhile.
    QObject::connect(watcher.get(), &WindowWatcher::activeWindowChanged, [&] {
        if (!served && ++round < 10'000) {
            client.setClass(a, "a", std::to_string(round));
            setActive(a);
        }
    });
    const auto timer = QtMainLoop().once(MainLoop::Duration(0.02), [&] { served = true; });
    setActive(a);
    ASSERT_TRUE(eventually([&] { return served; }));
    EXPECT_LT(round, 10'000);
}

} // namespace
