#pragma once

#include "Linux/Applications/DesktopEntries.h"
#include "Linux/Windows/Window.h"
#include "Platform/RunningApplication.h"

#include <QString>

#include <optional>

namespace orvanta {

/// Tells which application a window belongs to.
class ApplicationIdentity {
public:
    /// Windows of the process `ownProcess` are `ownBundleIdentifier`'s. `processes` is the folder
    /// of the process file system. `entries` outlives this.
    ApplicationIdentity(DesktopEntries& entries, qint64 ownProcess, QString ownBundleIdentifier,
                        const QString& processes = QStringLiteral("/proc"));

    /// Asks, in this order: Flatpak's metadata in the process's own file system; the window's
    /// _GTK_APPLICATION_ID and _KDE_NET_WM_DESKTOP_FILE; the desktop entries by the window's class
    /// and instance, then by the program of the process. A window that no entry matches is named by
    /// its class, its instance or its program. Absent when it tells nothing at all.
    std::optional<RunningApplication> identify(const Window& window);

private:
    QString flatpakId(qint64 process) const;
    QString executableBasename(qint64 process) const;
    static RunningApplication
    application(const QString& id, const std::optional<DesktopEntry>& entry, const Window& window);

    DesktopEntries& entries_;
    qint64 ownProcess_;
    QString ownBundleIdentifier_;
    QByteArray processes_;
};

} // namespace orvanta
