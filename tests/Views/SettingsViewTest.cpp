#include "Views/SettingsView.h"

#include "PanelStage.h"
#include "Views/BrowserSitesRow.h"
#include "Views/Caption.h"
#include "Views/ClassificationDelegate.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QScrollArea>
#include <QScrollBar>
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
    /// For each browser what stands in its row.
    QStringList rowsOfBrowsers() {
        QStringList result;
        for (const BrowserSitesRow* row : shown<BrowserSitesRow>(view.get())) {
            QStringList parts;
            for (const QWidget* child : shown(row)) {
                const auto* const box = qobject_cast<const QCheckBox*>(child);
                parts += box != nullptr ? QString::number(box->isChecked())
                                        : child->property("text").toString();
            }
            parts.removeAll(QString());
            result += parts.join(u'|');
        }
        return result;
    }
    QAbstractButton& control(const char* title) { return named<QAbstractButton>(*view, title); }
    bool shows(const char* text) { return find(*view, QString::fromUtf8(text)) != nullptr; }
    QListView& list() { return *view->findChild<QListView*>(); }
    QLineEdit& field() { return *view->findChild<QLineEdit*>(); }
    QStringList rows() {
        QStringList result;
        for (int i = 0; i < list().model()->rowCount(); ++i) {
            result += list().model()->index(i, 0).data(Qt::AccessibleTextRole).toString();
        }
        return result;
    }
    static QMenu* picker() { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); }
    /// What the picker that is open offers; "*" marks what is chosen.
    static QStringList offers() {
        QStringList result;
        for (const QAction* action : picker() ? picker()->actions() : QList<QAction*>()) {
            result += (action->isChecked() ? u"*"_s : QString()) + action->text();
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
    install("D", 4);
    automation.decisions = {{3, AutomationPermission::permitted},
                            {4, AutomationPermission::refused}};
    show();
    EXPECT_EQ(rowsOfBrowsers(),
              lines({"Identificar sites no A|Permitir|1", "Identificar sites no B|Permitir|1",
                     "Identificar sites no C|Permitido|1",
                     "Identificar sites no D|Abrir Ajustes do Sistema|1"}));
    EXPECT_EQ(automation.log, QStringList()) << "nobody is asked by looking";
    control("Abrir Ajustes do Sistema").click();
    EXPECT_EQ(automation.log.takeLast(), u"open "_s + Setup::automationSettings());

    orvanta::click(control("Identificar sites no C"));
    EXPECT_EQ(tracker().disabledBrowsers(), std::set{u"settings.C"_s});
    EXPECT_EQ(rowsOfBrowsers()[2], u"Identificar sites no C|0"_s);
    automation.decisions[3] = AutomationPermission::refused;
    QTest::keyClick(&control("Identificar sites no C"), Qt::Key_Space);
    EXPECT_EQ(tracker().disabledBrowsers(), std::set<QString>());
    EXPECT_EQ(rowsOfBrowsers()[2], u"Identificar sites no C|Abrir Ajustes do Sistema|1"_s);

    // One that does not run is started and asked.
    control("Permitir").click();
    EXPECT_EQ(automation.log, lines({"launch /settings.A (inactive) (hidden)"}));
    automation.running[u"settings.A"_s] = {{5, false}};
    automation.decisions[5] = AutomationPermission::permitted;
    automation.launched();
    EXPECT_EQ(automation.log.last(), u"ask 5"_s);
    EXPECT_EQ(rowsOfBrowsers()[0], u"Identificar sites no A|Permitido|1"_s);
    automation.running.clear();
    show();
    control("Permitir").click();
    view.reset();
    automation.launched(); // Nobody is there to be told.
}

TEST_F(SettingsViewTest, LooksAgainWhenAWindowBecomesActive) {
    install("F", 6);
    show();
    control("Identificar sites no F").setFocus();
    automation.decisions[6] = AutomationPermission::permitted;
    Q_EMIT qGuiApp->focusWindowChanged(view->windowHandle());
    EXPECT_EQ(rowsOfBrowsers(), lines({"Identificar sites no F|Permitido|1"}));
    EXPECT_TRUE(control("Identificar sites no F").hasFocus());

    install("G");
    Q_EMIT qGuiApp->focusWindowChanged(view->windowHandle());
    EXPECT_EQ(rowsOfBrowsers(),
              lines({"Identificar sites no F|Permitido|1", "Identificar sites no G|Permitir|1"}));
    control("Identificar sites no F").setFocus();
    EXPECT_EQ(type(*view, "Tab Tab Tab"),
              lines({"Permitir", "Identificar sites no G", "Iniciar ao entrar no macOS"}));

    view->hide();
    bundles.webHandlers.clear();
    Q_EMIT qGuiApp->focusWindowChanged(view->windowHandle());
    EXPECT_EQ(view->findChildren<BrowserSitesRow*>().size(), 3) << "closed, it looks at nothing";
    view->show();
    EXPECT_EQ(rowsOfBrowsers(), QStringList());
}

TEST_F(SettingsViewTest, StartingAtLoginIsSwitchedAndSaysWhatIsMissing) {
    const char* const approval = "Autorize o orvanta nos Itens de Início dos Ajustes do Sistema.";
    login.afterRegistering = LoginItem::Status::requiresApproval;
    show();
    QAbstractButton& loginSwitch = control("Iniciar ao entrar no macOS");
    EXPECT_FALSE(loginSwitch.isChecked());
    QTest::mouseClick(&loginSwitch, Qt::LeftButton, {}, {8, loginSwitch.height() / 2});
    EXPECT_EQ(login.registrations, 1);
    EXPECT_TRUE(shows(approval));
    login.problem = u"Disco cheio"_s;
    QTest::keyClick(&loginSwitch, Qt::Key_Space);
    EXPECT_EQ(login.unregistrations, 1);
    EXPECT_FALSE(loginSwitch.isChecked()) << "as the person left it";
    EXPECT_TRUE(!shows(approval) && shows("Disco cheio"));
    login.problem.reset();
    login.afterRegistering = LoginItem::Status::enabled;
    QTest::keyClick(&loginSwitch, Qt::Key_Space);
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
    // Cancelling is what a key does.
    for (const char* answer : {"Esc", "Return", "Apagar"}) {
        EXPECT_EQ(tracker().historyDayCount(), 1);
        EXPECT_TRUE(clear.isEnabled());
        clear.click();
        auto& question = *shown<QMessageBox>(view.get()).at(0);
        EXPECT_EQ(question.windowModality(), Qt::WindowModal);
        EXPECT_EQ(question.text(), u"Apagar o histórico por dia?"_s);
        EXPECT_EQ(question.informativeText(), u"Os dias registrados serão apagados. A sessão atual "
                                              "e as classificações serão preservadas."_s);
        auto* const button = find<QAbstractButton>(question, QString::fromUtf8(answer));
        button != nullptr
            ? button->click()
            : QTest::keyClick(&question, QKeySequence(QString::fromLatin1(answer))[0].key());
        EXPECT_FALSE(question.isVisible());
        settle();
    }
    EXPECT_EQ(tracker().historyDayCount(), 0);
    EXPECT_FALSE(clear.isEnabled());
    tracker().reset();
    EXPECT_TRUE(shows("5 de mar. de 2024, 12:01"));
}

TEST_F(SettingsViewTest, TheActivitiesAreSearchedAndStandByName) {
    const std::pair<const char*, Category> all[] = {{"notas", production},
                                                    {"Notes", ignored},
                                                    {"Édito", pending},
                                                    {"Notes", consumption},
                                                    {"Zeta", neutral}};
    for (int key = 0; const auto& [name, category] : all) {
        world.context().activities().append(u"app:%1"_s.arg(++key), QString::fromUtf8(name),
                                            category, 0);
    }
    show(1);
    const struct {
        const char* search;
        QStringList found;
    } searches[]{{"NOTE", lines({"Notes: Ignorar", "Notes: Consumo"})},
                 {"NOTEz", {}},
                 {"é", lines({"Édito: Pendente"})},
                 {"", lines({"Notes: Ignorar", "Notes: Consumo", "Zeta: Não contabilizar",
                             "notas: Produção", "Édito: Pendente"})},
                 {"no", lines({"Notes: Ignorar", "Notes: Consumo", "notas: Produção"})}};
    for (const auto& [search, found] : searches) {
        field().clear();
        field().insert(QString::fromUtf8(search));
        EXPECT_EQ(rows(), found);
    }
    list().setCurrentIndex(list().model()->index(2, 0));
    world.workspace.front = RunningApplication{u"novo"_s, u"Nota"_s, {}, {}};
    world.workspaceCenter.post(Notification::DidActivateApplication);
    EXPECT_EQ(rows(), lines({"Nota: Pendente"}) + searches[4].found);
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
    EXPECT_EQ(picker(), nullptr);
    QTest::mousePress(list().viewport(), Qt::LeftButton, {}, delegate->pickerArea(row).center());
    EXPECT_EQ(offers(), lines({"*Pendente", "Produção", "Consumo", "Ignorar"}));
    type(*picker(), "Down Return");
    EXPECT_EQ(activity("A").category(), production);

    list().setFocus();
    for (const char* key : {"Space", "Return", "F4"}) {
        type(*view, key);
        EXPECT_EQ(offers(), lines({"*Produção", "Consumo", "Ignorar"}));
        QTest::keyClick(picker(), Qt::Key_Escape);
    }
    type(*view, "Down Alt+Down");
    QTest::keyClick(picker(), Qt::Key_Up);
    QTest::keyClick(picker(), Qt::Key_Return);
    EXPECT_EQ(rows(), lines({"A: Produção", "B: Ignorar"}));
}

TEST_F(SettingsViewTest, NoTextIsCutOffInALargeFont) {
    install("Navegador de nome comprido", 8);
    automation.decisions[8] = AutomationPermission::refused;
    const QFont usual = QApplication::font();
    for (const double size : {usual.pointSizeF(), 22.0}) {
        QFont font = usual;
        font.setPointSizeF(size);
        QApplication::setFont(font);
        for (const std::size_t tab : {1, 0}) {
            show(static_cast<int>(tab));
            EXPECT_EQ(view->size(), QSize(564, 454));
            const auto captions = shown<Caption>(view.get());
            EXPECT_EQ(captions.size(), tab == 0 ? 3U : 1U);
            for (const Caption* caption : captions) {
                EXPECT_GE(caption->height(), caption->heightForWidth(caption->width()))
                    << qPrintable(caption->text());
            }
        }
        EXPECT_FALSE(view->findChild<QScrollArea*>()->horizontalScrollBar()->isVisible());
    }
    QApplication::setFont(usual);
}
