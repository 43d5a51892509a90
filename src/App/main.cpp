#include "AppDelegate.h"
#include "Linux/Display.h"
#include "Linux/LinuxPlatform.h"
#include "Linux/TerminationSignals.h"

#include <QApplication>

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
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("orvanta"));
    QApplication::setApplicationVersion(QStringLiteral(ORVANTA_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.brindlework.orvanta"));
    QApplication::setQuitOnLastWindowClosed(false);

    const orvanta::TerminationSignals signals;
    QObject::connect(&signals, &orvanta::TerminationSignals::received, &application,
                     &QCoreApplication::quit);
    orvanta::LinuxPlatform platform;
    orvanta::AppDelegate delegate(platform);
    if (!delegate.applicationDidFinishLaunching()) {
        return EXIT_FAILURE;
    }
    running = &delegate;
    std::atexit(terminate);
    const int result = QApplication::exec();
    terminate();
    return result;
}
