#pragma once

#include "Linux/Applications/BrowserFamily.h"
#include "Linux/Files/PlainFile.h"

#include <QList>
#include <QString>

#include <optional>

namespace orvanta {

/// Where a browser keeps what is the person's, whether or not it runs.
struct BrowserFolder {
    BrowserFamily family = BrowserFamily::Chromium;
    QString path;

    bool operator==(const BrowserFolder&) const = default;
};

/// The folders of browsers that the person has used, of those that are known here.
/// `configHome` is where XDG_CONFIG_HOME points.
QList<BrowserFolder> findBrowserFolders(const QString& home, const QString& configHome);

/// The files that let a browser start the browser host (developer.chrome.com, "Native messaging";
/// developer.mozilla.org, "Native manifests"). Only the one file of Orvanta's name is ever touched.
class NativeManifests {
public:
    /// `hostExecutable` is an absolute path.
    explicit NativeManifests(QString hostExecutable);

    /// Writes or renews the browser's manifest, at once as a whole; mode 0644. The browser sees it
    /// when it next looks for the host.
    std::optional<FileProblem> write(const BrowserFolder& browser) const;

    /// Takes it away, and the folders around it that are then empty.
    std::optional<FileProblem> remove(const BrowserFolder& browser) const;

    /// Where the browser looks for it.
    static QString path(const BrowserFolder& browser);

private:
    QString hostExecutable_;
};

/// Removes a plain file of a browser's, then the folders around it as far as they are empty: all
/// that replaceFile() may have made. No such file is no problem.
std::optional<FileProblem> removeFile(const QString& path, const BrowserFolder& browser);

} // namespace orvanta
