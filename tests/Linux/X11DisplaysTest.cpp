#include "Linux/Presence/X11Displays.h"

#include "Fakes/HandMainLoop.h"
#include "XServer.h"

#include <gtest/gtest.h>

#include <optional>

using namespace orvanta;

namespace {

class X11DisplaysTest : public testing::Test {
protected:
    bool becomeOff(bool off) {
        return eventually([this, off] { return displays->areOff() == off; });
    }

    HandMainLoop loop;
    std::optional<X11Displays> displays;
};

TEST_F(X11DisplaysTest, TheServersSaverDarkensTheScreenWithoutAnythingBeingPolled) {
    XServer server;
    XClient client{server};
    displays.emplace(server.display(), loop);
    EXPECT_FALSE(displays->areOff());
    for (int i = 0; i < 1000; ++i) {
        client.forceScreenSaver(i % 2 == 0 ? XCB_SCREEN_SAVER_RESET : XCB_SCREEN_SAVER_ACTIVE);
    }
    ASSERT_TRUE(becomeOff(true));
    client.forceScreenSaver(XCB_SCREEN_SAVER_RESET);
    ASSERT_TRUE(becomeOff(false));

    client.forceScreenSaver(XCB_SCREEN_SAVER_ACTIVE);
    displays.emplace(server.display(), loop);
    EXPECT_TRUE(displays->areOff());  // As it was found.
    EXPECT_EQ(loop.armedCount(), 0U); // This server has no DPMS.
    server.kill();
    ASSERT_TRUE(becomeOff(false));
    displays.emplace(server.display(), loop);
    EXPECT_FALSE(displays->areOff());
}

/// A server with DPMS 1.1 or 1.2, and its displays.
class DpmsTest : public X11DisplaysTest {
protected:
    void watch(const QString& minorVersion) {
        server.emplace(u"/usr/bin/python3"_s,
                       QStringList{QStringLiteral(ORVANTA_TESTS_LINUX "/x_server_with_dpms.py"),
                                   minorVersion});
        displays.emplace(server->nextLine(), loop);
    }
    /// Whether DPMS is in force, and its level.
    void set(const char* state) {
        server->writeLine(state);
        server->nextLine();
    }

    std::optional<Program> server;
};

TEST_F(DpmsTest, AServerThatTellsIsNotPolled) {
    watch(u"2"_s);
    EXPECT_FALSE(displays->areOff());
    for (const char* off : {"1 1", "1 3"}) {
        set(off);
        ASSERT_TRUE(becomeOff(true)) << off;
        set("0 3");
        ASSERT_TRUE(becomeOff(false));
    }
    EXPECT_EQ(loop.armedCount(), 0U);
}

TEST_F(DpmsTest, AServerThatDoesNotTellIsAskedEveryHalfMinute) {
    watch(u"1"_s);
    set("1 1");
    loop.advance(29.0);
    EXPECT_FALSE(displays->areOff());
    loop.advance(1.0);
    EXPECT_TRUE(displays->areOff());
    set("1 0");
    loop.advance(30.0);
    EXPECT_FALSE(displays->areOff());
    server->kill();
    ASSERT_TRUE(eventually([&] { return loop.armedCount() == 0; }));
}

} // namespace
