#include "Fakes/QtPrinters.h"
#include "Linux/StatusNotifier/StatusNotifierItem.h"
#include "StatusHost.h"

#include <gmock/gmock.h>

#include <limits>
#include <optional>

namespace orvanta {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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
        EXPECT_TRUE(eventually([this] { return host.hasItem(); }));
    }
    ~StatusMenuTest() override {
        item.reset();
        QDBusConnection::disconnectFromBus(connection.name());
    }

    StatusMenuItem entry(const char* text, std::optional<bool> checked = {}) {
        const auto name = QString::fromUtf8(text);
        return {name, [this, name] { chosen.append(name); }, checked};
    }
    QDBusMessage call(const char* method, const QVariantList& arguments) {
        return host.call("/MenuBar", "com.canonical.dbusmenu", method, arguments);
    }
    QVariant answer(const char* method, const QVariantList& arguments) {
        return call(method, arguments).arguments().value(0);
    }
    MenuLayout layout(int parent = 0, int depth = -1, const QStringList& names = {}) {
        return qdbus_cast<MenuLayout>(
            call("GetLayout", {parent, depth, names}).arguments().value(1));
    }
    std::vector<MenuLayout> entries() {
        std::vector<MenuLayout> found;
        for (const QDBusVariant& child : layout().children) {
            found.push_back(qdbus_cast<MenuLayout>(child.variant()));
        }
        return found;
    }
    bool aboutToShow() { return answer("AboutToShow", {0}).toBool(); }
    bool failed(const char* method, const QVariantList& arguments) {
        return call(method, arguments).type() == QDBusMessage::ErrorMessage;
    }
    static QVariantList event(int id, const char* name) {
        return {id, QString::fromLatin1(name), QVariant::fromValue(QDBusVariant(0)), 0U};
    }
    static QVariant events(const std::vector<int>& ids) {
        QList<MenuEvent> list;
        for (const int id : ids) {
            list.append({id, QStringLiteral("clicked"), QDBusVariant(0), 0});
        }
        return QVariant::fromValue(list);
    }
    template <typename... Ids>
    static QVariant ids(Ids... ids) {
        return QVariant::fromValue(QList<int>{ids...});
    }

    PrivateBus bus;
    StatusHost host{bus};
    QDBusConnection connection = bus.connect();
    std::vector<StatusMenuItem> menu{entry("Mostrar todos", true), {}, entry("Ajustes…")};
    int asked = 0;
    QStringList chosen;
    std::optional<StatusNotifierItem> item;
};

TEST_F(StatusMenuTest, ItsPropertiesAreThoseOfTheProtocol) {
    const auto property = [this](const char* name) {
        return host.property(name, "com.canonical.dbusmenu", "/MenuBar");
    };
    EXPECT_EQ(property("Version"), 3U);
    EXPECT_EQ(property("Status"), QStringLiteral("normal"));
    EXPECT_EQ(property("TextDirection"), QStringLiteral("ltr"));
    EXPECT_EQ(property("IconThemePath").toStringList(), QStringList());
}

TEST_F(StatusMenuTest, TheLayoutHasLabelsSeparatorsAndCheckMarks) {
    menu.push_back(entry("a_b & c"));
    menu.push_back({QStringLiteral("off"), {}, {}});
    EXPECT_EQ(call("GetLayout", {0, -1, QStringList()}).signature(), QStringLiteral("u(ia{sv}av)"));
    EXPECT_EQ(layout().properties,
              (QVariantMap{{QStringLiteral("children-display"), QStringLiteral("submenu")}}));
    const auto found = entries();
    ASSERT_THAT(found, testing::SizeIs(5));
    const auto label = [](const char* text) {
        return std::pair(QStringLiteral("label"), QVariant(QString::fromUtf8(text)));
    };
    const auto enabled = [](bool is) {
        return std::pair(QStringLiteral("enabled"), QVariant(is));
    };
    EXPECT_EQ(found[0].properties,
              (QVariantMap{label("Mostrar todos"),
                           enabled(true),
                           {QStringLiteral("toggle-type"), QStringLiteral("checkmark")},
                           {QStringLiteral("toggle-state"), 1}}));
    EXPECT_EQ(found[1].properties,
              (QVariantMap{{QStringLiteral("type"), QStringLiteral("separator")}}));
    EXPECT_EQ(found[2].properties, (QVariantMap{label("Ajustes…"), enabled(true)}));
    EXPECT_EQ(found[3].properties, (QVariantMap{label("a__b & c"), enabled(true)}));
    EXPECT_EQ(found[4].properties, (QVariantMap{label("off"), enabled(false)}));
}

TEST_F(StatusMenuTest, DepthAndNamesLimitTheAnswer) {
    EXPECT_THAT(layout(0, 0).children, IsEmpty());
    EXPECT_THAT(layout(0, std::numeric_limits<int>::max()).children, testing::SizeIs(3));
    EXPECT_THAT(layout(0, std::numeric_limits<int>::min()).children, testing::SizeIs(3));
    const int first = entries()[0].id;
    EXPECT_EQ(layout(first, -1, {QStringLiteral("label")}).properties.keys(),
              QStringList(QStringLiteral("label")));
    const auto groups =
        qdbus_cast<QList<MenuProperties>>(answer("GetGroupProperties", {ids(), QStringList()}));
    EXPECT_THAT(groups, testing::SizeIs(4)) << "the root and its entries";
    EXPECT_EQ(
        answer("GetProperty", {first, QStringLiteral("label")}).value<QDBusVariant>().variant(),
        QStringLiteral("Mostrar todos"));
}

