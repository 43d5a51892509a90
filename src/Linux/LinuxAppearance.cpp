#include "Linux/LinuxAppearance.h"

#include <QDBusVariant>
#include <QGuiApplication>
#include <QPalette>

namespace orvanta {

namespace {

const auto portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const auto settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");

const auto appearance = QStringLiteral("org.freedesktop.appearance");
const auto colorSchemeKey = QStringLiteral("color-scheme");
const auto gnomeInterface = QStringLiteral("org.gnome.desktop.interface");
const auto animationsKey = QStringLiteral("enable-animations");

/// What is inside a variant; `Read` wraps its answer in one variant more than the signal does.
QVariant unwrapped(QVariant value) {
    constexpr int deepest = 3;
    for (int depth = 0; depth < deepest; ++depth) {
        if (value.metaType() == QMetaType::fromType<QDBusVariant>()) {
            value = value.value<QDBusVariant>().variant();
        }
    }
    return value;
}

std::optional<ColorScheme> schemeOf(const QVariant& value) {
    if (value.metaType() != QMetaType::fromType<quint32>()) {
        return std::nullopt;
    }
    switch (value.toUInt()) {
    case 1:
        return ColorScheme::dark;
    case 2:
        return ColorScheme::light;
    default:
        return std::nullopt;
    }
}

ColorScheme schemeOfPalette() {
    constexpr int half = 128;
    return QGuiApplication::palette().color(QPalette::Window).lightness() < half
               ? ColorScheme::dark
               : ColorScheme::light;
}

/// For the controls of Qt's own style, which knows no dark desktops.
QPalette darkPalette() {
    constexpr QColor window(76, 76, 76); // Its darker shade outlines what is on the base.
    constexpr QColor disabled(150, 150, 150);
    QPalette palette(window); // The other colours follow.
    palette.setColor(QPalette::Base, QColor(36, 36, 36));
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Highlight, QColor(42, 110, 180));
    palette.setColor(QPalette::Link, QColor(90, 160, 230));
    palette.setColor(QPalette::PlaceholderText, QColor(165, 165, 165));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, disabled);
    }
    return palette;
}

} // namespace

LinuxAppearance::LinuxAppearance(const QDBusConnection& sessionBus, MainLoop& mainLoop)
    : portal_(sessionBus, QStringLiteral("org.freedesktop.portal.Desktop"), mainLoop)
    , looks_{schemeOfPalette(), false} {
    // Deprecated in favour of ApplicationPaletteChange, an event. To see that we would have to
    // filter all events of the application, each tick's among them.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    connect(qGuiApp, &QGuiApplication::paletteChanged, this, &LinuxAppearance::update);
    QT_WARNING_POP
    connect(&portal_, &BusService::appeared, this, &LinuxAppearance::greet);
    connect(&portal_, &BusService::forgotten, this, [this] {
        note(appearance, colorSchemeKey, {});
        note(gnomeInterface, animationsKey, {});
    });
    portal_.start();
}

void LinuxAppearance::greet() {
    portal_.listen(portalPath, settingsInterface, QStringLiteral("SettingChanged"),
                   [this](const QDBusMessage& signal) {
                       note(signal.arguments().value(0).toString(),
                            signal.arguments().value(1).toString(), signal.arguments().value(2));
                   });
    ask(appearance, colorSchemeKey);
    ask(gnomeInterface, animationsKey);
}

void LinuxAppearance::ask(const QString& space, const QString& key) {
    portal_.ask(portalPath, settingsInterface, QStringLiteral("Read"), {space, key},
                [this, space, key](const QDBusMessage& answer) {
                    // An error: there is no such setting, and what a predecessor said is over.
                    note(space, key,
                         answer.type() == QDBusMessage::ReplyMessage ? answer.arguments().value(0)
                                                                     : QVariant());
                });
}

void LinuxAppearance::note(const QString& space, const QString& key, const QVariant& value) {
    const QVariant told = unwrapped(value);
    if (space == appearance && key == colorSchemeKey) {
        preferred_ = schemeOf(told);
    } else if (space == gnomeInterface && key == animationsKey) {
        animates_ = told.metaType() != QMetaType::fromType<bool>() || told.toBool();
    }
    update();
}

/// A desktop that Qt knows brings the palette along; with the others it stays light.
void LinuxAppearance::colourControls() {
    const bool wantsDark = preferred_ == ColorScheme::dark;
    if (wantsDark && !darkened_ && schemeOfPalette() == ColorScheme::light) {
        darkened_ = true;
        QGuiApplication::setPalette(darkPalette());
    } else if (!wantsDark && darkened_) {
        darkened_ = false;
        QGuiApplication::setPalette(QPalette());
    }
}

void LinuxAppearance::update() {
    colourControls();
    const Looks looks{preferred_.value_or(schemeOfPalette()), !animates_};
    if (looks_ != looks) {
        looks_ = looks;
        Q_EMIT changed();
    }
}

} // namespace orvanta
