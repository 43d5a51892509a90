#include "Linux/StatusNotifier/StatusNotifierItem.h"
#include "StatusHost.h"
#include "Testing.h"

#include <limits>

using namespace orvanta;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Host = StatusNotifierItem::Host;

StatusTitle production(int share) {
    return {u'↑', share, 100 - share, StatusTitle::Tone::production};
}

/// The item and its menu on a bus with a host that the test plays.
class StatusItemTest : public testing::Test {
protected:
    ~StatusItemTest() override {
        item.reset();
        QDBusConnection::disconnectFromBus(connection.name());
    }

    void show(const QString& desktop = u"XFCE"_s) {
        const auto activate = [this](std::optional<QPoint> at) {
            clicks.push_back(at);
        };
        const auto askForMenu = [this] {
            ++asked;
            return menu;
        };
        item.reset();
        item.emplace(connection,
                     StatusItem::Handlers{activate,
                                          askForMenu,
                                          {},
                                          [this] {
                                              return toolTip;
                                          }},
                     StatusNotifierItem::Configuration{desktop, [this] {
                                                           return now;
                                                       }});
        item->setTitle(production(63));
    }
    void showInHost() {
        host.appear();
        show();
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
        return host.call(u"/StatusNotifierItem"_s, u"org.kde.StatusNotifierItem"_s, method,
                         arguments);
    }
    QVariantMap properties() {
        const auto reply = host.call(u"/StatusNotifierItem"_s, u"org.freedesktop.DBus.Properties"_s,
                                     u"GetAll"_s, {u"org.kde.StatusNotifierItem"_s});
        return qdbus_cast<QVariantMap>(reply.arguments().value(0));
    }
    QString menuPath() { return properties()[u"Menu"_s].value<QDBusObjectPath>().path(); }
    StatusPixmaps pixmaps() { return qdbus_cast<StatusPixmaps>(properties()[u"IconPixmap"_s]); }

    PrivateBus bus;
    StatusHost host{bus};
    QDBusConnection connection = bus.connect();
    double now = 1000;
    std::vector<std::optional<QPoint>> clicks;
    std::vector<StatusMenuItem> menu;
    QString toolTip;
    int asked = 0;
    std::optional<StatusNotifierItem> item;
};

