#include "Linux/Windows/SwayWindowWatcher.h"

#include "Eventually.h"
#include "Fakes/QtPrinters.h"
#include "TaskBar.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <optional>

using namespace orvanta;
using namespace Qt::StringLiterals;
using State = WindowWatcher::State;

namespace {

/// Sway's interface as far as it is used; its tree is whatever a test says.
class Sway {
public:
    Sway() {
        QObject::connect(&arrival_, &QSocketNotifier::activated, &arrival_, [this] {
            client_ = ::accept(listener_.descriptor(), nullptr, nullptr);
            readable_.emplace(client_, QSocketNotifier::Read);
            QObject::connect(&*readable_, &QSocketNotifier::activated, &*readable_,
                             [this] { receive(); });
        });
    }
    ~Sway() { drop(); }

    const QByteArray& path() const { return listener_.path(); }
    void send(uint32_t type, const QByteArray& text) {
        const auto length = static_cast<uint32_t>(text.size());
        sendBytes(QByteArray("i3-ipc") +
                  QByteArray(reinterpret_cast<const char*>(&length), sizeof length) +
                  QByteArray(reinterpret_cast<const char*>(&type), sizeof type) + text);
    }
    void sendBytes(const QByteArray& bytes) {
        for (qsizetype from = 0; from < bytes.size(); from += piece) {
            const QByteArray part = bytes.mid(from, piece);
            ASSERT_EQ(
                ::send(client_, part.constData(), static_cast<size_t>(part.size()), MSG_NOSIGNAL),
                part.size());
            QCoreApplication::processEvents();
        }
    }
    void drop() {
        readable_.reset();
        if (client_ >= 0) {
            ::close(std::exchange(client_, -1));
        }
    }

    QByteArray tree = "{}";
    bool answers = true;
    int asked = 0;             ///< for the tree
    qsizetype piece = 1 << 20; ///< of a message that is sent at a time

private:
    void receive() {
        char buffer[4096];
        const ssize_t size = ::recv(client_, buffer, sizeof buffer, 0);
        if (size <= 0) {
            drop();
            return;
        }
        bytes_.append(buffer, size);
        constexpr qsizetype header = 14;
        while (bytes_.size() >= header) {
            uint32_t length = 0;
            uint32_t type = 0;
            std::memcpy(&length, bytes_.constData() + 6, sizeof length);
            std::memcpy(&type, bytes_.constData() + 10, sizeof type);
            bytes_.remove(0, header + length);
            if (type == SwayConnection::GetTree) {
                ++asked;
                if (answers) {
                    send(type, tree);
                }
            }
        }
    }

