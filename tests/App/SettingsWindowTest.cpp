#include "App/SettingsWindow.h"

#include "App/MainMenu.h"
#include "Fakes/QtPrinters.h"
#include "Views/WidgetReading.h"

#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>

using namespace orvanta;
using namespace Qt::StringLiterals;

TEST(SettingsWindowTest, ItsMainMenuDoesWhatItSays) {
    QString said;
    const auto say = [&said](char what) {
        return [&said, what] {
            said += QLatin1Char(what);
        };
    };
    auto* const field = new QLineEdit(u"orvanta"_s);
    field->setFixedSize(500, 420);
    SettingsWindow window(field);
    window.centre({7, 28, 500, 400});
    EXPECT_EQ(window.pos(), QPoint(7, 28)) << "its title bar is in reach";
    installMainMenu(window, {say('a'), say('s'), say('t')});
    QObject::connect(&window, &SettingsWindow::willClose, &window, say('c'));
    activate(window);
    field->setFocus();
    QString entries;
    for (const QAction* title : window.menuBar()->actions()) {
        entries += title->text();
        for (QAction* action : title->menu()->actions()) {
            entries += u'|' + action->text() + action->shortcut().toString();
        }
        entries += u'\n';
    }
    EXPECT_EQ(entries, u"orvanta|Sobre o orvanta||Ajustes…Ctrl+,||Ocultar orvantaCtrl+H|"
                       "Ocultar outrosCtrl+Alt+H|Mostrar tudo||Sair do orvantaCtrl+Q\n"
                       "Editar|RecortarCtrl+X|CopiarCtrl+C|ColarCtrl+V|Selecionar tudoCtrl+A\n"
                       "Janela|MinimizarCtrl+M|FecharCtrl+W\n"_s);
    const auto menu = [&window](int index) {
        return window.menuBar()->actions()[index]->menu();
    };
    for (const int entry : {3, 0, 2, 2, 3, 1, 2, 2}) { // All is cut, and later copied.
        menu(1)->actions()[entry]->trigger();
    }
    EXPECT_EQ(field->text(), u"orvantaorvantaorvantaorvanta"_s);
    for (const auto& [of, entry, isMinimized] :
         {std::tuple(0, 0, false), {0, 2, false}, {0, 4, true}, {0, 6, false}, {2, 0, true}}) {
        menu(of)->actions()[entry]->trigger();
        EXPECT_EQ(window.isMinimized(), isMinimized) << of << ' ' << entry;
    }
    window.showNormal();
    field->clearFocus();
    Q_EMIT menu(1)->aboutToShow();
    EXPECT_FALSE(menu(1)->actions()[2]->isEnabled());
    Q_EMIT menu(1)->aboutToHide();
    QApplication::processEvents();
    EXPECT_TRUE(menu(1)->actions()[2]->isEnabled());
    type(window, "Ctrl+Q Ctrl+W");
    EXPECT_EQ(said, u"astc"_s);
}
