#include "AppStage.h"

#include <QFile>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

class AppDelegateTest : public testing::Test, protected AppStage {
protected:
    bool start(bool isSetUp = true) {
        defaults().setBool(u"setupDoneV1"_s, isSetUp);
        return launch();
    }
    void write(const char* name, const char* text) const {
        QFile file(folder.filePath(QString::fromLatin1(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    /// Does what is written, as "click; press 100 100", and says whether the popover is open then.
    bool play(const char* acts) {
        for (const QString& act : QString::fromLatin1(acts).split(u"; "_s)) {
            const QString verb = act.section(u' ', 0, 0);
            const QString what = act.section(u' ', 1, 1);
            verb == u"click"_s   ? desktop.item->handlers.activate(desktop.pointer = {1200, 14})
            : verb == u"press"_s ? desktop.press({what.toInt(), act.section(u' ', 2).toInt()})
            : verb == u"key"_s   ? QTest::keyPress(popover(), QKeySequence(what)[0].key())
            : verb == u"front"_s ? toFront(what)
            : verb == u"focus"_s ? qGuiApp->focusWindowChanged(what.isEmpty() ? nullptr : &other)
            : verb == u"tray"_s  ? void(desktop.item->isShown = what == u"shown"_s)
            : verb == u"again"_s ? void(delegate->applicationShouldHandleReopen())
            : verb == u"menu"_s  ? desktop.item->handlers.menuWillOpen()
                                 : desktop.loop.advance(what.toDouble());
            QCoreApplication::processEvents();
        }
        delegate->save();
        return popover() != nullptr;
    }
    /// Seconds, as another process finds them.
    qint64 saved(const QByteArray& key) const {
        Database store(folder.filePath(u"com.brindlework.orvanta/Activities.store"_s));
        return store.integer("SELECT total(ZSECONDS) FROM ZACTIVITY WHERE ZKEY = '" + key + "'");
    }
    /// What the one message says that is shown; else how many are.
    static QString message() {
        const auto messages = shown<QMessageBox>();
        return messages.size() == 1 ? messages[0]->text() + u'|' + messages[0]->informativeText()
                                    : QString::number(messages.size());
    }
    static void answer(const char* title) {
        orvanta::click(named(*firstShown<QMessageBox>(), title));
        settle();
    }

    QWindow other;
};

TEST_F(AppDelegateTest, TheLaunchPutsThePartsTogetherInOrder) {
    write("com.local.Orvanta.plist", "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
                                     "<key>paused</key><true/></dict></plist>");
    desktop.front("editor");
    ASSERT_TRUE(start());
    EXPECT_EQ(desktop.log, lines({"automation", "status item", "presence"}));
    EXPECT_EQ(desktop.item->title.text(), u"Ⅱ —/—"_s) << "as the older version left it";
    EXPECT_EQ(popover(), nullptr) << "nothing has to be allowed any more";
    play("pass 10");
    EXPECT_EQ(desktop.automation->renewals, 1);
    end();
    defaults().setBool(u"paused"_s, false);
    ASSERT_TRUE(launch());
    const auto [titles, toolTips] = std::pair(desktop.item->titles, desktop.item->toolTips);
    desktop.loop.advance(7);
    EXPECT_EQ(desktop.item->titles, titles) << "of the pending nothing is in the title";
    EXPECT_EQ(desktop.item->toolTips, toolTips + 7);
    desktop.loop.advance(3);
    delegate->displayDidVanish();
    EXPECT_EQ(saved("app:editor"), 10);
}

TEST_F(AppDelegateTest, AStoreThatCannotBeOpenedIsToldAndNothingElseIsSetUp) {
    write("com.brindlework.orvanta", "");
    EXPECT_FALSE(start());
    EXPECT_TRUE(alerts.value(0).startsWith(u"Não foi possível abrir os dados do orvanta|"_s));
    EXPECT_EQ(desktop.log, QStringList());
    delegate->applicationShouldHandleReopen();
    delegate->applicationWillTerminate();
}

TEST_F(AppDelegateTest, ThePopoverOpensAndClosesByItsRules) {
    struct Row {
        const char* acts;
        bool isOpen;
    };
    const Row popup[]{
        {"click; key Esc", false},
        {"click; key Alt", false}, // The desktop's keys are not for the panel.
        {"click; key Meta", false},
        {"click; press 100 100", false},
        {"click; press 1100 100", true}, // In itself.
        {"front com.brindlework.orvanta", true},
        {"front", true}, // Neither Orvanta nor nothing is another application.
        {"front editor", false},
        {"click; menu", false},
        {"click; press 1200 14; pass 0.15; click", false}, // Of one click the first half closes it.
        {"click", true},
        {"press 1208 22; pass 0.9; click", true}, // At another place.
        {"press 1207 22; pass 0.9; click; click", true},
        {"press 1200 14; pass 1; click", true}, // Long after.
        {"click; again", false},
        {"tray hidden; again", true},
        {"again", true},
    };
    // Where popups are not placed, the panel is a window that closes when it is left.
    const Row window[]{
        {"click; focus own; pass 0.2; key Alt", true}, // The desktop has seen that key itself.
        {"focus; pass 0.05; focus own; pass 0.2", true},
        {"focus; pass 0.2", false},
        {"click", false}, // The click that took the focus away.
        {"click", true},
    };
    ASSERT_TRUE(start());
    for (const auto& [acts, isOpen] : popup) {
        EXPECT_EQ(play(acts), isOpen) << acts;
        EXPECT_EQ(desktop.pressHandler != nullptr, isOpen) << acts;
    }
    EXPECT_EQ(popover()->geometry(), QRect(QPoint(960, 28), Popover::contentSize));
    EXPECT_EQ(popover()->focusWidget(), firstShown<PanelRoot>(popover())) << "and no control";
    end();
    desktop.arePopupsPlaced = desktop.tellsPresses = false;
    ASSERT_TRUE(launch());
    for (const auto& [acts, isOpen] : window) {
        EXPECT_EQ(play(acts), isOpen) << acts;
    }
    EXPECT_EQ(popover()->windowType(), Qt::Window);
    EXPECT_EQ(desktop.log.last(), u"place orvanta 960 28"_s);
}

TEST_F(AppDelegateTest, WhatIsBehindThePanelAndWhatABrowserShowsCounts) {
    install(u"browser"_s, u"B"_s);
    ASSERT_TRUE(start());
    desktop.untold = [this] {
        desktop.front("editor");
    };
    play("click; front com.brindlework.orvanta; pass 10; click; pass 10");
    EXPECT_EQ(saved("app:editor"), 10) << "then Orvanta itself is in front";
    desktop.automation->running[u"browser"_s] = {{7, false}};
    desktop.automation->decisions[7] = AutomationPermission::permitted;
    desktop.automation->answer = [](qint64, const auto& completion) {
        completion(showing(u"https://www.Site.org/a"_s));
    };
    play("front browser; pass 1; pass 1; pass 10"); // It is asked once the loop comes to it.
    EXPECT_GE(saved("site:site.org"), 10);
}

TEST_F(AppDelegateTest, WhatHasToBeAllowedOpensByItselfAndAtEachGrant) {
    defaults().setStringArray(u"disabledBrowsers"_s, {u"off"_s});
    install(u"off"_s, u"off"_s);
    ASSERT_TRUE(start(false));
    ASSERT_NE(popover(), nullptr);
    EXPECT_EQ(popover()->pos(), QPoint(960, 28)) << "the corner at the panel";
    EXPECT_FALSE(accessibleLines(*popover()).contains(u"Text Sites no off"_s));
    install(u"new"_s, u"new"_s);
    EXPECT_FALSE(play("press 100 100; pass 30"));
    ASSERT_TRUE(play("click; pass 1"));
    EXPECT_TRUE(accessibleLines(*popover()).contains(u"Text Sites no new"_s));
    play("press 100 100");
    desktop.login.current = LoginItem::Status::enabled;
    EXPECT_TRUE(play("pass 1"));
}

TEST_F(AppDelegateTest, TheMenuLeadsToTheSettingsWhichAreOneWindowInTheMiddle) {
    ASSERT_TRUE(start());
    play("click");
    QString menu;
    for (const StatusMenuItem& each : desktop.item->handlers.menu()) {
        menu += each.text + each.keyEquivalent.value_or(u'|');
    }
    EXPECT_EQ(menu, u"Mostrar todos||Ajustes…,|Sair do orvantaq"_s);
    for (const bool isChecked : {false, true}) {
        EXPECT_EQ(entry(0).checked, isChecked);
        entry(0).action();
    }
    entry(2).action();
    EXPECT_EQ(popover(), nullptr);
    QMainWindow* const window = settings();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->windowTitle(), u"Ajustes do orvanta"_s);
    EXPECT_LE((window->frameGeometry().center() - QPoint(640, 414)).manhattanLength(), 40);
    // Closed and shown again it is the same, where it was.
    window->move(20, 40);
    window->close();
    play("again");
    EXPECT_EQ(settings(), nullptr) << "closed, it does not come back by itself";
    delegate->showSettings();
    EXPECT_EQ(settings(), window);
    EXPECT_EQ(window->pos(), QPoint(20, 40));
    window->showMinimized();
    play("again");
    EXPECT_FALSE(window->isMinimized());
    EXPECT_EQ(desktop.log.count(u"activate Ajustes do orvanta"_s), 3);
    // The desktop does not tell that another window of the same application is in front.
    window->close();
    desktop.workspace.front = RunningApplication{u"editor"_s, {}, {}, {}};
    play("pass 10.2");
    EXPECT_EQ(saved("app:editor"), 10);
    entry(4).action();
    EXPECT_EQ(terminations, 1);
}

TEST_F(AppDelegateTest, ADesktopThatTellsNothingOrGoesIsTold) {
    desktop.watching = WindowWatching::Unsupported;
    ASSERT_TRUE(start());
    EXPECT_TRUE(message().contains(u"não informa qual aplicativo"_s));
    firstShown<QMessageBox>()->close();
    for (const WindowWatching state : {WindowWatching::Waiting, WindowWatching::Unsupported,
                                       WindowWatching::Ended}) { // The first two are a resume.
        EXPECT_EQ(terminations, 0);
        tellOfWindows(state);
        EXPECT_EQ(message(), u"0"_s);
    }
    EXPECT_EQ(terminations, 1);
}

TEST_F(AppDelegateTest, WhatADesktopNeedsToTellIsAskedForAndCanBeAllowedLater) {
    desktop.watching = WindowWatching::NeedsPermission;
    ASSERT_TRUE(start());
    EXPECT_TRUE(message().contains(u"por uma extensão"_s));
    EXPECT_TRUE(message().endsWith(u"A extensão diz ao orvanta apenas qual aplicativo está à "
                                   "frente: nunca títulos nem conteúdos. Nada sai deste "
                                   "computador."_s));
    QTest::keyClick(firstShown<QMessageBox>(), Qt::Key_Escape);
    EXPECT_EQ(message(), u"0"_s);
    play("again");
    answer("Agora não");
    EXPECT_EQ(message(), u"0"_s);

    delegate->togglePopover(std::nullopt);
    orvanta::click(named(*popover(), "Permitir"));
    EXPECT_EQ(popover(), nullptr);
    desktop.allow = [] {
        return u"/home: Sem espaço"_s;
    };
    answer("Permitir");
    EXPECT_EQ(message(), u"Não foi possível instalar a extensão.|/home: Sem espaço"_s);
    play("again");
    desktop.allow = [this] {
        tellOfWindows(WindowWatching::NeedsLogin);
        return std::nullopt;
    };
    answer("Permitir");
    EXPECT_TRUE(message().contains(u"Saia da sessão e entre de novo"_s));
    tellOfWindows(WindowWatching::Watching);
    EXPECT_EQ(message(), u"0"_s);
}

} // namespace
