#include "Setup/Setup.h"

#include "Fakes/FakeAutomation.h"
#include "Fakes/FakeBundles.h"
#include "Fakes/FakeLoginItem.h"
#include "Fakes/HandMainLoop.h"
#include "Fakes/QtPrinters.h"
#include "Model/UserDefaults.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

constexpr int permitted = AutomationPermission::permitted;
constexpr int refused = AutomationPermission::refused;

class SetupTest : public testing::Test {
protected:
    using Setup = orvanta::Setup; // GoogleTest keeps a trap of that name.
    using Status = LoginItem::Status;

    SetupTest() {
        bundles.install(u"/a/first"_s, u"Primeiro"_s, {});
        run(u"first"_s, 1);
        run(u"second"_s, 2);
    }
    void run(const QString& browser, qint64 process) {
        automation.running[browser] = {{.processIdentifier = process}};
    }
    void start() {
        setup = std::make_unique<Setup>([this] { return offered; }, defaults, system);
        setup->onGrant = [this] {
            automation.log.append(u"grant"_s);
        };
        QObject::connect(setup.get(), &Setup::changed, [this] { automation.log.append(state()); });
    }
    void perform(std::size_t step) { setup->perform(setup->steps()[step]); }
    /// "finished: " where it is; then each step's state, the optional ones in brackets.
    QString state() const {
        QString text = setup->finished() ? u"finished:"_s : QString();
        for (const Setup::Step& step : setup->steps()) {
            const QString state = step.state == Setup::State::pending ? u"pending"_s
                                  : step.state == Setup::State::done  ? u"done"_s
                                                                      : u"settings"_s;
            text += step.optional ? u" ("_s + state + u')' : u' ' + state;
        }
        return text.trimmed();
    }
    /// What happened since the last time: what was told, granted and asked of the desktop.
    QString log() { return std::exchange(automation.log, {}).join(u", "_s); }

    QTemporaryDir folder;
    UserDefaults defaults{folder.path(), u"domain"_s};
    FakeLoginItem login;
    FakeBundles bundles;
    FakeAutomation automation;
    HandMainLoop loop;
    Setup::System system{login, bundles, automation, automation, automation, loop};
    std::vector<Browser> offered{{u"first"_s, u"Primeiro"_s, true},
                                 {u"second"_s, u"Segundo"_s, false}};
    std::unique_ptr<Setup> setup;
};

} // namespace

TEST_F(SetupTest, LooksOnceASecondTellsOnlyWhatChangedAndGrantsOnlyWhatHasJustBecomeDone) {
    automation.decisions[2] = permitted;
    start();
    EXPECT_EQ(state(), u"pending pending (done)"_s) << "before any time has passed";
    EXPECT_EQ(setup->required().at(0).name, u"Iniciar ao entrar"_s);
    EXPECT_EQ(setup->required().at(1).name, u"Sites no Primeiro"_s);
    EXPECT_EQ(setup->optional().at(0).id, u"second"_s);
    EXPECT_EQ(setup->done(), 0U) << "an optional step does not count";

    auto& running = automation.running;
    auto& decisions = automation.decisions;
    const std::pair<std::function<void()>, QString> rows[] = {
        {[&] { decisions[1] = -600; }, {}},
        {[&] { decisions[1] = refused; }, u"pending settings (done)"_s},
        {[&] { login.current = Status::requiresApproval; }, u"settings settings (done)"_s},
        {[&] { login.current = Status::enabled; }, u"done settings (done), grant"_s},
        {[&] { decisions[2] = refused; }, u"done settings (settings)"_s},
        // Of one that does not run nothing is known, and what was known stays.
        {[&] { running.clear(); }, {}},
        {[&] { decisions[2] = permitted; }, {}},
        {[&] { std::swap(offered[0], offered[1]); }, u"done (settings) settings"_s},
        // Two processes: the one in front answers.
        {[&] {
             running[u"first"_s] = {{.processIdentifier = 8}, {.processIdentifier = 1}};
         },
         u"done (settings) pending"_s},
        // One that was not there counts.
        {[&] {
             run(u"third"_s, 2);
             offered.push_back({u"third"_s, u"Terceiro"_s, false});
         },
         u"done (settings) pending (done), grant"_s},
        {[&] { offered.pop_back(); }, u"done (settings) pending"_s},
        {[&] { setup->onGrant = nullptr; }, {}},
        {[&] { decisions[8] = permitted; }, u"finished: done (settings) done"_s},
        // For good.
        {[&] { login.current = Status::notRegistered; }, {}},
    };
    for (const auto& [happens, told] : rows) {
        loop.advance(0.5);
        happens();
        loop.advance(0.375);
        EXPECT_EQ(log(), QString()) << "between the seconds, before " << qPrintable(told);
        loop.advance(0.125);
        EXPECT_EQ(log(), told);
    }
    EXPECT_TRUE(setup->isReady());
    EXPECT_EQ(setup->completed(), setup->required());

    defaults = UserDefaults(folder.path(), u"domain"_s);
    for (const QString& expected : {u"finished:"_s, u"finished: done"_s}) {
        start();
        setup->refresh();
        EXPECT_EQ(state(), expected);
        EXPECT_EQ(loop.armedCount(), 0U);
        EXPECT_TRUE(defaults.boolValue(u"setupDoneV1"_s));
        // Where nothing is left to do it finishes at once.
        defaults.setBool(u"setupDoneV1"_s, false);
        login.current = Status::enabled;
        offered.clear();
    }
}

