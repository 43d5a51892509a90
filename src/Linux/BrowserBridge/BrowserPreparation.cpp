#include "Linux/BrowserBridge/BrowserPreparation.h"

#include <QFileInfo>

#include <utility>

namespace orvanta {

namespace {

using Preparation = PermissionPrompt::Preparation;

/// What the identifiers of a browser and of its variants begin with.
QString identifierOf(const BrowserFolder& browser) {
    QString name = QFileInfo(browser.path).fileName().toLower();
    if (name.startsWith(u'.')) {
        name.remove(0, 1);
    }
    return name == QLatin1StringView("mozilla") ? QStringLiteral("firefox") : name;
}

Preparation failed(const FileProblem& problem) {
    return {Preparation::Next::Failed, {}, problem.path + QStringLiteral(": ") + problem.reason};
}

} // namespace

BrowserPreparation::BrowserPreparation(Places places)
    : places_(std::move(places))
    , manifests_(places_.hostExecutable)
    , extension_(places_.packageFolder) {}

std::optional<BrowserFolder> BrowserPreparation::folderOf(const QString& bundleIdentifier) const {
    std::optional<BrowserFolder> best;
    for (const BrowserFolder& folder : findBrowserFolders(places_.home, places_.configHome)) {
        // "google-chrome-beta" is more than "google-chrome".
        if (bundleIdentifier.startsWith(identifierOf(folder), Qt::CaseInsensitive) &&
            (!best || identifierOf(*best).size() < identifierOf(folder).size())) {
            best = folder;
        }
    }
    return best;
}

Preparation BrowserPreparation::prepare(const QString& bundleIdentifier) const {
    const auto folder = folderOf(bundleIdentifier);
    const bool isGecko = folder && folder->family == BrowserFamily::Gecko;
    Preparation byHand{isGecko ? Preparation::Next::Temporary : Preparation::Next::Unpacked,
                       places_.packageFolder + QStringLiteral("/extension"),
                       {}};
    if (!folder) {
        return byHand;
    }
    if (const auto problem = manifests_.write(*folder)) {
        return failed(*problem);
    }
    const ExtensionInstallation::Result result = extension_.install(*folder);
    switch (result.outcome) {
    case ExtensionInstallation::Outcome::Installed:
    case ExtensionInstallation::Outcome::AfterRestart:
        return {Preparation::Next::Restart, {}, {}};
    case ExtensionInstallation::Outcome::AfterConfirmation:
        return {Preparation::Next::Confirm, {}, {}};
    case ExtensionInstallation::Outcome::NotPossible:
        return byHand;
    case ExtensionInstallation::Outcome::Failed:
        break;
    }
    return failed(result.problem.value_or(FileProblem()));
}

void BrowserPreparation::renew(const QString& bundleIdentifier) const {
    if (const auto folder = folderOf(bundleIdentifier)) {
        manifests_.write(*folder);
        if (extension_.isInPlace(*folder)) {
            extension_.install(*folder);
        }
    }
}

void BrowserPreparation::withdraw(const QString& bundleIdentifier) const {
    if (const auto folder = folderOf(bundleIdentifier)) {
        manifests_.remove(*folder);
        extension_.remove(*folder);
    }
}

bool BrowserPreparation::hasExtension(const QString& bundleIdentifier) const {
    const auto folder = folderOf(bundleIdentifier);
    return folder && extension_.isInPlace(*folder);
}

} // namespace orvanta
