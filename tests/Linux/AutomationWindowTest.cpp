#include "Linux/BrowserBridge/AutomationWindow.h"

#include "BrowserHostEnd.h"
#include "Linux/BrowserBridge/LinuxAutomation.h"
#include "Testing.h"
#include "Widgets.h"

#include <QPointer>

namespace orvanta {

namespace {

using Decision = LinuxAutomationPermission::Decision;
using Missing = AutomationWindow::Missing;

QPushButton* button(const QWidget& window, const QString& accessibleName) {
    const auto all = visible<QPushButton>(&window);
    const auto found = std::ranges::find(all, accessibleName,
                                         [](const auto* each) { return each->accessibleName(); });
    return found == all.end() ? nullptr : *found;
}

TEST(AutomationWindowTest, ARowSaysTheDecisionAndWhatIsMissing) {
    using enum LinuxAutomationPermission::Decision;
    const struct {
        Decision decision;
        Missing missing;
        QString text;
        QStringList buttons;
    } rows[] = {
        {Undecided,
         Missing::Extension,
         u"Ainda não decidido"_s,
         {u"Permitir…"_s, u"Não permitir"_s}},
        {Refused, Missing::Nothing, u"Não permitido"_s, {u"Permitir…"_s}},
        {Agreed,
         Missing::Extension,
         u"Permitido · falta a extensão no navegador"_s,
         {u"Concluir…"_s, u"Não permitir"_s}},
        {Agreed,
         Missing::Restart,
         u"Permitido · reinicie o navegador"_s,
         {u"Concluir…"_s, u"Não permitir"_s}},
        {Allowed,
         Missing::Start,
         u"Permitido · abra o navegador"_s,
         {u"Concluir…"_s, u"Não permitir"_s}},
        {Allowed, Missing::Nothing, u"Permitido · conectado"_s, {u"Não permitir"_s}},
    };
    std::vector<AutomationWindow::Row> shownRows{{u"a"_s, u"<b>A</b>"_s, {}, {}}};
    QStringList done;
    const auto note = [&](const QString& what) {
        return [&done, what](const QString& identifier) {
            done += what + identifier;
        };
    };
    AutomationWindow window({[&] { return shownRows; }, note(u"allow "_s), note(u"refuse "_s)});
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.show();
    EXPECT_EQ(window.windowTitle(), u"Automação"_s);
    for (const auto& row : rows) {
        shownRows.front().decision = row.decision;
        shownRows.front().missing = row.missing;
        window.refresh();
        EXPECT_EQ(texts<QLabel>(&window).sliced(1), (QStringList{u"<b>A</b>"_s, row.text}));
        for (const QString& each : {u"Permitir…"_s, u"Concluir…"_s, u"Não permitir"_s}) {
            EXPECT_EQ(button(window, each + u" — <b>A</b>"_s) != nullptr,
                      row.buttons.contains(each));
        }
    }

    // The keyboard goes on beside a button that has done its work.
    auto* refuse = button(window, u"Não permitir — <b>A</b>"_s);
    refuse->setFocus();
    refuse->click();
    shownRows.front().decision = Decision::Refused;
    shownRows.push_back({u"b"_s, u"B"_s, {}, {}});
    window.refresh();
    button(window, u"Permitir… — B"_s)->click();
    EXPECT_EQ(done, (QStringList{u"refuse a"_s, u"allow b"_s}));
    auto* allow = button(window, u"Permitir… — B"_s);
    allow->setFocus();
    shownRows[1] = {u"b"_s, u"B"_s, Decision::Allowed, {}};
    window.refresh();
    EXPECT_EQ(window.focusWidget(), button(window, u"Não permitir — B"_s));

    shownRows.clear();
    window.refresh();
    window.refresh();
    EXPECT_EQ(texts<QLabel>(&window).sliced(1),
              QStringList{u"Nenhum navegador compatível foi encontrado."_s});
}

/// A person's files, one browser that is a program which sleeps, and its hosts.
class LinuxAutomationTest : public testing::Test {
protected:
    LinuxAutomationTest() {
        folder.writeEntry(u"entries/chromium"_s, "Exec=sleep 60\n");
        folder.write(u"config/chromium/Local State"_s, "{}");
        folder.write(u"package/orvanta.crx"_s, "package");
        const auto now = [this] {
            return loop.now();
        };
        automation = std::make_unique<LinuxAutomation>(LinuxAutomation::Surroundings{
            .transport = {workspace, center, loop, now,
                          [] {
                              return false;
                          }},
            .bridge = {socket, host, folder.path(u"proc"_s)},
            .identity = ApplicationIdentity(entries, ::getpid(), u"own"_s, folder.path(u"proc"_s)),
            .load = [this](const QString& key) { return lists[key]; },
            .store = [this](const QString& key, const QStringList& list) { lists[key] = list; },
            .browsers = [] { return QStringList{u"chromium"_s}; },
            .name = [](const QString&) { return u"Chromium"_s; },
            .preparation = BrowserPreparation({.home = folder.path(u"home"_s),
                                               .configHome = folder.path(u"config"_s),
                                               .hostExecutable = host,
                                               .packageFolder = folder.path(u"package"_s)}),
            .entries = entries,
            .display = {}});
    }
    ~LinuxAutomationTest() override {
        automation.reset();
        if (process > 0) {
            ::kill(static_cast<pid_t>(process), SIGKILL);
        }
    }

