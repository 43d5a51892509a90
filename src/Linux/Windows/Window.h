#pragma once

#include <QString>

#include <optional>

namespace orvanta {

/// A window as its display system describes it; every text may be empty.
struct Window {
    /// The display system's own number. May be given to another window once this one is gone.
    quint64 id = 0;

    QString wmInstance; ///< first string of WM_CLASS (ICCCM 4.1.2.5)
    QString wmClass;    ///< second string of WM_CLASS, or the `app_id` of a Wayland window

    QString gtkApplicationId; ///< _GTK_APPLICATION_ID
    QString desktopFile;      ///< _KDE_NET_WM_DESKTOP_FILE

    /// Process that owns the window, in our own pid namespace if the display system knows it.
    std::optional<qint64> processIdentifier;

    friend bool operator==(const Window&, const Window&) = default;
};

} // namespace orvanta
