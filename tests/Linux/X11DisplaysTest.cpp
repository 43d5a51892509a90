#include "Linux/Presence/X11Displays.h"

#include "Testing.h"

using namespace orvanta;

namespace {

/// Servers with DPMS 1.1 and 1.2. Of their state the first figure is whether DPMS is in force.
TEST(X11DisplaysTest, AServerThatDoesNotTellOfDpmsIsAskedEveryHalfMinute) {
    HandMainLoop loop;
    for (const QString& minorVersion : {u"2"_s, u"1"_s}) {
        const bool tells = minorVersion == u"2"_s;
        Program server(
            u"/usr/bin/python3"_s,
            {QStringLiteral(ORVANTA_TESTS_LINUX "/x_server_with_dpms.py"), minorVersion});
        X11Displays displays(server.nextLine(), loop);
        EXPECT_EQ(loop.armedCount(), tells ? 0U : 1U);
        bool wasOff = false;
        for (const auto& [state, off] : {std::pair("1 1", true), std::pair("1 0", false),
                                         std::pair("1 3", true), std::pair("0 3", false)}) {
            server.writeLine(state);
            server.nextLine();
            if (!tells) {
                loop.advance(29.0);
                EXPECT_EQ(displays.areOff(), wasOff);
                loop.advance(1.0);
                EXPECT_EQ(displays.areOff(), off);
            }
            ASSERT_TRUE(eventually([&, off = off] { return displays.areOff() == off; })) << state;
            wasOff = off;
        }
    }
}

} // namespace
