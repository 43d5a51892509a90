#include "AppDelegate.h"
#include "Linux/Display.h"
#include "Linux/LinuxPlatform.h"
#include "Linux/SingleInstance.h"
#include "Linux/TerminationSignals.h"

#include <QApplication>
#include <QStandardPaths>

#include <cstdio>
#include <cstdlib>

namespace {

// Qt ends the process by `exit` when the display goes away; what was measured is saved all the
// same.
orvanta::AppDelegate* running = nullptr;

void terminate() {
    if (running != nullptr) {
        running->applicationWillTerminate();
        running = nullptr;
    }
}

} // namespace

int main(int argc, char* argv[]) {
    if (!orvanta::hasDisplay()) {
        std::fputs("O orvanta precisa de um ambiente gráfico em execução.\n", stderr);
        return EXIT_FAILURE;
    }
    // Where the desktop is GTK's, Qt would load GTK to look like it: 43 MB and a tenth of a second.
    const QByteArray desktop = qgetenv("XDG_CURRENT_DESKTOP");
    const bool isQtDesktop = desktop.contains("KDE") || desktop.contains("LXQt");
    if (!isQtDesktop) {
        qunsetenv("XDG_CURRENT_DESKTOP");
    }
    QApplication application(argc, argv);
    if (!isQtDesktop && !desktop.isEmpty()) {
        qputenv("XDG_CURRENT_DESKTOP", desktop);
    }
    orvanta::ignoreRootWindowProperties();
    QApplication::setApplicationName(QStringLiteral("orvanta"));
    QApplication::setApplicationVersion(QStringLiteral(ORVANTA_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.brindlework.orvanta"));
    QApplication::setQuitOnLastWindowClosed(false);

    const orvanta::TerminationSignals signals;
    QObject::connect(&signals, &orvanta::TerminationSignals::received, &application,
                     &QCoreApplication::quit);

    orvanta::SingleInstance instance(
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
            QStringLiteral("/com.brindlework.orvanta"),
        QStringLiteral("com.brindlework.orvanta"), QDBusConnection::sessionBus());
    if (!instance.isFirst()) {
        instance.handOver([](bool answered) {
            if (!answered) {
                std::fputs("O orvanta já está em execução, mas não respondeu.\n", stderr);
            }
            QCoreApplication::exit(answered ? EXIT_SUCCESS : EXIT_FAILURE);
        });
        return QApplication::exec();
    }

    orvanta::LinuxPlatform platform;
    orvanta::AppDelegate delegate(platform);
    if (!delegate.applicationDidFinishLaunching()) {
        return EXIT_FAILURE;
    }
    instance.listen([&delegate] { delegate.applicationWasStartedAgain(); });
    running = &delegate;
    std::atexit(terminate);
    const int result = QApplication::exec();
    terminate();
    return result;
}