TEST_F(StatusMenuTest, AClickDoesWhatTheEntrySays) {
    const auto found = entries();
    call("Event", event(found[2].id, "hovered"));
    call("Event", event(found[1].id, "clicked"));
    call("Event", event(found[2].id, "clicked"));
    const auto unknown = qdbus_cast<QList<int>>(answer("EventGroup", {events({found[0].id, 99})}));
    EXPECT_THAT(unknown, ElementsAre(99));
    ASSERT_TRUE(eventually([this] { return chosen.size() >= 2; }));
    EXPECT_THAT(chosen, ElementsAre(QStringLiteral("Ajustes…"), QStringLiteral("Mostrar todos")));
}

TEST_F(StatusMenuTest, EachShowingAsksAnewAndTellsOnlyWhatChanged) {
    const auto before = entries();
    EXPECT_EQ(asked, 1);
    EXPECT_FALSE(aboutToShow());
    EXPECT_EQ(asked, 2);
    EXPECT_THAT(host.takeSignals(), IsEmpty());

    menu[0].checked = false;
    EXPECT_TRUE(aboutToShow());
    EXPECT_THAT(host.takeSignals(), ElementsAre(QStringLiteral("ItemsPropertiesUpdated"),
                                                QStringLiteral("LayoutUpdated")));
    const auto after = entries();
    EXPECT_EQ(after[0].id, before[0].id) << "a menu that is open stays valid";
    EXPECT_EQ(after[0].properties[QStringLiteral("toggle-state")], 0);
    EXPECT_EQ(asked, 3) << "reading asks no more";
}

TEST_F(StatusMenuTest, AClickOnAnEntryThatIsNoMoreHitsNothing) {
    const auto before = entries();
    const uint revision = call("GetLayout", {0, 0, QStringList()}).arguments()[0].toUInt();
    menu = {entry("Sair")};
    const auto changed = qdbus_cast<QList<int>>(answer("AboutToShowGroup", {ids(0)}));
    EXPECT_THAT(changed, ElementsAre(0));
    EXPECT_THAT(host.takeSignals(), ElementsAre(QStringLiteral("LayoutUpdated")));
    EXPECT_GT(call("GetLayout", {0, 0, QStringList()}).arguments()[0].toUInt(), revision);
    for (const auto& entry : before) {
        EXPECT_TRUE(failed("Event", event(entry.id, "clicked")));
    }
    call("Event", event(entries()[0].id, "clicked"));
    ASSERT_TRUE(eventually([this] { return !chosen.isEmpty(); }));
    EXPECT_THAT(chosen, ElementsAre(QStringLiteral("Sair")));
}

TEST_F(StatusMenuTest, AnEntryMayEndTheItem) {
    menu = {{QStringLiteral("Sair"), [this] { item.reset(); }, {}}};
    EXPECT_FALSE(failed("Event", event(entries()[0].id, "clicked"))) << "answered before";
    EXPECT_TRUE(eventually([this] { return !item; }));
}

TEST_F(StatusMenuTest, NonsenseIsAnsweredWithAnError) {
    for (const int id : {-1, 4, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        EXPECT_TRUE(failed("GetLayout", {id, -1, QStringList()})) << id;
        EXPECT_TRUE(failed("GetProperty", {id, QStringLiteral("label")})) << id;
        EXPECT_TRUE(failed("Event", event(id, "clicked"))) << id;
        EXPECT_TRUE(failed("EventGroup", {events({id, id})})) << id;
        EXPECT_TRUE(failed("AboutToShow", {id})) << id;
    }
    EXPECT_TRUE(failed("GetProperty", {1, QStringLiteral("no such")}));
    EXPECT_TRUE(failed("GetLayout", {QStringLiteral("0"), -1}));
    EXPECT_TRUE(failed("Event", {1}));
    EXPECT_TRUE(failed("EventGroup", {QStringLiteral("x")}));
    EXPECT_FALSE(failed("AboutToShowGroup", {ids(-7, 99)}));
    EXPECT_THAT(chosen, IsEmpty());
}

TEST_F(StatusMenuTest, AListOfTheSameIdAThousandTimesIsAnsweredOnce) {
    const QVariant many = QVariant::fromValue(QList<int>(100'000, 1));
    const auto groups =
        qdbus_cast<QList<MenuProperties>>(answer("GetGroupProperties", {many, QStringList()}));
    EXPECT_THAT(groups, testing::SizeIs(1));
    asked = 0;
    const QVariant roots = QVariant::fromValue(QList<int>(100'000, 0));
    call("AboutToShowGroup", {roots});
    EXPECT_EQ(asked, 1);
}

} // namespace

} // namespace orvanta
