#include "Linux/Wayland/SwayShell.h"

#include "Compositor.h"
#include "Eventually.h"
#include "Fakes/HandMainLoop.h"
#include "Fakes/QtPrinters.h"
#include "Linux/Windows/SwayConnection.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <atomic>
#include <map>
#include <mutex>
#include <thread>

using namespace orvanta;
using namespace Qt::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Sway's interface on a thread of its own, as the caller waits for it. Answers whatever a test
/// says; where there is nothing, not at all.
class AnsweringSway {
public:
    ~AnsweringSway() {
        ::shutdown(listener_.descriptor(), SHUT_RDWR);
        thread_.join();
    }

    const QByteArray& path() const { return listener_.path(); }
    void answer(uint32_t type, const QByteArray& text) {
        const std::scoped_lock lock(mutex_);
        answers_[type] = text;
    }
    std::vector<QByteArray> commands() const {
        const std::scoped_lock lock(mutex_);
        return commands_;
    }

private:
    void serve() {
        for (int client = 0; (client = ::accept(listener_.descriptor(), nullptr, nullptr)) >= 0;) {
            std::array<char, 14> header{};
            while (::recv(client, header.data(), header.size(), MSG_WAITALL) ==
                   static_cast<ssize_t>(header.size())) {
                uint32_t length = 0;
                uint32_t type = 0;
                std::memcpy(&length, header.data() + 6, sizeof length);
                std::memcpy(&type, header.data() + 10, sizeof type);
                QByteArray text(length, '\0');
                if (length > 0) { // For nothing it would wait.
                    ::recv(client, text.data(), length, MSG_WAITALL);
                }
                reply(client, type, text);
            }
            ::close(client);
        }
    }
    void reply(int client, uint32_t type, const QByteArray& text) {
        const std::scoped_lock lock(mutex_);
        if (type == SwayConnection::RunCommand) {
            commands_.push_back(text);
        }
        const auto found = answers_.find(type);
        if (found == answers_.end()) {
            return;
        }
        const auto length = static_cast<uint32_t>(found->second.size());
        const QByteArray message =
            QByteArray("i3-ipc") +
            QByteArray(reinterpret_cast<const char*>(&length), sizeof length) +
            QByteArray(reinterpret_cast<const char*>(&type), sizeof type) + found->second;
        ::send(client, message.constData(), static_cast<size_t>(message.size()), MSG_NOSIGNAL);
    }

    Listener listener_;
    mutable std::mutex mutex_;
    std::map<uint32_t, QByteArray> answers_;
    std::vector<QByteArray> commands_;
    std::thread thread_{[this] {
        serve();
    }};
};

class SwayShellTest : public testing::Test {
protected:
    void outputsAre(const QByteArray& outputs, const QByteArray& workspaces) {
        sway.answer(SwayConnection::GetOutputs, outputs);
        sway.answer(SwayConnection::GetWorkspaces, workspaces);
    }
    /// Whether sway has been asked so often, and its last answer has been read.
    bool isAsked(size_t times) {
        return eventually([&] { return sway.commands().size() == times; }) &&
               eventually([&] { return loop.armedCount() == 1; });
    }

    AnsweringSway sway;
    HandMainLoop loop;
    SwayShell shell{sway.path(), loop};
};

TEST_F(SwayShellTest, TheFocusedOutputComesFirstWithWhatItsBarsLeave) {
    outputsAre(R"([{"name": "A", "active": true, "focused": false,
                    "rect": {"x": 0, "y": 0, "width": 1280, "height": 800}},
                   {"name": "B", "active": true, "focused": true,
                    "rect": {"x": 1280, "y": 0, "width": 1920, "height": 1080}},
                   {"name": "off", "active": false, "rect": {"width": 5, "height": 5}},
                   {"name": "bare", "active": true,
                    "rect": {"x": 0, "y": 800, "width": 100, "height": 100}}])",
               R"([{"visible": false, "output": "B", "rect": {"width": 1, "height": 1}},
                   {"visible": true, "output": "B",
                    "rect": {"x": 1280, "y": 28, "width": 1920, "height": 1052}},
                   {"visible": true, "output": "A",
                    "rect": {"x": 0, "y": 0, "width": 1280, "height": 770}}])");
    EXPECT_THAT(shell.screenAreas(),
                ElementsAre(ScreenArea{{1280, 0, 1920, 1080}, {1280, 28, 1920, 1052}},
                            ScreenArea{{0, 0, 1280, 800}, {0, 0, 1280, 770}},
                            ScreenArea{{0, 800, 100, 100}, {0, 800, 100, 100}}));
}

TEST_F(SwayShellTest, WhatMakesNoSenseAndWhatDoesNotComeLeavesNoOutput) {
    EXPECT_THAT(shell.screenAreas(), IsEmpty()) << "no answer";
    outputsAre("{", "]");
    EXPECT_THAT(shell.screenAreas(), IsEmpty());
    outputsAre(R"([5, {"active": true}, {"active": true, "rect": {"width": "9", "height": 9}}])",
               "{}");
    EXPECT_THAT(shell.screenAreas(), IsEmpty());
    EXPECT_THAT(SwayShell("/nobody/listens", loop).screenAreas(), IsEmpty());
    EXPECT_THAT(SwayShell({}, loop).screenAreas(), IsEmpty());
}

TEST_F(SwayShellTest, AWindowIsMovedAsSoonAsSwayKnowsIt) {
    sway.answer(SwayConnection::RunCommand,
                R"([{"success": false, "error": "No matching node."}])");
    shell.place(u"a.b"_s, {960, 28});
    ASSERT_TRUE(isAsked(1));
    EXPECT_EQ(sway.commands().front(),
              "[pid=" + QByteArray::number(QCoreApplication::applicationPid()) +
                  R"( title="^a\.b$"] floating enable, move absolute position 960 px 28 px)");
    loop.advance(0.01);
    ASSERT_TRUE(isAsked(2));

    sway.answer(SwayConnection::RunCommand, R"([{"success": true}, {"success": true}])");
    loop.advance(0.01);
    ASSERT_TRUE(isAsked(3));
    loop.advance(10);
    EXPECT_EQ(loop.armedCount(), 0);
}

TEST_F(SwayShellTest, ItIsForgottenWhenItDoesNotComeOrSwayMakesNoSense) {
    sway.answer(SwayConnection::RunCommand, "[{}, 5]");
    shell.place(u"orvanta"_s, {0, 0});
    size_t asked = 1;
    while (isAsked(asked) && asked < 199) {
        loop.advance(0.01);
        ++asked;
    }
    sway.answer(SwayConnection::RunCommand, "");
    loop.advance(0.01);
    ASSERT_TRUE(isAsked(200));
    loop.advance(10);
    EXPECT_EQ(loop.armedCount(), 0);
    shell.place(u"orvanta"_s, {0, 0}); // The next one is asked about again.
    EXPECT_TRUE(isAsked(201));
    SwayShell({}, loop).place(u"orvanta"_s, {0, 0});
}

} // namespace
