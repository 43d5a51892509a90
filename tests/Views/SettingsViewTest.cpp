#include "Views/SettingsView.h"

#include "PanelStage.h"
#include "Views/BrowserSitesRow.h"
#include "Views/Caption.h"
#include "Views/ClassificationDelegate.h"

#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QTabWidget>

using namespace orvanta;
using namespace Qt::StringLiterals;
using enum Category;

namespace {

class SettingsViewTest : public testing::Test, protected PanelStage {
protected:
    void install(const char* name, int process = 0) {
        const QString id = u"settings."_s + QString::fromUtf8(name);
        bundles.install(u'/' + id, QString::fromUtf8(name), "code=\"acTa\" code=\"URL \"");
        if (process != 0) {
            automation.running[id] = {{process, false}};
        }
    }
    void show(int tab = 0) {
        view = std::make_unique<SettingsView>(tracker(), system(), world.calendar);
        view->findChild<QTabWidget*>()->setCurrentIndex(tab);
        activate(*view);
    }
    /// What stands beside the name of each browser.
    QStringList beside() {
        QStringList result;
        for (BrowserSitesRow* row : shown<BrowserSitesRow>(view.get())) {
            result += accessibleLines(*row).value(2);
        }
        return result;
    }
    QAbstractButton& control(const char* title) { return named<QAbstractButton>(*view, title); }
    bool shows(const char* text) { return find(*view, QString::fromUtf8(text)) != nullptr; }
    QListView& list() { return *view->findChild<QListView*>(); }
    QStringList rows() {
        QStringList result;
        for (int i = 0; i < list().model()->rowCount(); ++i) {
            result += list().model()->index(i, 0).data(Qt::AccessibleTextRole).toString();
        }
        return result;
    }
    /// What the picker that is open offers; "*" marks what is chosen.
    static QString offers() {
        QString result;
        for (const QAction* action : QApplication::activePopupWidget()->actions()) {
            result += (action->isChecked() ? u'*' : u' ') + action->text();
        }
        return result;
    }

    std::unique_ptr<SettingsView> view;
};

} // namespace

TEST_F(SettingsViewTest, EachBrowserHasASwitchAndWhatItStillNeeds) {
    install("A");
    install("B", 2);
    install("C", 3);
    automation.decisions = {{2, AutomationPermission::refused},
                            {3, AutomationPermission::permitted}};
    show();
    EXPECT_EQ(beside(),
              lines({"Button Permitir", "Button Abrir Ajustes do Sistema", "Text Permitido"}));
    control("Abrir Ajustes do Sistema").click();
    EXPECT_EQ(automation.log, QStringList(u"open "_s + Setup::automationSettings()));
    orvanta::click(control("Identificar sites no C"));
    EXPECT_EQ(tracker().disabledBrowsers(), std::set{u"settings.C"_s});
    EXPECT_EQ(beside()[2], u"Identificar sites no C"_s) << "the switch alone";
    QTest::keyClick(&control("Identificar sites no C"), Qt::Key_Space);
    EXPECT_EQ(tracker().disabledBrowsers(), std::set<QString>());

    // One that does not run is started and asked.
    control("Permitir").click();
    EXPECT_EQ(automation.log.last(), u"launch /settings.A (inactive) (hidden)"_s);
    automation.running[u"settings.A"_s] = {{5, false}};
    automation.decisions[5] = AutomationPermission::permitted;
    automation.launched();
    EXPECT_EQ(automation.log.last(), u"ask 5"_s);
    EXPECT_EQ(beside()[0], u"Text Permitido"_s);
    // It looks again when a window becomes active.
    install("D");
    Q_EMIT qGuiApp->focusWindowChanged(view->windowHandle());
    control("Identificar sites no C").setFocus();
    EXPECT_EQ(type(*view, "Tab Tab Tab"),
              lines({"Permitir", "Identificar sites no D", "Iniciar ao entrar no macOS"}));
    control("Permitir").click();
    view.reset();
    automation.launched(); // Nobody is there to be told.
}

