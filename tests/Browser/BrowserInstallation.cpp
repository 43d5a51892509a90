// What Orvanta does for a browser once the person has agreed, as a command for the tests of real
// browsers: manifests|install|remove HOME CONFIG_HOME HOST PACKAGES. Fails if an outcome is not the
// one that was seen with such a browser.

#include "Linux/BrowserBridge/ExtensionInstallation.h"
#include "Linux/BrowserBridge/NativeManifests.h"

#include <QStringList>

#include <cstdio>
#include <cstdlib>

using namespace orvanta;

namespace {

void require(const std::optional<FileProblem>& problem) {
    if (problem) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(problem->path), qPrintable(problem->reason));
        std::exit(EXIT_FAILURE);
    }
}

} // namespace

int main(int argc, char** argv) {
    QStringList arguments;
    for (int at = 1; at < argc; ++at) {
        arguments.append(QString::fromLocal8Bit(argv[at]));
    }
    const NativeManifests manifests(arguments.at(3));
    const ExtensionInstallation extension(arguments.at(4));
    for (const BrowserFolder& browser : findBrowserFolders(arguments.at(1), arguments.at(2))) {
        if (arguments.at(0) == QStringLiteral("remove")) {
            require(manifests.remove(browser));
            require(extension.remove(browser));
            continue;
        }
        require(manifests.write(browser));
        if (arguments.at(0) == QStringLiteral("install")) {
            const auto result = extension.install(browser);
            require(result.problem);
            const bool isChromium = browser.family == BrowserFamily::Chromium;
            if (result.outcome != (isChromium ? ExtensionInstallation::Outcome::AfterRestart
                                              : ExtensionInstallation::Outcome::NotPossible)) {
                std::fprintf(stderr, "another outcome: %s\n", qPrintable(browser.path));
                return EXIT_FAILURE;
            }
        }
    }
    return EXIT_SUCCESS;
}
