#include "Linux/Applications/BrowserFamily.h"

#include "Linux/Applications/BoundedFile.h"
#include "Linux/Applications/KeyFile.h"
#include "Linux/Applications/LaunchScript.h"

#include <QByteArray>
#include <QFile>

#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <deque>
#include <filesystem>
#include <iterator>
#include <utility>
#include <vector>

namespace orvanta {

namespace {

constexpr int firstGecko = 109; ///< whose extensions can be of manifest version 3
constexpr qsizetype largestScript = 65'536;
constexpr std::size_t mostPrograms = 16; ///< that one script after the other leads to
constexpr std::size_t mostFolders = 512; ///< of a package
constexpr int deepestFolder = 4;         ///< within it

/// For packages that we cannot look into: of the ids that Flatpak and snap export, and those of
/// distributions.
constexpr std::pair<QLatin1StringView, BrowserFamily> knownIds[] = {
    {QLatin1StringView("app.zen_browser.zen"), BrowserFamily::Gecko},
    {QLatin1StringView("firefox"), BrowserFamily::Gecko},
    {QLatin1StringView("firefox-esr"), BrowserFamily::Gecko},
    {QLatin1StringView("firefox_firefox"), BrowserFamily::Gecko},
    {QLatin1StringView("io.gitlab.librewolf-community"), BrowserFamily::Gecko},
    {QLatin1StringView("librewolf"), BrowserFamily::Gecko},
    {QLatin1StringView("net.waterfox.waterfox"), BrowserFamily::Gecko},
    {QLatin1StringView("one.ablaze.floorp"), BrowserFamily::Gecko},
    {QLatin1StringView("org.mozilla.firefox"), BrowserFamily::Gecko},
    {QLatin1StringView("brave_brave"), BrowserFamily::Chromium},
    {QLatin1StringView("chromium"), BrowserFamily::Chromium},
    {QLatin1StringView("chromium-browser"), BrowserFamily::Chromium},
    {QLatin1StringView("chromium_chromium"), BrowserFamily::Chromium},
    {QLatin1StringView("com.brave.Browser"), BrowserFamily::Chromium},
    {QLatin1StringView("com.google.Chrome"), BrowserFamily::Chromium},
    {QLatin1StringView("com.microsoft.Edge"), BrowserFamily::Chromium},
    {QLatin1StringView("com.opera.Opera"), BrowserFamily::Chromium},
    {QLatin1StringView("com.vivaldi.Vivaldi"), BrowserFamily::Chromium},
    {QLatin1StringView("io.github.ungoogled_software.ungoogled_chromium"), BrowserFamily::Chromium},
    {QLatin1StringView("opera_opera"), BrowserFamily::Chromium},
    {QLatin1StringView("org.chromium.Chromium"), BrowserFamily::Chromium},
};

/// What the files of a folder tell.
struct Finding {
    bool isConclusive = false;
    std::optional<BrowserFamily> family;
};

QByteArray parentOf(const QByteArray& path) {
    return path.first(std::max<qsizetype>(path.lastIndexOf('/'), 0));
}

QByteArrayView nameOf(QByteArrayView path) {
    return path.sliced(path.lastIndexOf('/') + 1);
}

bool has(const QByteArray& folder, const char* name) {
    return ::access((folder + '/' + name).constData(), F_OK) == 0;
}

Finding lookIn(const QByteArray& folder) {
    if (has(folder, "libxul.so")) {
        const auto platform = KeyFile::read(folder + "/platform.ini");
        const Characters version = platform ? platform->text("Build", "Milestone") : nullptr;
        const bool isCurrent = version && std::atoi(version.get()) >= firstGecko;
        return {true, isCurrent ? std::optional(BrowserFamily::Gecko) : std::nullopt};
    }
    if (!has(folder, "icudtl.dat") && !has(folder, "v8_context_snapshot.bin") &&
        !has(folder, "snapshot_blob.bin")) {
        return {};
    }
    // Applications that bring Chromium along to show their own pages: of Electron, CEF and NW.js.
    for (const char* name :
         {"resources/app.asar", "resources/app", "resources/default_app.asar",
          "resources/electron.asar", "LICENSES.chromium.html", "libcef.so", "lib/libnw.so"}) {
        if (has(folder, name)) {
            return {true, std::nullopt};
        }
    }
    std::error_code error;
    std::filesystem::directory_iterator file(folder.constData(), error);
    for (; !error && file != std::filesystem::directory_iterator(); file.increment(error)) {
        if (file->path().native().ends_with("_100_percent.pak")) { // chrome_, brave_, opera_...
            return {true, BrowserFamily::Chromium};
        }
    }
    return {};
}

/// Looks through a package, whose layout is up to its maker, from the top down.
Finding lookUnder(const QByteArray& root) {
    struct Level {
        QByteArray folder;
        int depth;
    };
    std::vector<Level> levels{{root, 0}};
    for (std::size_t i = 0; i < levels.size(); ++i) {
        const Level level = levels[i];
        if (const Finding finding = lookIn(level.folder); finding.isConclusive) {
            return finding;
        }
        std::error_code error;
        std::filesystem::directory_iterator file(level.folder.constData(), error);
        for (;
             !error && level.depth < deepestFolder && file != std::filesystem::directory_iterator();
             file.increment(error)) {
            std::error_code noType;
            const std::string name = file->path().filename().native();
            if (levels.size() < mostFolders && name != "share" && name != "include" &&
                !file->is_symlink(noType) && file->is_directory(noType)) {
                levels.push_back(
                    {QByteArray::fromStdString(file->path().native()), level.depth + 1});
            }
        }
    }
    return {};
}

/// Empty when there is no such program.
QByteArray findProgram(const QByteArray& name, const QStringList& path) {
    if (name.contains('/')) {
        return name.startsWith('/') ? name : QByteArray();
    }
    for (const QString& folder : path) {
        QByteArray program = QFile::encodeName(folder) + '/' + name;
        if (::access(program.constData(), X_OK) == 0) {
            return program;
        }
    }
    return {};
}

/// Without symbolic links; empty when it does not exist.
QByteArray resolved(const QByteArray& path) {
    std::array<char, PATH_MAX> real{};
    return ::realpath(path.constData(), real.data()) == nullptr ? QByteArray()
                                                                : QByteArray(real.data());
}

/// Follows links and scripts from a program to where its files lie.
Finding lookBeside(const QByteArray& program, const QStringList& path) {
    std::deque<QByteArray> programs; // Grows without moving what is in it.
    const auto add = [&](const QByteArray& found) {
        const QByteArray next = resolved(found);
        if (!next.isEmpty() && programs.size() < mostPrograms &&
            std::ranges::count(programs, next) == 0) {
            programs.push_back(next);
        }
    };
    add(program);
    for (std::size_t i = 0; i < programs.size(); ++i) {
        const QByteArray& current = programs[i];
        if (const Finding finding = lookIn(parentOf(current)); finding.isConclusive) {
            return finding;
        }
        const auto script = readBounded(current, largestScript, false);
        if (!script || !script->startsWith("#!")) {
            continue;
        }
        for (const QByteArray& name : programsStartedBy(*script)) {
            add(findProgram(name, path));
        }
    }
    return {};
}

/// The words of an entry's command line, without "env" and what it sets.
std::vector<QByteArray> commandOf(const KeyFile& entry) {
    const Characters line = entry.text(G_KEY_FILE_DESKTOP_GROUP, G_KEY_FILE_DESKTOP_KEY_EXEC);
    const Arguments words = line ? shellWords(line.get()) : nullptr;
    std::vector<QByteArray> command;
    for (char** word = words.get(); word != nullptr && *word != nullptr; ++word) {
        command.emplace_back(*word);
    }
    if (!command.empty() && nameOf(command.front()) == "env") {
        command.erase(command.begin(),
                      std::find_if(command.begin() + 1, command.end(), [](const QByteArray& word) {
                          return !word.startsWith('-') && !word.contains('=');
                      }));
    }
    return command;
}

/// Whether a command shows one site, without the browser around it, or a window that hides what it
/// shows.
bool isSpecialWindow(const std::vector<QByteArray>& command) {
    constexpr std::array starts{"--app=",    "--app-id=", "--ssb",   "--incognito", "--inprivate",
                                "--private", "-private",  "http://", "https://"};
    return std::ranges::any_of(command, [&](const QByteArray& word) {
        return std::ranges::any_of(starts,
                                   [&](const char* start) { return word.startsWith(start); });
    });
}

/// The id in "flatpak run --option ID ...", else empty.
QByteArray flatpakId(const std::vector<QByteArray>& command) {
    const auto run = std::ranges::find(command, "run");
    if (nameOf(command.front()) != "flatpak" || run == command.end()) {
        return {};
    }
    const auto id = std::find_if(run + 1, command.end(),
                                 [](const QByteArray& word) { return !word.startsWith('-'); });
    return id != command.end() && !id->contains('/') ? *id : QByteArray();
}

Finding lookFor(const std::vector<QByteArray>& command, const ProgramFolders& folders) {
    QStringList packages;
    const QByteArray program = findProgram(command.front(), folders.path);
    if (const QByteArray id = flatpakId(command); !id.isEmpty()) {
        for (const QString& installation : folders.flatpaks) {
            packages += installation + QStringLiteral("/app/") + QString::fromUtf8(id) +
                        QStringLiteral("/current/active/files");
        }
    } else if (nameOf(resolved(program)) == "snap") {
        // Every program of a snap is a link to the one that starts them all.
        const QByteArrayView name = nameOf(program);
        for (const QString& snaps : folders.snaps) {
            packages += snaps + QLatin1Char('/') +
                        QString::fromUtf8(name.first(std::ranges::find(name, '.') - name.begin())) +
                        QStringLiteral("/current");
        }
    } else {
        return lookBeside(program, folders.path);
    }
    for (const QString& package : packages) {
        if (const Finding finding = lookUnder(QFile::encodeName(package)); finding.isConclusive) {
            return finding;
        }
    }
    return {};
}

} // namespace

std::optional<BrowserFamily> browserFamily(const QString& id, const KeyFile& entry,
                                           const ProgramFolders& folders) {
    constexpr auto group = G_KEY_FILE_DESKTOP_GROUP;
    const std::vector<QByteArray> command = commandOf(entry);
    if (command.empty() || isSpecialWindow(command) ||
        entry.isSet(group, G_KEY_FILE_DESKTOP_KEY_NO_DISPLAY) ||
        !entry.list(group, G_KEY_FILE_DESKTOP_KEY_CATEGORIES)
             .contains(QLatin1StringView("WebBrowser"))) {
        return std::nullopt;
    }
    const Finding finding = lookFor(command, folders);
    if (finding.isConclusive) {
        return finding.family;
    }
    const auto* const known =
        std::ranges::find(knownIds, id, &std::pair<QLatin1StringView, BrowserFamily>::first);
    return known == std::end(knownIds) ? std::nullopt : std::optional(known->second);
}

} // namespace orvanta
