#include "App/SettingsWindow.h"

#include "App/AboutPanel.h"
#include "App/MainMenu.h"
#include "Fakes/QtPrinters.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

#include <gmock/gmock.h>

using namespace orvanta;
using namespace Qt::StringLiterals;
using testing::ElementsAre;

namespace {

class SettingsWindowTest : public testing::Test {
protected:
    SettingsWindowTest() {
        field->setFixedSize(500, 420);
        installMainMenu(window, {.showAbout = [this] { said.append(u"about"_s); },
                                 .showSettings = [this] { said.append(u"settings"_s); },
                                 .terminate =
                                     [this] {
                                         said.append(u"terminate"_s);
                                     }});
        QObject::connect(&window, &SettingsWindow::willClose, &window,
                         [this] { said.append(u"close"_s); });
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    QMenu* menu(int index) { return window.menuBar()->actions()[index]->menu(); }
    static QStringList entries(const QMenu* menu) {
        QStringList result;
        for (const QAction* action : menu->actions()) {
            const QString key = action->shortcut().toString(QKeySequence::PortableText);
            result.append(action->isSeparator()
                              ? u"-"_s
                              : action->text() + (key.isEmpty() ? key : u' ' + key));
        }
        return result;
    }

    QStringList said;
    QLineEdit* field = new QLineEdit;
    SettingsWindow window{field};
};

TEST_F(SettingsWindowTest, TheMainMenuHasItsItemsAndKeys) {
    QStringList titles;
    for (const QAction* action : window.menuBar()->actions()) {
        titles.append(action->text());
    }
    EXPECT_THAT(titles, ElementsAre(u"orvanta"_s, u"Editar"_s, u"Janela"_s));
    EXPECT_THAT(entries(menu(0)),
                ElementsAre(u"Sobre o orvanta"_s, u"-"_s, u"Ajustes… Ctrl+,"_s, u"-"_s,
                            u"Ocultar orvanta Ctrl+H"_s, u"Ocultar outros Ctrl+Alt+H"_s,
                            u"Mostrar tudo"_s, u"-"_s, u"Sair do orvanta Ctrl+Q"_s));
    EXPECT_THAT(entries(menu(1)), ElementsAre(u"Recortar Ctrl+X"_s, u"Copiar Ctrl+C"_s,
                                              u"Colar Ctrl+V"_s, u"Selecionar tudo Ctrl+A"_s));
    EXPECT_THAT(entries(menu(2)), ElementsAre(u"Minimizar Ctrl+M"_s, u"Fechar Ctrl+W"_s));
    EXPECT_FALSE(menu(0)->actions()[5]->isEnabled()) << "others cannot be hidden here";

    menu(0)->actions()[0]->trigger();
    QTest::keyClick(&window, Qt::Key_Comma, Qt::ControlModifier);
    QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_THAT(said, ElementsAre(u"about"_s, u"settings"_s, u"terminate"_s));
}

TEST_F(SettingsWindowTest, EditingGoesToTheControlThatHasTheKeyboard) {
    field->setText(u"orvanta"_s);
    field->setFocus();
    const auto choose = [this](int index) {
        menu(1)->actions()[index]->trigger();
    };
    choose(3);
    EXPECT_EQ(field->selectedText(), u"orvanta"_s);
    choose(0);
    EXPECT_EQ(field->text(), QString());
    choose(2);
    choose(2);
    EXPECT_EQ(field->text(), u"orvantaorvanta"_s);

    field->clearFocus();
    Q_EMIT menu(1)->aboutToShow();
    EXPECT_FALSE(menu(1)->actions()[2]->isEnabled());
    choose(2);
    EXPECT_EQ(field->text(), u"orvantaorvanta"_s);
}

TEST_F(SettingsWindowTest, ItIsHiddenShownAndClosedByKeys) {
    QTest::keyClick(&window, Qt::Key_M, Qt::ControlModifier);
    EXPECT_TRUE(window.isMinimized());
    menu(0)->actions()[6]->trigger();
    EXPECT_FALSE(window.isMinimized());
    QTest::keyClick(&window, Qt::Key_H, Qt::ControlModifier);
    EXPECT_TRUE(window.isMinimized());
    EXPECT_THAT(said, testing::IsEmpty());
    window.showNormal();
    QTest::keyClick(&window, Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(window.isVisible());
    EXPECT_THAT(said, ElementsAre(u"close"_s));
}

TEST_F(SettingsWindowTest, TheAboutPanelNamesWhatOrvantaIsBuiltOn) {
    QApplication::setApplicationVersion(u"1.2.3"_s);
    AboutPanel panel;
    QStringList texts;
    for (const QLabel* label : panel.findChildren<QLabel*>()) {
        texts.append(label->text());
    }
    EXPECT_TRUE(texts.contains(u"orvanta"_s));
    EXPECT_TRUE(texts.contains(u"Versão 1.2.3"_s));
    EXPECT_TRUE(texts.contains(u"Qt "_s + QLatin1String(qVersion())));
}

TEST_F(SettingsWindowTest, ItsTitleBarIsInReachOnASmallScreenToo) {
    const QRect large(100, 50, 1000, 800);
    window.centre(large);
    const QRect inside(window.pos(), window.size());
    EXPECT_LE((inside.center() - large.center()).manhattanLength(), 2);
    window.centre({7, 28, 500, 400});
    EXPECT_EQ(window.pos(), QPoint(7, 28));
}

} // namespace
