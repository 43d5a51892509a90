#include "Linux/LinuxAppearance.h"

#include "Fakes/HandMainLoop.h"
#include "PrivateBus.h"

#include <QGuiApplication>
#include <QPalette>

#include <gtest/gtest.h>

#include <optional>
#include <utility>

namespace orvanta {

namespace {

const QString portalName = u"org.freedesktop.portal.Desktop"_s;
const QString appearance = u"org.freedesktop.appearance"_s;
const QString gnome = u"org.gnome.desktop.interface"_s;

QVariant wrapped(const QVariant& value) {
    return QVariant::fromValue(QDBusVariant(value));
}

class LinuxAppearanceTest : public testing::Test {
protected:
    LinuxAppearanceTest() {
        QGuiApplication::setPalette(QPalette(Qt::white));
        portal.on(u"Read"_s, [this](const QDBusMessage& call) -> std::optional<QVariantList> {
            const QVariant& value = call.arguments().value(0) == appearance ? scheme : animations;
            return value.isNull() ? std::nullopt
                                  : std::optional(QVariantList{wrapped(wrapped(value))});
        });
    }
    ~LinuxAppearanceTest() override {
        looks.reset();
        QGuiApplication::setPalette(QPalette());
    }

    void start() {
        looks.emplace(connection, loop);
        QObject::connect(&*looks, &Appearance::changed, &*looks, [this] { ++changes; });
        settle();
    }
    void settle() {
        drain(portal.connection());
        drain(connection);
        drain(portal.connection());
        drain(connection);
    }
    void say(const QString& space, const QString& key, const QVariant& value) {
        portal.say(u"/org/freedesktop/portal/desktop"_s, u"org.freedesktop.portal.Settings"_s,
                   u"SettingChanged"_s, {space, key, value});
        settle();
    }
    static bool isDark(QPalette::ColorRole role) {
        return QGuiApplication::palette().color(role).lightness() < 128;
    }
    void sayScheme(const QVariant& value) { say(appearance, u"color-scheme"_s, wrapped(value)); }
    int taken() { return std::exchange(changes, 0); }

    PrivateBus bus;
    FakeService portal{bus};
    QVariant scheme = 1U;
    QVariant animations = true;
    QDBusConnection connection = bus.connect();
    HandMainLoop loop;
    std::optional<LinuxAppearance> looks;
    int changes = 0;
};

TEST_F(LinuxAppearanceTest, ThePortalIsFollowedWhenItComesChangesAndGoes) {
    start();
    EXPECT_EQ(looks->colorScheme(), ColorScheme::light);
    EXPECT_EQ(loop.armedCount(), 0U);

    portal.own(portalName);
    settle();
    EXPECT_EQ(looks->colorScheme(), ColorScheme::dark);
    EXPECT_FALSE(looks->reducesMotion());
    EXPECT_EQ(taken(), 1);
    EXPECT_TRUE(isDark(QPalette::Window) && isDark(QPalette::Base) && !isDark(QPalette::Text));
    loop.advance(1);
    EXPECT_EQ(loop.armedCount(), 0U);

    sayScheme(2U);
    EXPECT_EQ(looks->colorScheme(), ColorScheme::light);
    EXPECT_EQ(taken(), 1);
    EXPECT_TRUE(!isDark(QPalette::Window) && !isDark(QPalette::Base) && isDark(QPalette::Text));
    sayScheme(2U);
    say(gnome, u"cursor-size"_s, wrapped(24));
    EXPECT_EQ(taken(), 0);
    say(gnome, u"enable-animations"_s, wrapped(false));
    EXPECT_TRUE(looks->reducesMotion());
    EXPECT_EQ(taken(), 1);
    sayScheme(1U);

    portal.disown(portalName);
    settle();
    EXPECT_EQ(looks->colorScheme(), ColorScheme::dark) << "it may be back at once";
    taken();
    loop.advance(60);
    EXPECT_EQ(looks->colorScheme(), ColorScheme::light);
    EXPECT_FALSE(looks->reducesMotion());
    EXPECT_GT(taken(), 0);

    animations = false;
    portal.own(portalName);
    settle();
    EXPECT_EQ(looks->colorScheme(), ColorScheme::dark);
    EXPECT_TRUE(looks->reducesMotion());
    portal.disown(portalName);
    settle();
    scheme = {};
    animations = {};
    loop.advance(1);
    portal.own(portalName);
    settle();
    EXPECT_EQ(looks->colorScheme(), ColorScheme::light) << "another that knows neither";
    EXPECT_FALSE(looks->reducesMotion());
}

TEST_F(LinuxAppearanceTest, NonsenseAndNoPreferenceLeaveItToThePalette) {
    portal.own(portalName);
    start();
    for (const QVariant& nonsense :
         {QVariant(0U), QVariant(3U), QVariant(1), QVariant(u"dark"_s), wrapped(wrapped(u"1"_s))}) {
        sayScheme(1U);
        EXPECT_EQ(looks->colorScheme(), ColorScheme::dark);
        sayScheme(nonsense);
        EXPECT_EQ(looks->colorScheme(), ColorScheme::light) << nonsense.typeName();
    }
    say(gnome, u"enable-animations"_s, wrapped(0));
    say(appearance, u"color-scheme"_s, u"not even wrapped"_s);
    EXPECT_FALSE(looks->reducesMotion());
    taken();
    QGuiApplication::setPalette(QPalette(Qt::black));
    EXPECT_EQ(looks->colorScheme(), ColorScheme::dark);
    EXPECT_EQ(taken(), 1);
    sayScheme(1U);
    QGuiApplication::setPalette(QPalette(Qt::white));
    EXPECT_EQ(looks->colorScheme(), ColorScheme::dark) << "the portal has the word";
    EXPECT_EQ(taken(), 0);
}

TEST_F(LinuxAppearanceTest, ThePalettesWordIsGoodWithoutABus) {
    QGuiApplication::setPalette(QPalette(Qt::black));
    LinuxAppearance alone(QDBusConnection(u"no such connection"_s), loop);
    EXPECT_EQ(alone.colorScheme(), ColorScheme::dark);
    EXPECT_FALSE(alone.reducesMotion());
}

} // namespace

} // namespace orvanta
