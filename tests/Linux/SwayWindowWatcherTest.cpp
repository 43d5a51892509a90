#include "Linux/Windows/SwayWindowWatcher.h"

#include "Sway.h"
#include "TaskBar.h"
#include "WatcherContract.h"

using namespace orvanta;

namespace {

constexpr auto getTree = SwayConnection::GetTree;

/// In a workspace of a screen, beside a window without the focus.
QByteArray treeWith(const QByteArray& node) {
    return R"({"id": 1, "type": "root", "focused": false, "nodes": [{"id": 2, "type": "output",
        "focused": false, "nodes": [{"id": 3, "type": "workspace", "focused": false,
        "nodes": [{"id": 4, "focused": false, "pid": 44, "app_id": "other", "nodes": []}],
        "floating_nodes": [)" +
           node + "]}]}]}";
}

class SwayRoute : public WatcherRoute {
protected:
    static QByteArray window(const QString& name) {
        return R"({"id": %1, "type": "floating_con", "focused": true, "pid": 77, "app_id": "%2"})"_ba
            .replace("%1", QByteArray::number(name.front().unicode()))
            .replace("%2", name.toUtf8());
    }
    void watch() {
        watcher.reset();
        sway.answer(getTree, treeWith(window(u"editor"_s)));
        bar.awaitAnother();
        watcher = std::make_unique<SwayWindowWatcher>(sway.path(), compositor.name());
        EXPECT_EQ(watcher->state(), State::Waiting);
        ASSERT_TRUE(becomes(State::Watching) && eventually([&] { return bar.isBound(); }));
        EXPECT_EQ(active(), u"editor"_s);
    }
    /// Which window it is stands in the tree alone.
    void focusMoves() { bar.add("moved", true); }
    void focusMovesTo(const QByteArray& node) {
        sway.answer(getTree, treeWith(node));
        focusMoves();
    }
    void show(const QString& name) {
        focusMovesTo(name == u"none"_s ? R"({"id": 3, "focused": true, "nodes": []})"_ba
                                       : window(name));
    }
    void end() { sway.drop(); }

    const std::optional<qint64> process = 77;
    Compositor compositor;
    TaskBar bar{compositor};
    Sway sway;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Sway, WatcherContract, SwayRoute);

TEST_F(SwayRoute, TheFocusedWindowIsReadWithItsIdentity) {
    watch();
    const std::pair<QByteArray, QString> rows[] = {
        {R"({"id": 5, "focused": true, "pid": 55, "app_id": null,
             "window_properties": {"class": "XTerm", "instance": "xterm"}})",
         u"XTerm"_s},
        {R"({"id": 6, "type": "con", "focused": true, "nodes": [{"id": 8, "pid": 88}]})",
         u"none"_s},
        {R"({"id": 5, "focused": false, "pid": 5})", u"none"_s},
        {R"({"id": 5, "focused": true, "pid": "5"})", u"none"_s},
        {R"({"id": 5, "focused": true, "pid": 5, "app_id": 5})", QString()}};
    for (const auto& [node, wmClass] : rows) {
        show(u"marker"_s);
        ASSERT_TRUE(becomes(u"marker"_s));
        focusMovesTo(node);
        EXPECT_TRUE(becomes(wmClass)) << node.constData();
    }
    EXPECT_EQ(watcher->activeWindow()->id, 5U);
}

TEST_F(SwayRoute, ItAsksOnceForAllThatHasHappenedMeanwhileAndReadsPieces) {
    watch();
    const size_t before = sway.asked(getTree).size();
    sway.ignore(getTree);
    focusMoves();
    ASSERT_TRUE(eventually([&] { return sway.asked(getTree).size() == before + 1; }));
    // Two more before the answer, which is of before them.
    for (int i = 0; i < 2; ++i) {
        focusMoves();
        QCoreApplication::processEvents(); // It is in the socket already.
    }
    sway.send(Sway::message(getTree, treeWith(window(u"stale"_s))));
    ASSERT_TRUE(eventually([&] { return sway.asked(getTree).size() == before + 2; }));
    EXPECT_EQ(active(), u"editor"_s);
    for (const char byte : Sway::message(getTree, treeWith(window(u"late"_s)))) {
        sway.send({&byte, 1});
        QCoreApplication::processEvents();
    }
    EXPECT_TRUE(becomes(u"late"_s));
    EXPECT_EQ(sway.asked(getTree).size(), before + 2);
}

TEST_F(SwayRoute, WhatIsNotSwayIsNotBelieved) {
    for (const QByteArray& bytes :
         {"HTTP/1.1 400 Bad Request"_ba, "i3-ipc\xff\xff\xff\xff\4\0\0\0"_ba,
          Sway::message(getTree, "{\"focused\": tr"), Sway::message(getTree, "[]")}) {
        watch();
        sway.ignore(getTree);
        focusMoves();
        sway.send(bytes);
        EXPECT_TRUE(becomes(State::Ended)) << bytes.constData();
        EXPECT_EQ(active(), u"none"_s);
    }
    watch();
    compositor.dropClients();
    EXPECT_TRUE(becomes(State::Ended));
    EXPECT_EQ(SwayWindowWatcher("/nonexistent/sway.sock", compositor.name()).state(),
              State::Unsupported);
    EXPECT_EQ(SwayWindowWatcher(sway.path(), "/nonexistent/wayland-0").state(), State::Unsupported);
}

} // namespace
