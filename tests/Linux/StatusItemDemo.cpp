// A status item without an application around it, for the tests with real panels: says on its
// standard output what the desktop asks of it.
//
// status-item-demo SYMBOL PRODUCTION CONSUMPTION secondary|production|consumption

#include "Linux/LinuxPlatform.h"

#include <QApplication>
#include <QTimer>

#include <cstdio>

using orvanta::StatusTitle;

namespace {

void say(const QString& text) {
    std::puts(qUtf8Printable(text));
    std::fflush(stdout);
}

StatusTitle::Tone toneNamed(const QString& name) {
    if (name == QLatin1String("production")) {
        return StatusTitle::Tone::production;
    }
    return name == QLatin1String("consumption") ? StatusTitle::Tone::consumption
                                                : StatusTitle::Tone::secondary;
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 5) {
        std::fputs("status-item-demo SYMBOL PRODUCTION CONSUMPTION TONE\n", stderr);
        return 2;
    }

    bool showsAll = false;
    orvanta::LinuxPlatform platform;
    const auto item = platform.makeStatusItem(
        {.activate =
             [](std::optional<QPoint> place) {
                 say(place ? QStringLiteral("activate %1 %2").arg(place->x()).arg(place->y())
                           : QStringLiteral("activate"));
             },
         .menu =
             [&showsAll] {
                 say(QStringLiteral("menu"));
                 return std::vector<orvanta::StatusMenuItem>{
                     {QStringLiteral("Mostrar todos"),
                      [&showsAll] {
                          showsAll = !showsAll;
                          say(QStringLiteral("all %1").arg(showsAll));
                      },
                      showsAll},
                     {},
                     {QStringLiteral("Ajustes…"), [] { say(QStringLiteral("settings")); }, {}},
                     {},
                     {QStringLiteral("Sair do orvanta"), &QCoreApplication::quit, {}}};
             }});
    item->setTitle({arguments[1], arguments[2], arguments[3], toneNamed(arguments[4])});

    // As while time is counted: another tooltip each second.
    int seconds = 0;
    const auto tick = [&] {
        item->setToolTip(QStringLiteral("orvanta · %1s").arg(seconds++));
    };
    tick();
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &application, tick);
    timer.start(1000);
    return QApplication::exec();
}
