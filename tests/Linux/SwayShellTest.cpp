#include "Linux/Wayland/SwayShell.h"

#include "Sway.h"
#include "Testing.h"

using namespace orvanta;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class SwayShellTest : public testing::Test {
protected:
    void outputsAre(const QByteArray& outputs, const QByteArray& workspaces) {
        sway.answer(SwayConnection::GetOutputs, outputs);
        sway.answer(SwayConnection::GetWorkspaces, workspaces);
    }
    /// Whether sway has been asked so often, and its last answer has been read.
    bool isAsked(size_t times) {
        return eventually([&] { return sway.asked(SwayConnection::RunCommand).size() == times; }) &&
               eventually([&] { return loop.armedCount() == 1; });
    }

    Sway sway;
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
    EXPECT_EQ(sway.asked(SwayConnection::RunCommand).front(),
              "[pid=" + QByteArray::number(QCoreApplication::applicationPid()) +
                  R"( title="^a\.b$"] floating enable, move absolute position 960 px 28 px)");
    loop.advance(0.01);
    ASSERT_TRUE(isAsked(2));

    sway.answer(SwayConnection::RunCommand, R"([{"success": true}, {"success": true}])");
    loop.advance(0.01);
    ASSERT_TRUE(isAsked(3));
    loop.advance(10);
    EXPECT_EQ(loop.armedCount(), 0);

    // It is forgotten when it does not come; the next one is asked about again.
    sway.answer(SwayConnection::RunCommand, "[{}, 5]");
    shell.place(u"orvanta"_s, {0, 0});
    for (size_t asked = 4; asked <= 203; ++asked) {
        ASSERT_TRUE(isAsked(asked));
        loop.advance(0.01);
    }
    loop.advance(10);
    EXPECT_EQ(loop.armedCount(), 0);
    shell.place(u"orvanta"_s, {0, 0});
    EXPECT_TRUE(isAsked(204));
    SwayShell({}, loop).place(u"orvanta"_s, {0, 0});
}

} // namespace
