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

namespace orvanta {

namespace {

using namespace Qt::StringLiterals;

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
        QStringList texts;
        for (const Setup::Step& step : setup->steps()) {
            const QString text = step.state == Setup::State::pending ? u"pending"_s
                                 : step.state == Setup::State::done  ? u"done"_s
                                                                     : u"settings"_s;
            texts.append(step.optional ? u'(' + text + u')' : text);
        }
        return (setup->finished() ? u"finished: "_s : QString()) + texts.join(u' ');
    }
    /// What happened since the last time: what was told, granted and asked of the desktop.
    QString log() { return std::exchange(automation.log, {}).join(u", "_s); }
    static QString names(const std::vector<Setup::Step>& steps) {
        QStringList result;
        for (const Setup::Step& step : steps) {
            result.append(step.id + u' ' + step.name);
        }
        return result.join(u", "_s);
    }

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

TEST_F(SetupTest, LooksOnceASecondTellsOnlyWhatChangedAndGrantsOnlyWhatHasJustBecomeDone) {
    automation.decisions[2] = permitted;
    start();
    EXPECT_EQ(state(), u"pending pending (done)"_s) << "before any time has passed";
    EXPECT_EQ(names(setup->required()), u"login Iniciar ao entrar, first Sites no Primeiro"_s);
    EXPECT_EQ(names(setup->optional()), u"second Sites no Segundo"_s);
    EXPECT_EQ(names(setup->completed()), QString());
    EXPECT_EQ(setup->done(), 0U) << "an optional step does not count";

    auto& running = automation.running;
    auto& decisions = automation.decisions;
    const std::pair<std::function<void()>, QString> rows[] = {
        {[&] { decisions[1] = -600; }, {}},
        {[&] { login.current = Status::notFound; }, {}},
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
        // Two at once are one grant, and one that was not there counts.
        {[&] {
             run(u"second"_s, 2);
             run(u"third"_s, 2);
             offered.push_back({u"third"_s, u"Terceiro"_s, false});
         },
         u"done (done) pending (done), grant"_s},
        {[&] { offered.pop_back(); }, u"done (done) pending"_s},
        {[&] { setup->onGrant = nullptr; }, {}},
        {[&] { decisions[8] = permitted; }, u"finished: done (done) done"_s},
        // For good.
        {[&] { login.current = Status::notRegistered; }, {}},
        {[&] { setup->refresh(); }, {}},
    };
    for (std::size_t row = 0; row < std::size(rows); ++row) {
        loop.advance(0.5);
        rows[row].first();
        loop.advance(0.375);
        EXPECT_EQ(log(), QString()) << row;
        loop.advance(0.125);
        EXPECT_EQ(log(), rows[row].second) << row;
    }
    EXPECT_TRUE(setup->isReady());
    EXPECT_EQ(names(setup->completed()), names(setup->required()));
    EXPECT_EQ(setup->done(), 2U);
    EXPECT_EQ(loop.armedCount(), 0U);

    defaults = UserDefaults(folder.path(), u"domain"_s);
    for (const QString& expected : {u"finished: "_s, u"finished: done"_s}) {
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
        perform(0);
        EXPECT_EQ(login.registrations, row.registrations) << row.after.toStdString();
        EXPECT_EQ(login.settingsOpened, row.settingsOpened) << row.after.toStdString();
        EXPECT_EQ(state(), row.after);
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
    EXPECT_EQ(login.settingsOpened, 0);

    automation.decisions.clear();
    automation.running.clear();
    start();
    const auto launched = [this](const QString& id) {
        Setup::requestAutomation(
            id, [this] { automation.log.append(u"over"_s); }, system);
        if (!automation.launches.empty()) {
            automation.launched();
        }
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
    EXPECT_EQ(loop.armedCount(), 0U);
}

} // namespace

} // namespace orvanta
