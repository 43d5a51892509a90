#include "Tracking/TrackingPolicy.h"

#include <array>

namespace orvanta::TrackingPolicy {

namespace {

constexpr std::array systemComponents{
    QLatin1StringView("com.apple.finder"),
    QLatin1StringView("com.apple.dock"),
    QLatin1StringView("com.apple.notificationcenterui"),
    QLatin1StringView("com.apple.usernotificationcenter"),
    QLatin1StringView("com.apple.controlcenter"),
    QLatin1StringView("com.apple.systemuiserver"),
    QLatin1StringView("com.apple.spotlight"),
    QLatin1StringView("com.apple.loginwindow"),
    QLatin1StringView("com.apple.screensaver.engine"),
    QLatin1StringView("com.apple.systempreferences"),
    QLatin1StringView("com.apple.systemsettings"),
    QLatin1StringView("com.apple.securityagent"),
    QLatin1StringView("com.apple.coreauthui"),
    QLatin1StringView("com.apple.scopedbookmarkagent"),
};

} // namespace

bool isSystemComponent(const QString& bundleIdentifier, const std::optional<QString>& path) {
    for (const QLatin1StringView component : systemComponents) {
        if (bundleIdentifier.startsWith(component, Qt::CaseInsensitive) &&
            (bundleIdentifier.size() == component.size() ||
             bundleIdentifier[component.size()] == QLatin1Char('.'))) {
            return true;
        }
    }
    return path && path->startsWith(QLatin1StringView("/System/Library/"));
}

} // namespace orvanta::TrackingPolicy
