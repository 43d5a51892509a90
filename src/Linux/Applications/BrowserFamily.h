#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace orvanta {

class KeyFile;

/// The browsers that can run our extension, by what they are built on.
enum class BrowserFamily { Gecko, Chromium };

/// Where programs are looked for.
struct ProgramFolders {
    QStringList path;     ///< as in $PATH
    QStringList flatpaks; ///< Flatpak's installations, such as /var/lib/flatpak
    QStringList snaps;    ///< where snaps are mounted, such as /snap
};

/// The family of the browser that a desktop entry starts, told by the files that lie beside its
/// program: names do not tell, there are too many builds and wrappers. None for other applications
/// and for entries that are no more than a helper, a site of its own or a private window.
std::optional<BrowserFamily> browserFamily(const QString& id, const KeyFile& entry,
                                           const ProgramFolders& folders);

} // namespace orvanta
