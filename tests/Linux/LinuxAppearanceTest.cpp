#include "Linux/LinuxAppearance.h"

#include "PrivateBus.h"
#include "Story.h"
#include "Testing.h"

#include <QGuiApplication>
#include <QPalette>

namespace orvanta {

namespace {

const QString portalName = u"org.freedesktop.portal.Desktop"_s;
const QString appearance = u"org.freedesktop.appearance"_s;
const QString gnome = u"org.gnome.desktop.interface"_s;

QVariant wrapped(const QVariant& value) {
    return QVariant::fromValue(QDBusVariant(value));
}

class LinuxAppearanceTest : public Story {
protected:
    LinuxAppearanceTest() {
        QGuiApplication::setPalette(QPalette(Qt::white));
        portal.on(u"Read"_s, [this](const QDBusMessage& call) -> std::optional<QVariantList> {
            const QVariant& value = call.arguments().value(0) == appearance ? scheme : animations;
            return value.isNull() ? std::nullopt
                                  : std::optional(QVariantList{wrapped(wrapped(value))});
        });
        on(u"start"_s, [this](int) {
            looks.emplace(connection, loop);
            QObject::connect(&*looks, &Appearance::changed, [this] { noted.append(look()); });
        });
        on(u"look"_s, [this](int) { noted = {look()}; });
        on(u"portal"_s,
           [this](int is) { is != 0 ? portal.own(portalName) : portal.disown(portalName); });
        on<uint>(u"scheme?"_s,
                 [this](uint value) { scheme = value != 0 ? QVariant(value) : QVariant(); });
        on<bool>(u"animations?"_s, [this](bool are) { animations = are; });
        on<uint>(u"scheme"_s,
                 [this](uint value) { say(appearance, u"color-scheme"_s, wrapped(value)); });
        on<bool>(u"animations"_s,
                 [this](bool are) { say(gnome, u"enable-animations"_s, wrapped(are)); });
        on(u"cursor"_s, [this](int size) { say(gnome, u"cursor-size"_s, wrapped(size)); });
        on<QString>(u"palette"_s, [](const QString& color) {
            QGuiApplication::setPalette(QPalette(QColor(color)));
        });
    }
    ~LinuxAppearanceTest() override {
        looks.reset();
        QGuiApplication::setPalette(QPalette());
    }

    QString look() const {
        return (looks->colorScheme() == ColorScheme::dark ? u"dark"_s : u"light"_s) +
               (looks->reducesMotion() ? u"-still"_s : QString());
    }
    void settle() override {
        for (int i = 0; i < 2; ++i) {
            drain(portal.connection());
            drain(connection);
        }
    }
    void say(const QString& space, const QString& key, const QVariant& value) {
        portal.say(u"/org/freedesktop/portal/desktop"_s, u"org.freedesktop.portal.Settings"_s,
                   u"SettingChanged"_s, {space, key, value});
        settle();
    }

    PrivateBus bus;
    FakeService portal{bus};
    QVariant scheme = 1U;
    QVariant animations = true;
    QDBusConnection connection = bus.connect();
    std::optional<LinuxAppearance> looks;
};

TEST_F(LinuxAppearanceTest, ThePortalIsFollowedWhenItComesChangesAndGoes) {
    const auto isDark = [](QPalette::ColorRole role) {
        return QGuiApplication::palette().color(role).lightness() < 128;
    };
    play(u"start look [light]"_s);
    EXPECT_EQ(loop.armedCount(), 0U);
    play(u"portal=1 [dark]"_s);
    EXPECT_TRUE(isDark(QPalette::Window) && isDark(QPalette::Base) && !isDark(QPalette::Text));
    loop.advance(1);
    EXPECT_EQ(loop.armedCount(), 0U);
    play(u"scheme=2 [light]"_s);
    EXPECT_TRUE(!isDark(QPalette::Window) && !isDark(QPalette::Base) && isDark(QPalette::Text));
    // A portal that goes may be back at once.
    play(u"scheme=2 cursor=24 [] animations=false [light-still] scheme=1 [dark-still] portal=0 [] "
         "59s [] 1s look [light] animations?=false portal=1 look [dark-still] "
         "portal=0 scheme?=0"_s);
    animations = {};
    play(u"1s portal=1 look [light]"_s); // Another that knows neither.
}

TEST_F(LinuxAppearanceTest, NonsenseAndNoPreferenceLeaveItToThePalette) {
    play(u"portal=1 start [dark]"_s);
    for (const QVariant& nonsense :
         {QVariant(0U), QVariant(3U), QVariant(1), QVariant(u"dark"_s), wrapped(wrapped(u"1"_s))}) {
        play(u"scheme=1 look [dark]"_s);
        say(appearance, u"color-scheme"_s, wrapped(nonsense));
        EXPECT_EQ(look(), u"light"_s) << nonsense.typeName();
    }
    say(gnome, u"enable-animations"_s, wrapped(0));
    say(appearance, u"color-scheme"_s, u"not even wrapped"_s);
    // The portal has the word.
    play(u"look [light] palette=black [dark] scheme=1 look [dark] palette=white [] look [dark]"_s);
}

TEST_F(LinuxAppearanceTest, ThePalettesWordIsGoodWithoutABus) {
    QGuiApplication::setPalette(QPalette(Qt::black));
    const LinuxAppearance alone(QDBusConnection(u"no such connection"_s), loop);
    EXPECT_EQ(alone.colorScheme(), ColorScheme::dark);
    EXPECT_FALSE(alone.reducesMotion());
}

} // namespace

} // namespace orvanta
