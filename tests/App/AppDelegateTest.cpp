#include "App/AppDelegate.h"

#include "App/SettingsWindow.h"
#include "Fakes/FakeDesktop.h"
#include "Fakes/QtPrinters.h"
#include "Model/Sqlite.h"
#include "Shown.h"
#include "Views/PanelRoot.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFile>
#include <QMessageBox>
#include <QPointer>
#include <QTemporaryDir>
#include <QTest>

#include <gmock/gmock.h>

using namespace orvanta;
using namespace Qt::StringLiterals;
using testing::ElementsAre;

namespace {

class AppDelegateTest : public testing::Test {
protected:
    void TearDown() override {
        delegate.reset();
        EXPECT_TRUE(shown<Popover>().empty());
    }

    bool launch(bool isSetUp = true) {
        UserDefaults defaults(folder.path(), u"com.brindlework.orvanta"_s);
        defaults.setBool(u"setupDoneV1"_s, isSetUp);
        delegate = std::make_unique<AppDelegate>(AppDelegate::Surroundings{
            .desktop = desktop,
            .configurationFolder = folder.path(),
            .dataFolder = folder.path(),
            .calendar = Calendar(QTimeZone::utc()),
            .alert =
                [this](const QString& message, const QString& informativeText) {
                    alerts.append(message + u'|' + informativeText);
                },
            .terminate =
                [this] {
                    ++terminations;
                }});
        const bool launched = delegate->applicationDidFinishLaunching();
        desktop.loop.advance(0);
        return launched;
    }
    /// Seconds, as another process finds them.
    qint64 saved(const QByteArray& key) {
        Database store(folder.filePath(u"com.brindlework.orvanta/Activities.store"_s));
        return store.integer("SELECT total(ZSECONDS) FROM ZACTIVITY WHERE ZKEY = '" + key + "'");
    }
    void click(QPoint place = {1200, 14}) {
        desktop.pointer = place;
        desktop.item->handlers.activate(place);
    }
    Popover* popover() {
        const auto all = shown<Popover>();
        EXPECT_LE(all.size(), 1U);
        return all.empty() ? nullptr : all.front();
    }
    PanelRoot* panel() { return popover() ? popover()->findChild<PanelRoot*>() : nullptr; }
    QMainWindow* settings() {
        const auto all = shown<QMainWindow>();
        EXPECT_LE(all.size(), 1U);
        return all.empty() ? nullptr : all.front();
    }
    const StatusMenuItem entry(const QString& text) {
        for (const StatusMenuItem& each : desktop.item->handlers.menu()) {
            if (each.text == text) {
                return each;
            }
        }
        return {};
    }