TEST_F(StatusItemTest, ItsPropertiesAreThoseOfTheProtocol) {
    showInHost();
    QVariantMap all = properties();
    EXPECT_EQ(all.keys().join(u' '),
              u"Category IconName IconPixmap Id ItemIsMenu Menu Status Title ToolTip WindowId "
              u"XAyatanaLabel XAyatanaLabelGuide"_s);
    const QStringList texts{all[u"Id"_s].toString(), all[u"Category"_s].toString(),
                            all[u"Status"_s].toString(), all[u"XAyatanaLabel"_s].toString()};
    EXPECT_EQ(texts.join(u' '), u"com.brindlework.orvanta ApplicationStatus Active ↑ 63/37"_s);
    EXPECT_EQ(all[u"ItemIsMenu"_s], false);
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

TEST_F(StatusItemTest, WithoutAHostItIsNotShown) {
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
    host.setHasHost(true);
    show();
    ASSERT_TRUE(becomes(Host::Present));
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
    toolTip = u"orvanta · 2s"_s;
    item->toolTipChanged();
    EXPECT_THAT(host.takeSignals(), IsEmpty());
    EXPECT_EQ(qdbus_cast<StatusToolTip>(properties()[u"ToolTip"_s]).title, u"orvanta · 2s"_s);
    std::vector<double> told;
    for (int second = 1; second <= 130; ++second) {
        now += 1;
        item->toolTipChanged();
        if (!host.takeSignals().isEmpty()) {
            told.push_back(now - 1000);
        }
    }
    EXPECT_THAT(told, ElementsAre(60, 120));
    item->setTitle(production(64));
    EXPECT_EQ(properties()[u"Title"_s], u"↑ 64/36"_s);
    EXPECT_THAT(host.takeSignals(),
                ElementsAre(u"NewTitle"_s, u"NewIcon"_s, u"NewToolTip"_s, u"XAyatanaNewLabel"_s));
    now += 59; // That told of the tooltip, too.
    item->toolTipChanged();
    EXPECT_THAT(host.takeSignals(), IsEmpty());
}

TEST_F(StatusItemTest, AClickArrivesAsTheHostMeansIt) {
    const auto clicked = [this](const QString& method, int x, int y) {
        EXPECT_EQ(call(method, {x, y}).type(), QDBusMessage::ReplyMessage);
        EXPECT_TRUE(eventually([this] { return !clicks.empty(); }));
        EXPECT_EQ(clicks.size(), 1U);
        return std::exchange(clicks, {}).back();
    };
    showInHost();
    EXPECT_EQ(menuPath(), u"/MenuBar"_s);
    call(u"ContextMenu"_s, {700, 12});
    call(u"SecondaryActivate"_s, {700, 12});
    EXPECT_EQ(clicked(u"Activate"_s, 700, 12), QPoint(700, 12));
    EXPECT_EQ(clicked(u"Activate"_s, 0, 0), std::nullopt);
    show(u"ubuntu:GNOME"_s); // It shows no menu.
    EXPECT_EQ(menuPath(), u"/NO_DBUSMENU"_s);
    EXPECT_EQ(clicked(u"ContextMenu"_s, 7, 8), QPoint(7, 8));

    char before[16] = {};
    ::prctl(PR_GET_NAME, before);
    ::prctl(PR_SET_NAME, "waybar"); // The host that the test plays is this process.
    show();
    EXPECT_TRUE(eventually([this] { return pixmaps().size() == 1; }));
    ::prctl(PR_SET_NAME, before);
    EXPECT_EQ(pixmaps()[0].height, 42);
    EXPECT_GT(pixmaps()[0].width, 84) << "the whole title";
    EXPECT_EQ(clicked(u"Activate"_s, 3, 4), std::nullopt) << "it counts from its own corner";
}

/// The menu as a host reads it over the bus.
class StatusMenuTest : public StatusItemTest {
protected:
    StatusMenuTest() {
        registerStatusNotifierTypes();
        menu = {entry(u"Mostrar todos"_s, true), {}, entry(u"Ajustes…"_s)};
        showInHost();
    }

    StatusMenuItem entry(const QString& name, std::optional<bool> checked = {}) {
        return {name, [this, name] { chosen.append(name); }, checked};
    }
    QDBusMessage reply(const QString& method, const QVariantList& arguments) {
        return host.call(u"/MenuBar"_s, u"com.canonical.dbusmenu"_s, method, arguments);
    }
    QVariantList answer(const QString& method, const QVariantList& arguments) {
        return reply(method, arguments).arguments();
    }
    bool failed(const QString& method, const QVariantList& arguments) {
        return reply(method, arguments).type() == QDBusMessage::ErrorMessage;
    }
    uint revision() { return answer(u"GetLayout"_s, {0, 0, QStringList()})[0].toUInt(); }
    MenuLayout layout(int parent = 0, int depth = -1, const QStringList& names = {}) {
        return qdbus_cast<MenuLayout>(answer(u"GetLayout"_s, {parent, depth, names}).value(1));
    }
    std::vector<MenuLayout> entries() {
        std::vector<MenuLayout> found;
        for (const QDBusVariant& child : layout().children) {
            found.push_back(qdbus_cast<MenuLayout>(child.variant()));
        }
        return found;
    }
    QList<MenuProperties> groups(const QList<int>& ids) {
        return qdbus_cast<QList<MenuProperties>>(
            answer(u"GetGroupProperties"_s, {QVariant::fromValue(ids), QStringList()}).value(0));
    }
    QList<int> aboutToShow(const QList<int>& ids) {
        return qdbus_cast<QList<int>>(
            answer(u"AboutToShowGroup"_s, {QVariant::fromValue(ids)}).value(0));
    }
    static QVariantList event(int id, const QString& name = u"clicked"_s) {
        return {id, name, QVariant::fromValue(QDBusVariant(0)), 0U};
    }
    static QVariantList events(int first, int second) {
        const auto click = [](int id) {
            return MenuEvent{id, u"clicked"_s, QDBusVariant(0), 0};
        };
        return {QVariant::fromValue(QList<MenuEvent>{click(first), click(second)})};
    }

    QStringList chosen;
};

TEST_F(StatusMenuTest, TheLayoutHasLabelsSeparatorsAndCheckMarks) {
    menu.push_back(entry(u"a_b & c"_s));
    menu.push_back({u"off"_s, {}, {}});
    EXPECT_EQ(layout().properties, (QVariantMap{{u"children-display"_s, u"submenu"_s}}));
    const std::vector<QVariantMap> expected{{{u"label"_s, u"Mostrar todos"_s},
                                             {u"enabled"_s, true},
                                             {u"toggle-type"_s, u"checkmark"_s},
                                             {u"toggle-state"_s, 1}},
                                            {{u"type"_s, u"separator"_s}},
                                            {{u"label"_s, u"Ajustes…"_s}, {u"enabled"_s, true}},
                                            {{u"label"_s, u"a__b & c"_s}, {u"enabled"_s, true}},
                                            {{u"label"_s, u"off"_s}, {u"enabled"_s, false}}};
    const auto found = entries();
    ASSERT_EQ(found.size(), expected.size());
    for (size_t i = 0; i < found.size(); ++i) {
        EXPECT_EQ(found[i].properties, expected[i]) << i;
    }
    EXPECT_THAT(layout(0, 0).children, IsEmpty());
    EXPECT_EQ(layout(found[0].id, -1, {u"label"_s}).properties.keys(), QStringList(u"label"_s));
    EXPECT_THAT(groups({}), testing::SizeIs(6)) << "the root and its entries";
    EXPECT_THAT(groups(QList<int>(100'000, found[0].id)), testing::SizeIs(1));
    EXPECT_EQ(
        answer(u"GetProperty"_s, {found[0].id, u"label"_s})[0].value<QDBusVariant>().variant(),
        u"Mostrar todos"_s);
}

TEST_F(StatusMenuTest, AClickDoesWhatTheEntrySays) {
    const auto found = entries();
    answer(u"Event"_s, event(found[2].id, u"hovered"_s));
    answer(u"Event"_s, event(found[1].id));
    answer(u"Event"_s, event(found[2].id));
    EXPECT_EQ(qdbus_cast<QList<int>>(answer(u"EventGroup"_s, events(found[0].id, 99)).value(0)),
              QList<int>{99});
    ASSERT_TRUE(eventually([this] { return chosen.size() >= 2; }));
    EXPECT_THAT(chosen, ElementsAre(u"Ajustes…"_s, u"Mostrar todos"_s));

    menu = {{u"Sair"_s, [this] { item.reset(); }, {}}};
    aboutToShow({0});
    EXPECT_FALSE(failed(u"Event"_s, event(entries()[0].id))) << "answered before";
    EXPECT_TRUE(eventually([this] { return !item; }));
}

TEST_F(StatusMenuTest, EachShowingAsksAnewAndTellsOnlyWhatChanged) {
    const auto before = entries();
    EXPECT_EQ(asked, 1);
    EXPECT_THAT(aboutToShow(QList<int>(100'000, 0)), IsEmpty());
    EXPECT_EQ(asked, 2);
    EXPECT_THAT(host.takeSignals(), IsEmpty());

    menu[0].checked = false;
    EXPECT_THAT(answer(u"AboutToShow"_s, {0}), ElementsAre(true));
    EXPECT_THAT(host.takeSignals(), ElementsAre(u"ItemsPropertiesUpdated"_s, u"LayoutUpdated"_s));
    const auto after = entries();
    EXPECT_EQ(after[0].id, before[0].id) << "a menu that is open stays valid";
    EXPECT_EQ(after[0].properties[u"toggle-state"_s], 0);
    EXPECT_EQ(asked, 3) << "reading asks no more";
}

TEST_F(StatusMenuTest, AClickOnAnEntryThatIsNoMoreHitsNothing) {
    std::vector<int> strangers{-1, std::numeric_limits<int>::max(),
                               std::numeric_limits<int>::min()};
    for (const auto& each : entries()) {
        strangers.push_back(each.id);
    }
    const uint before = revision();
    menu = {entry(u"Sair"_s)};
    EXPECT_THAT(aboutToShow({0, 99}), ElementsAre(0));
    EXPECT_THAT(host.takeSignals(), ElementsAre(u"LayoutUpdated"_s));
    EXPECT_GT(revision(), before);
    for (const int id : strangers) {
        EXPECT_TRUE(failed(u"Event"_s, event(id)) && failed(u"EventGroup"_s, events(id, id))) << id;
        EXPECT_TRUE(failed(u"GetLayout"_s, {id, -1, QStringList()})) << id;
        EXPECT_TRUE(failed(u"GetProperty"_s, {id, u"label"_s}) && failed(u"AboutToShow"_s, {id}))
            << id;
    }
    answer(u"Event"_s, event(entries()[0].id));
    ASSERT_TRUE(eventually([this] { return !chosen.isEmpty(); }));
    EXPECT_THAT(chosen, ElementsAre(u"Sair"_s));
}

} // namespace
