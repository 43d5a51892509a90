#include "Linux/BrowserBridge/AutomationWindow.h"

#include "BrowserHostEnd.h"
#include "Linux/BrowserBridge/LinuxAutomation.h"
#include "Testing.h"
#include "Widgets.h"

#include <QPointer>

namespace orvanta {

namespace {

/// A person's files, one browser that is a program which sleeps, and its hosts.
class LinuxAutomationTest : public testing::Test {
protected:
    LinuxAutomationTest() {
        folder.writeEntry(u"entries/chromium"_s, "Exec=sleep 60\n");
        folder.write(u"config/chromium/Local State"_s, "{}");
        folder.write(u"package/orvanta.crx"_s, "package");
    }
    ~LinuxAutomationTest() override {
        if (process > 0) {
            ::kill(static_cast<pid_t>(process), SIGKILL);
        }
    }

    /// The browser runs, and whoever calls the bridge was started by it.
    void launch() {
        automation.launcher().openApplication(folder.path(u"entries/chromium.desktop"_s), {},
                                              [] {});
        process = automation.runningApplications().instances(u"chromium"_s).at(0).processIdentifier;
        const QString own = u"proc/%1/"_s.arg(::getpid());
        folder.write(own + u"stat"_s, "1 (host) S " + QByteArray::number(process) + " 1");
        folder.link(host, own + u"exe"_s);
    }
    int determine(bool askUser) {
        return automation.permission().determine(
            EventDescriptor::processIdentifier(static_cast<int>(process)), 0, 0, askUser);
    }
    /// What a read of the site in front gives, where nobody has to be waited for.
    QString site() {
        // The answer may come after this has returned.
        const auto found = std::make_shared<QString>(u"unanswered"_s);
        readSite(automation.transport(), process, [=](const QString& site) { *found = site; });
        return *found;
    }
    static QString status() { return texts<QLabel>(shown<AutomationWindow>()).last(); }