    QTemporaryDir folder;
    FakeDesktop desktop;
    QStringList alerts;
    int terminations = 0;
    std::unique_ptr<AppDelegate> delegate;
};

TEST_F(AppDelegateTest, TheLaunchPutsThePartsTogetherInOrder) {
    QFile older(folder.filePath(u"com.local.Orvanta.plist"_s));
    ASSERT_TRUE(older.open(QIODevice::WriteOnly));
    older.write("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict>"
                "<key>paused</key><true/></dict></plist>");
    older.close();
    desktop.front("editor");
    ASSERT_TRUE(launch());
    EXPECT_THAT(desktop.log, ElementsAre(u"automation"_s, u"status item"_s, u"presence"_s));
    EXPECT_THAT(alerts, testing::IsEmpty());
    EXPECT_EQ(desktop.item->title.text(), u"Ⅱ —/—"_s) << "as the older version left it";
    EXPECT_EQ(
        desktop.item->handlers.toolTip(),
        u"orvanta · Sem dados classificados · 0:00 · Pausado · Clique direito para Ajustes"_s);
    EXPECT_EQ(popover(), nullptr) << "nothing has to be allowed any more";

    desktop.loop.advance(10);
    EXPECT_EQ(desktop.automation->renewals, 1);
    delegate->applicationWillTerminate();
    delegate.reset();
    EXPECT_EQ(saved("app:editor"), 0);

    UserDefaults(folder.path(), u"com.brindlework.orvanta"_s).setBool(u"paused"_s, false);
    ASSERT_TRUE(launch());
    desktop.loop.advance(7);
    delegate->applicationWillTerminate();
    EXPECT_EQ(saved("app:editor"), 7);
}

TEST_F(AppDelegateTest, AStoreThatCannotBeOpenedIsToldAndNothingElseIsSetUp) {
    QFile obstacle(folder.filePath(u"com.brindlework.orvanta"_s));
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    EXPECT_FALSE(launch());
    ASSERT_EQ(alerts.size(), 1);
    EXPECT_THAT(alerts[0].toStdString(),
                testing::MatchesRegex("Não foi possível abrir os dados do orvanta\\|.+"));
    EXPECT_THAT(desktop.log, testing::IsEmpty());
    EXPECT_EQ(desktop.loop.armedCount(), 0U);
    delegate->applicationShouldHandleReopen();
    delegate->applicationWillTerminate();
}

TEST_F(AppDelegateTest, TheStatusItemSaysWhatIsCountedAndOnlyWhenItChanges) {
    desktop.front("debian-xterm");
    ASSERT_TRUE(launch());
    const int titles = desktop.item->titles;
    const int toolTips = desktop.item->toolTips;
    desktop.loop.advance(3.5);
    EXPECT_EQ(desktop.item->titles, titles) << "of the pending nothing is in the title";
    EXPECT_EQ(desktop.item->toolTips, toolTips + 3);
    EXPECT_EQ(desktop.item->handlers.toolTip(),
              u"orvanta · Sem dados classificados · 0:03 · Clique direito para Ajustes"_s);
}

TEST_F(AppDelegateTest, TheMenuIsMadeAnewAndARightClickClosesThePopover) {
    ASSERT_TRUE(launch());
    click();
    ASSERT_NE(panel(), nullptr);
    desktop.item->handlers.menuWillOpen();
    EXPECT_EQ(popover(), nullptr);

    QStringList shape;
    for (const StatusMenuItem& each : desktop.item->handlers.menu()) {
        shape.append(each.text + (each.keyEquivalent ? u" ^"_s + *each.keyEquivalent : QString()));
    }
    EXPECT_THAT(shape, ElementsAre(u"Mostrar todos"_s, QString(), u"Ajustes… ^,"_s, QString(),
                                   u"Sair do orvanta ^q"_s));
    EXPECT_EQ(entry(u"Mostrar todos"_s).checked, false);
    entry(u"Mostrar todos"_s).action();
    EXPECT_EQ(entry(u"Mostrar todos"_s).checked, true);
    EXPECT_EQ(terminations, 0);
    entry(u"Sair do orvanta"_s).action();
    EXPECT_EQ(terminations, 1);

    click();
    EXPECT_NE(popover(), nullptr);
}

TEST_F(AppDelegateTest, ThePopoverOpensAtTheClickAndGoesWithItsContent) {
    ASSERT_TRUE(launch());
    EXPECT_FALSE(desktop.pressHandler);
    for (int i = 0; i < 20; ++i) {
        click();
        ASSERT_NE(popover(), nullptr);
        EXPECT_EQ(popover()->geometry(), QRect(QPoint(960, 28), Popover::contentSize));
        EXPECT_EQ(popover()->findChildren<PanelRoot*>().size(), 1);
        EXPECT_EQ(popover()->focusWidget(), panel()) << "no control starts focused";
        EXPECT_TRUE(desktop.pressHandler);
        const QPointer<QWidget> content = panel();
        click();
        EXPECT_EQ(popover(), nullptr);
        EXPECT_FALSE(desktop.pressHandler);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_TRUE(content.isNull());
    }
}

TEST_F(AppDelegateTest, ThePopoverClosesByItself) {
    ASSERT_TRUE(launch());
    desktop.front("editor");
    click();
    QTest::keyClick(popover(), Qt::Key_Escape);
    EXPECT_EQ(popover(), nullptr);

    click();
    desktop.press({100, 100});
    EXPECT_EQ(popover(), nullptr);

    click();
    desktop.press(popover()->geometry().center());
    EXPECT_NE(popover(), nullptr) << "a click in itself";
    desktop.front("com.brindlework.orvanta");
    desktop.workspace.front.reset();
    desktop.workspaceCenter.post(Notification::DidActivateApplication);
    EXPECT_NE(popover(), nullptr) << "neither Orvanta nor nothing is another application";
    desktop.front("editor");
    EXPECT_EQ(popover(), nullptr);

    desktop.untold = [this] {
        desktop.front("browser");
    };
    click();
    EXPECT_NE(popover(), nullptr) << "what came to the front before it opened";
    desktop.untold = nullptr;
    popover()->close();

    click();
    QTest::keyPress(popover(), Qt::Key_Alt);
    EXPECT_EQ(popover(), nullptr) << "the desktop's keys are not for the panel";
}

TEST_F(AppDelegateTest, AClickWhosePressClosedThePopoverDoesNotOpenItAgain) {
    ASSERT_TRUE(launch());
    const QPoint item(1200, 14);
    click(item);
    desktop.press(item);
    EXPECT_EQ(popover(), nullptr);
    desktop.loop.advance(0.15);
    click(item);
    EXPECT_EQ(popover(), nullptr) << "the same click";
    click(item);
    EXPECT_NE(popover(), nullptr) << "the next one";

    desktop.press({100, 100});
    click(item);
    EXPECT_NE(popover(), nullptr) << "a click at another place";
    desktop.press(item);
    desktop.loop.advance(5);
    click(item);
    EXPECT_NE(popover(), nullptr) << "a click long after";
}

TEST_F(AppDelegateTest, WherePopupsAreNotPlacedThePanelIsAWindowThatClosesWhenItIsLeft) {
    desktop.arePopupsPlaced = false;
    desktop.tellsPresses = false;
    launch();
    const auto moveFocus = [this](QWindow* window) {
        Q_EMIT qGuiApp->focusWindowChanged(window);
        desktop.loop.advance(0.2);
    };
    click();
    ASSERT_NE(popover(), nullptr);
    EXPECT_EQ(popover()->windowType(), Qt::Window);
    EXPECT_EQ(desktop.log.last(), u"place orvanta 960 28"_s);
    QWindow other;
    moveFocus(&other);
    EXPECT_NE(popover(), nullptr) << "a window of our own";
    QTest::keyPress(popover(), Qt::Key_Alt);
    EXPECT_NE(popover(), nullptr) << "the desktop has seen that key itself";
    moveFocus(nullptr);
    EXPECT_EQ(popover(), nullptr);
    click();
    EXPECT_EQ(popover(), nullptr) << "the click that took the focus away";
    click();
    EXPECT_NE(popover(), nullptr);
}

TEST_F(AppDelegateTest, ThePanelLeavesTheApplicationBehindItCounting) {
    ASSERT_TRUE(launch());
    desktop.front("editor");
    desktop.loop.advance(10);
    click();
    desktop.front("com.brindlework.orvanta");
    desktop.loop.advance(10);
    EXPECT_EQ(saved("app:editor"), 20);
    click();
    desktop.loop.advance(10);
    EXPECT_EQ(saved("app:editor"), 20) << "Orvanta itself is in front";
}

TEST_F(AppDelegateTest, WhatHasToBeAllowedOpensByItselfAndAtEachGrant) {
    ASSERT_TRUE(launch(false));
    ASSERT_NE(panel(), nullptr);
    EXPECT_EQ(popover()->pos(), QPoint(960, 28)) << "the corner at the panel";
    desktop.press({100, 100});
    EXPECT_EQ(popover(), nullptr);
    desktop.loop.advance(3);
    EXPECT_EQ(popover(), nullptr);

    desktop.login.current = LoginItem::Status::enabled;
    desktop.loop.advance(1);
    EXPECT_NE(popover(), nullptr);
    EXPECT_TRUE(
        UserDefaults(folder.path(), u"com.brindlework.orvanta"_s).boolValue(u"setupDoneV1"_s));
}

TEST_F(AppDelegateTest, BrowsersThatComeAreOfferedAndThoseTurnedOffAreNot) {
    const QByteArray dialect = "<property code=\"cTab\"/><property code=\"pURL\"/>";
    UserDefaults(folder.path(), u"com.brindlework.orvanta"_s)
        .setStringArray(u"disabledBrowsers"_s, {u"off"_s});
    desktop.installed.install(u"/apps/off"_s, u"Off"_s, dialect);
    ASSERT_TRUE(launch(false));
    const auto offered = [this] {
        QStringList names;
        for (const auto* widget : popover()->findChildren<QWidget*>()) {
            names.append(widget->accessibleName());
        }
        return names.filter(u"Sites no "_s).join(u'|');
    };
    EXPECT_EQ(offered(), QString());
    desktop.press({100, 100});
    desktop.installed.install(u"/apps/new"_s, u"New"_s, dialect);
    desktop.loop.advance(30);
    click();
    desktop.loop.advance(1);
    EXPECT_TRUE(offered().startsWith(u"Sites no New"_s)) << offered().toStdString();
}

TEST_F(AppDelegateTest, TheSettingsAreOneWindowInTheMiddle) {
    ASSERT_TRUE(launch());
    click();
    entry(u"Ajustes…"_s).action();
    EXPECT_EQ(popover(), nullptr);
    QMainWindow* window = settings();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->windowTitle(), u"Ajustes do orvanta"_s);
    EXPECT_EQ(window->centralWidget()->size(), QSize(564, 454));
    EXPECT_LE((window->frameGeometry().center() - QPoint(640, 414)).manhattanLength(), 40);
    EXPECT_TRUE(desktop.log.endsWith(u"activate Ajustes do orvanta"_s));