TEST_F(SettingsViewTest, StartingAtLoginIsSwitchedAndSaysWhatIsMissing) {
    const char* const approval = "Autorize o orvanta nos Itens de Início dos Ajustes do Sistema.";
    login.afterRegistering = LoginItem::Status::requiresApproval;
    show();
    QAbstractButton& loginSwitch = control("Iniciar ao entrar no macOS");
    loginSwitch.click();
    EXPECT_EQ(login.registrations, 1);
    EXPECT_TRUE(shows(approval));
    login.problem = u"Disco cheio"_s;
    loginSwitch.click();
    EXPECT_EQ(login.unregistrations, 1);
    EXPECT_TRUE(!shows(approval) && shows("Disco cheio"));
    login.problem.reset();
    login.afterRegistering = LoginItem::Status::enabled;
    loginSwitch.click();
    EXPECT_FALSE(shows("Disco cheio"));
    show();
    EXPECT_TRUE(control("Iniciar ao entrar no macOS").isChecked());
}

TEST_F(SettingsViewTest, TheHistoryIsErasedOnceThePersonSaysSo) {
    show();
    QAbstractButton& clear = control("Apagar histórico…");
    EXPECT_TRUE(shows("5 de mar. de 2024, 12:00"));
    EXPECT_FALSE(clear.isEnabled());
    world.front("editor");
    world.pass(90);
    for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key()}) { // A key cancels.
        EXPECT_TRUE(clear.isEnabled());
        clear.click();
        auto& question = *firstShown<QMessageBox>(view.get());
        EXPECT_EQ(question.windowModality(), Qt::WindowModal);
        EXPECT_EQ(question.text() + question.informativeText(),
                  u"Apagar o histórico por dia?Os dias registrados serão apagados. A sessão atual "
                  "e as classificações serão preservadas."_s);
        key == Qt::Key() ? orvanta::click(named(question, "Apagar"))
                         : QTest::keyClick(&question, key);
        settle();
    }
    EXPECT_FALSE(clear.isEnabled());
    tracker().reset();
    EXPECT_TRUE(shows("5 de mar. de 2024, 12:01"));
}

TEST_F(SettingsViewTest, TheActivitiesAreSearchedAndStandByName) {
    for (const Item& item : std::initializer_list<Item>{
             {"notas", production}, {"Notes", ignored}, {"Édito"}, {"Zeta", neutral}}) {
        add(item);
    }
    show(1);
    for (const auto& [search, found] : std::initializer_list<std::pair<const char*, QStringList>>{
             {"NOTEz", {}},
             {"é", lines({"Édito: Pendente"})},
             {"", lines({"Notes: Ignorar", "Zeta: Não contabilizar", "notas: Produção",
                         "Édito: Pendente"})},
             {"NO", lines({"Notes: Ignorar", "notas: Produção"})}}) {
        view->findChild<QLineEdit*>()->setText(QString::fromUtf8(search));
        EXPECT_EQ(rows(), found);
    }
    list().setCurrentIndex(list().model()->index(1, 0));
    world.workspace.front = RunningApplication{u"novo"_s, u"Nota"_s, {}, {}};
    world.workspaceCenter.post(Notification::DidActivateApplication);
    EXPECT_EQ(rows().first(), u"Nota: Pendente"_s);
    EXPECT_EQ(list().currentIndex().data().toString(), u"notas"_s) << "its place is kept";
}

TEST_F(SettingsViewTest, APickerChangesACategory) {
    add({"A", pending});
    add({"B", production});
    show(1);
    const auto* const delegate = qobject_cast<ClassificationDelegate*>(list().itemDelegate());
    const QRect row = list().visualRect(list().model()->index(0, 0));
    EXPECT_EQ(delegate->pickerArea(row).width(), 125);
    QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, row.topLeft() + QPoint(20, 10));
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
    QTest::mousePress(list().viewport(), Qt::LeftButton, {}, delegate->pickerArea(row).center());
    EXPECT_EQ(offers(), u"*Pendente Produção Consumo Ignorar"_s);
    type(*QApplication::activePopupWidget(), "Down Return");
    list().setFocus();
    for (const char* key : {"Space", "Return", "F4"}) {
        type(*view, key);
        EXPECT_EQ(offers(), u"*Produção Consumo Ignorar"_s);
        QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
    }
    type(*view, "Down Alt+Down");
    type(*QApplication::activePopupWidget(), "Up Return");
    EXPECT_EQ(rows(), lines({"A: Produção", "B: Ignorar"}));
}

TEST_F(SettingsViewTest, NoTextIsCutOffInALargeFont) {
    const QFont usual = QApplication::font();
    QApplication::setFont(QFont(usual.family(), 22));
    show();
    EXPECT_EQ(view->size(), QSize(564, 454));
    for (const Caption* caption : shown<Caption>(view.get())) {
        EXPECT_GE(caption->height(), caption->heightForWidth(caption->width()));
    }
    QApplication::setFont(usual);
}
