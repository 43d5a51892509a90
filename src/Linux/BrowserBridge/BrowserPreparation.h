#pragma once

#include "Linux/BrowserBridge/ExtensionInstallation.h"
#include "Linux/BrowserBridge/NativeManifests.h"
#include "Linux/BrowserBridge/PermissionPrompt.h"

#include <QString>

#include <optional>

namespace orvanta {

/// Puts into a browser of the person's what it needs to call Orvanta, and takes it out again.
class BrowserPreparation {
public:
    struct Places {
        QString home;
        QString configHome; ///< where XDG_CONFIG_HOME points
        QString hostExecutable;
        /// Has orvanta.crx, orvanta.xpi and the extension's own folder, "extension".
        QString packageFolder;
    };

    explicit BrowserPreparation(Places places);

    PermissionPrompt::Preparation prepare(const QString& bundleIdentifier) const;
    /// What was prepared once and may have moved since: where the host and the package are.
    void renew(const QString& bundleIdentifier) const;
    void withdraw(const QString& bundleIdentifier) const;
    /// Whether the browser finds the extension at its next start. Looks at the disk.
    bool hasExtension(const QString& bundleIdentifier) const;

    /// Where the browser of this identifier keeps what is the person's; absent when it is none that
    /// is known, or was never used.
    std::optional<BrowserFolder> folderOf(const QString& bundleIdentifier) const;

private:
    Places places_;
    NativeManifests manifests_;
    ExtensionInstallation extension_;
};

} // namespace orvanta
