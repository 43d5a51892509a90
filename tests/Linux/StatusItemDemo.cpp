// A status item without an application around it, for the tests with real panels: says on its
// standard output what the desktop asks of it.

#include "Linux/LinuxPlatform.h"

#include <QApplication>
#include <QTimer>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

void say(const QString& text) {
    std::puts(qUtf8Printable(text));
    std::fflush(stdout);
}

} // namespace

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);

    bool showsAll = false;
    const auto showAll = [&showsAll] {
        showsAll = !showsAll;
        say(u"all %1"_s.arg(showsAll));
    };
    orvanta::LinuxPlatform platform;
    const auto item = platform.makeStatusItem(
        {.activate =
             [](std::optional<QPoint> place) {
                 say(place ? u"activate %1 %2"_s.arg(place->x()).arg(place->y()) : u"activate"_s);
             },
         .menu =
             [&] {
                 say(u"menu"_s);
                 return std::vector<orvanta::StatusMenuItem>{
                     {u"Mostrar todos"_s, showAll, showsAll},
                     {},
                     {u"Sair do orvanta"_s, &QCoreApplication::quit, {}}};
             }});
    item->setTitle({u"↑"_s, u"63"_s, u"37"_s, orvanta::StatusTitle::Tone::production});

    // As while time is counted: another tooltip each second.
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&item, seconds = 0]() mutable {
        item->setToolTip(u"orvanta · %1s"_s.arg(seconds++));
    });
    timer.start(1000);
    return QApplication::exec();
}
