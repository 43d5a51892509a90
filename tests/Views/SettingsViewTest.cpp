#include "Views/SettingsView.h"

#include "Fakes/FakeAutomation.h"
#include "Fakes/FakeBundles.h"
#include "Fakes/FakeLoginItem.h"
#include "Fakes/World.h"
#include "Model/Activity.h"
#include "Views/BrowserSitesRow.h"
#include "Views/Caption.h"
#include "Views/ClassificationDelegate.h"
#include "WidgetReading.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabWidget>
#include <QTest>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

class SettingsViewTest : public testing::Test {
protected:
    void installBrowser(const char* id, const char* name, int process = 0) {
        bundles.install(u"/"_s + QString::fromUtf8(id), QString::fromUtf8(name), chromium);
        if (process != 0) {
            automation.running[QString::fromUtf8(id)] = {{process, false}};
        }
    }
    Activity& add(const char* key, const char* name, Category category) {
        return world.context().activities().append(QString::fromUtf8(key), QString::fromUtf8(name),
                                                   category, 0);
    }
    /// For each browser what stands in its row.
    QStringList browsers() {
        QStringList result;
        for (BrowserSitesRow* const row : view->findChildren<BrowserSitesRow*>()) {
            if (!row->isHidden()) {
                QStringList parts;
                for (const QWidget* child : row->findChildren<QWidget*>()) {
                    const auto* label = qobject_cast<const QLabel*>(child);
                    const auto* button = qobject_cast<const QAbstractButton*>(child);
                    if (child->isVisible() && (label != nullptr || button != nullptr)) {
                        parts += label != nullptr        ? label->text()
                                 : button->isCheckable() ? QString::number(button->isChecked())
                                                         : button->text();
                    }
                }
                result += parts.join(u'|');
            }
        }
        return result;
    }
    QCheckBox& sitesSwitch(const char* name) {
        return *named<QCheckBox>(*view, (std::string("Identificar sites no ") + name).c_str());
    }
    void open(int tab = 0) {
        if (!world.tracker) {
            world.begin();
        }
        view = std::make_unique<SettingsView>(
            *world.tracker,
            Setup::System{login, bundles, automation, automation, automation, world.loop},
            world.calendar);
        view->findChild<QTabWidget*>()->setCurrentIndex(tab);
        view->show();
        activate(*view);
    }

    /// The visible button that reads this.
    QAbstractButton* button(const char* text) {
        const auto buttons = view->findChildren<QAbstractButton*>();
        const auto found = std::ranges::find_if(buttons, [&](const QAbstractButton* candidate) {
            return candidate->text() == QString::fromUtf8(text) && candidate->isVisible();
        });
        return found != buttons.end() ? *found : nullptr;
    }
    bool shows(const char* text) {
        return std::ranges::any_of(view->findChildren<QLabel*>(), [&](const QLabel* label) {
            return label->isVisible() && label->text() == QString::fromUtf8(text);
        });
    }
    QListView& list() { return *view->findChild<QListView*>(); }
    QLineEdit& field() { return *view->findChild<QLineEdit*>(); }
    QStringList rows() {
        QStringList result;
        const QAbstractItemModel& model = *list().model();
        for (int i = 0; i < model.rowCount(); ++i) {
            result += model.index(i, 0).data(Qt::AccessibleTextRole).toString();
        }
        return result;
    }
    /// What the picker that is open offers; "*" marks what is chosen.
    QStringList offers() {
        QStringList result;
        if (const QMenu* menu = picker()) {
            for (const QAction* action : menu->actions()) {
                result += (action->isChecked() ? u"*"_s : QString()) + action->text();
            }
        }
        return result;
    }
    QMenu* picker() { return qobject_cast<QMenu*>(QApplication::activePopupWidget()); }

    static constexpr const char* chromium = "code=\"acTa\" code=\"URL \"";

    World world;
    FakeBundles bundles;
    FakeLoginItem login;
    FakeAutomation automation;
    std::unique_ptr<SettingsView> view;
};

} // namespace

TEST_F(SettingsViewTest, EachBrowserHasASwitchAndWhatItStillNeeds) {
    installBrowser("settings.a", "A");
    installBrowser("settings.b", "B", 2);
    installBrowser("settings.c", "C", 3);
    installBrowser("settings.d", "D", 4);
    automation.decisions = {{3, AutomationPermission::permitted},
                            {4, AutomationPermission::refused}};
    open();
    EXPECT_EQ(browsers(),
              lines({"Identificar sites no A|Permitir|1", "Identificar sites no B|Permitir|1",
                     "Identificar sites no C|Permitido|1",
                     "Identificar sites no D|Abrir Ajustes do Sistema|1"}));
    EXPECT_EQ(automation.log, QStringList()) << "nobody is asked by looking";

    button("Abrir Ajustes do Sistema")->click();
    EXPECT_EQ(automation.log, QStringList(u"open "_s + Setup::automationSettings()));

    QTest::mouseClick(&sitesSwitch("C"), Qt::LeftButton);
    EXPECT_EQ(world.tracker->disabledBrowsers(), std::set{u"settings.c"_s});
    EXPECT_EQ(browsers()[2], u"Identificar sites no C|0"_s);
    automation.decisions[3] = AutomationPermission::refused;
    QTest::keyClick(&sitesSwitch("C"), Qt::Key_Space);
    EXPECT_EQ(world.tracker->disabledBrowsers(), std::set<QString>());
    EXPECT_EQ(browsers()[2], u"Identificar sites no C|Abrir Ajustes do Sistema|1"_s);
}

