#include "Linux/Presence/X11Displays.h"

#include "Testing.h"
#include "XServer.h"

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
    EXPECT_TRUE(becomeOff(false));
}

/// Servers with DPMS 1.1 and 1.2. Of their state the first figure is whether DPMS is in force.
TEST_F(X11DisplaysTest, AServerThatDoesNotTellOfDpmsIsAskedEveryHalfMinute) {
    for (const QString& minorVersion : {u"2"_s, u"1"_s}) {
        const bool tells = minorVersion == u"2"_s;
        Program server(
            u"/usr/bin/python3"_s,
            {QStringLiteral(ORVANTA_TESTS_LINUX "/x_server_with_dpms.py"), minorVersion});
        displays.emplace(server.nextLine(), loop);
        EXPECT_EQ(loop.armedCount(), tells ? 0U : 1U);
        bool wasOff = false;
        for (const auto& [state, off] : {std::pair("1 1", true), std::pair("1 0", false),
                                         std::pair("1 3", true), std::pair("0 3", false)}) {
            server.writeLine(state);
            server.nextLine();
            if (!tells) {
                loop.advance(29.0);
                EXPECT_EQ(displays->areOff(), wasOff);
                loop.advance(1.0);
                EXPECT_EQ(displays->areOff(), off);
            }
            ASSERT_TRUE(becomeOff(off)) << state;
            wasOff = off;
        }
        displays.reset();
    }
}

} // namespace
