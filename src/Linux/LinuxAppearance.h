#pragma once

#include "Linux/Presence/BusService.h"
#include "Platform/Appearance.h"

#include <QDBusConnection>

#include <optional>

namespace orvanta {

/// What the desktop's settings portal says (XDG Desktop Portal, org.freedesktop.portal.Settings).
/// Without one, or without a preference, dark or light is told by the application's palette; where
/// dark is preferred and that is light, it is made dark.
class LinuxAppearance final : public Appearance {
    Q_OBJECT

public:
    /// Follows the portal at once, and neither starts one nor waits for it. Needs a
    /// QGuiApplication, which outlives this, as `mainLoop` does.
    LinuxAppearance(const QDBusConnection& sessionBus, MainLoop& mainLoop);

    ColorScheme colorScheme() const override { return looks_.scheme; }
    bool reducesMotion() const override { return looks_.reducesMotion; }

private:
    struct Looks {
        ColorScheme scheme = ColorScheme::light;
        bool reducesMotion = false;

        friend bool operator==(const Looks&, const Looks&) = default;
    };

    void greet();
    void ask(const QString& space, const QString& key);
    void note(const QString& space, const QString& key, const QVariant& value);
    void colourControls();
    void update();

    BusService portal_;
    std::optional<ColorScheme> preferred_; ///< as the portal told
    bool animates_ = true;                 ///< as the portal told
    bool darkened_ = false;                ///< the application's palette is ours
    Looks looks_;
};

} // namespace orvanta
