#include "App/AppDelegate.h"
#include "App/ApplicationIcon.h"
#include "Linux/Display.h"
#include "Linux/LinuxPlatform.h"
#include "Linux/SingleInstance.h"
#include "Linux/TerminationSignals.h"
#include "Linux/Wayland/CompositorLoss.h"

#include <QApplication>
#include <QLocale>
#include <QMessageBox>
#include <QSessionManager>
#include <QStandardPaths>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

orvanta::AppDelegate* running = nullptr;

/// Qt ends the process by `exit` when the display goes away; what was measured is saved all the
/// same. Parts of Qt are gone by then, so what is shown can neither be closed nor destroyed.
void endWithoutDisplay() {
    if (running != nullptr) {
        running->displayDidVanish();
        ::_exit(EXIT_FAILURE);
    }
}

int firstWeekday() {
    return QLocale::system().firstDayOfWeek() % 7 + 1; // Qt counts from Monday, 1.
}

void alert(const QString& message, const QString& informativeText) {
    QMessageBox box(QMessageBox::Critical, QStringLiteral("orvanta"), message);
    box.setInformativeText(informativeText);
    box.exec();
}

} // namespace

int main(int argc, char* argv[]) {
    const bool isBack = orvanta::CompositorLoss::isBehind(argc, argv);
    if (isBack ? !orvanta::CompositorLoss::waitForCompositor() : !orvanta::hasDisplay()) {
        std::fputs("O orvanta precisa de um ambiente gráfico em execução.\n", stderr);
        return EXIT_FAILURE;
    }
    // Where the desktop is GTK's, Qt would load GTK to look like it: 43 MB and a tenth of a second.
    const QByteArray currentDesktop = qgetenv("XDG_CURRENT_DESKTOP");
    const bool isQtDesktop = currentDesktop.contains("KDE") || currentDesktop.contains("LXQt");
    if (!isQtDesktop) {
        qunsetenv("XDG_CURRENT_DESKTOP");
    }
    // A wake-up of Qt's own event loop costs less than one of GLib's, of which nothing is used.
    // What is started from here decides for itself.
    const bool isLoopChosen = qEnvironmentVariableIsSet("QT_NO_GLIB");
    if (!isLoopChosen) {
        qputenv("QT_NO_GLIB", "1");
    }
    QApplication application(argc, argv);
    if (!isLoopChosen) {
        qunsetenv("QT_NO_GLIB");
    }
    if (!isQtDesktop && !currentDesktop.isEmpty()) {
        qputenv("XDG_CURRENT_DESKTOP", currentDesktop);
    }
    orvanta::ignoreRootWindowProperties();
    QApplication::setApplicationName(QStringLiteral("orvanta"));
    QApplication::setApplicationVersion(QStringLiteral(ORVANTA_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("com.brindlework.orvanta"));
    QApplication::setWindowIcon(orvanta::applicationIcon());
    QApplication::setQuitOnLastWindowClosed(false);

    const orvanta::TerminationSignals signals;
    QObject::connect(&signals, &orvanta::TerminationSignals::received, &application,
                     &QCoreApplication::quit);

    using Paths = QStandardPaths;
    orvanta::SingleInstance instance(Paths::writableLocation(Paths::GenericDataLocation) +
                                         QStringLiteral("/com.brindlework.orvanta"),
                                     QStringLiteral("com.brindlework.orvanta"),
                                     QDBusConnection::sessionBus());
    if (!instance.isFirst()) {
        if (isBack) {
            return EXIT_SUCCESS; // Nobody asked for the panel of the one that was faster.
        }
        instance.handOver([](bool answered) {
            if (!answered) {
                std::fputs("O orvanta já está em execução, mas não respondeu.\n", stderr);
            }
            QCoreApplication::exit(answered ? EXIT_SUCCESS : EXIT_FAILURE);
        });
        return QApplication::exec();
    }

    orvanta::LinuxPlatform desktop;
    orvanta::AppDelegate delegate(
        {.desktop = desktop,
         .configurationFolder = Paths::writableLocation(Paths::GenericConfigLocation),
         .dataFolder = Paths::writableLocation(Paths::GenericDataLocation),
         .calendar = orvanta::Calendar(QTimeZone::systemTimeZone(), firstWeekday()),
         .alert = alert,
         .terminate = [] {
             QCoreApplication::quit();
         }});
    if (!delegate.applicationDidFinishLaunching()) {
        return EXIT_FAILURE;
    }
    instance.listen([&delegate] { delegate.applicationShouldHandleReopen(); });
    QObject::connect(&application, &QGuiApplication::commitDataRequest, &delegate,
                     [&delegate](QSessionManager& session) {
                         // At login it is the login item that starts it.
                         session.setRestartHint(QSessionManager::RestartNever);
                         delegate.save();
                     });
    running = &delegate;
    std::atexit(endWithoutDisplay);
    const orvanta::CompositorLoss loss([&delegate] { delegate.save(); });
    const int result = QApplication::exec();
    delegate.applicationWillTerminate();
    running = nullptr;
    return result;
}
