#include "Fakes/HandMainLoop.h"
#include "Linux/Presence/X11Displays.h"
#include "XServer.h"

#include <gmock/gmock.h>
#include <xcb/xcb.h>

#include <memory>

namespace orvanta {

namespace {

TEST(X11DisplayStateTest, OffIsWhatNobodyCanLookAt) {
    EXPECT_FALSE((X11DisplayState{false, true, 0}).isOff());
    EXPECT_TRUE((X11DisplayState{false, true, 1}).isOff());
    EXPECT_TRUE((X11DisplayState{false, true, 3}).isOff());
    EXPECT_FALSE((X11DisplayState{false, false, 3}).isOff()); // Not in force.
    EXPECT_TRUE((X11DisplayState{true, false, 0}).isOff());
}

class X11DisplaysTest : public testing::Test {
protected:
    void watch() {
        displays = std::make_unique<X11Displays>(server.display(), loop);
        QObject::connect(displays.get(), &X11Displays::changed, displays.get(),
                         [this] { ++changes; });
    }
    void force(uint8_t mode) const {
        xcb_force_screen_saver(client.get(), mode);
        std::free(
            xcb_get_input_focus_reply(client.get(), xcb_get_input_focus(client.get()), nullptr));
    }

    XServer server;
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> client{
        xcb_connect(server.display().constData(), nullptr), &xcb_disconnect};
    HandMainLoop loop;
    std::unique_ptr<X11Displays> displays;
    int changes = 0;
};

TEST_F(X11DisplaysTest, TheServersSaverDarkensTheScreenWithoutAnythingBeingPolled) {
    watch();
    EXPECT_FALSE(displays->areOff());
    EXPECT_EQ(loop.armedCount(), 0U); // This server has no DPMS.
    force(XCB_SCREEN_SAVER_ACTIVE);
    ASSERT_TRUE(eventually([&] { return displays->areOff(); }));
    force(XCB_SCREEN_SAVER_RESET);
    ASSERT_TRUE(eventually([&] { return !displays->areOff(); }));
    EXPECT_EQ(changes, 2);

    force(XCB_SCREEN_SAVER_ACTIVE);
    watch();
    EXPECT_TRUE(displays->areOff()); // As it was found.
}

TEST_F(X11DisplaysTest, AStormEndsInTheRightState) {
    watch();
    for (int i = 0; i < 10'000; ++i) {
        xcb_force_screen_saver(client.get(),
                               i % 2 == 0 ? XCB_SCREEN_SAVER_RESET : XCB_SCREEN_SAVER_ACTIVE);
    }
    force(XCB_SCREEN_SAVER_ACTIVE);
    ASSERT_TRUE(eventually([&] { return displays->areOff(); }));
    force(XCB_SCREEN_SAVER_RESET);
    ASSERT_TRUE(eventually([&] { return !displays->areOff(); }));
}

TEST_F(X11DisplaysTest, WithoutAServerNothingIsOff) {
    watch();
    force(XCB_SCREEN_SAVER_ACTIVE);
    ASSERT_TRUE(eventually([&] { return displays->areOff(); }));
    server.kill();
    ASSERT_TRUE(eventually([&] { return !displays->areOff(); }));
    watch();
    EXPECT_FALSE(displays->areOff());
    EXPECT_EQ(loop.armedCount(), 0U);
}

/// A server with DPMS 1.1 or 1.2, and its displays.
class DpmsTest : public testing::Test {
protected:
    void watch(const char* minorVersion) {
        server = std::make_unique<Program>(
            QStringLiteral("/usr/bin/python3"),
            QStringList{QStringLiteral(ORVANTA_TESTS_LINUX "/x_server_with_dpms.py"),
                        QLatin1String(minorVersion)},
            QProcessEnvironment::systemEnvironment());
        displays = std::make_unique<X11Displays>(nextLine(), loop);
    }
    void setLevel(char level) {
        server->process().write(QByteArray(1, level) + '\n');
        nextLine();
    }
    QByteArray nextLine() {
        EXPECT_TRUE(eventually([&] { return server->process().canReadLine(); }));
        return server->process().readLine().trimmed();
    }

    std::unique_ptr<Program> server;
    HandMainLoop loop;
    std::unique_ptr<X11Displays> displays;
};

TEST_F(DpmsTest, AServerThatTellsIsNotPolled) {
    watch("2");
    EXPECT_FALSE(displays->areOff());
    setLevel('3');
    ASSERT_TRUE(eventually([&] { return displays->areOff(); }));
    setLevel('0');
    ASSERT_TRUE(eventually([&] { return !displays->areOff(); }));
    EXPECT_EQ(loop.armedCount(), 0U);
}

TEST_F(DpmsTest, AServerThatDoesNotTellIsAskedEveryHalfMinute) {
    watch("1");
    setLevel('1');
    loop.advance(29.0);
    EXPECT_FALSE(displays->areOff());
    loop.advance(1.0);
    EXPECT_TRUE(displays->areOff());
    setLevel('0');
    loop.advance(30.0);
    EXPECT_FALSE(displays->areOff());
    server->kill();
    ASSERT_TRUE(eventually([&] { return loop.armedCount() == 0; }));
}

} // namespace

} // namespace orvanta
