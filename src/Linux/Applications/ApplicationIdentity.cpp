#include "Linux/Applications/ApplicationIdentity.h"

#include "Linux/Applications/BoundedFile.h"
#include "Linux/Applications/KeyFile.h"
#include "Platform/CleanText.h"

#include <QFile>

#include <limits.h>
#include <unistd.h>

#include <array>
#include <utility>

namespace orvanta {

namespace {

constexpr qsizetype largestFlatpakInfo = 65'536;
constexpr qsizetype longestFlatpakId = 255; // as D-Bus names

/// KDE's property may name the file, too, by its path.
QString desktopFileId(const QString& desktopFile) {
    QString id = desktopFile.sliced(desktopFile.lastIndexOf(QLatin1Char('/')) + 1);
    constexpr QLatin1String suffix(".desktop");
    if (id.endsWith(suffix)) {
        id.chop(suffix.size());
    }
    return id;
}

} // namespace

ApplicationIdentity::ApplicationIdentity(DesktopEntries& entries, qint64 ownProcess,
                                         QString ownBundleIdentifier, const QString& processes)
    : entries_(entries)
    , ownProcess_(ownProcess)
    , ownBundleIdentifier_(std::move(ownBundleIdentifier))
    , processes_(QFile::encodeName(processes)) {}

std::optional<RunningApplication> ApplicationIdentity::identify(const Window& window) {
    using Key = DesktopEntries::Key;
    using Clue = DesktopEntries::Clue;

    if (window.processIdentifier == ownProcess_) {
        return application(ownBundleIdentifier_, entries_.withId(ownBundleIdentifier_), window);
    }
    if (window.processIdentifier) {
        const QString id = flatpakId(*window.processIdentifier);
        if (!id.isEmpty()) {
            return application(id, entries_.withId(id), window);
        }
    }

    const std::array clues{
        Clue{Key::Id, window.gtkApplicationId},
        Clue{Key::Id, desktopFileId(window.desktopFile)},
        Clue{Key::StartupWmClass, window.wmClass},
        Clue{Key::StartupWmClass, window.wmInstance},
        Clue{Key::FoldedId, window.wmClass},
        Clue{Key::FoldedId, window.wmInstance},
        Clue{Key::LastIdComponent, window.wmClass},
        Clue{Key::LastIdComponent, window.wmInstance},
    };
    if (const auto entry = entries_.find(clues)) {
        return application(entry->id, entry, window);
    }

    QString executable;
    if (window.processIdentifier) {
        executable = executableBasename(*window.processIdentifier);
        const std::array program{Clue{Key::ExecutableBasename, executable}};
        if (const auto entry = entries_.find(program)) {
            return application(entry->id, entry, window);
        }
    }
    for (const QString& name : {window.wmClass, window.wmInstance, executable}) {
        if (!name.isEmpty()) {
            return application(name, std::nullopt, window);
        }
    }
    return std::nullopt;
}

RunningApplication ApplicationIdentity::application(const QString& id,
                                                    const std::optional<DesktopEntry>& entry,
                                                    const Window& window) {
    RunningApplication application;
    application.bundleIdentifier = boundedIdentifier(id);
    application.processIdentifier = window.processIdentifier;
    if (entry) {
        application.installLocation = entry->path;
        if (!entry->name.isEmpty()) {
            application.localizedName = entry->name;
        }
    }
    return application;
}

/// Flatpak writes /.flatpak-info into each sandbox (flatpak-metadata(5)); empty for a process
/// outside of one, or one that we may not look into.
QString ApplicationIdentity::flatpakId(qint64 process) const {
    // Not through a link: it would be followed in our file system, not in the sandbox's.
    const auto content =
        readBounded(processes_ + '/' + QByteArray::number(process) + "/root/.flatpak-info",
                    largestFlatpakInfo, false);
    if (!content) {
        return {};
    }
    const auto file = KeyFile::parse(*content);
    if (!file) {
        return {};
    }
    const Characters name = file->text("Application", "name");
    const QByteArrayView id(name.get());
    return id.size() <= longestFlatpakId ? QString::fromUtf8(id) : QString();
}

QString ApplicationIdentity::executableBasename(qint64 process) const {
    const QByteArray link = processes_ + '/' + QByteArray::number(process) + "/exe";
    std::array<char, PATH_MAX> target{};
    const ssize_t length = ::readlink(link.constData(), target.data(), target.size());
    if (length <= 0) {
        return {};
    }
    QByteArray path(target.data(), length);
    // The kernel's mark on a program that was replaced while it runs, as by an update.
    constexpr QByteArrayView deleted(" (deleted)");
    if (path.endsWith(deleted)) {
        path.chop(deleted.size());
    }
    return QFile::decodeName(path.sliced(path.lastIndexOf('/') + 1));
}

} // namespace orvanta
