#include "Fakes/QtPrinters.h"
#include "Linux/StatusNotifier/StatusNotifierItem.h"
#include "StatusHost.h"

#include <gmock/gmock.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <optional>

using namespace orvanta;
using Host = StatusNotifierItem::Host;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const QString itemPath = u"/StatusNotifierItem"_s;
const QString itemInterface = u"org.kde.StatusNotifierItem"_s;

StatusTitle production(int share) {
    return {u"↑"_s, QString::number(share), QString::number(100 - share),
            StatusTitle::Tone::production};
}

/// The item on a bus with a host that the test plays.
class StatusItemTest : public testing::Test {
protected:
    ~StatusItemTest() override {
        item.reset();
        QDBusConnection::disconnectFromBus(connection.name());
    }

    void show(const QString& desktop = u"XFCE"_s) {
        item.emplace(connection,
                     StatusItem::Handlers{
                         .activate = [this](std::optional<QPoint> at) { clicks.push_back(at); },
                         .menu =
                             [] {
                                 return std::vector<StatusMenuItem>();
                             }},
                     StatusNotifierItem::Configuration{desktop, [this] {
                                                           return now;
                                                       }});
        item->setTitle(production(63));
        item->setToolTip(u"orvanta · 1s"_s);
    }
    void showInHost(const QString& desktop = u"XFCE"_s) {
        host.appear();
        show(desktop);
        ASSERT_TRUE(becomes(Host::Present) && isRegistered());
        host.takeSignals();
    }
    bool becomes(Host state) {
        return eventually([this, state] { return item->host() == state; });
    }
    bool isRegistered() {
        return eventually([this] { return !host.items().isEmpty(); });
    }
    QDBusMessage call(const QString& method, const QVariantList& arguments) {
        return host.call(itemPath, itemInterface, method, arguments);
    }
    QVariantMap properties() {
        const auto reply =
            host.call(itemPath, u"org.freedesktop.DBus.Properties"_s, u"GetAll"_s, {itemInterface});
        return qdbus_cast<QVariantMap>(reply.arguments().value(0));
    }
    StatusPixmaps pixmaps() { return qdbus_cast<StatusPixmaps>(properties()[u"IconPixmap"_s]); }

    PrivateBus bus;
    StatusHost host{bus};
    QDBusConnection connection = bus.connect();
    double now = 1000;
    std::vector<std::optional<QPoint>> clicks;
    std::optional<StatusNotifierItem> item;
};

TEST_F(StatusItemTest, ItsPropertiesAreThoseOfTheProtocol) {
    showInHost();
    QVariantMap all = properties();
    EXPECT_EQ(all.keys().join(u' '),
              u"Category IconName IconPixmap Id ItemIsMenu Menu Status Title ToolTip WindowId "
              u"XAyatanaLabel XAyatanaLabelGuide"_s);
    EXPECT_EQ(all[u"Id"_s], u"com.brindlework.orvanta"_s);
    EXPECT_EQ(all[u"Category"_s], u"ApplicationStatus"_s);
    EXPECT_EQ(all[u"Status"_s], u"Active"_s);
    EXPECT_EQ(all[u"IconName"_s], QString());
    EXPECT_EQ(all[u"ItemIsMenu"_s], false);
    EXPECT_EQ(all[u"XAyatanaLabel"_s], u"↑ 63/37"_s);
    EXPECT_EQ(all[u"Menu"_s].value<QDBusObjectPath>().path(), u"/MenuBar"_s);
    EXPECT_EQ(all[u"IconPixmap"_s].value<QDBusArgument>().currentSignature(), u"a(iiay)"_s);
    EXPECT_EQ(all[u"ToolTip"_s].value<QDBusArgument>().currentSignature(), u"(sa(iiay)ss)"_s);
}

TEST_F(StatusItemTest, AnItemOfTheSameProcessNumberElsewhereDoesNotTakeItsPlace) {
    const QString name = u"org.kde.StatusNotifierItem-%1-1"_s.arg(::getpid());
    QDBusConnection other = bus.connect();
    ASSERT_TRUE(other.registerService(name));
    showInHost();
    EXPECT_TRUE(eventually([this] { return host.items().contains(connection.baseService()); }));
    QDBusConnection::disconnectFromBus(other.name());
}

TEST_F(StatusItemTest, AWatcherWithoutAHostShowsNothing) {
    host.setHasHost(false);
    host.appear();
    show();
    ASSERT_TRUE(becomes(Host::Absent));
    ASSERT_TRUE(isRegistered()) << "for the host that may come";
    host.setHasHost(true);
    ASSERT_TRUE(becomes(Host::Present));
    host.setHasHost(false);
    ASSERT_TRUE(becomes(Host::Absent));
    item.reset();
    EXPECT_TRUE(eventually([this] {
        return call(u"Activate"_s, {1, 1}).errorName() ==
               u"org.freedesktop.DBus.Error.ServiceUnknown"_s;
    })) << "its name goes with it";
}

