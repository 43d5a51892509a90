#include "Linux/Windows/X11Screens.h"

#include "Linux/Windows/X11MouseMonitor.h"
#include "Testing.h"
#include "XServer.h"

using namespace orvanta;

namespace {

class X11ScreensTest : public testing::Test {
protected:
    xcb_window_t panel(const std::vector<uint32_t>& strut) {
        const xcb_window_t window = client.create(client.newId());
        client.set(window, "_NET_WM_STRUT_PARTIAL", "CARDINAL", strut);
        return window;
    }
    std::vector<QRect> areas(const std::vector<QRect>& monitors) {
        return x11WorkAreas(connection.get(), monitors);
    }

    XServer server; // 800 x 600
    XClient client{server};
    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection{
        xcb_connect(server.display().constData(), nullptr), &xcb_disconnect};
};

TEST_F(X11ScreensTest, OneMonitorHasTheWorkAreaOfTheDesktopThatIsShown) {
    const QRect whole(0, 0, 800, 600);
    EXPECT_THAT(areas({whole}), testing::ElementsAre(whole)) << "nobody says anything";
    client.set(client.root(), "_NET_WORKAREA", "CARDINAL", {0, 30, 800, 570, 60, 0, 700, 600});
    EXPECT_THAT(areas({whole}), testing::ElementsAre(QRect(0, 30, 800, 570)));
    client.set(client.root(), "_NET_CURRENT_DESKTOP", "CARDINAL", {1});
    EXPECT_THAT(areas({whole}), testing::ElementsAre(QRect(60, 0, 700, 600)));

    client.set(client.root(), "_NET_CURRENT_DESKTOP", "CARDINAL", {7});
    EXPECT_THAT(areas({whole}), testing::ElementsAre(whole)) << "no such desktop";
    client.set(client.root(), "_NET_CURRENT_DESKTOP", "CARDINAL", {0});
    for (const std::vector<uint32_t>& nonsense :
         {std::vector<uint32_t>{900, 900, 10, 10}, {0, 0, UINT32_MAX, 600}, {0, 0}}) {
        client.set(client.root(), "_NET_WORKAREA", "CARDINAL", nonsense);
        EXPECT_THAT(areas({whole}), testing::ElementsAre(whole));
    }
    EXPECT_THAT(areas({}), testing::IsEmpty());
}

TEST_F(X11ScreensTest, EachOfSeveralMonitorsGivesWayToThePanelsAlongItsOwnEdges) {
    const QRect left(0, 0, 400, 600);
    const QRect right(400, 0, 400, 500);
    // One rectangle for both would be wrong on either.
    client.set(client.root(), "_NET_WORKAREA", "CARDINAL", {0, 0, 300, 300});
    const xcb_window_t top = panel({0, 0, 28, 0, 0, 0, 0, 0, 400, 799, 0, 0});
    const xcb_window_t bottom = panel({0, 0, 0, 40, 0, 0, 0, 0, 0, 0, 0, 399});
    const xcb_window_t far = panel({0, 64, 0, 0, 0, 0, 0, 599, 0, 0, 0, 0});
    const xcb_window_t broken = panel({UINT32_MAX, 0, 0});
    client.set(client.root(), "_NET_CLIENT_LIST", "WINDOW",
               {top, bottom, far, broken, client.newId()});
    EXPECT_THAT(areas({left, right}),
                testing::ElementsAre(QRect(0, 0, 400, 560), QRect(400, 28, 336, 472)));

    client.set(top, "_NET_WM_STRUT_PARTIAL", "CARDINAL",
               {0, 0, UINT32_MAX, 0, 0, 0, 0, 0, 400, 799, 0, 0});
    EXPECT_EQ(areas({left, right})[1], right) << "nothing would be left";
}

} // namespace
