#include "Fakes/QtPrinters.h"
#include "Linux/StatusNotifier/StatusNotifierItem.h"
#include "StatusHost.h"

#include <gmock/gmock.h>

#include <limits>
#include <optional>

using namespace orvanta;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// The menu as a host reads it over the bus.
class StatusMenuTest : public testing::Test {
protected:
    StatusMenuTest() {
        registerStatusNotifierTypes();
        host.appear();
        item.emplace(connection,
                     StatusItem::Handlers{.activate = [](std::optional<QPoint>) {},
                                          .menu =
                                              [this] {
                                                  ++asked;
                                                  return menu;
                                              }},
                     StatusNotifierItem::Configuration{{}, [] {
                                                           return 0.0;
                                                       }});
        EXPECT_TRUE(eventually([this] { return !host.items().isEmpty(); }));
    }
    ~StatusMenuTest() override {
        item.reset();
        QDBusConnection::disconnectFromBus(connection.name());
    }

    StatusMenuItem entry(const QString& name, std::optional<bool> checked = {}) {
        return {name, [this, name] { chosen.append(name); }, checked};
    }
    QDBusMessage call(const QString& method, const QVariantList& arguments) {
        return host.call(u"/MenuBar"_s, u"com.canonical.dbusmenu"_s, method, arguments);
    }
    QVariant answer(const QString& method, const QVariantList& arguments) {
        return call(method, arguments).arguments().value(0);
    }
    bool failed(const QString& method, const QVariantList& arguments) {
        return call(method, arguments).type() == QDBusMessage::ErrorMessage;
    }
    uint revision() { return answer(u"GetLayout"_s, {0, 0, QStringList()}).toUInt(); }
    MenuLayout layout(int parent = 0, int depth = -1, const QStringList& names = {}) {
        return qdbus_cast<MenuLayout>(
            call(u"GetLayout"_s, {parent, depth, names}).arguments().value(1));
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
            answer(u"GetGroupProperties"_s, {QVariant::fromValue(ids), QStringList()}));
    }
    QList<int> aboutToShow(const QList<int>& ids) {
        return qdbus_cast<QList<int>>(answer(u"AboutToShowGroup"_s, {QVariant::fromValue(ids)}));
    }
    static QVariantList event(int id, const QString& name = u"clicked"_s) {
        return {id, name, QVariant::fromValue(QDBusVariant(0)), 0U};
    }
    static QVariantList events(int first, int second) {
        const auto clicked = [](int id) {
            return MenuEvent{id, u"clicked"_s, QDBusVariant(0), 0};
        };
        return {QVariant::fromValue(QList<MenuEvent>{clicked(first), clicked(second)})};
    }

    PrivateBus bus;
    StatusHost host{bus};
    QDBusConnection connection = bus.connect();
    std::vector<StatusMenuItem> menu{entry(u"Mostrar todos"_s, true), {}, entry(u"Ajustes…"_s)};
    int asked = 0;
    QStringList chosen;
    std::optional<StatusNotifierItem> item;
};

TEST_F(StatusMenuTest, TheLayoutHasLabelsSeparatorsAndCheckMarks) {
    menu.push_back(entry(u"a_b & c"_s));
    menu.push_back({u"off"_s, {}, {}});
    EXPECT_EQ(call(u"GetLayout"_s, {0, -1, QStringList()}).signature(), u"u(ia{sv}av)"_s);
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
    EXPECT_THAT(layout(0, std::numeric_limits<int>::max()).children, testing::SizeIs(5));
    EXPECT_EQ(layout(found[0].id, -1, {u"label"_s}).properties.keys(), QStringList(u"label"_s));
    EXPECT_THAT(groups({}), testing::SizeIs(6)) << "the root and its entries";
    EXPECT_THAT(groups(QList<int>(100'000, found[0].id)), testing::SizeIs(1));
    EXPECT_EQ(answer(u"GetProperty"_s, {found[0].id, u"label"_s}).value<QDBusVariant>().variant(),
              u"Mostrar todos"_s);
}

TEST_F(StatusMenuTest, AClickDoesWhatTheEntrySays) {
    const auto found = entries();
    call(u"Event"_s, event(found[2].id, u"hovered"_s));
    call(u"Event"_s, event(found[1].id));
    call(u"Event"_s, event(found[2].id));
    const auto unknown = qdbus_cast<QList<int>>(answer(u"EventGroup"_s, events(found[0].id, 99)));
    EXPECT_THAT(unknown, ElementsAre(99));
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
    EXPECT_EQ(answer(u"AboutToShow"_s, {0}), false);
    EXPECT_THAT(host.takeSignals(), IsEmpty());

    menu[0].checked = false;
    EXPECT_EQ(answer(u"AboutToShow"_s, {0}), true);
    EXPECT_THAT(host.takeSignals(), ElementsAre(u"ItemsPropertiesUpdated"_s, u"LayoutUpdated"_s));
    const auto after = entries();
    EXPECT_EQ(after[0].id, before[0].id) << "a menu that is open stays valid";
    EXPECT_EQ(after[0].properties[u"toggle-state"_s], 0);
    EXPECT_EQ(asked, 4) << "reading asks no more";
}

TEST_F(StatusMenuTest, AClickOnAnEntryThatIsNoMoreHitsNothing) {
    const auto before = entries();
    const uint revisionBefore = revision();
    menu = {entry(u"Sair"_s)};
    EXPECT_THAT(aboutToShow({0, 99}), ElementsAre(0));
    EXPECT_THAT(host.takeSignals(), ElementsAre(u"LayoutUpdated"_s));
    EXPECT_GT(revision(), revisionBefore);
    std::vector<int> strangers{-1, std::numeric_limits<int>::max(),
                               std::numeric_limits<int>::min()};
    for (const auto& each : before) {
        strangers.push_back(each.id);
    }
    for (const int id : strangers) {
        EXPECT_TRUE(failed(u"Event"_s, event(id))) << id;
        EXPECT_TRUE(failed(u"EventGroup"_s, events(id, id))) << id;
        EXPECT_TRUE(failed(u"GetLayout"_s, {id, -1, QStringList()})) << id;
        EXPECT_TRUE(failed(u"GetProperty"_s, {id, u"label"_s})) << id;
        EXPECT_TRUE(failed(u"AboutToShow"_s, {id})) << id;
    }
    call(u"Event"_s, event(entries()[0].id));
    ASSERT_TRUE(eventually([this] { return !chosen.isEmpty(); }));
    EXPECT_THAT(chosen, ElementsAre(u"Sair"_s));
}

} // namespace
