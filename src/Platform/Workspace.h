#pragma once

#include "Platform/RunningApplication.h"

#include <QString>

#include <optional>

namespace orvanta {

/// What the desktop knows of its applications.
///
/// A change of the frontmost application is announced on the workspace's notification centre as
/// `Notification::DidActivateApplication`.
class Workspace {
public:
    virtual ~Workspace();

    /// The application whose window has the focus, as the desktop last told; null when none has.
    /// Costs nothing: the answer is kept from the last event. Valid until control returns to the
    /// main loop.
    virtual const RunningApplication* frontmostApplication() const = 0;

    /// Where the application is installed: the path of its desktop entry, absent when there is
    /// none.
    virtual std::optional<QString> installLocation(const QString& bundleIdentifier) const = 0;

    /// Whether the identifier names a part of the desktop itself (panel, shell, lock screen,
    /// launcher, agent), which nobody works in.
    virtual bool isSystemComponent(const QString& bundleIdentifier) const = 0;

    /// Orvanta's own identifier, equal to what `frontmostApplication()` reports for its windows.
    virtual const QString& ownBundleIdentifier() const = 0;

protected:
    Workspace() = default;
    Workspace(const Workspace&) = default;
    Workspace& operator=(const Workspace&) = default;
};

} // namespace orvanta
