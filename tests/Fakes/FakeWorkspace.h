#pragma once

#include "Platform/Workspace.h"

#include <map>
#include <optional>
#include <set>

namespace orvanta {

/// A desktop whose windows come to the front by assignment.
class FakeWorkspace final : public Workspace {
public:
    std::optional<RunningApplication> front;
    std::map<QString, QString> locations;
    std::set<QString> components;
    /// Those of the components that somebody asked about.
    mutable std::set<QString> seenComponents;

    const RunningApplication* frontmostApplication() const override {
        return front ? &*front : nullptr;
    }
    std::optional<QString> installLocation(const QString& bundleIdentifier) const override {
        const auto found = locations.find(bundleIdentifier);
        return found == locations.end() ? std::nullopt : std::optional(found->second);
    }
    bool isSystemComponent(const QString& bundleIdentifier) const override {
        const bool isComponent = components.contains(bundleIdentifier);
        if (isComponent) {
            seenComponents.insert(bundleIdentifier);
        }
        return isComponent;
    }
    const QString& ownBundleIdentifier() const override { return own_; }

private:
    QString own_ = QStringLiteral("com.brindlework.orvanta");
};

} // namespace orvanta