TEST_F(SettingsViewTest, ABrowserIsStartedAndAsked) {
    installBrowser("settings.e", "E");
    open();
    button("Permitir")->click();
    EXPECT_EQ(automation.log, lines({"launch /settings.e (inactive) (hidden)"}));
    automation.running[u"settings.e"_s] = {{5, false}};
    automation.decisions[5] = AutomationPermission::permitted;
    automation.launched();
    EXPECT_EQ(automation.log.last(), u"ask 5"_s);
    EXPECT_EQ(browsers(), lines({"Identificar sites no E|Permitido|1"}));

    automation.running.clear();
    open();
    button("Permitir")->click();
    view.reset();
    automation.launched(); // Nobody is there to be told.
}

TEST_F(SettingsViewTest, LooksAgainWhenAWindowBecomesActive) {
    installBrowser("settings.f", "F", 6);
    open();
    sitesSwitch("F").setFocus();
    automation.decisions[6] = AutomationPermission::permitted;
    Q_EMIT qGuiApp->focusWindowChanged(view->windowHandle());
    EXPECT_EQ(browsers(), lines({"Identificar sites no F|Permitido|1"}));
    EXPECT_TRUE(sitesSwitch("F").hasFocus());

    installBrowser("settings.g", "G");
    Q_EMIT qGuiApp->focusWindowChanged(view->windowHandle());
    EXPECT_EQ(browsers(),
              lines({"Identificar sites no F|Permitido|1", "Identificar sites no G|Permitir|1"}));
    QStringList reached;
    sitesSwitch("F").setFocus();
    for (int i = 0; i < 4; ++i) {
        QWidget* const at = QApplication::focusWidget();
        const auto* const control = qobject_cast<QAbstractButton*>(at);
        reached += at->accessibleName().isEmpty() && control != nullptr ? control->text()
                                                                        : at->accessibleName();
        QTest::keyClick(at, Qt::Key_Tab);
    }
    EXPECT_EQ(reached, lines({"Identificar sites no F", "Permitir", "Identificar sites no G",
                              "Iniciar ao entrar no macOS"}));

    view->hide();
    bundles.webHandlers.clear();
    Q_EMIT qGuiApp->focusWindowChanged(view->windowHandle());
    EXPECT_EQ(browsers().size(), 2) << "closed, it looks at nothing";
    view->show();
    EXPECT_EQ(browsers(), QStringList());
}

TEST_F(SettingsViewTest, StartingAtLoginIsSwitchedAndSaysWhatIsMissing) {
    const char* const approval = "Autorize o orvanta nos Itens de Início dos Ajustes do Sistema.";
    login.afterRegistering = LoginItem::Status::requiresApproval;
    open();
    QAbstractButton* const loginSwitch = button("Iniciar ao entrar no macOS");
    EXPECT_FALSE(loginSwitch->isChecked());
    QTest::mouseClick(loginSwitch, Qt::LeftButton, {}, {8, loginSwitch->height() / 2});
    EXPECT_EQ(login.registrations, 1);
    EXPECT_TRUE(shows(approval));

    login.problem = u"Disco cheio"_s;
    QTest::keyClick(loginSwitch, Qt::Key_Space);
    EXPECT_EQ(login.unregistrations, 1);
    EXPECT_FALSE(loginSwitch->isChecked()) << "as the person left it";
    EXPECT_FALSE(shows(approval));
    EXPECT_TRUE(shows("Disco cheio"));

    login.problem.reset();
    login.afterRegistering = LoginItem::Status::enabled;
    QTest::keyClick(loginSwitch, Qt::Key_Space);
    EXPECT_FALSE(shows("Disco cheio"));
    open();
    EXPECT_TRUE(button("Iniciar ao entrar no macOS")->isChecked());
}

