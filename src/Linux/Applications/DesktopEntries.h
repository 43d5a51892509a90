#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <sys/types.h>

#include <ctime>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

namespace orvanta {

/// An application's desktop entry (freedesktop.org, Desktop Entry Specification 1.5).
struct DesktopEntry {
    QString id;   ///< desktop-file id without ".desktop"
    QString name; ///< as a Brazilian reads it, whatever the locale of the process; may be empty
    QString path; ///< absolute
};

/// What is kept of the applications' desktop entries to find the one a window belongs to: some
/// hundred bytes an entry.
///
/// Entries count by the rules of GIO's GDesktopAppInfo: not those that are hidden, whose program is
/// missing, or that another with the same id precedes; entries that are merely left out of menus
/// do. Files that are broken, or larger than a mebibyte, are passed over. GIO itself is not asked:
/// it would start a thread and watch every folder.
///
/// The index is made when it is first asked. When nothing is found, and a folder has changed since,
/// it is made anew; nothing is watched in between. A change inside an existing file is not noticed,
/// as package managers replace files.
///
/// From any thread.
class DesktopEntries {
public:
    enum class Key {
        Id,
        Path,
        FoldedId,          ///< the id, ignoring case
        LastIdComponent,   ///< what follows the id's last dot, ignoring case; only if unique
        StartupWmClass,    ///< an entry shown in menus precedes others
        ExecutableBasename ///< the program of Exec; only if unique, and not an interpreter's
    };

    /// Something that an entry could be found by. An empty text finds nothing.
    struct Clue {
        Key key;
        QString text;
    };

    /// `folders`: the applications folders, the most important first. They need not exist.
    explicit DesktopEntries(QStringList folders);

    /// The entry of the first clue that leads to one.
    std::optional<DesktopEntry> find(std::span<const Clue> clues);
    std::optional<DesktopEntry> withId(const QString& id);
    std::optional<DesktopEntry> at(const QString& path);

    /// Those that menus show first, then by their ids. Looks for changes of the folders.
    std::vector<DesktopEntry> all();

private:
    /// A part of `text_`: one block instead of six strings an entry.
    struct Text {
        quint32 begin = 0;
        quint32 size = 0;
    };
    struct Entry {
        Text id;
        Text foldedId;
        Text name;
        Text path;
        Text startupWmClass;
        Text executable;
        bool shown = true;
    };
    struct Folder {
        QByteArray path;
        dev_t device = 0;
        ino_t inode = 0; ///< 0: not there
        timespec modified{};
        bool isUnchanged() const;
    };
    class Build;

    static Folder look(const QByteArray& path);
    bool isOutdated() const;
    void rebuild();
    const Entry* findNow(std::span<const Clue> clues) const;
    const Entry* findNow(const Clue& clue) const;
    QByteArrayView view(Text text) const;
    DesktopEntry publicEntry(const Entry& entry) const;

    std::mutex mutex_;
    QStringList roots_;
    bool built_ = false;
    bool racy_ = false; ///< a folder changed so shortly before that its time may stand for more
    QByteArray text_;
    std::vector<Entry> entries_;
    std::vector<Folder> folders_;
};

} // namespace orvanta
