#include "App/SettingsWindow.h"

#include "App/AboutPanel.h"
#include "App/MainMenu.h"
#include "Fakes/QtPrinters.h"
#include "Views/WidgetReading.h"

#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>

#include <gmock/gmock.h>

using namespace orvanta;
using namespace Qt::StringLiterals;
using testing::ElementsAre;

namespace {

class SettingsWindowTest : public testing::Test {
protected:
    SettingsWindowTest() {
        const auto say = [this](const char* what) {
            return [this, what] {
                said += QString::fromLatin1(what);
            };
        };
        field->setFixedSize(500, 420);
        installMainMenu(window, {say("about"), say("settings"), say("terminate")});
        QObject::connect(&window, &SettingsWindow::willClose, &window, say("close"));
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    QMenu* menu(int index) { return window.menuBar()->actions()[index]->menu(); }
    void choose(int of, int index) { menu(of)->actions()[index]->trigger(); }

    QStringList said;
    QLineEdit* field = new QLineEdit;
    SettingsWindow window{field};
};

TEST_F(SettingsWindowTest, TheMainMenuHasItsItemsAndKeys) {
    QString entries;
    for (const QAction* title : window.menuBar()->actions()) {
        entries += title->text();
        for (const QAction* action : title->menu()->actions()) {
            entries += u'|' + action->text() + action->shortcut().toString();
        }
        entries += u'\n';
    }
    EXPECT_EQ(entries, u"orvanta|Sobre o orvanta||Ajustes…Ctrl+,||Ocultar orvantaCtrl+H|"
                       "Ocultar outrosCtrl+Alt+H|Mostrar tudo||Sair do orvantaCtrl+Q\n"
                       "Editar|RecortarCtrl+X|CopiarCtrl+C|ColarCtrl+V|Selecionar tudoCtrl+A\n"
                       "Janela|MinimizarCtrl+M|FecharCtrl+W\n"_s);
    EXPECT_FALSE(menu(0)->actions()[5]->isEnabled()) << "others cannot be hidden here";
    choose(0, 0);
    type(window, "Ctrl+, Ctrl+Q Ctrl+M");
    EXPECT_TRUE(window.isMinimized());
    choose(0, 6);
    EXPECT_FALSE(window.isMinimized());
    type(window, "Ctrl+H");
    EXPECT_TRUE(window.isMinimized());
    window.showNormal();
    type(window, "Ctrl+W");
    EXPECT_FALSE(window.isVisible());
    EXPECT_THAT(said, ElementsAre(u"about"_s, u"settings"_s, u"terminate"_s, u"close"_s));
}

TEST_F(SettingsWindowTest, EditingGoesToTheControlThatHasTheKeyboard) {
    field->setText(u"orvanta"_s);
    field->setFocus();
    choose(1, 3);
    EXPECT_EQ(field->selectedText(), u"orvanta"_s);
    choose(1, 1);
    choose(1, 0);
    EXPECT_EQ(field->text(), QString());
    choose(1, 2);
    choose(1, 2);
    EXPECT_EQ(field->text(), u"orvantaorvanta"_s);
    field->clearFocus();
    Q_EMIT menu(1)->aboutToShow();
    EXPECT_FALSE(menu(1)->actions()[2]->isEnabled());
    choose(1, 2);
    EXPECT_EQ(field->text(), u"orvantaorvanta"_s);
    Q_EMIT menu(1)->aboutToHide();
    QApplication::processEvents();
    EXPECT_TRUE(menu(1)->actions()[2]->isEnabled());
}

TEST_F(SettingsWindowTest, TheAboutPanelNamesWhatOrvantaIsBuiltOn) {
    QApplication::setApplicationVersion(u"1.2.3"_s);
    AboutPanel panel;
    panel.show();
    for (const QString& text :
         {u"orvanta"_s, u"Versão 1.2.3"_s, u"Qt "_s + QLatin1String(qVersion())}) {
        EXPECT_NE(find<QLabel>(panel, text), nullptr) << qPrintable(text);
    }
}

TEST_F(SettingsWindowTest, ItsTitleBarIsInReachOnASmallScreenToo) {
    const QRect large(100, 50, 1000, 800);
    window.centre(large);
    EXPECT_LE((QRect(window.pos(), window.size()).center() - large.center()).manhattanLength(), 2);
    window.centre({7, 28, 500, 400});
    EXPECT_EQ(window.pos(), QPoint(7, 28));
}

} // namespace