TEST_F(SettingsViewTest, TheHistoryIsErasedOnceThePersonSaysSo) {
    open();
    QAbstractButton* const clear = button("Apagar histórico…");
    EXPECT_TRUE(shows("5 de mar. de 2024, 12:00"));
    EXPECT_FALSE(clear->isEnabled());
    world.front("editor");
    world.pass(90);
    EXPECT_TRUE(clear->isEnabled());

    const auto answer = [&](auto&& how) {
        clear->click();
        auto* const question = view->findChild<QMessageBox*>();
        ASSERT_NE(question, nullptr);
        EXPECT_EQ(question->windowModality(), Qt::WindowModal);
        EXPECT_EQ(question->text(), u"Apagar o histórico por dia?"_s);
        how(*question);
        EXPECT_FALSE(question->isVisible());
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    answer([](QMessageBox& question) { QTest::keyClick(&question, Qt::Key_Escape); });
    answer([](QMessageBox& question) { QTest::keyClick(&question, Qt::Key_Return); });
    EXPECT_EQ(world.tracker->historyDayCount(), 1) << "cancelling is what a key does";
    answer([](QMessageBox& question) {
        const auto buttons = question.buttons();
        (*std::ranges::find(buttons, u"Apagar"_s, &QAbstractButton::text))->click();
    });
    EXPECT_EQ(world.tracker->historyDayCount(), 0);
    EXPECT_FALSE(clear->isEnabled());
    world.tracker->reset();
    EXPECT_TRUE(shows("5 de mar. de 2024, 12:01"));
}

TEST_F(SettingsViewTest, TheActivitiesAreSearchedAndStandByName) {
    using enum Category;
    world.begin();
    add("app:1", "notas", production);
    add("site:2", "Notes", ignored);
    add("app:3", "Édito", pending);
    add("app:4", "Notes", consumption);
    add("app:5", "Zeta", neutral);
    open(1);
    const QStringList all = lines({"Notes: Ignorar", "Notes: Consumo", "Zeta: Não contabilizar",
                                   "notas: Produção", "Édito: Pendente"});
    EXPECT_EQ(rows(), all);
    QTest::keyClicks(&field(), u"NOTE"_s);
    EXPECT_EQ(rows(), lines({"Notes: Ignorar", "Notes: Consumo"}));
    QTest::keyClicks(&field(), u"z"_s);
    EXPECT_EQ(rows(), QStringList());
    field().setText(u"é"_s);
    EXPECT_EQ(rows(), lines({"Édito: Pendente"}));
    field().clear();
    EXPECT_EQ(rows(), all);

    field().setText(u"no"_s);
    list().setCurrentIndex(list().model()->index(2, 0));
    world.workspace.front = RunningApplication{u"novo"_s, u"Nota"_s, {}, {}};
    world.workspaceCenter.post(Notification::DidActivateApplication);
    EXPECT_EQ(rows(),
              lines({"Nota: Pendente", "Notes: Ignorar", "Notes: Consumo", "notas: Produção"}));
    EXPECT_EQ(list().currentIndex().data().toString(), u"notas"_s) << "its place is kept";
}

TEST_F(SettingsViewTest, APickerChangesACategory) {
    using enum Category;
    world.begin();
    Activity& activity = add("app:a", "A", pending);
    add("app:b", "B", production);
    open(1);
    const auto* const delegate = qobject_cast<ClassificationDelegate*>(list().itemDelegate());
    const QRect row = list().visualRect(list().model()->index(0, 0));
    EXPECT_EQ(delegate->pickerArea(row).width(), 125);
    QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, row.topLeft() + QPoint(20, 10));
    EXPECT_EQ(picker(), nullptr);
    QTest::mousePress(list().viewport(), Qt::LeftButton, {}, delegate->pickerArea(row).center());
    EXPECT_EQ(offers(), lines({"*Pendente", "Produção", "Consumo", "Ignorar"}));
    QTest::keyClick(picker(), Qt::Key_Down);
    QTest::keyClick(picker(), Qt::Key_Return);
    EXPECT_EQ(activity.category(), production);
    EXPECT_EQ(rows(), lines({"A: Produção", "B: Produção"}));

    list().setFocus();
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_F4}) {
        QTest::keyClick(&list(), key);
        EXPECT_EQ(offers(), lines({"*Produção", "Consumo", "Ignorar"}));
        QTest::keyClick(picker(), Qt::Key_Escape);
    }
    QTest::keyClick(&list(), Qt::Key_Down);
    QTest::keyClick(&list(), Qt::Key_Down, Qt::AltModifier);
    QTest::keyClick(picker(), Qt::Key_Up);
    QTest::keyClick(picker(), Qt::Key_Return);
    EXPECT_EQ(rows(), lines({"A: Produção", "B: Ignorar"}));
}

TEST_F(SettingsViewTest, NoTextIsCutOffInALargeFont) {
    const QFont usual = QApplication::font();
    for (const double size : {usual.pointSizeF(), 22.0}) {
        QFont font = usual;
        font.setPointSizeF(size);
        QApplication::setFont(font);
        installBrowser("settings.h", "Navegador de nome comprido", 8);
        automation.decisions[8] = AutomationPermission::refused;
        for (const int tab : {0, 1}) {
            open(tab);
            EXPECT_EQ(view->size(), QSize(564, 454));
            int captions = 0;
            for (const Caption* const caption : view->findChildren<Caption*>()) {
                if (caption->isVisible()) {
                    ++captions;
                    EXPECT_GE(caption->height(), caption->heightForWidth(caption->width()))
                        << qPrintable(caption->text());
                }
            }
            EXPECT_EQ(captions, tab == 0 ? 3 : 1);
        }
        open();
        EXPECT_FALSE(view->findChild<QScrollArea*>()->horizontalScrollBar()->isVisible());
    }
    QApplication::setFont(usual);
}
