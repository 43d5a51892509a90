// What any Qt Widgets process costs that wakes once a second: the ground that Orvanta is measured
// from.

#include <QApplication>
#include <QTimer>

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);

    QTimer second;
    QObject::connect(&second, &QTimer::timeout, &second, [] {});
    second.start(1000);

    return QApplication::exec();
}
