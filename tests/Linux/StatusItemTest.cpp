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
        const StatusItem::Handlers handlers{
            [this](std::optional<QPoint> at) { clicks.push_back(at); },
            [] {
                return std::vector<StatusMenuItem>{{u"Sair"_s, [] {}, {}}};
            },
            {},
            [this] {
                return toolTip;
            }};
        item.reset();
        item.emplace(connection, handlers, StatusNotifierItem::Configuration{desktop, [this] {
                                                                                 return now;
                                                                             }});
        item->setTitle(production(63));
    }
    void showInHost() {
        host.appear();
        show();
        ASSERT_TRUE(becomes(Host::Present));
        host.takeSignals();
    }
    bool becomes(Host state) {
        return eventually([this, state] { return item->host() == state; });
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
    StatusPixmaps pixmaps() { return qdbus_cast<StatusPixmaps>(properties()[u"IconPixmap"_s]); }

    PrivateBus bus;
    StatusHost host{bus};
    QDBusConnection connection = bus.connect();
    double now = 1000;
    std::vector<std::optional<QPoint>> clicks;
    QString toolTip;
    std::optional<StatusNotifierItem> item;
};

TEST_F(StatusItemTest, ItsPropertiesAndItsMenuAreThoseOfTheProtocols) {
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

    const auto askMenu = [this](const QString& method, const QVariantList& arguments) {
        return host.call(u"/MenuBar"_s, u"com.canonical.dbusmenu"_s, method, arguments);
    };
    const auto layout = askMenu(u"GetLayout"_s, {0, -1, QStringList()});
    EXPECT_EQ(layout.signature(), u"u(ia{sv}av)"_s);
    const auto root = qdbus_cast<MenuLayout>(layout.arguments().value(1));
    const auto entry = qdbus_cast<MenuLayout>(root.children.value(0).variant());
    EXPECT_EQ(entry.properties[u"label"_s], u"Sair"_s);
    const QVariantList click{entry.id, u"clicked"_s, QVariant::fromValue(QDBusVariant(0)), 0U};
    EXPECT_EQ(askMenu(u"Event"_s, click).type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(askMenu(u"Event"_s, QVariantList{99} + click.sliced(1)).type(),
              QDBusMessage::ErrorMessage);
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
    ASSERT_TRUE(eventually([this] { return !host.items().isEmpty(); })) << "for one that may come";
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
    ASSERT_EQ(images[1].bytes.size(), 22 * 22 * 4);
    EXPECT_TRUE(images[1].bytes.contains(QByteArray("\xff\x40\xc2\x4a", 4))) << "A R G B";
    // The outline is half transparent; premultiplied, its green would be about half of this.
    EXPECT_TRUE(std::ranges::any_of("\x2f\x30\x31"_ba, [&](char green) {
        return images[6].bytes.contains(QByteArray("\x8c\0", 2) + green);
    }));
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
    EXPECT_EQ(properties()[u"Menu"_s].value<QDBusObjectPath>().path(), u"/MenuBar"_s);
    call(u"ContextMenu"_s, {700, 12});
    call(u"SecondaryActivate"_s, {700, 12});
    EXPECT_EQ(clicked(u"Activate"_s, 700, 12), QPoint(700, 12));
    EXPECT_EQ(clicked(u"Activate"_s, 0, 0), std::nullopt);
    show(u"ubuntu:GNOME"_s); // It shows no menu.
    EXPECT_EQ(properties()[u"Menu"_s].value<QDBusObjectPath>().path(), u"/NO_DBUSMENU"_s);
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

/// The menu as a host reads it.
class StatusMenuTest : public testing::Test {
protected:
    StatusMenuTest() {
        QObject::connect(&menu, &StatusMenu::LayoutUpdated, [this] { told += u"layout"_s; });
        QObject::connect(&menu, &StatusMenu::ItemsPropertiesUpdated,
                         [this] { told += u"properties"_s; });
    }

    StatusMenuItem entry(const QString& name, std::optional<bool> checked = {}) {
        return {name, [this, name] { chosen.append(name); }, checked};
    }
    MenuLayout layout(int parent = 0, int depth = -1, const QStringList& names = {}) {
        MenuLayout read;
        revision = menu.GetLayout(parent, depth, names, read);
        return read;
    }
    std::vector<MenuLayout> entries() {
        std::vector<MenuLayout> found;
        for (const QDBusVariant& child : layout().children) {
            found.push_back(child.variant().value<MenuLayout>());
        }
        return found;
    }
    QList<int> click(const QList<int>& ids) {
        QList<MenuEvent> events;
        for (const int id : ids) {
            events.append({id, u"clicked"_s, QDBusVariant(0), 0});
        }
        return menu.EventGroup(events);
    }

    std::vector<StatusMenuItem> items{entry(u"Mostrar todos"_s, true), {}, entry(u"Ajustes…"_s)};
    int asked = 0;
    StatusMenu menu{[this] { return ++asked, items; }, {}};
    uint revision = 0;
    QList<int> unknown;
    QStringList told;
    QStringList chosen;
};

TEST_F(StatusMenuTest, TheLayoutHasLabelsSeparatorsAndCheckMarks) {
    items.push_back(entry(u"a_b & c"_s));
    items.push_back({u"off"_s, {}, {}});
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
    EXPECT_EQ(menu.GetGroupProperties({}, {}).size(), 6) << "the root and its entries";
    EXPECT_EQ(menu.GetGroupProperties(QList<int>(100'000, found[0].id), {}).size(), 1);
    EXPECT_EQ(menu.GetProperty(found[0].id, u"label"_s).variant(), u"Mostrar todos"_s);
}

TEST_F(StatusMenuTest, EachShowingAsksAnewAndTellsOnlyWhatChanged) {
    const auto before = entries();
    EXPECT_THAT(menu.AboutToShowGroup(QList<int>(100'000, 0), unknown), IsEmpty());
    EXPECT_EQ(asked, 2);
    EXPECT_THAT(told, IsEmpty());

    items[0].checked = false;
    EXPECT_TRUE(menu.AboutToShow(0));
    EXPECT_THAT(told, ElementsAre(u"properties"_s, u"layout"_s));
    const auto after = entries();
    EXPECT_EQ(after[0].id, before[0].id) << "a menu that is open stays valid";
    EXPECT_EQ(after[0].properties[u"toggle-state"_s], 0);
    EXPECT_EQ(asked, 3) << "reading asks no more";
}

TEST_F(StatusMenuTest, AClickDoesWhatTheEntrySaysAsLongAsThatIsThere) {
    const auto found = entries();
    menu.Event(found[2].id, u"hovered"_s, {}, 0);
    menu.Event(found[1].id, u"clicked"_s, {}, 0);
    menu.Event(found[2].id, u"clicked"_s, {}, 0);
    EXPECT_THAT(chosen, IsEmpty()) << "the host has its answer first";
    EXPECT_EQ(click({found[0].id, 99}), QList<int>{99});
    QCoreApplication::processEvents();
    EXPECT_THAT(chosen, ElementsAre(u"Ajustes…"_s, u"Mostrar todos"_s));

    const uint before = revision;
    items = {entry(u"Sair"_s)};
    EXPECT_THAT(menu.AboutToShowGroup({0, 99}, unknown), ElementsAre(0));
    EXPECT_THAT(unknown, ElementsAre(99));
    EXPECT_THAT(told, ElementsAre(u"layout"_s));
    const QList<int> strangers{found[0].id,
                               found[1].id,
                               found[2].id,
                               -1,
                               std::numeric_limits<int>::max(),
                               std::numeric_limits<int>::min()};
    EXPECT_EQ(click(strangers), strangers);
    EXPECT_THAT(click({entries()[0].id}), IsEmpty());
    EXPECT_GT(revision, before);
    QCoreApplication::processEvents();
    EXPECT_EQ(chosen.last(), u"Sair"_s);
    EXPECT_EQ(chosen.size(), 3);
}

} // namespace
