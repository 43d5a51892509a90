#include "Linux/Windows/ChosenWindowWatcher.h"

#include "Story.h"
#include "Testing.h"

#include <QPointer>

using namespace orvanta;
using State = WindowWatcher::State;

namespace {

const std::map<QString, State> states{
    {u"waiting"_s, State::Waiting},         {u"watching"_s, State::Watching},
    {u"unsupported"_s, State::Unsupported}, {u"permission"_s, State::NeedsPermission},
    {u"login"_s, State::NeedsLogin},        {u"ended"_s, State::Ended}};

class HandWatcher final : public WindowWatcher {
public:
    HandWatcher(State state, const QString& name)
        : WindowWatcher(state) {
        show(name);
    }
    void show(const QString& wmClass) {
        Window window;
        window.wmClass = wmClass;
        setActiveWindow(window);
    }
    using WindowWatcher::setState; ///< what it shows stays, as of one that dies
    std::optional<QString> allow() override {
        setState(State::NeedsLogin);
        return std::nullopt;
    }
};

/// Of two that show their names; with a question mark stands the state in which one begins.
class ChosenWindowWatcherTest : public Story {
protected:
    ChosenWindowWatcherTest() {
        for (const size_t i : {0U, 1U}) {
            on<QString>(names[i],
                        [=, this](const QString& is) { made[i]->setState(states.at(is)); });
            on<QString>(names[i] + u'?',
                        [=, this](const QString& is) { begin[i] = states.at(is); });
        }
        on<QString>(u"shows"_s, [this](const QString& name) { made[1]->show(name); });
        on(u"again"_s, [this](int) { watcher.chooseAgain(); });
        on(u"allow"_s, [this](int) { watcher.allow(); });
        on(u"timers"_s, [this](int count) { EXPECT_EQ(loop.armedCount(), count); });
        on(u"alive"_s, [this](int i) { EXPECT_TRUE(made[i] && !made[1 - i]); });
        on(u"look"_s, [this](int) {
            const auto state =
                std::ranges::find(states, watcher.state(), &decltype(states)::value_type::second);
            noted += state->first + u':' +
                     (watcher.activeWindow() ? watcher.activeWindow()->wmClass : u"none"_s);
        });
    }

    ChosenWindowWatcher::Candidate candidate(size_t i) {
        return [this, i] {
            auto hand = std::make_unique<HandWatcher>(begin[i], names[i]);
            made[i] = hand.get();
            return hand;
        };
    }
    void settle() override { QCoreApplication::processEvents(); }

    const std::array<QString, 2> names{u"first"_s, u"second"_s};
    std::array<State, 2> begin{State::Waiting, State::Waiting};
    std::array<QPointer<HandWatcher>, 2> made;
    ChosenWindowWatcher watcher{{candidate(0), candidate(1)}, loop};
};

TEST_F(ChosenWindowWatcherTest, TheBestThatAnswersIsChosenAndABetterOneIsWaitedForBriefly) {
    play(u"second?=watching 1.9s look alive=0 [waiting:none] 0.1s look alive=1 [watching:second] "
         "timers=0 shows=another again look [watching:another]"_s);
}

TEST_F(ChosenWindowWatcherTest, WhereNoneAnswersItSaysSoAndALateAnswerIsWelcome) {
    play(u"first=unsupported look [waiting:none] 2s look [unsupported:none] second=watching "
         "look [watching:second]"_s);
}

TEST_F(ChosenWindowWatcherTest, OneThatWaitsForThePersonSaysSoWhereNoOtherAnswers) {
    play(u"second?=permission first=unsupported look [permission:none] allow look [login:none] "
         "second=watching look [watching:second]"_s);
}

TEST_F(ChosenWindowWatcherTest, WhenTheChosenOneEndsAllAreAskedAnew) {
    play(u"first=watching look [watching:first] first?=unsupported second?=watching first=ended "
         "look [waiting:none] 1s look [watching:second] second?=unsupported second=ended 1s "
         "look [ended:none] timers=0 first?=watching again look [watching:first]"_s);
}

} // namespace
