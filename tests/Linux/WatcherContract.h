#pragma once

#include "Linux/Windows/WindowWatcher.h"
#include "Testing.h"

namespace orvanta {

/// What is seen of a route to the windows of a desktop that a test plays. For the contract it has
///     watch()     a new watcher, which is watching
///     show(name)  this window has the focus, always the same one under a name; "none": none has
///     end()       the desktop goes
///     process     the one that its windows are said to belong to
class WatcherRoute : public testing::Test {
protected:
    using State = WindowWatcher::State;

    void TearDown() override { watcher.reset(); }

    QString active() const {
        return watcher->activeWindow() ? watcher->activeWindow()->wmClass : u"none"_s;
    }
    bool becomes(const QString& wmClass) {
        return eventually([&] {
            loop.advance(0.05);
            return active() == wmClass;
        });
    }
    bool becomes(State state) {
        return eventually([&] { return watcher->state() == state; });
    }

    HandMainLoop loop;
    std::unique_ptr<WindowWatcher> watcher;
};

template <typename Route>
class WatcherContract : public Route {};
TYPED_TEST_SUITE_P(WatcherContract);

TYPED_TEST_P(WatcherContract, EachWindowIsToldOnceWithItsIdentity) {
    this->watch();
    this->show(u"a"_s);
    ASSERT_TRUE(this->becomes(u"a"_s));
    const Window a = *this->watcher->activeWindow();
    EXPECT_EQ(a.processIdentifier, this->process);
    QStringList told;
    QObject::connect(this->watcher.get(), &WindowWatcher::activeWindowChanged,
                     [&] { told.append(this->active()); });
    QObject::connect(this->watcher.get(), &WindowWatcher::stateChanged, [] { ADD_FAILURE(); });
    for (const QString& name : {u"b"_s, u"none"_s, u"b"_s, u"a"_s}) {
        this->show(name);
        ASSERT_TRUE(this->becomes(name)) << qPrintable(name);
        EXPECT_EQ(this->watcher->activeWindow() == a, name == u"a"_s);
    }
    EXPECT_EQ(told, (QStringList{u"b"_s, u"none"_s, u"b"_s, u"a"_s}));
    this->watcher->disconnect();
}

TYPED_TEST_P(WatcherContract, WithItsDesktopTheWindowGoes) {
    this->watch();
    this->show(u"a"_s);
    ASSERT_TRUE(this->becomes(u"a"_s));
    this->end();
    EXPECT_TRUE(this->becomes(WindowWatcher::State::Ended));
    EXPECT_EQ(this->active(), u"none"_s);
}

REGISTER_TYPED_TEST_SUITE_P(WatcherContract, EachWindowIsToldOnceWithItsIdentity,
                            WithItsDesktopTheWindowGoes);

} // namespace orvanta
