#include "Fakes/QtPrinters.h"
#include "Linux/StatusNotifier/StatusNotifierItem.h"
#include "StatusHost.h"

#include <gmock/gmock.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <optional>

namespace orvanta {

namespace {

using Host = StatusNotifierItem::Host;
using testing::ElementsAre;
using testing::IsEmpty;

StatusTitle production(int share) {
    return {QStringLiteral("↑"), QString::number(share), QString::number(100 - share),
            StatusTitle::Tone::production};
}

/// The item on a bus with a host that the test plays.
class StatusItemTest : public testing::Test {
protected:
    ~StatusItemTest() override {
        item.reset();
        QDBusConnection::disconnectFromBus(connection.name());
    }

    void show(const QString& desktop = QStringLiteral("XFCE")) {
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
        item->setToolTip(QStringLiteral("orvanta · 1s"));
    }
    void showInHost(const QString& desktop = QStringLiteral("XFCE")) {
        host.appear();
        show(desktop);
        ASSERT_TRUE(becomes(Host::Present));
        host.takeSignals();
    }
    bool becomes(Host state) {
        return eventually([this, state] { return item->host() == state; });
    }
    bool isRegistered() {
        return eventually([this] { return host.hasItem(); });
    }
    QDBusMessage call(const char* method, const QVariantList& arguments) {
        return host.call("/StatusNotifierItem", "org.kde.StatusNotifierItem", method, arguments);
    }
    QString toolTipText() { return qdbus_cast<StatusToolTip>(host.property("ToolTip")).title; }
    StatusPixmaps pixmaps() { return qdbus_cast<StatusPixmaps>(host.property("IconPixmap")); }

