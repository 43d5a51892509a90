// A status item without an application around it, for the tests with real panels: says on its
// standard output what the desktop asks of it.

#include "Linux/LinuxPlatform.h"

#include <QApplication>

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
    const auto activate = [](std::optional<QPoint> place) {
        say(place ? u"activate %1 %2"_s.arg(place->x()).arg(place->y()) : u"activate"_s);
    };
    orvanta::LinuxPlatform platform;
    const auto item = platform.makeStatusItem(
        {activate, [&] {
             return std::vector<orvanta::StatusMenuItem>{
                 {u"Mostrar todos"_s, showAll, showsAll}, {}, {u"Sair"_s, &QApplication::quit, {}}};
         }});
    item->setTitle({u'↑', 63, 37, orvanta::StatusTitle::Tone::production});
    return QApplication::exec();
}
