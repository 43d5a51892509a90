#include "Tracking/TrackingPolicy.h"

#include <array>

namespace orvanta::TrackingPolicy {

namespace {

// What does not begin so is looked at no further, once a second.
constexpr QLatin1StringView vendor("com.apple.");
constexpr std::array systemComponents{
    QLatin1StringView("finder"),
    QLatin1StringView("dock"),
    QLatin1StringView("notificationcenterui"),
    QLatin1StringView("usernotificationcenter"),
    QLatin1StringView("controlcenter"),
    QLatin1StringView("systemuiserver"),
    QLatin1StringView("spotlight"),
    QLatin1StringView("loginwindow"),
    QLatin1StringView("screensaver.engine"),
    QLatin1StringView("systempreferences"),
    QLatin1StringView("systemsettings"),
    QLatin1StringView("securityagent"),
    QLatin1StringView("coreauthui"),
    QLatin1StringView("scopedbookmarkagent"),
};

} // namespace

bool isSystemComponent(const QString& bundleIdentifier, const std::optional<QString>& path) {
    if (bundleIdentifier.startsWith(vendor, Qt::CaseInsensitive)) {
        const QStringView name = QStringView(bundleIdentifier).sliced(vendor.size());
        for (const QLatin1StringView component : systemComponents) {
            if (name.startsWith(component, Qt::CaseInsensitive) &&
                (name.size() == component.size() || name[component.size()] == QLatin1Char('.'))) {
                return true;
            }
        }
    }
    return path && path->startsWith(QLatin1StringView("/System/Library/"));
}

} // namespace orvanta::TrackingPolicy