    PrivateBus bus;
    StatusHost host{bus};
    QDBusConnection connection = bus.connect();
    double now = 1000;
    std::vector<std::optional<QPoint>> clicks;
    std::optional<StatusNotifierItem> item;
};

TEST_F(StatusItemTest, ItRegistersWithAHostThatIsThere) {
    showInHost();
    ASSERT_TRUE(isRegistered());
    EXPECT_THAT(host.items(),
                ElementsAre(QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(::getpid())));
    EXPECT_EQ(host.property("Id"), QStringLiteral("com.brindlework.orvanta"));
}

TEST_F(StatusItemTest, ItRegistersWithAHostThatComesLaterAndWithEachOneAfterThat) {
    show();
    ASSERT_TRUE(becomes(Host::Absent));
    for (int restart = 0; restart < 3; ++restart) {
        host.appear();
        ASSERT_TRUE(isRegistered());
        ASSERT_TRUE(becomes(Host::Present));
        EXPECT_EQ(host.items().size(), 1);
        EXPECT_EQ(host.property("Title"), QStringLiteral("↑ 63/37"));
        host.disappear();
        ASSERT_TRUE(becomes(Host::Absent));
    }
}

TEST_F(StatusItemTest, AnItemOfTheSameProcessNumberElsewhereDoesNotTakeItsPlace) {
    QDBusConnection other = bus.connect();
    ASSERT_TRUE(
        other.registerService(QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(::getpid())));
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
}

TEST_F(StatusItemTest, WhenItGoesItsNameGoesWithIt) {
    showInHost();
    ASSERT_TRUE(isRegistered());
    item.reset();
    EXPECT_TRUE(eventually([this] {
        return call("Scroll", {1, QString()}).errorName() ==
               QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown");
    }));
}

TEST_F(StatusItemTest, WithoutABusThereIsNoHost) {
    item.emplace(QDBusConnection(QStringLiteral("no such connection")), StatusItem::Handlers{},
                 StatusNotifierItem::Configuration{{}, [] {
                                                       return 0.0;
                                                   }});
    EXPECT_EQ(item->host(), Host::Absent);
    item->setTitle(production(1));
    item->setToolTip(QStringLiteral("a"));
}

TEST_F(StatusItemTest, ABusThatGoesAwayTakesTheHostWithIt) {
    showInHost();
    bus.kill();
    ASSERT_TRUE(becomes(Host::Absent));
    item->setTitle(production(1));
    item->setToolTip(QStringLiteral("a"));
}

TEST_F(StatusItemTest, ItsPropertiesAreThoseOfTheProtocol) {
    showInHost();
    ASSERT_TRUE(isRegistered());
    const QDBusMessage reply = host.call("/StatusNotifierItem", "org.freedesktop.DBus.Properties",
                                         "GetAll", {QStringLiteral("org.kde.StatusNotifierItem")});
    EXPECT_EQ(reply.signature(), QStringLiteral("a{sv}"));
    const auto all = qdbus_cast<QVariantMap>(reply.arguments().value(0));
    EXPECT_EQ(all.keys().join(QLatin1Char(' ')),
              QStringLiteral("Category IconName IconPixmap Id ItemIsMenu Menu Status Title ToolTip "
                             "WindowId XAyatanaLabel XAyatanaLabelGuide"));
    EXPECT_EQ(all[QStringLiteral("Category")], QStringLiteral("ApplicationStatus"));
    EXPECT_EQ(all[QStringLiteral("Status")], QStringLiteral("Active"));
    EXPECT_EQ(all[QStringLiteral("IconName")], QString());
    EXPECT_EQ(all[QStringLiteral("ItemIsMenu")], false);
    EXPECT_EQ(all[QStringLiteral("XAyatanaLabel")], QStringLiteral("↑ 63/37"));
    EXPECT_EQ(all[QStringLiteral("Menu")].value<QDBusObjectPath>().path(),
              QStringLiteral("/MenuBar"));
    EXPECT_EQ(all[QStringLiteral("IconPixmap")].value<QDBusArgument>().currentSignature(),
              QStringLiteral("a(iiay)"));
    EXPECT_EQ(all[QStringLiteral("ToolTip")].value<QDBusArgument>().currentSignature(),
              QStringLiteral("(sa(iiay)ss)"));
}

TEST_F(StatusItemTest, PropertiesAreCurrentWithoutASignal) {
    showInHost();
    ASSERT_TRUE(isRegistered());
    item->setToolTip(QStringLiteral("orvanta · 2s"));
    EXPECT_THAT(host.takeSignals(), IsEmpty());
    EXPECT_EQ(toolTipText(), QStringLiteral("orvanta · 2s"));
    item->setTitle(production(64));
    EXPECT_EQ(host.property("Title"), QStringLiteral("↑ 64/36"));
}

TEST_F(StatusItemTest, ImagesTravelAsStraightArgbInNetworkOrder) {
    showInHost();
    ASSERT_TRUE(isRegistered());
    const StatusPixmaps images = pixmaps();
    ASSERT_THAT(images, testing::SizeIs(7));
    EXPECT_EQ(images[1].width, 22);
    EXPECT_EQ(images[1].height, 22);
    ASSERT_EQ(images[1].bytes.size(), 22 * 22 * 4);
    EXPECT_TRUE(images[1].bytes.contains(QByteArray("\xff\x40\xc2\x4a", 4))) << "A R G B";
    // The outline is half transparent; premultiplied, its green would be about half of this.
    bool isStraight = false;
    for (const char* outline : {"\x8c\0\x2f", "\x8c\0\x30", "\x8c\0\x31"}) {
        isStraight = isStraight || images[6].bytes.contains(QByteArray(outline, 3));
    }
    EXPECT_TRUE(isStraight);
    item->setTitle(production(64));
    EXPECT_NE(pixmaps()[1].bytes, images[1].bytes);
}

TEST_F(StatusItemTest, ANewTitleIsToldOnceAndTheSameAgainNever) {
    showInHost();
    ASSERT_TRUE(isRegistered());
    item->setTitle(production(64));
    EXPECT_THAT(host.takeSignals(),
                ElementsAre(QStringLiteral("NewTitle"), QStringLiteral("NewIcon"),
                            QStringLiteral("NewToolTip"), QStringLiteral("XAyatanaNewLabel")));
    item->setTitle(production(64));
    item->setToolTip(QStringLiteral("orvanta · 1s"));
    EXPECT_THAT(host.takeSignals(), IsEmpty());
}

TEST_F(StatusItemTest, ATooltipThatChangesEachSecondIsToldOnceAMinute) {
    showInHost();
    ASSERT_TRUE(isRegistered());
    std::vector<double> told;
    for (int second = 1; second <= 600; ++second) {
        now += 1;
        item->setToolTip(QStringLiteral("orvanta · %1").arg(second));
        if (!host.takeSignals().isEmpty()) {
            told.push_back(now - 1000);
        }
    }
    EXPECT_THAT(told, ElementsAre(60, 120, 180, 240, 300, 360, 420, 480, 540, 600));
}

TEST_F(StatusItemTest, ANewTitleCountsAsHavingToldTheTooltip) {
    showInHost();
    ASSERT_TRUE(isRegistered());
    now += 59;
    item->setTitle(production(64));
    host.takeSignals();
    now += 59;
    item->setToolTip(QStringLiteral("b"));
    EXPECT_THAT(host.takeSignals(), IsEmpty());
    now += 1;
    item->setToolTip(QStringLiteral("c"));
    EXPECT_THAT(host.takeSignals(), ElementsAre(QStringLiteral("NewToolTip")));
}

TEST_F(StatusItemTest, AClickArrivesWithItsPlaceWhereTheHostKnowsOne) {
    showInHost();
    ASSERT_TRUE(isRegistered());
    EXPECT_EQ(call("Activate", {700, 12}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(call("Activate", {0, 0}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(call("ContextMenu", {700, 12}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(call("SecondaryActivate", {700, 12}).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(call("Scroll", {120, QStringLiteral("vertical")}).type(), QDBusMessage::ReplyMessage);
    ASSERT_TRUE(eventually([this] { return clicks.size() >= 2; }));
    EXPECT_THAT(clicks, ElementsAre(std::optional(QPoint(700, 12)), std::nullopt));
}

TEST_F(StatusItemTest, UnderGnomeThereIsNoMenuAndEveryClickActivates) {
    showInHost(QStringLiteral("ubuntu:GNOME"));
    ASSERT_TRUE(isRegistered());
    EXPECT_EQ(host.property("Menu").value<QDBusObjectPath>().path(),
              QStringLiteral("/NO_DBUSMENU"));
    EXPECT_FALSE(host.property("Version", "com.canonical.dbusmenu", "/MenuBar").isValid());
    call("Activate", {5, 6});
    call("ContextMenu", {7, 8});
    ASSERT_TRUE(eventually([this] { return clicks.size() >= 2; }));
    EXPECT_THAT(clicks, ElementsAre(QPoint(5, 6), QPoint(7, 8)));
}

TEST_F(StatusItemTest, AHostThatShowsItWideGetsTheWholeTitleAsOneImage) {
    char before[16] = {};
    ::prctl(PR_GET_NAME, before);
    ::prctl(PR_SET_NAME, "waybar"); // The host that the test plays is this process.
    showInHost();
    EXPECT_TRUE(isRegistered());
    EXPECT_TRUE(eventually([this] { return pixmaps().size() == 1; }));
    ::prctl(PR_SET_NAME, before);
    EXPECT_EQ(pixmaps()[0].height, 42);
    EXPECT_GT(pixmaps()[0].width, 84);
    call("Activate", {3, 4});
    ASSERT_TRUE(eventually([this] { return !clicks.empty(); }));
    EXPECT_EQ(clicks[0], std::nullopt) << "it counts from its own corner";
}

TEST_F(StatusItemTest, NonsenseIsAnsweredWithAnErrorAndAStormIsSurvived) {
    showInHost();
    ASSERT_TRUE(isRegistered());
    for (const QVariantList& arguments :
         {QVariantList{}, QVariantList{QStringLiteral("a"), QStringLiteral("b")},
          QVariantList{1, 2, 3}}) {
        EXPECT_EQ(call("Activate", arguments).type(), QDBusMessage::ErrorMessage);
    }
    EXPECT_EQ(host.call("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Set",
                        {QStringLiteral("org.kde.StatusNotifierItem"), QStringLiteral("Title"),
                         QVariant::fromValue(QDBusVariant(QStringLiteral("x")))})
                  .type(),
              QDBusMessage::ErrorMessage);
    for (int i = 0; i < 500; ++i) {
        host.post("/StatusNotifierItem", "org.kde.StatusNotifierItem", "Activate", {i + 1, 1});
        host.post("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "GetAll",
                  {QStringLiteral("org.kde.StatusNotifierItem")});
    }
    EXPECT_EQ(host.property("Title"), QStringLiteral("↑ 63/37"));
    EXPECT_TRUE(eventually([this] { return clicks.size() == 500; }));
}

} // namespace

} // namespace orvanta
