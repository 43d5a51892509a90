#include "Tracking/FrontmostProbe.h"

#include "Platform/Workspace.h"
#include "Tracking/TrackingPolicy.h"

namespace orvanta {

std::optional<Focus> frontmostFocus(const Workspace& workspace) {
    const RunningApplication* application = workspace.frontmostApplication();
    if (application == nullptr || application->bundleIdentifier.isEmpty()) {
        return std::nullopt;
    }
    const QString& id = application->bundleIdentifier;
    return Focus{id, application->localizedName.value_or(id),
                 TrackingPolicy::isSystemComponent(id, application->installLocation) ||
                     workspace.isSystemComponent(id)};
}

} // namespace orvanta