    // Closed and shown again it is the same, where it was.
    window->move(20, 40);
    window->close();
    EXPECT_EQ(settings(), nullptr);
    delegate->applicationShouldHandleReopen();
    EXPECT_EQ(settings(), nullptr) << "closed, it does not come back by itself";
    delegate->showSettings();
    EXPECT_EQ(settings(), window);
    EXPECT_EQ(window->pos(), QPoint(20, 40));

    window->showMinimized();
    EXPECT_FALSE(delegate->applicationShouldHandleReopen());
    EXPECT_FALSE(window->isMinimized());
    EXPECT_EQ(desktop.log.count(u"activate Ajustes do orvanta"_s), 3);
}

TEST_F(AppDelegateTest, AfterTheSettingsTheApplicationBehindIsFoundAgain) {
    ASSERT_TRUE(launch());
    desktop.front("com.brindlework.orvanta");
    delegate->showSettings();
    desktop.loop.advance(10);
    settings()->close();
    // The desktop does not tell that another window of the same application is in front.
    desktop.workspace.front = RunningApplication{u"editor"_s, {}, {}, {}};
    desktop.loop.advance(0.2);
    desktop.loop.advance(10);
    delegate->save();
    EXPECT_EQ(saved("app:editor"), 10);
    EXPECT_EQ(saved("app:com.brindlework.orvanta"), 0);
}