    const TemporaryFolder folder;
    const QString socket = folder.path(u"runtime/browsers"_s);
    const QString host = u"/opt/orvanta/orvanta-browser-host"_s;
    HandMainLoop loop;
    FakeWorkspace workspace;
    NotificationCenter center;
    DesktopEntries entries{{folder.path(u"entries"_s)}};
    std::map<QString, QStringList> lists;
    QStringList browsers{u"chromium"_s};
    qint64 process = 0;
    LinuxAutomation automation{
        {.transport = {workspace, center, loop, [this] { return loop.now(); },
                       [] {
                           return false;
                       }},
         .bridge = {socket, host, folder.path(u"proc"_s)},
         .identity = ApplicationIdentity(entries, ::getpid(), u"own"_s, folder.path(u"proc"_s)),
         .load = [this](const QString& key) { return lists[key]; },
         .store = [this](const QString& key, const QStringList& list) { lists[key] = list; },
         .browsers = [this] { return browsers; },
         .name = [](const QString&) { return u"<b>Chromium</b>"_s; },
         .preparation = BrowserPreparation({.home = folder.path(u"home"_s),
                                            .configHome = folder.path(u"config"_s),
                                            .hostExecutable = host,
                                            .packageFolder = folder.path(u"package"_s)}),
         .entries = entries,
         .display = {}}};
};

TEST_F(LinuxAutomationTest, TheWindowFollowsABrowserFromTheQuestionToItsConnection) {
    const QString settings =
        u"x-apple.systempreferences:com.apple.preference.security?Privacy_Automation"_s;
    EXPECT_TRUE(automation.launcher().open(settings));
    const QPointer<AutomationWindow> window = shown<AutomationWindow>();
    EXPECT_TRUE(automation.launcher().open(settings));
    EXPECT_EQ(shown<AutomationWindow>(), window);
    EXPECT_EQ(status(), u"Ainda não decidido"_s);

    click(window, u"Permitir…"_s);
    click(shown<PermissionPrompt>(), u"Permitir"_s);
    EXPECT_EQ(status(), u"Permitido · abra o navegador"_s);
    click(shown<PermissionPrompt>(), u"OK"_s);
    launch();
    window->refresh();
    EXPECT_EQ(status(), u"Permitido · reinicie o navegador"_s);
    EXPECT_EQ(texts<QPushButton>(window), (QStringList{u"Concluir…"_s, u"Não permitir"_s}));
    {
        const Host connected(socket);
        EXPECT_EQ(status(), u"Permitido · conectado"_s);
        EXPECT_EQ(texts<QPushButton>(window), QStringList{u"Não permitir"_s});
    }
    settle();
    EXPECT_EQ(status(), u"Permitido · reinicie o navegador"_s);
    EXPECT_EQ(determine(false), AutomationPermission::permitted);

    // The keyboard goes on beside a button that has done its work.
    auto* refuse = visible<QPushButton>(window).last();
    EXPECT_EQ(refuse->accessibleName(), u"Não permitir — <b>Chromium</b>"_s);
    refuse->setFocus();
    refuse->click();
    EXPECT_EQ(window->focusWidget(), visible<QPushButton>(window).at(0));
    EXPECT_EQ(texts<QPushButton>(window), QStringList{u"Permitir…"_s});
    EXPECT_EQ(status(), u"Não permitido"_s);
    EXPECT_EQ(determine(true), AutomationPermission::refused);
    EXPECT_EQ(lists, (std::map<QString, QStringList>{
                         {u"agreed"_s, {}}, {u"allowed"_s, {}}, {u"refused"_s, browsers}}));
    EXPECT_EQ(QDir(folder.path(u"config/chromium"_s))
                  .entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot),
              QStringList{u"Local State"_s})
        << "what was put into the browser is gone";
    browsers.clear();
    window->refresh();
    EXPECT_EQ(status(), u"Nenhum navegador compatível foi encontrado."_s);
    window->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(window);
}

TEST_F(LinuxAutomationTest, ABrowserThatWasAgreedToAndDoesNotCallIsToldWhatIsLeft) {
    launch();
    EXPECT_EQ(determine(true), AutomationPermission::undecided);
    const QPointer<PermissionPrompt> prompt = shown<PermissionPrompt>();
    ASSERT_TRUE(prompt);
    prompt->showMinimized();
    EXPECT_EQ(determine(true), AutomationPermission::undecided);
    EXPECT_EQ(shown<PermissionPrompt>(), prompt);
    EXPECT_FALSE(prompt->isMinimized()) << "asked again, it comes to the front";
    click(prompt, u"Permitir"_s);
    prompt->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    EXPECT_EQ(determine(false), AutomationPermission::undecided);
    EXPECT_FALSE(shown<PermissionPrompt>());
    QDir(folder.path(u"config/chromium/External Extensions"_s)).removeRecursively();
    automation.showWindow();
    EXPECT_EQ(status(), u"Permitido · falta a extensão no navegador"_s);
    EXPECT_EQ(determine(true), AutomationPermission::undecided);
    EXPECT_EQ(texts<QLabel>(shown<PermissionPrompt>()).value(0),
              u"Reinicie o <b>Chromium</b> para concluir."_s);
    const Host connected(socket);
    EXPECT_FALSE(shown<PermissionPrompt>()) << "nothing is left";
    automation.ask(u"chromium"_s);
    EXPECT_FALSE(shown<PermissionPrompt>());
}

TEST_F(LinuxAutomationTest, ABrowserIsHeardWhileThePersonWantsItAlone) {
    launch();
    Host browser(socket);
    const auto isTold = [&browser](const QByteArray& tell) {
        return browser.heard().count("\"tell\":" + tell) == 1;
    };
    EXPECT_TRUE(isTold("false")) << "undecided";
    browser.say("https://example.org", true);
    EXPECT_EQ(site(), u"failed"_s) << "one that speaks nevertheless is not heard";
    EXPECT_FALSE(browser.isClosed());

    automation.permission().agree(u"chromium"_s);
    EXPECT_TRUE(isTold("true"));
    EXPECT_EQ(site(), u"unanswered"_s) << "what was said before is not remembered";
    browser.say("https://example.org", true);
    EXPECT_EQ(site(), u"example.org"_s);

    automation.setSilenced({u"chromium"_s});
    EXPECT_TRUE(isTold("false")) << "switched off in the settings";
    EXPECT_EQ(site(), u"failed"_s);
    automation.setSilenced({u"firefox"_s});
    EXPECT_TRUE(isTold("true"));
    EXPECT_TRUE(Host(socket).heard().contains("\"tell\":true")) << "a second profile";
    EXPECT_EQ(browser.heard(), "") << "the first one knows";
    automation.permission().refuse(u"chromium"_s);
    EXPECT_TRUE(isTold("false"));
    EXPECT_EQ(site(), u"failed"_s);
}

} // namespace

} // namespace orvanta
