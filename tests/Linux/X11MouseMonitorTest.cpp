#include "Linux/Windows/X11MouseMonitor.h"

#include "Testing.h"
#include "XServer.h"

using namespace orvanta;

namespace {

class X11MouseMonitorTest : public testing::Test {
protected:
    void click(const char* button) {
        QProcess xdotool;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"DISPLAY"_s, QString::fromLatin1(server.display()));
        xdotool.setProcessEnvironment(environment);
        xdotool.start(u"xdotool"_s, {u"click"_s, QString::fromLatin1(button)});
        ASSERT_TRUE(xdotool.waitForFinished() && xdotool.exitCode() == 0);
    }

    XServer server;
    int presses = 0;
    std::unique_ptr<X11MouseMonitor> monitor =
        X11MouseMonitor::open(server.display(), [this] { ++presses; });
};

TEST_F(X11MouseMonitorTest, EveryButtonIsHeardAndTheWheelIsNot) {
    ASSERT_TRUE(monitor);
    for (const char* button : {"1", "3", "2", "9"}) {
        const int before = presses;
        for (const char* wheel : {"4", "5", "6", "7"}) {
            click(wheel);
        }
        click(button);
        EXPECT_TRUE(eventually([&] { return presses > before; }));
        EXPECT_EQ(presses, before + 1) << button;
    }
}

TEST_F(X11MouseMonitorTest, ItIsHeardWhileAnotherClientHasGrabbedTheMouse) {
    ASSERT_TRUE(monitor);
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> other(
        xcb_connect(server.display().constData(), nullptr), &xcb_disconnect);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(other.get())).data->root;
    auto* reply = xcb_grab_pointer_reply(
        other.get(),
        xcb_grab_pointer(other.get(), 0, root, XCB_EVENT_MASK_BUTTON_PRESS, XCB_GRAB_MODE_ASYNC,
                         XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE, XCB_CURRENT_TIME),
        nullptr);
    ASSERT_EQ(reply->status, XCB_GRAB_STATUS_SUCCESS);
    std::free(reply);
    click("1");
    EXPECT_TRUE(eventually([this] { return presses == 1; }));
}

TEST_F(X11MouseMonitorTest, ItMayEndItselfAndOutlivesItsServer) {
    monitor = X11MouseMonitor::open(server.display(), [this] {
        ++presses;
        monitor.reset();
    });
    ASSERT_TRUE(monitor);
    click("1");
    EXPECT_TRUE(eventually([this] { return presses == 1 && !monitor; }));

    monitor = X11MouseMonitor::open(server.display(), [] {});
    server.kill();
    EXPECT_FALSE(X11MouseMonitor::open(server.display(), [] {}));
    EXPECT_FALSE(X11MouseMonitor::open({}, [] {}));
}

} // namespace
