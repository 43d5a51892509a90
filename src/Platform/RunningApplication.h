#pragma once

#include <QString>

#include <optional>

namespace orvanta {

/// An application that runs on this desktop and may own the window with the focus.
struct RunningApplication {
    /// Desktop-file id without ".desktop" (freedesktop.org, "Desktop File ID"); for a
    /// window that no entry matches, its `app_id` or window class as the window reports it. Never
    /// empty.
    QString bundleIdentifier;

    /// Name as the person reads it in menus; absent when the application reports none.
    std::optional<QString> localizedName;

    /// Absolute path of the desktop entry; absent when no entry matches.
    std::optional<QString> installLocation;

    /// Process that owns the window; absent where the desktop does not tell.
    std::optional<qint64> processIdentifier;

    friend bool operator==(const RunningApplication&, const RunningApplication&) = default;
};

} // namespace orvanta
