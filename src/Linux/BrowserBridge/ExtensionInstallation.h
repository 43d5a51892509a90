#pragma once

#include "Linux/BrowserBridge/NativeManifests.h"

#include <QString>

#include <optional>

namespace orvanta {

/// Puts the extension into a browser with the person's own rights, after the person agreed to it.
///
/// Chromium: a file in "External Extensions" of the browser's folder names the package; at its next
/// start the browser has the extension, and at the first start without the file it has not.
///
/// Gecko: a package in ~/.mozilla/extensions is found at a start and offered in the browser's menu,
/// where the person must agree again. Seen with Firefox ESR 153: it takes only packages that
/// Mozilla has signed, unless the person has turned `xpinstall.signatures.required` off. The
/// profile's own folder and opening the package in the browser are bound by the same. An unsigned
/// package is therefore not put anywhere, and the person's settings are never changed.
class ExtensionInstallation {
public:
    enum class Outcome {
        Installed,         ///< It is there, for everybody on this machine.
        AfterRestart,      ///< It works when the browser has been started anew.
        AfterConfirmation, ///< The browser, started anew, asks the person in its menu.
        NotPossible,       ///< The person must load the extension's folder by hand.
        Failed,            ///< See the problem.
    };

    struct Result {
        Outcome outcome = Outcome::Failed;
        std::optional<FileProblem> problem = std::nullopt;
    };

    /// `packageFolder` has orvanta.crx and orvanta.xpi, and stays where it is: Chromium reads the
    /// package at each start. `systemFolder` is /usr/share outside tests.
    explicit ExtensionInstallation(QString packageFolder,
                                   QString systemFolder = QStringLiteral("/usr/share"));

    Result install(const BrowserFolder& browser) const;

    /// Whether the browser finds it at its next start, as far as the disk tells.
    bool isInPlace(const BrowserFolder& browser) const;

    /// Takes away what install() put there. What is installed for everybody stays.
    std::optional<FileProblem> remove(const BrowserFolder& browser) const;

    /// The person's file that install() writes.
    static QString path(const BrowserFolder& browser);

private:
    bool isInstalledForEverybody(const BrowserFolder& browser) const;

    QString packageFolder_;
    QString systemFolder_;
};

} // namespace orvanta