    Listener listener_;
    QSocketNotifier arrival_{listener_.descriptor(), QSocketNotifier::Read};
    int client_ = -1;
    std::optional<QSocketNotifier> readable_;
    QByteArray bytes_;
};

/// In a workspace of a screen, beside a window without the focus.
QByteArray treeWith(const QByteArray& node) {
    return R"({"id": 1, "type": "root", "focused": false, "nodes": [{"id": 2, "type": "output",
        "focused": false, "nodes": [{"id": 3, "type": "workspace", "focused": false,
        "nodes": [{"id": 4, "focused": false, "pid": 44, "app_id": "other", "nodes": []}],
        "floating_nodes": [)" +
           node + "]}]}]}";
}
const QByteArray editor = treeWith(
    R"({"id": 7, "type": "floating_con", "focused": true, "pid": 77, "app_id": "editor"})");

class SwayWindowWatcherTest : public testing::Test {
protected:
    void watch(const QByteArray& tree) {
        sway.tree = tree;
        bar.awaitAnother();
        watcher.emplace(sway.path(), compositor.name());
        EXPECT_EQ(watcher->state(), State::Waiting);
        ASSERT_TRUE(becomes(State::Watching) && eventually([&] { return bar.isBound(); }));
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
    /// Which window it is stands in the tree alone.
    void focusMoves() { bar.add("moved", true); }
    void focusMovesTo(const QByteArray& node) {
        sway.tree = treeWith(node);
        focusMoves();
    }
    /// Nothing that was sent is still on its way.
    void settle() {
        focusMovesTo(R"({"id": 9, "focused": true, "pid": 99, "app_id": "marker"})");
        ASSERT_TRUE(becomes(u"marker"_s));
    }

    Compositor compositor;
    TaskBar bar{compositor};
    Sway sway;
    std::optional<SwayWindowWatcher> watcher;
};

TEST_F(SwayWindowWatcherTest, TheFocusedWindowIsReadWithItsIdentity) {
    watch(editor);
    EXPECT_EQ(watcher->activeWindow()->id, 7U);
    EXPECT_EQ(active(), u"editor"_s);
    EXPECT_EQ(watcher->activeWindow()->processIdentifier, 77);

    struct Row {
        QByteArray node;
        QString wmClass;
    };
    for (const Row& row :
         {Row{R"({"id": 5, "focused": true, "pid": 55, "app_id": null,
                  "window_properties": {"class": "XTerm", "instance": "xterm"}})",
              u"XTerm"_s},
          Row{R"({"id": 3, "type": "workspace", "focused": true, "nodes": []})", u"none"_s},
          Row{R"({"id": 6, "type": "con", "focused": true, "nodes": [{"id": 8, "pid": 88}]})",
              u"none"_s},
          Row{R"({"id": 5, "focused": false, "pid": 5})", u"none"_s},
          Row{R"({"id": 5, "focused": true, "pid": "5"})", u"none"_s},
          Row{R"({"id": 5, "focused": true, "pid": 5, "app_id": 5})", QString()}}) {
        settle();
        focusMovesTo(row.node);
        EXPECT_TRUE(becomes(row.wmClass)) << row.node.constData();
    }
    sway.tree = editor;
    sway.piece = 1; // Whatever the pieces that it comes in.
    focusMoves();
    EXPECT_TRUE(becomes(u"editor"_s));
}

TEST_F(SwayWindowWatcherTest, ItAsksOnceForAllThatHasHappenedMeanwhile) {
    watch(editor);
    settle();
    const int before = sway.asked;
    sway.answers = false;
    focusMoves();
    ASSERT_TRUE(eventually([&] { return sway.asked == before + 1; }));
    // Two more before the answer, which is of before them.
    for (int i = 0; i < 2; ++i) {
        focusMoves();
        QCoreApplication::processEvents(); // It is in the socket already.
    }
    sway.answers = true;
    sway.send(SwayConnection::GetTree, sway.tree);
    sway.tree = editor;
    EXPECT_TRUE(becomes(u"editor"_s));
    EXPECT_EQ(sway.asked, before + 2);
}

TEST_F(SwayWindowWatcherTest, WhatIsNotSwayIsNotBelieved) {
    for (const QByteArray& bytes : {QByteArray("HTTP/1.1 400 Bad Request"),
                                    QByteArray("i3-ipc\xff\xff\xff\xff\4\0\0\0", 14)}) {
        watch(editor);
        sway.sendBytes(bytes);
        EXPECT_TRUE(becomes(State::Ended));
        EXPECT_EQ(active(), u"none"_s);
    }
    watch(editor);
    sway.tree = "{\"focused\": tr";
    focusMoves();
    EXPECT_TRUE(becomes(State::Ended));
    EXPECT_EQ(active(), u"none"_s);

    watch(editor);
    sway.drop();
    EXPECT_TRUE(becomes(State::Ended));
    watch(editor);
    compositor.dropClients();
    EXPECT_TRUE(becomes(State::Ended));

    SwayWindowWatcher nobody("/nonexistent/sway.sock", compositor.name());
    EXPECT_EQ(nobody.state(), State::Unsupported);
    SwayWindowWatcher noDisplay(sway.path(), "/nonexistent/wayland-0");
    EXPECT_EQ(noDisplay.state(), State::Unsupported);
}

} // namespace
