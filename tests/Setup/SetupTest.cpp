#include "Setup/Setup.h"

#include "Fakes/FakeAutomation.h"
#include "Fakes/FakeBundles.h"
#include "Fakes/FakeLoginItem.h"
#include "Fakes/HandMainLoop.h"
#include "Fakes/QtPrinters.h"
#include "Model/UserDefaults.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

namespace orvanta {

namespace {

using namespace Qt::StringLiterals;

constexpr int permitted = AutomationPermission::permitted;
constexpr int refused = AutomationPermission::refused;

class SetupTest : public testing::Test {
protected:
    using Setup = orvanta::Setup; // GoogleTest keeps a trap of that name.

    SetupTest() {
        offered = {{u"first"_s, u"Primeiro"_s, true}, {u"second"_s, u"Segundo"_s, false}};
        run(u"first"_s, 1);
        run(u"second"_s, 2);
    }

    void run(const QString& browser, qint64 process) {
        automation.running[browser] = {{.processIdentifier = process}};
    }
    void start() {
        setup = std::make_unique<Setup>([this] { return offered; }, defaults, system);
        setup->onGrant = [this] {
            events.append(u"grant"_s);
        };
        QObject::connect(setup.get(), &Setup::changed,
                         [this] { events.append(u"changed "_s + stateText()); });
    }
    /// "finished: " where it is; then each step's state, the optional ones in brackets.
    QString stateText() const {
        QStringList texts;
        for (const Setup::Step& step : setup->steps()) {
            const QString state = step.state == Setup::State::pending ? u"pending"_s
                                  : step.state == Setup::State::done  ? u"done"_s
                                                                      : u"settings"_s;
            texts.append(step.optional ? u"("_s + state + u")"_s : state);
        }
        return (setup->finished() ? u"finished: "_s : QString()) + texts.join(u' ');
    }
    /// What happened since the last time.
    QStringList takeEvents() { return std::exchange(events, {}); }
    QStringList eventsAfterASecond() {
        loop.advance(1);
        return takeEvents();
    }
    static QStringList names(const std::vector<Setup::Step>& steps) {
        QStringList result;
        for (const Setup::Step& step : steps) {
            result.append(step.name);
        }
        return result;
    }

