#pragma once

#include "Linux/Applications/DesktopEntries.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace orvanta {

/// Which applications open a MIME type (freedesktop.org, Association between MIME types and
/// applications 1.0.1). Reads the files anew each time.
class Associations {
public:
    struct Places {
        QStringList configurations; ///< $XDG_CONFIG_HOME, then those of $XDG_CONFIG_DIRS
        QStringList applications;   ///< the folders of `entries`, the most important first
        QStringList desktops;       ///< the names in $XDG_CURRENT_DESKTOP
    };

    /// `entries` outlives this.
    Associations(DesktopEntries& entries, Places places);

    /// The paths of the entries: the default first, if one is set and installed; then, folder by
    /// folder, what was added to the type and what declares it, without what was removed from it.
    ///
    /// A default need not declare the type: neither GIO nor xdg-utils ask that of it, and it is
    /// their choice that the person sees.
    QStringList applicationsFor(const QByteArray& mimeType) const;

private:
    DesktopEntries& entries_;
    Places places_;
};

} // namespace orvanta
