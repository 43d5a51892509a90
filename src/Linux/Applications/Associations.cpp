#include "Linux/Applications/Associations.h"

#include "Linux/Applications/BoundedFile.h"
#include "Linux/Applications/KeyFile.h"

#include <QFile>
#include <QSet>

#include <optional>
#include <utility>
#include <vector>

namespace orvanta {

namespace {

/// Empty for a name that is none of a desktop entry.
QString idOf(QString fileName) {
    constexpr QLatin1String suffix(".desktop");
    if (!fileName.endsWith(suffix)) {
        return {};
    }
    fileName.chop(suffix.size());
    return fileName;
}

QStringList idsOf(const std::optional<KeyFile>& file, const char* group, const QByteArray& key) {
    QStringList ids;
    if (file) {
        const QStringList fileNames = file->list(group, key);
        for (const QString& fileName : fileNames) {
            ids += idOf(fileName);
        }
    }
    return ids;
}

std::optional<KeyFile> readIn(const QString& folder, const QString& name) {
    return KeyFile::read(QFile::encodeName(folder + QLatin1Char('/') + name));
}

/// Parses only what can declare the type: few do, and parsing is what takes time.
bool declares(const DesktopEntry& entry, const QByteArray& mimeType) {
    const auto content = readBounded(QFile::encodeName(entry.path), KeyFile::largest, true);
    if (!content || !content->contains(mimeType)) {
        return false;
    }
    const auto file = KeyFile::parse(*content);
    return file && file->list(G_KEY_FILE_DESKTOP_GROUP, G_KEY_FILE_DESKTOP_KEY_MIME_TYPE)
                       .contains(QString::fromUtf8(mimeType));
}

/// One walk over the folders, the most important first.
class Search {
public:
    Search(DesktopEntries& entries, QByteArray mimeType)
        : entries_(entries)
        , installed_(entries.all())
        , mimeType_(std::move(mimeType)) {}

    void readLists(const QString& folder, const QStringList& desktops) {
        for (const QString& desktop : desktops) {
            if (!desktop.contains(QLatin1Char('/'))) {
                prefer(readIn(folder, desktop.toLower() + QStringLiteral("-mimeapps.list")));
            }
        }
        const auto lists = readIn(folder, QStringLiteral("mimeapps.list"));
        prefer(lists);
        for (const QString& id : idsOf(lists, "Added Associations", mimeType_)) {
            offer(id);
        }
        for (const QString& id : idsOf(lists, "Removed Associations", mimeType_)) {
            removed_ += id;
        }
    }

    void readEntries(const QString& folder) {
        QStringList here;
        QStringList declaring;
        for (const DesktopEntry& entry : installed_) {
            if (entry.path.startsWith(folder + QLatin1Char('/'))) {
                here += entry.id;
                if (declares(entry, mimeType_)) {
                    declaring += entry.id;
                }
            }
        }
        // The cache knows the order that other programs see, but may be out of date or missing.
        const auto cache = readIn(folder, QStringLiteral("mimeinfo.cache"));
        for (const QString& id : idsOf(cache, "MIME Cache", mimeType_)) {
            if (declaring.contains(id)) {
                offer(id);
            }
        }
        for (const QString& id : declaring) {
            offer(id);
        }
        for (const QString& id : here) {
            settled_ += id;
        }
    }

    QStringList result() const {
        QStringList paths = associated_;
        if (!default_.isEmpty()) {
            paths.removeOne(default_);
            paths.prepend(default_);
        }
        return paths;
    }

private:
    void prefer(const std::optional<KeyFile>& lists) {
        for (const QString& id : idsOf(lists, "Default Applications", mimeType_)) {
            if (default_.isEmpty() && !removed_.contains(id)) {
                default_ = pathOf(id);
            }
        }
    }

    void offer(const QString& id) {
        const QString path =
            removed_.contains(id) || settled_.contains(id) ? QString() : pathOf(id);
        if (!path.isEmpty() && !associated_.contains(path)) {
            associated_ += path;
        }
    }

    /// Empty for what is not installed.
    QString pathOf(const QString& id) const {
        const auto entry = entries_.withId(id);
        return entry ? entry->path : QString();
    }

    DesktopEntries& entries_;
    std::vector<DesktopEntry> installed_;
    QByteArray mimeType_;
    QString default_;
    QStringList associated_;
    QSet<QString> removed_;
    QSet<QString> settled_; ///< An entry answers only to the lists of its folder and those before.
};

} // namespace

Associations::Associations(DesktopEntries& entries, Places places)
    : entries_(entries)
    , places_(std::move(places)) {}

QStringList Associations::applicationsFor(const QByteArray& mimeType) const {
    Search search(entries_, mimeType);
    for (const QString& folder : places_.configurations) {
        search.readLists(folder, places_.desktops);
    }
    for (const QString& folder : places_.applications) {
        search.readLists(folder, places_.desktops);
        search.readEntries(folder);
    }
    return search.result();
}

} // namespace orvanta