TEST_F(SetupTest, PerformingTheLoginStepRegistersAndLeadsToTheSettingsWhereThatIsNotEnough) {
    struct Row {
        Status before, registered;
        std::optional<QString> problem;
        int registrations, settingsOpened;
        const char* after;
    };
    for (const auto& [before, registered, problem, registrations, settingsOpened, after] :
         {Row{Status::notRegistered, Status::enabled, {}, 1, 0, "done"},
          {Status::notRegistered, Status::enabled, u"error"_s, 1, 1, "pending"},
          {Status::notFound, Status::requiresApproval, {}, 1, 1, "settings"},
          {Status::requiresApproval, Status::enabled, {}, 0, 1, "settings"},
          {Status::enabled, Status::enabled, {}, 0, 0, "done"}}) {
        login.registrations = login.settingsOpened = 0;
        login.current = before;
        login.afterRegistering = registered;
        login.problem = problem;
        start();
        perform(0);
        EXPECT_EQ(login.registrations, registrations) << after;
        EXPECT_EQ(login.settingsOpened, settingsOpened) << after;
        EXPECT_EQ(state(), QLatin1StringView(after) + u" pending (pending)"_s);
    }
}

TEST_F(SetupTest, ABrowserIsStartedOutOfSightBeforeItIsAskedAbout) {
    automation.decisions[2] = refused;
    start();
    automation.decisions[1] = permitted;
    perform(1);
    EXPECT_EQ(log(), u"ask 1, pending done (settings), grant"_s) << "without waiting for a second";
    perform(1);
    EXPECT_EQ(log(), QString()) << "what is done stays as it is";
    perform(2);
    EXPECT_EQ(log(),
              u"open x-apple.systempreferences:com.apple.preference.security?Privacy_Automation"_s);

    automation.decisions.clear();
    automation.running.clear();
    start();
    const auto launched = [this](const QString& id) {
        const auto over = [this] {
            automation.log.append(u"over"_s);
        };
        Setup::requestAutomation(id, over, system);
        automation.launches.empty() ? void() : automation.launched();
        return log();
    };
    const QString launch = u"launch /a/first (inactive) (hidden), "_s;
    EXPECT_EQ(launched(u"second"_s), u"over"_s) << "it is not installed";
    EXPECT_EQ(launched(u"first"_s), launch + u"over"_s) << "it could not be started";
    perform(1);
    setup.reset(); // It may be gone when a launch is over: the person is asked all the same.
    run(u"first"_s, 7);
    automation.launched();
    EXPECT_EQ(log(), launch + u"ask 7"_s);
    EXPECT_EQ(launched(u"first"_s), u"ask 7, over"_s) << "it runs";
}
