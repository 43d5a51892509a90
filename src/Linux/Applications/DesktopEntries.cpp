#include "Linux/Applications/DesktopEntries.h"

#include "Linux/Applications/BoundedFile.h"
#include "Linux/Applications/KeyFile.h"
#include "Platform/CleanText.h"

#include <QFile>

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <filesystem>
#include <iterator>
#include <unordered_set>
#include <utility>

namespace orvanta {

namespace {

constexpr qsizetype longestName = 1024; ///< of a name, a class or a program's name, in bytes
constexpr char nameLocale[] = "pt_BR";  // GKeyFile falls back to "pt", then to the plain name.

/// Programs that run others: an entry that uses one does not own all its windows.
constexpr std::array<QByteArrayView, 14> interpreters{
    "bash", "dash", "electron", "env",     "flatpak", "gapplication", "gjs",
    "java", "perl", "pkexec",   "python3", "sh",      "snap",         "wine"};

QByteArrayView bounded(const char* text) {
    const QByteArrayView view(text);
    return view.size() <= longestName ? view : QByteArrayView();
}

QByteArrayView fileName(QByteArrayView path) {
    const auto slash = std::find(path.rbegin(), path.rend(), '/');
    return path.last(slash - path.rbegin());
}

QByteArrayView lastComponent(QByteArrayView id) {
    const auto dot = std::find(id.rbegin(), id.rend(), '.');
    return id.last(dot - id.rbegin());
}

/// Takes the translations into other languages out, in place: most lines of most files, which would
/// take most of the time to parse.
void dropOtherTranslations(QByteArray& content) {
    constexpr QByteArrayView ours = "[pt";
    char* const begin = content.data();
    char* const end = begin + content.size();
    char* kept = begin;
    for (char* line = begin; line != end;) {
        char* const newline = std::find(line, end, '\n');
        char* const next = newline == end ? end : newline + 1;
        char* const mark = std::find_if(line, newline, [](char c) { return c == '[' || c == '='; });
        const bool isTranslation = mark != line && mark != newline && *mark == '[';
        if (!isTranslation || QByteArrayView(mark, newline).startsWith(ours)) {
            kept = std::move(line, next, kept);
        }
        line = next;
    }
    content.truncate(kept - begin);
}

bool isInstalled(const char* program) {
    return Characters(g_find_program_in_path(program)) != nullptr;
}

} // namespace

bool DesktopEntries::Folder::isUnchanged() const {
    const Folder now = look(path);
    return device == now.device && inode == now.inode && modified.tv_sec == now.modified.tv_sec &&
           modified.tv_nsec == now.modified.tv_nsec;
}

/// One walk over all folders.
class DesktopEntries::Build {
public:
    explicit Build(DesktopEntries& index)
        : index_(index) {}

    void walk(const QByteArray& path, const QByteArray& idPrefix) {
        const Folder folder = look(path);
        const auto known = [&](const Folder& other) {
            return other.inode == folder.inode && other.device == folder.device;
        };
        if (folder.inode != 0 && std::ranges::any_of(index_.folders_, known)) {
            return; // A link back, or a folder that is named twice.
        }
        index_.folders_.push_back(folder);

        std::error_code error;
        std::filesystem::directory_iterator file(path.constData(), error);
        for (; !error && file != std::filesystem::directory_iterator(); file.increment(error)) {
            const QByteArray filePath = QByteArray::fromStdString(file->path().native());
            const QByteArrayView name = fileName(filePath);
            constexpr QByteArrayView suffix = ".desktop";
            std::error_code noType;
            if (name.endsWith(suffix)) {
                take(idPrefix + name.chopped(suffix.size()).toByteArray(), filePath);
            } else if (file->is_directory(noType)) {
                walk(filePath, idPrefix + name.toByteArray() + '-');
            }
        }
    }

private:
    void take(const QByteArray& id, const QByteArray& path) {
        // An entry hides those of later folders even if it says no more than "Hidden".
        if (!seen_.insert(id.toStdString()).second || !id.isValidUtf8() || !path.isValidUtf8()) {
            return;
        }
        const QString text = QString::fromUtf8(id);
        if (boundedIdentifier(text) != text) {
            return; // A name that hides what it is.
        }
        auto content = readBounded(path, KeyFile::largest, true);
        if (!content) {
            return;
        }
        dropOtherTranslations(*content);
        const auto file = KeyFile::parse(*content);
        if (!file) {
            return;
        }
        constexpr auto group = G_KEY_FILE_DESKTOP_GROUP;
        const Characters exec = file->text(group, G_KEY_FILE_DESKTOP_KEY_EXEC);
        const Arguments command = exec ? shellWords(exec.get()) : nullptr;
        const char* const program = command ? *command.get() : nullptr;
        const Characters tried = file->text(group, G_KEY_FILE_DESKTOP_KEY_TRY_EXEC);
        const Characters type = file->text(group, G_KEY_FILE_DESKTOP_KEY_TYPE);
        if (QByteArrayView(type.get()) != G_KEY_FILE_DESKTOP_TYPE_APPLICATION ||
            file->isSet(group, G_KEY_FILE_DESKTOP_KEY_HIDDEN) ||
            (tried && !isInstalled(tried.get())) ||
            (exec && (program == nullptr || !isInstalled(program)))) {
            return;
        }
        const Characters wmClass = file->text(group, G_KEY_FILE_DESKTOP_KEY_STARTUP_WM_CLASS);
        const Characters name = file->translation(group, G_KEY_FILE_DESKTOP_KEY_NAME, nameLocale);
        Entry entry;
        entry.id = add(id);
        entry.foldedId = add(text.toCaseFolded().toUtf8());
        entry.name = add(bounded(name.get()));
        entry.path = add(path);
        entry.startupWmClass = add(bounded(wmClass.get()));
        const auto executable = fileName(bounded(program));
        if (std::ranges::count(interpreters, executable) == 0) {
            entry.executable = add(executable);
        }
        entry.shown = !file->isSet(group, G_KEY_FILE_DESKTOP_KEY_NO_DISPLAY);
        index_.entries_.push_back(entry);
    }

