#include "App/SettingsWindow.h"

#include <QCloseEvent>
#include <QLayout>

#include <algorithm>

namespace orvanta {

SettingsWindow::SettingsWindow(QWidget* content)
    : QMainWindow(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                               Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                               Qt::WindowCloseButtonHint) {
    setWindowTitle(QStringLiteral("Ajustes do orvanta"));
    setCentralWidget(content);
    layout()->setSizeConstraint(QLayout::SetFixedSize);
}

void SettingsWindow::centre(const QRect& area) {
    QRect frame(QPoint(), sizeHint());
    frame.moveCenter(area.center());
    move(std::max(frame.left(), area.left()), std::max(frame.top(), area.top()));
}

void SettingsWindow::closeEvent(QCloseEvent* event) {
    QMainWindow::closeEvent(event);
    if (event->isAccepted()) {
        Q_EMIT willClose();
    }
}

} // namespace orvanta
