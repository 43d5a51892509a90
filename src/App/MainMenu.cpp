#include "App/MainMenu.h"

#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMetaMethod>

#include <utility>

namespace orvanta {

namespace {

QAction* add(QMenu* menu, const QString& text, const QKeySequence& key,
             std::function<void()> action) {
    QAction* item = menu->addAction(text, key);
    QObject::connect(item, &QAction::triggered, menu, std::move(action));
    return item;
}

bool canDo(const QWidget* widget, const char* method) {
    return widget != nullptr && widget->metaObject()->indexOfMethod(method) >= 0;
}

/// An item for the control that has the keyboard, if it knows how.
void addForFirstResponder(QMenu* menu, const QString& text, const QKeySequence& key,
                          const char* method) {
    QAction* item = add(menu, text, key, [method] {
        if (QWidget* widget = QApplication::focusWidget(); canDo(widget, method)) {
            const QMetaObject* meta = widget->metaObject();
            meta->method(meta->indexOfMethod(method)).invoke(widget);
        }
    });
    QObject::connect(menu, &QMenu::aboutToShow, item, [item, method] {
        item->setEnabled(canDo(QApplication::focusWidget(), method));
    });
    // A key that comes while the menu is closed finds out by itself.
    QObject::connect(
        menu, &QMenu::aboutToHide, item, [item] { item->setEnabled(true); }, Qt::QueuedConnection);
}

template <typename Action>
void forOwnWindows(Action action) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && widget->windowType() != Qt::Popup) {
            action(widget);
        }
    }
}

} // namespace

void installMainMenu(QMainWindow& window, MainMenuActions actions) {
    QMenu* application = window.menuBar()->addMenu(QStringLiteral("orvanta"));
    add(application, QStringLiteral("Sobre o orvanta"), {}, std::move(actions.showAbout));
    application->addSeparator();
    add(application, QStringLiteral("Ajustes…"), QKeySequence(QStringLiteral("Ctrl+,")),
        std::move(actions.showSettings));
    application->addSeparator();
    // Of the windows on the desktop only the own ones can be hidden, where they are found again.
    add(application, QStringLiteral("Ocultar orvanta"), QKeySequence(QStringLiteral("Ctrl+H")),
        [] { forOwnWindows([](QWidget* own) { own->showMinimized(); }); });
    add(application, QStringLiteral("Ocultar outros"), QKeySequence(QStringLiteral("Ctrl+Alt+H")),
        [] {})
        ->setEnabled(false);
    add(application, QStringLiteral("Mostrar tudo"), {},
        [] { forOwnWindows([](QWidget* own) { own->showNormal(); }); });
    application->addSeparator();
    add(application, QStringLiteral("Sair do orvanta"), QKeySequence(QStringLiteral("Ctrl+Q")),
        std::move(actions.terminate));

    QMenu* edit = window.menuBar()->addMenu(QStringLiteral("Editar"));
    addForFirstResponder(edit, QStringLiteral("Recortar"), QKeySequence(QStringLiteral("Ctrl+X")),
                         "cut()");
    addForFirstResponder(edit, QStringLiteral("Copiar"), QKeySequence(QStringLiteral("Ctrl+C")),
                         "copy()");
    addForFirstResponder(edit, QStringLiteral("Colar"), QKeySequence(QStringLiteral("Ctrl+V")),
                         "paste()");
    addForFirstResponder(edit, QStringLiteral("Selecionar tudo"),
                         QKeySequence(QStringLiteral("Ctrl+A")), "selectAll()");

    QMenu* windows = window.menuBar()->addMenu(QStringLiteral("Janela"));
    add(windows, QStringLiteral("Minimizar"), QKeySequence(QStringLiteral("Ctrl+M")),
        [&window] { window.showMinimized(); });
    add(windows, QStringLiteral("Fechar"), QKeySequence(QStringLiteral("Ctrl+W")),
        [&window] { window.close(); });
}

} // namespace orvanta