    Text add(QByteArrayView bytes) {
        const Text text{static_cast<quint32>(index_.text_.size()),
                        static_cast<quint32>(bytes.size())};
        index_.text_.append(bytes);
        return text;
    }

    DesktopEntries& index_;
    std::unordered_set<std::string> seen_;
};

DesktopEntries::DesktopEntries(QStringList folders)
    : roots_(std::move(folders)) {}

std::optional<DesktopEntry> DesktopEntries::find(std::span<const Clue> clues) {
    const std::scoped_lock lock(mutex_);
    const Entry* entry = built_ ? findNow(clues) : nullptr;
    if (entry == nullptr && (!built_ || isOutdated())) {
        rebuild();
        entry = findNow(clues);
    }
    if (entry == nullptr) {
        return std::nullopt;
    }
    return publicEntry(*entry);
}

std::optional<DesktopEntry> DesktopEntries::withId(const QString& id) {
    const std::array clues{Clue{Key::Id, id}};
    return find(clues);
}

std::optional<DesktopEntry> DesktopEntries::at(const QString& path) {
    const std::array clues{Clue{Key::Path, path}};
    return find(clues);
}

std::vector<DesktopEntry> DesktopEntries::all() {
    const std::scoped_lock lock(mutex_);
    if (!built_ || isOutdated()) {
        rebuild();
    }
    std::vector<DesktopEntry> all;
    all.reserve(entries_.size());
    std::ranges::transform(entries_, std::back_inserter(all),
                           [this](const Entry& entry) { return publicEntry(entry); });
    return all;
}

DesktopEntry DesktopEntries::publicEntry(const Entry& entry) const {
    return {QString::fromUtf8(view(entry.id)), cleanName(QString::fromUtf8(view(entry.name))),
            QString::fromUtf8(view(entry.path))};
}

DesktopEntries::Folder DesktopEntries::look(const QByteArray& path) {
    struct stat status {};
    if (::stat(path.constData(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        return {path};
    }
    return {path, status.st_dev, status.st_ino, status.st_mtim};
}

bool DesktopEntries::isOutdated() const {
    return racy_ || !std::ranges::all_of(folders_, &Folder::isUnchanged);
}

void DesktopEntries::rebuild() {
    built_ = true;
    text_.clear();
    entries_.clear();
    folders_.clear();
    Build build(*this);
    for (const QString& root : std::as_const(roots_)) {
        build.walk(QFile::encodeName(root), {});
    }
    text_.squeeze();
    entries_.shrink_to_fit();
    // So that of several entries the first is one that people see, and the answer is always the
    // same, in whatever order the folders list their files.
    std::ranges::sort(entries_, [this](const Entry& a, const Entry& b) {
        return a.shown != b.shown ? a.shown : view(a.id) < view(b.id);
    });
    // File times have the resolution of the kernel's tick: what is written right after our look
    // may not show.
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    racy_ = std::ranges::any_of(folders_, [&](const Folder& folder) {
        return folder.inode != 0 && std::abs(now.tv_sec - folder.modified.tv_sec) <= 1;
    });
}

const DesktopEntries::Entry* DesktopEntries::findNow(std::span<const Clue> clues) const {
    for (const Clue& clue : clues) {
        if (const Entry* entry = findNow(clue)) {
            return entry;
        }
    }
    return nullptr;
}

const DesktopEntries::Entry* DesktopEntries::findNow(const Clue& clue) const {
    if (clue.text.isEmpty()) {
        return nullptr;
    }
    const bool folds = clue.key == Key::FoldedId || clue.key == Key::LastIdComponent;
    const QByteArray wanted = (folds ? clue.text.toCaseFolded() : clue.text).toUtf8();
    const auto matches = [&](const Entry& entry) {
        switch (clue.key) {
        case Key::Id:
            return view(entry.id) == wanted;
        case Key::Path:
            return view(entry.path) == wanted;
        case Key::FoldedId:
            return view(entry.foldedId) == wanted;
        case Key::LastIdComponent:
            return lastComponent(view(entry.foldedId)) == wanted;
        case Key::StartupWmClass:
            return view(entry.startupWmClass) == wanted;
        case Key::ExecutableBasename:
            return view(entry.executable) == wanted;
        }
        return false;
    };
    const auto found = std::ranges::find_if(entries_, matches);
    if (found == entries_.end()) {
        return nullptr;
    }
    const bool mustBeUnique =
        clue.key == Key::LastIdComponent || clue.key == Key::ExecutableBasename;
    if (mustBeUnique && std::any_of(found + 1, entries_.end(), matches)) {
        return nullptr;
    }
    return &*found;
}

QByteArrayView DesktopEntries::view(Text text) const {
    return QByteArrayView(text_).sliced(text.begin, text.size);
}

} // namespace orvanta