    /// The browser runs, and whoever calls the bridge was started by it.
    void launch() {
        automation->launcher().openApplication(folder.path(u"entries/chromium.desktop"_s), {},
                                               [this] {
                                                   process = automation->runningApplications()
                                                                 .instances(u"chromium"_s)
                                                                 .at(0)
                                                                 .processIdentifier;
                                               });
        const QString own = u"proc/%1/"_s.arg(::getpid());
        folder.write(own + u"stat"_s, "1 (host) S " + QByteArray::number(process) + " 1");
        folder.link(host, own + u"exe"_s);
    }
    int determine(bool askUser) {
        return automation->permission().determine(
            EventDescriptor::processIdentifier(static_cast<int>(process)), fourCharCode("core"),
            fourCharCode("getd"), askUser);
    }
    static QString status() { return texts<QLabel>(shown<AutomationWindow>()).value(2); }

    const TemporaryFolder folder;
    const QString socket = folder.path(u"runtime/browsers"_s);
    const QString host = u"/opt/orvanta/orvanta-browser-host"_s;
    HandMainLoop loop;
    FakeWorkspace workspace;
    NotificationCenter center;
    DesktopEntries entries{{folder.path(u"entries"_s)}};
    std::map<QString, QStringList> lists;
    std::unique_ptr<LinuxAutomation> automation;
    qint64 process = 0;
};

TEST_F(LinuxAutomationTest, TheWindowFollowsABrowserFromTheQuestionToItsConnection) {
    const QString settings =
        u"x-apple.systempreferences:com.apple.preference.security?Privacy_Automation"_s;
    EXPECT_TRUE(automation->launcher().open(settings));
    const QPointer<AutomationWindow> window = shown<AutomationWindow>();
    EXPECT_TRUE(automation->launcher().open(settings));
    EXPECT_EQ(shown<AutomationWindow>(), window);
    EXPECT_EQ(status(), u"Ainda não decidido"_s);

    click(window, u"Permitir…"_s);
    click(shown<PermissionPrompt>(), u"Permitir"_s);
    EXPECT_EQ(status(), u"Permitido · abra o navegador"_s);
    click(shown<PermissionPrompt>(), u"OK"_s);
    launch();
    window->refresh();
    EXPECT_EQ(status(), u"Permitido · reinicie o navegador"_s);
    {
        const Host connected(socket);
        EXPECT_EQ(status(), u"Permitido · conectado"_s);
    }
    settle();
    EXPECT_EQ(status(), u"Permitido · reinicie o navegador"_s);
    EXPECT_EQ(determine(false), AutomationPermission::permitted);

    click(window, u"Não permitir"_s);
    EXPECT_EQ(status(), u"Não permitido"_s);
    EXPECT_EQ(determine(true), AutomationPermission::refused);
    EXPECT_EQ(QDir(folder.path(u"config/chromium"_s))
                  .entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot),
              QStringList{u"Local State"_s})
        << "what was put into the browser is gone";
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
    automation->showWindow();
    EXPECT_EQ(status(), u"Permitido · falta a extensão no navegador"_s);
    EXPECT_EQ(determine(true), AutomationPermission::undecided);
    ASSERT_TRUE(shown<PermissionPrompt>());
    EXPECT_EQ(texts<QLabel>(shown<PermissionPrompt>()).value(0),
              u"Reinicie o Chromium para concluir."_s);
    shown<AutomationWindow>()->refresh();
    EXPECT_EQ(status(), u"Permitido · reinicie o navegador"_s);
    const Host connected(socket);
    EXPECT_FALSE(shown<PermissionPrompt>()) << "nothing is left";
    automation->ask(u"chromium"_s);
    EXPECT_FALSE(shown<PermissionPrompt>());
}

TEST_F(LinuxAutomationTest, ABrowserIsHeardWhileThePersonWantsItAlone) {
    launch();
    Host browser(socket);
    const auto told = [&browser] {
        const QByteArray heard = browser.heard();
        return QString::fromLatin1(heard.count("\"tell\":true") == 1    ? "speak"
                                   : heard.count("\"tell\":false") == 1 ? "be silent"
                                   : heard.isEmpty()                    ? ""
                                                                        : "nonsense");
    };
    /// What a read of the site in front gives, which nobody has to wait for.
    const auto site = [this] {
        // The answer may come after this has returned.
        const auto origin = std::make_shared<QString>(u"(unanswered)"_s);
        automation->transport().send(
            {.eventClass = fourCharCode("core"),
             .eventID = fourCharCode("getd"),
             .target = EventDescriptor::processIdentifier(static_cast<int>(process)),
             .parameters = {{AppleEvent::directObject, EventDescriptor::record()}}},
            0, AppleEventTransport::Duration(2), [origin](const std::optional<AppleEvent>& reply) {
                const auto* address = reply ? reply->parameter(AppleEvent::directObject) : nullptr;
                *origin = address ? *address->stringValue() : QString();
            });
        return *origin;
    };
    EXPECT_EQ(told(), u"be silent"_s) << "undecided";
    browser.say("https://example.org", true);
    EXPECT_EQ(site(), QString()) << "one that speaks nevertheless is not heard";
    EXPECT_FALSE(browser.isClosed());

    automation->permission().agree(u"chromium"_s);
    EXPECT_EQ(told(), u"speak"_s);
    EXPECT_EQ(site(), u"(unanswered)"_s) << "what was said before is not remembered";
    browser.say("https://example.org", true);
    EXPECT_EQ(site(), u"https://example.org"_s);

    automation->setSilenced({u"chromium"_s});
    EXPECT_EQ(told(), u"be silent"_s) << "switched off in the settings";
    EXPECT_EQ(site(), QString());
    automation->setSilenced({u"firefox"_s});
    EXPECT_EQ(told(), u"speak"_s);
    {
        Host profile(socket);
        EXPECT_TRUE(profile.heard().contains("\"tell\":true")) << "a second profile";
    }
    EXPECT_EQ(told(), QString());
    automation->permission().refuse(u"chromium"_s);
    EXPECT_EQ(told(), u"be silent"_s);
    browser.say("https://example.org", true);
    EXPECT_EQ(site(), QString());
}

} // namespace

} // namespace orvanta
