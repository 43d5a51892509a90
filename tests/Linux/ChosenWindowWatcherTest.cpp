#include "Linux/Windows/ChosenWindowWatcher.h"

#include "Fakes/HandMainLoop.h"
#include "Fakes/QtPrinters.h"

#include <QCoreApplication>
#include <QPointer>

#include <gmock/gmock.h>

using namespace orvanta;
using State = WindowWatcher::State;

namespace {

class HandWatcher final : public WindowWatcher {
public:
    explicit HandWatcher(State state)
        : WindowWatcher(state) {}
    void show(const char* wmClass) {
        Window window;
        window.wmClass = QString::fromLatin1(wmClass);
        setActiveWindow(window);
    }
    void becomes(State state) {
        if (state != State::Watching) {
            setActiveWindow(std::nullopt);
        }
        setState(state);
        QCoreApplication::processEvents();
    }
    std::optional<QString> allow() override {
        setState(State::NeedsLogin);
        return std::nullopt;
    }
};

class ChosenWindowWatcherTest : public testing::Test {
protected:
    /// One that shows its name and begins in the state below.
    ChosenWindowWatcher::Candidate candidate(size_t number) {
        return [this, number] {
            auto hand = std::make_unique<HandWatcher>(begin[number]);
            hand->show(number == 0 ? "first" : "second");
            made[number] = hand.get();
            return hand;
        };
    }
    std::string active() const {
        return watcher.activeWindow() ? watcher.activeWindow()->wmClass.toStdString() : "none";
    }

    HandMainLoop loop;
    std::array<State, 2> begin{State::Waiting, State::Waiting};
    std::array<QPointer<HandWatcher>, 2> made;
    ChosenWindowWatcher watcher{{candidate(0), candidate(1)}, loop};
};

TEST_F(ChosenWindowWatcherTest, TheBestThatAnswersIsChosenAndABetterOneIsWaitedForBriefly) {
    begin[1] = State::Watching;
    loop.advance(1.9);
    EXPECT_EQ(watcher.state(), State::Waiting);
    EXPECT_TRUE(made[1].isNull());
    loop.advance(0.1);
    EXPECT_EQ(watcher.state(), State::Watching);
    EXPECT_EQ(active(), "second");
    EXPECT_TRUE(made[0].isNull());
    EXPECT_EQ(loop.armedCount(), 0U);
    made[1]->show("another");
    EXPECT_EQ(active(), "another");
    watcher.chooseAgain(); // It answers: nothing to choose.
    EXPECT_EQ(active(), "another");
}

TEST_F(ChosenWindowWatcherTest, WhereNoneAnswersItSaysSoAndALateAnswerIsWelcome) {
    made[0]->becomes(State::Unsupported);
    EXPECT_EQ(watcher.state(), State::Waiting);
    loop.advance(2);
    EXPECT_EQ(watcher.state(), State::Unsupported);
    made[1]->becomes(State::Watching);
    EXPECT_EQ(watcher.state(), State::Watching);
    EXPECT_EQ(active(), "second");
}

TEST_F(ChosenWindowWatcherTest, OneThatWaitsForThePersonSaysSoWhereNoOtherAnswers) {
    begin[1] = State::NeedsPermission;
    made[0]->becomes(State::Unsupported);
    EXPECT_EQ(watcher.state(), State::NeedsPermission);
    watcher.allow();
    QCoreApplication::processEvents();
    EXPECT_EQ(watcher.state(), State::NeedsLogin);
    made[1]->becomes(State::Watching);
    EXPECT_EQ(watcher.state(), State::Watching);
}

TEST_F(ChosenWindowWatcherTest, WhenTheChosenOneEndsAllAreAskedAnew) {
    made[0]->becomes(State::Watching);
    ASSERT_EQ(active(), "first");
    begin = {State::Unsupported, State::Watching};
    made[0]->becomes(State::Ended);
    EXPECT_EQ(active(), "none");
    EXPECT_EQ(watcher.state(), State::Waiting);
    loop.advance(1);
    EXPECT_EQ(active(), "second");

    // Nobody is left: the display has gone.
    begin = {State::Unsupported, State::Unsupported};
    made[1]->becomes(State::Ended);
    loop.advance(1);
    EXPECT_EQ(watcher.state(), State::Ended);
    EXPECT_EQ(loop.armedCount(), 0U);

    // A resume.
    begin = {State::Watching, State::Unsupported};
    watcher.chooseAgain();
    EXPECT_EQ(active(), "first");
}

} // namespace
