#include "Linux/Windows/X11MouseMonitor.h"

#include "Testing.h"
#include "XServer.h"

using namespace orvanta;

namespace {

class X11MouseMonitorTest : public testing::Test {
protected:
    void click(const char* button) {
        QProcess xdotool;
        xdotool.start(u"env"_s, {u"DISPLAY="_s + QString::fromLatin1(server.display()),
                                 u"xdotool"_s, u"click"_s, QString::fromLatin1(button)});
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