    QTemporaryDir folder;
    UserDefaults defaults{folder.path(), u"domain"_s};
    FakeLoginItem login;
    FakeBundles bundles;
    FakeAutomation automation;
    HandMainLoop loop;
    Setup::System system{login, bundles, automation, automation, automation, loop};
    std::vector<Browser> offered;
    QStringList events;
    std::unique_ptr<Setup> setup;
};

TEST_F(SetupTest, TheLoginItemComesFirstAndOnlyTheDefaultBrowserIsRequiredBesideIt) {
    automation.decisions[1] = permitted;
    start();
    EXPECT_EQ(names(setup->steps()),
              (QStringList{u"Iniciar ao entrar"_s, u"Sites no Primeiro"_s, u"Sites no Segundo"_s}));
    EXPECT_EQ(setup->steps().front().id, u"login"_s);
    EXPECT_EQ(setup->steps().back().id, u"second"_s);
    EXPECT_EQ(names(setup->required()), names(setup->steps()).sliced(0, 2));
    EXPECT_EQ(names(setup->optional()), QStringList{u"Sites no Segundo"_s});
    EXPECT_EQ(names(setup->completed()), QStringList{u"Sites no Primeiro"_s});
    EXPECT_EQ(setup->done(), 1U);

    automation.decisions[2] = permitted;
    setup->refresh();
    EXPECT_EQ(setup->done(), 1U) << "an optional step does not count";
    offered.clear();
    setup->refresh();
    EXPECT_EQ(stateText(), u"pending"_s);
}

TEST_F(SetupTest, EveryAnswerOfTheSystemIsAState) {
    start();
    for (const auto& [status, decision, text] :
         {std::tuple(LoginItem::Status::notRegistered, AutomationPermission::undecided,
                     u"pending pending (pending)"_s),
          {LoginItem::Status::notFound, -600, u"pending pending (pending)"_s},
          {LoginItem::Status::requiresApproval, refused, u"settings settings (pending)"_s},
          {LoginItem::Status::requiresApproval, permitted, u"settings done (pending)"_s},
          {LoginItem::Status::enabled, refused, u"done settings (pending)"_s}}) {
        login.current = status;
        automation.decisions[1] = decision;
        setup->refresh();
        EXPECT_EQ(stateText(), text);
    }
    EXPECT_TRUE(automation.log.isEmpty()) << "looking asks nobody";
}

TEST_F(SetupTest, LooksOnceASecondAndTellsOnlyWhatChanged) {
    automation.decisions[2] = refused;
    start();
    EXPECT_EQ(stateText(), u"pending pending (settings)"_s) << "before any time has passed";
    EXPECT_EQ(eventsAfterASecond(), QStringList());
    automation.decisions[1] = refused;
    loop.advance(0.9);
    EXPECT_EQ(takeEvents(), QStringList());
    loop.advance(0.1);
    EXPECT_EQ(takeEvents(), QStringList{u"changed pending settings (settings)"_s});

    // Of one that does not run nothing is known, and what was known stays.
    automation.running.clear();
    offered.push_back({u"third"_s, u"Terceiro"_s, false});
    EXPECT_EQ(eventsAfterASecond(),
              QStringList{u"changed pending settings (settings) (pending)"_s});
    std::swap(offered[0], offered[1]);
    EXPECT_EQ(eventsAfterASecond(),
              QStringList{u"changed pending (settings) settings (pending)"_s});
    // Two processes: the one in front answers.
    automation.running[u"first"_s] = {{.processIdentifier = 8}, {.processIdentifier = 1}};
    EXPECT_EQ(eventsAfterASecond(), QStringList{u"changed pending (settings) pending (pending)"_s});
}

TEST_F(SetupTest, AStepThatHasJustBecomeDoneIsAGrant) {
    automation.decisions[2] = permitted;
    start();
    EXPECT_EQ(takeEvents(), QStringList()) << "what was done before is none";
    login.current = LoginItem::Status::enabled;
    EXPECT_EQ(eventsAfterASecond(), (QStringList{u"changed done pending (done)"_s, u"grant"_s}));
    EXPECT_EQ(eventsAfterASecond(), QStringList());
    automation.decisions[2] = refused;
    EXPECT_EQ(eventsAfterASecond(), QStringList{u"changed done pending (settings)"_s});
    automation.decisions[2] = permitted;
    run(u"third"_s, 3);
    automation.decisions[3] = permitted;
    offered.push_back({u"third"_s, u"Terceiro"_s, false});
    EXPECT_EQ(eventsAfterASecond(),
              (QStringList{u"changed done pending (done) (done)"_s, u"grant"_s}))
        << "two at once are one, and one that was not there counts";

    setup->onGrant = nullptr;
    automation.decisions[1] = permitted;
    EXPECT_EQ(eventsAfterASecond(), QStringList{u"changed finished: done done (done) (done)"_s});
}

TEST_F(SetupTest, FinishesForGoodOnceTheRequiredStepsAreDone) {
    start();
    login.current = LoginItem::Status::enabled;
    automation.decisions = {{1, permitted}, {2, refused}};
    EXPECT_EQ(eventsAfterASecond(),
              (QStringList{u"changed finished: done done (settings)"_s, u"grant"_s}));
    EXPECT_TRUE(setup->isReady());
    EXPECT_EQ(loop.armedCount(), 0U);

    login.current = LoginItem::Status::notRegistered;
    setup->refresh();
    EXPECT_EQ(stateText(), u"finished: done done (settings)"_s);
    EXPECT_EQ(takeEvents(), QStringList());

    defaults = UserDefaults(folder.path(), u"domain"_s);
    EXPECT_TRUE(defaults.boolValue(u"setupDoneV1"_s));
    start();
    setup->refresh();
    EXPECT_EQ(stateText(), u"finished: "_s);
    EXPECT_EQ(loop.armedCount(), 0U);
}

TEST_F(SetupTest, WhereNothingIsLeftToDoItFinishesAtOnce) {
    login.current = LoginItem::Status::enabled;
    offered.clear();
    start();
    EXPECT_EQ(stateText(), u"finished: done"_s);
    EXPECT_EQ(loop.armedCount(), 0U);
}

TEST_F(SetupTest, PerformingTheLoginStepRegistersAndLeadsToTheSettingsWhereThatIsNotEnough) {
    using Status = LoginItem::Status;
    struct Row {
        Status before;
        Status registered;
        std::optional<QString> problem;
        int registrations;
        int settingsOpened;
        QString after;
    };
    for (const Row& row :
         {Row{Status::notRegistered, Status::enabled, {}, 1, 0, u"done pending (pending)"_s},
          {Status::notRegistered, Status::enabled, u"error"_s, 1, 1,
           u"pending pending (pending)"_s},
          {Status::notFound, Status::requiresApproval, {}, 1, 1, u"settings pending (pending)"_s},
          {Status::requiresApproval, Status::enabled, {}, 0, 1, u"settings pending (pending)"_s},
          {Status::enabled, Status::enabled, {}, 0, 0, u"done pending (pending)"_s}}) {
        login.current = row.before;
        login.afterRegistering = row.registered;
        login.problem = row.problem;
        login.registrations = login.settingsOpened = 0;
        start();
        setup->perform(setup->steps().front());
        EXPECT_EQ(login.registrations, row.registrations) << row.after.toStdString();
        EXPECT_EQ(login.settingsOpened, row.settingsOpened) << row.after.toStdString();
        EXPECT_EQ(stateText(), row.after);
    }
    EXPECT_TRUE(automation.log.isEmpty());
}

TEST_F(SetupTest, PerformingABrowserStepAsksOrLeadsToTheSettings) {
    automation.decisions[2] = refused;
    start();
    automation.decisions[1] = permitted;
    setup->perform(setup->steps()[1]);
    EXPECT_EQ(automation.log, QStringList{u"ask 1"_s});
    EXPECT_EQ(takeEvents(), (QStringList{u"changed pending done (settings)"_s, u"grant"_s}))
        << "without waiting for the next second";
    setup->perform(setup->steps()[1]);
    EXPECT_EQ(automation.log.size(), 1) << "what is done stays as it is";
    setup->perform(setup->steps()[2]);
    EXPECT_EQ(
        automation.log.sliced(1),
        QStringList{
            u"open x-apple.systempreferences:com.apple.preference.security?Privacy_Automation"_s});
    EXPECT_EQ(login.settingsOpened, 0);
}

TEST_F(SetupTest, ABrowserIsStartedOutOfSightBeforeItIsAskedAbout) {
    bundles.install(u"/a/first"_s, u"Primeiro"_s, {});
    const auto request = [this](const QString& id) {
        Setup::requestAutomation(
            id, [this] { automation.log.append(u"over"_s); }, system);
        return std::exchange(automation.log, {});
    };
    EXPECT_EQ(request(u"first"_s), (QStringList{u"ask 1"_s, u"over"_s})) << "it runs";
    automation.running.clear();
    EXPECT_EQ(request(u"second"_s), QStringList{u"over"_s}) << "it is not installed";

    const QStringList launch{u"launch /a/first (inactive) (hidden)"_s};
    EXPECT_EQ(request(u"first"_s), launch);
    automation.launched();
    EXPECT_EQ(automation.log, QStringList{u"over"_s}) << "it could not be started";
    automation.log.clear();
    EXPECT_EQ(request(u"first"_s), launch);
    run(u"first"_s, 7);
    automation.launched();
    EXPECT_EQ(automation.log, (QStringList{u"ask 7"_s, u"over"_s}));
}

TEST_F(SetupTest, MayBeGoneWhenALaunchIsOver) {
    bundles.install(u"/a/first"_s, u"Primeiro"_s, {});
    automation.running.clear();
    start();
    setup->perform(setup->steps()[1]);
    ASSERT_EQ(automation.launches.size(), 1U);
    setup.reset();
    EXPECT_EQ(loop.armedCount(), 0U);
    run(u"first"_s, 7);
    automation.launched();
    EXPECT_EQ(automation.log.back(), u"ask 7"_s) << "the person is asked all the same";
    EXPECT_EQ(takeEvents(), QStringList());
}

} // namespace

} // namespace orvanta