TEST_F(StatusItemTest, ABusThatGoesAwayTakesTheHostWithIt) {
    showInHost();
    bus.kill();
    ASSERT_TRUE(becomes(Host::Absent));
    item->setTitle(production(1));
    show(); // Without a bus from the start.
    EXPECT_EQ(item->host(), Host::Absent);
}

TEST_F(StatusItemTest, ImagesTravelAsStraightArgbInNetworkOrder) {
    showInHost();
    const StatusPixmaps images = pixmaps();
    ASSERT_THAT(images, testing::SizeIs(7));
    EXPECT_EQ(images[1].width, 22);
    EXPECT_EQ(images[1].height, 22);
    ASSERT_EQ(images[1].bytes.size(), 22 * 22 * 4);
    EXPECT_TRUE(images[1].bytes.contains(QByteArray("\xff\x40\xc2\x4a", 4))) << "A R G B";
    // The outline is half transparent; premultiplied, its green would be about half of this.
    const QByteArray& largest = images[6].bytes;
    EXPECT_TRUE(largest.contains(QByteArray("\x8c\0\x2f", 3)) ||
                largest.contains(QByteArray("\x8c\0\x30", 3)) ||
                largest.contains(QByteArray("\x8c\0\x31", 3)));
    item->setTitle(production(64));
    EXPECT_NE(pixmaps()[1].bytes, images[1].bytes);
}

TEST_F(StatusItemTest, ANewTitleIsToldAtOnceAndATooltipOnceAMinute) {
    showInHost();
    item->setTitle(production(63));
    item->setToolTip(u"orvanta · 2s"_s);
    EXPECT_THAT(host.takeSignals(), IsEmpty());
    EXPECT_EQ(qdbus_cast<StatusToolTip>(properties()[u"ToolTip"_s]).title, u"orvanta · 2s"_s);
    std::vector<double> told;
    for (int second = 1; second <= 180; ++second) {
        now += 1;
        item->setToolTip(u"orvanta · %1"_s.arg(second));
        if (!host.takeSignals().isEmpty()) {
            told.push_back(now - 1000);
        }
    }
    EXPECT_THAT(told, ElementsAre(60, 120, 180));

    now += 59;
    item->setTitle(production(64));
    EXPECT_EQ(properties()[u"Title"_s], u"↑ 64/36"_s);
    EXPECT_THAT(host.takeSignals(),
                ElementsAre(u"NewTitle"_s, u"NewIcon"_s, u"NewToolTip"_s, u"XAyatanaNewLabel"_s));
    now += 59;
    item->setToolTip(u"b"_s);
    EXPECT_THAT(host.takeSignals(), IsEmpty());
    now += 1;
    item->setToolTip(u"c"_s);
    EXPECT_THAT(host.takeSignals(), ElementsAre(u"NewToolTip"_s));
}

TEST_F(StatusItemTest, AClickArrivesWithItsPlaceWhereTheHostKnowsOne) {
    showInHost();
    for (const auto& [x, y] : {std::pair(700, 12), std::pair(0, 0)}) {
        EXPECT_EQ(call(u"Activate"_s, {x, y}).type(), QDBusMessage::ReplyMessage);
    }
    for (const QString& method : {u"ContextMenu"_s, u"SecondaryActivate"_s}) {
        EXPECT_EQ(call(method, {7, 8}).type(), QDBusMessage::ReplyMessage);
    }
    EXPECT_EQ(call(u"Scroll"_s, {120, u"vertical"_s}).type(), QDBusMessage::ReplyMessage);
    ASSERT_TRUE(eventually([this] { return clicks.size() >= 2; }));
    EXPECT_THAT(clicks, ElementsAre(std::optional(QPoint(700, 12)), std::nullopt));
}

TEST_F(StatusItemTest, UnderGnomeThereIsNoMenuAndEveryClickActivates) {
    showInHost(u"ubuntu:GNOME"_s);
    EXPECT_EQ(properties()[u"Menu"_s].value<QDBusObjectPath>().path(), u"/NO_DBUSMENU"_s);
    call(u"Activate"_s, {5, 6});
    call(u"ContextMenu"_s, {7, 8});
    ASSERT_TRUE(eventually([this] { return clicks.size() >= 2; }));
    EXPECT_THAT(clicks, ElementsAre(QPoint(5, 6), QPoint(7, 8)));
}

TEST_F(StatusItemTest, AHostThatShowsItWideGetsTheWholeTitleAsOneImage) {
    char before[16] = {};
    ::prctl(PR_GET_NAME, before);
    ::prctl(PR_SET_NAME, "waybar"); // The host that the test plays is this process.
    showInHost();
    EXPECT_TRUE(eventually([this] { return pixmaps().size() == 1; }));
    ::prctl(PR_SET_NAME, before);
    EXPECT_EQ(pixmaps()[0].height, 42);
    EXPECT_GT(pixmaps()[0].width, 84);
    call(u"Activate"_s, {3, 4});
    ASSERT_TRUE(eventually([this] { return !clicks.empty(); }));
    EXPECT_EQ(clicks[0], std::nullopt) << "it counts from its own corner";
}

} // namespace