TEST_F(AppDelegateTest, WhereThereIsNoTrayStartingAgainOpensThePanel) {
    ASSERT_TRUE(launch());
    delegate->applicationShouldHandleReopen();
    EXPECT_EQ(popover(), nullptr);
    desktop.item->isShown = false;
    delegate->applicationShouldHandleReopen();
    EXPECT_NE(panel(), nullptr);
    delegate->applicationShouldHandleReopen();
    EXPECT_NE(panel(), nullptr);
}

TEST_F(AppDelegateTest, ADesktopThatTellsNothingOrGoesIsTold) {
    desktop.watching = WindowWatching::Unsupported;
    ASSERT_TRUE(launch());
    const auto messages = shown<QMessageBox>();
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_TRUE(messages[0]->text().contains(u"não informa qual aplicativo"_s));
    messages[0]->close();
    for (const WindowWatching state : {WindowWatching::Waiting, WindowWatching::Unsupported}) {
        desktop.watching = state; // A resume.
        Q_EMIT desktop.windowWatchingChanged();
    }
    EXPECT_TRUE(shown<QMessageBox>().empty());
    desktop.watching = WindowWatching::Ended;
    Q_EMIT desktop.windowWatchingChanged();
    EXPECT_EQ(terminations, 1);
    EXPECT_TRUE(shown<QMessageBox>().empty());
}

TEST_F(AppDelegateTest, WhatADesktopNeedsToTellIsAskedForAndCanBeAllowedLater) {
    desktop.watching = WindowWatching::NeedsPermission;
    ASSERT_TRUE(launch());
    const auto message = [] {
        const auto messages = shown<QMessageBox>();
        return messages.size() == 1 ? messages[0]->text() : QString::number(messages.size());
    };
    const auto permit = [] {
        shown<QMessageBox>().at(0)->buttons().at(0)->click();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    EXPECT_TRUE(message().contains(u"por uma extensão"_s));
    QString answer;
    auto* const question = shown<QMessageBox>().at(0);
    QObject::connect(question, &QMessageBox::buttonClicked,
                     [&answer](const QAbstractButton* button) { answer = button->text(); });
    QTest::keyClick(question, Qt::Key_Escape);
    EXPECT_EQ(answer, u"Agora não"_s);
    EXPECT_EQ(message(), u"0"_s);

    delegate->togglePopover(std::nullopt);
    for (auto* const button : panel()->findChildren<QAbstractButton*>()) {
        if (button->accessibleName() == u"Permitir"_s) {
            EXPECT_TRUE(button->isVisible());
            button->click();
        }
    }
    EXPECT_EQ(popover(), nullptr);
    desktop.allow = [] {
        return u"/home: Sem espaço"_s;
    };
    permit();
    EXPECT_EQ(message(), u"Não foi possível instalar a extensão."_s);
    EXPECT_EQ(shown<QMessageBox>().at(0)->informativeText(), u"/home: Sem espaço"_s);

    delegate->applicationShouldHandleReopen();
    desktop.allow = [this] {
        desktop.watching = WindowWatching::NeedsLogin;
        Q_EMIT desktop.windowWatchingChanged();
        return std::nullopt;
    };
    permit();
    EXPECT_TRUE(message().contains(u"Saia da sessão e entre de novo"_s));
    desktop.watching = WindowWatching::Watching;
    Q_EMIT desktop.windowWatchingChanged();
    EXPECT_EQ(message(), u"0"_s);
}

} // namespace
