#pragma once

#include "Linux/Applications/ApplicationIdentity.h"
#include "Linux/Windows/WindowWatcher.h"
#include "Platform/NotificationCenter.h"
#include "Platform/Workspace.h"

#include <QObject>

#include <optional>
#include <utility>

namespace orvanta {

/// The applications behind the windows that a watcher sees.
///
/// The first window is identified when it is asked for, every later one when it comes to the front.
class LinuxWorkspace final : public QObject, public Workspace {
    Q_OBJECT

public:
    /// Announces on `notifications`. All that is handed in outlives the workspace. Windows of the
    /// process `ownProcess` are `ownBundleIdentifier`'s.
    LinuxWorkspace(WindowWatcher& watcher, DesktopEntries& entries,
                   NotificationCenter& notifications, qint64 ownProcess,
                   QString ownBundleIdentifier);

    const RunningApplication* frontmostApplication() const override;
    std::optional<QString> installLocation(const QString& bundleIdentifier) const override;
    bool isSystemComponent(const QString& bundleIdentifier) const override;
    const QString& ownBundleIdentifier() const override { return ownBundleIdentifier_; }

private:
    std::optional<RunningApplication> identify() const;
    void activeWindowChanged();

    WindowWatcher& watcher_;
    DesktopEntries& entries_;
    NotificationCenter& notifications_;
    QString ownBundleIdentifier_;
    mutable ApplicationIdentity identity_;

    mutable bool identified_ = false;
    mutable std::optional<RunningApplication> frontmost_;
    /// The identifier asked about last, and the answer: every second it is the same one.
    mutable std::pair<QString, bool> lastComponent_;
};

} // namespace orvanta
