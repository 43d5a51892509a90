#include "Linux/Presence/Presence.h"

#include "Fakes/FakeWorkspace.h"
#include "Fakes/HandMainLoop.h"
#include "PrivateBus.h"

#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>

#include <gmock/gmock.h>
#include <poll.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

using namespace orvanta;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const QString freedesktop = u"org.freedesktop.ScreenSaver"_s;
const QString gnome = u"org.gnome.ScreenSaver"_s;
const QString mutterName = u"org.gnome.Mutter.DisplayConfig"_s;
const QString mutterPath = u"/org/gnome/Mutter/DisplayConfig"_s;
const QString powerSaveMode = u"PowerSaveMode"_s;
const QString logindName = u"org.freedesktop.login1"_s;
const QString managerPath = u"/org/freedesktop/login1"_s;
const QString manager = u"org.freedesktop.login1.Manager"_s;
const QString sessionPath = u"/org/freedesktop/login1/session/_37"_s;
const QString session = u"org.freedesktop.login1.Session"_s;

/// Hands out one delay lock at a time, and sees when it is given back.
class FakeLogind {
public:
    explicit FakeLogind(const PrivateBus& bus)
        : service(bus) {
        service.on(u"Get"_s, QVariant::fromValue(QDBusVariant(false)));
        service.on(u"GetSession"_s, [this](const QDBusMessage& call) {
            return call.arguments().value(0) == sessionId ? std::optional(path) : std::nullopt;
        });
        service.on(u"GetAll"_s, [this](const QDBusMessage& call) {
            return call.path() == sessionPath ? std::optional(QVariantList{properties})
                                              : std::nullopt;
        });
        service.on(u"Inhibit"_s, [this](const QDBusMessage& call) {
            inhibition = call.arguments();
            int ends[2] = {-1, -1};
            EXPECT_EQ(::pipe(ends), 0);
            ::close(lock);
            lock = ends[0];
            const QDBusUnixFileDescriptor given(ends[1]);
            ::close(ends[1]);
            return QVariantList{QVariant::fromValue(given)};
        });
    }
    ~FakeLogind() { ::close(lock); }

    void appear() { service.own(logindName); }
    void disappear() { service.disown(logindName); }
    bool isHeldUp() const {
        pollfd end{lock, POLLIN, 0};
        return lock >= 0 && ::poll(&end, 1, 0) == 0;
    }
    void prepareForSleep(const QVariant& start) const {
        service.say(managerPath, manager, u"PrepareForSleep"_s, {start});
    }
    void change(const QString& property, const QVariant& value) const {
        service.change(sessionPath, session, {{property, value}});
    }

    FakeService service;
    QString sessionId = u"7"_s;
    QVariantList path{QVariant::fromValue(QDBusObjectPath(sessionPath))};
    QVariantMap properties{{u"Active"_s, true}, {u"LockedHint"_s, false}};
    QVariantList inhibition;
    int lock = -1;
};

class PresenceTest : public testing::Test {
protected:
    void SetUp() override {
        for (const auto& [name, text] : std::initializer_list<std::pair<Notification, const char*>>{
                 {Notification::WillSleep, "sleep"},
                 {Notification::DidWake, "wake"},
                 {Notification::ScreensDidSleep, "dark"},
                 {Notification::ScreensDidWake, "bright"},
                 {Notification::SessionDidResignActive, "away"},
                 {Notification::SessionDidBecomeActive, "back"},
                 {Notification::ScreenIsLocked, "locked"},
                 {Notification::ScreenIsUnlocked, "unlocked"}}) {
            for (auto* const center : {&workspaceCenter, &distributedCenter}) {
                center->addObserver(name, [this, text = text] { log.emplace_back(text); });
            }
        }
    }

    void startAlone(const QString& sessionId = u"7"_s) {
        presence = std::make_unique<Presence>(
            platform, Presence::Surroundings{systemBus, sessionBus, sessionId, 4711, {}, {}});
        presence->start();
    }
    void start(const QString& sessionId = u"7"_s) {
        startAlone(sessionId);
        settle();
    }
    void startWithLogind() {
        logind.appear();
        start();
    }
    FakeService& serve(const QString& name) {
        services.push_back(std::make_unique<FakeService>(bus));
        services.back()->own(name);
        return *services.back();
    }
    FakeService& serveSaver(const QString& name, const QVariant& active) {
        auto& saver = serve(name);
        saver.on(u"GetActive"_s, active);
        return saver;
    }
    /// Lets everything that was said be heard, asked about and answered.
    void settle() {
        for (int i = 0; i < 8; ++i) {
            drain(logind.service.connection());
            for (const auto& each : services) {
                drain(each->connection());
            }
            drain(systemBus);
            drain(sessionBus);
        }
    }
    /// What has been announced since it was asked last.
    std::vector<std::string> announced() {
        settle();
        return std::exchange(log, {});
    }
    static void turn(const FakeService& saver, const QString& name, const QVariant& active) {
        saver.say(u"/a/saver"_s, name, u"ActiveChanged"_s, {active});
    }
    static void setPower(const FakeService& mutter, const QVariant& mode) {
        mutter.change(mutterPath, mutterName, {{powerSaveMode, mode}});
    }
    void bringToFront(std::optional<RunningApplication> application) {
        workspace.front = std::move(application);
        workspaceCenter.post(Notification::DidActivateApplication);
    }

    PrivateBus bus;
    QDBusConnection systemBus = bus.connect();
    QDBusConnection sessionBus = bus.connect();
    FakeLogind logind{bus};
    std::vector<std::unique_ptr<FakeService>> services;
    FakeWorkspace workspace;
    NotificationCenter workspaceCenter;
    NotificationCenter defaultCenter;
    NotificationCenter distributedCenter;
    HandMainLoop loop;
    Platform platform{workspace, workspaceCenter, defaultCenter, distributedCenter, loop, [] {
                          return std::chrono::system_clock::now();
                      }};
    std::vector<std::string> log;
    std::unique_ptr<Presence> presence;
};

// Logind

TEST_F(PresenceTest, SleepWaitsUntilItWasAnnouncedAndNoLonger) {
    bool heldUpWhenTold = false;
    workspaceCenter.addObserver(Notification::WillSleep,
                                [&] { heldUpWhenTold = logind.isHeldUp(); });
    startWithLogind();
    ASSERT_TRUE(logind.isHeldUp());
    EXPECT_EQ(logind.inhibition.value(0), u"sleep"_s);
    EXPECT_EQ(logind.inhibition.value(3), u"delay"_s);
    for (int night = 1; night <= 2; ++night) {
        logind.prepareForSleep(true);
        EXPECT_THAT(announced(), ElementsAre("sleep"));
        EXPECT_TRUE(std::exchange(heldUpWhenTold, false));
        EXPECT_FALSE(logind.isHeldUp());
        EXPECT_EQ(logind.service.calls(u"Inhibit"_s), night);
        logind.prepareForSleep(false);
        EXPECT_THAT(announced(), ElementsAre("wake"));
        EXPECT_TRUE(logind.isHeldUp());
    }
    presence.reset();
    EXPECT_FALSE(logind.isHeldUp());
}

TEST_F(PresenceTest, ALogindThatReturnsIsAskedAnew) {
    startWithLogind();
    logind.prepareForSleep(true);
    logind.change(u"Active"_s, false);
    logind.change(u"Active"_s, false);
    logind.change(u"LockedHint"_s, true);
    EXPECT_THAT(announced(), ElementsAre("sleep", "away", "locked"));
    logind.disappear();
    EXPECT_THAT(announced(), IsEmpty()); // Its word stands.
    loop.advance(59.0);
    logind.appear();
    EXPECT_THAT(announced(), ElementsAre("wake", "back", "unlocked"));
    EXPECT_TRUE(logind.isHeldUp());

    logind.service.say(sessionPath, session, u"Lock"_s);
    logind.change(u"Active"_s, false);
    EXPECT_THAT(announced(), ElementsAre("locked", "away"));
    logind.service.say(sessionPath, session, u"Unlock"_s);
    EXPECT_THAT(announced(), ElementsAre("unlocked"));
    logind.disappear();
    EXPECT_THAT(announced(), IsEmpty());
    loop.advance(61.0);
    EXPECT_THAT(announced(), ElementsAre("back"));
}

TEST_F(PresenceTest, WhatHoldsAlreadyIsAnnounced) {
    logind.service.on(u"Get"_s, QVariant::fromValue(QDBusVariant(true)));
    logind.properties = {{u"Active"_s, false}, {u"LockedHint"_s, true}};
    serve(mutterName).on(u"GetAll"_s, QVariantMap{{powerSaveMode, 3}});
    startWithLogind();
    EXPECT_THAT(announced(), testing::UnorderedElementsAre("sleep", "dark", "away", "locked"));
    EXPECT_EQ(logind.service.calls(u"Inhibit"_s), 0); // The machine is about to sleep.
}

TEST_F(PresenceTest, TheSessionIsFoundByItsProcessOrAsTheCallersOwn) {
    logind.appear();
    logind.properties[u"Active"_s] = false;
    logind.service.on(u"GetSessionByPID"_s, [this](const QDBusMessage& call) {
        return call.arguments().value(0) == 4711U ? std::optional(logind.path) : std::nullopt;
    });
    for (const QString& id : {QString(), u"none such"_s}) {
        start(id);
        EXPECT_THAT(announced(), ElementsAre("away"));
    }
    logind.service.on(u"GetSessionByPID"_s, u"not a path"_s);
    logind.sessionId = u"auto"_s;
    start({});
    EXPECT_THAT(announced(), ElementsAre("away"));
}

// Several sources of one reason

TEST_F(PresenceTest, EachReasonIsAnnouncedWhenItsFirstSourceComesAndItsLastGoes) {
    auto& mutter = serve(mutterName);
    auto& first = serveSaver(gnome, false);
    auto& second = serveSaver(freedesktop, false);
    startWithLogind();
    EXPECT_THAT(announced(), IsEmpty());
    const auto settleCalmly = [&] {
        settle();
        loop.advance(2.0);
    };
    setPower(mutter, 1);
    EXPECT_THAT(announced(), ElementsAre("dark"));
    turn(first, gnome, true); // Logind says that it is no lock.
    turn(second, freedesktop, true);
    settleCalmly();
    setPower(mutter, -1);
    turn(first, gnome, false);
    settleCalmly();
    EXPECT_THAT(announced(), IsEmpty());
    logind.change(u"LockedHint"_s, true);
    EXPECT_THAT(announced(), ElementsAre("locked", "bright")); // Never neither.
    turn(second, freedesktop, false);
    settleCalmly();
    EXPECT_THAT(announced(), IsEmpty());
    logind.change(u"LockedHint"_s, false);
    EXPECT_THAT(announced(), ElementsAre("unlocked"));

    mutter.on(u"GetAll"_s, QVariantMap{{powerSaveMode, 2}});
    mutter.change(mutterPath, mutterName, {}, {powerSaveMode});
    EXPECT_THAT(announced(), ElementsAre("dark"));
}

// Savers that come and go

TEST_F(PresenceTest, TheWordOfASaverThatDiedStandsUntilItsSuccessorSpeaks) {
    start();
    // It comes later, is active already, and is a lock where no logind says otherwise.
    serve(freedesktop).on(u"GetActive"_s, [](const QDBusMessage& call) {
        return call.path() == u"/ScreenSaver"_s ? std::optional(QVariantList{true}) : std::nullopt;
    });
    EXPECT_THAT(announced(), ElementsAre("locked"));
    for (const QVariant& word : {QVariant(true), QVariant(u"what?"_s)}) {
        services.clear();
        settle();
        loop.advance(59.0);
        EXPECT_THAT(announced(), IsEmpty());
        serveSaver(freedesktop, word);
        settle();
        loop.advance(100.0);
    }
    EXPECT_THAT(announced(), ElementsAre("unlocked")); // It answers, but not whether it is active.
}

TEST_F(PresenceTest, GnomesLockIsHeardWhetherOrNotItsScreenSaverServiceRuns) {
    const auto& shell = serveSaver(u"org.gnome.Shell.ScreenShield"_s, false);
    start();
    turn(shell, gnome, true);
    EXPECT_THAT(announced(), ElementsAre("locked"));
    auto& service = serveSaver(gnome, true); // It passes on what the shell says.
    settle();
    turn(service, gnome, false);
    settle();
    loop.advance(2.0);
    EXPECT_THAT(announced(), IsEmpty());
    turn(shell, gnome, false);
    EXPECT_THAT(announced(), ElementsAre("unlocked"));
}

TEST_F(PresenceTest, TheHintThatASaverLeftStandsUntilSomebodyIsAtWork) {
    const RunningApplication xterm{u"xterm"_s, {}, {}, {}};
    serveSaver(gnome, true);
    logind.properties[u"LockedHint"_s] = true;
    startWithLogind();
    ASSERT_THAT(announced(), testing::Contains("locked"));
    bringToFront(xterm); // Under a lock that lives.
    EXPECT_THAT(announced(), IsEmpty());
    loop.advance(2.0);
    services.clear();
    settle();
    loop.advance(3600.0);
    bringToFront(std::nullopt);
    EXPECT_THAT(announced(), IsEmpty());
    bringToFront(xterm);
    EXPECT_THAT(announced(), ElementsAre("unlocked"));
    logind.change(u"LockedHint"_s, false);
    logind.change(u"LockedHint"_s, true); // A new lock.
    EXPECT_THAT(announced(), ElementsAre("locked"));
    bringToFront(xterm);
    EXPECT_THAT(announced(), IsEmpty());
}

TEST_F(PresenceTest, WhenTheBusDiesEverybodyOnItHasVanishedAfterAMinute) {
    serveSaver(gnome, true);
    start();
    EXPECT_THAT(announced(), ElementsAre("locked"));
    bus.kill();
    ASSERT_TRUE(eventually([&] { return !sessionBus.isConnected(); }));
    QCoreApplication::processEvents();
    loop.advance(59.0);
    EXPECT_THAT(log, IsEmpty());
    loop.advance(2.0);
    EXPECT_THAT(log, ElementsAre("unlocked"));

    startAlone();
    QCoreApplication::processEvents();
    EXPECT_EQ(loop.armedCount(), 0U) << "nobody to wait for";
}

// Strangers, nonsense and floods

TEST_F(PresenceTest, StrangersAndWordsOfTheWrongTypeSayNothing) {
    auto& saver = serveSaver(gnome, u"yes"_s);
    auto& mutter = serve(mutterName);
    mutter.on(u"GetAll"_s, QVariantMap{{powerSaveMode, u"off"_s}});
    logind.properties = {{u"Active"_s, 0}, {u"LockedHint"_s, 1}};
    logind.service.on(u"Get"_s, QVariant(true)); // Not in a variant.
    startWithLogind();
    turn(saver, gnome, 1);
    mutter.say(mutterPath, u"org.freedesktop.DBus.Properties"_s, u"PropertiesChanged"_s,
               {mutterName, u"no map"_s, 3});
    mutter.change(mutterPath, u"org.other"_s, {{powerSaveMode, 3}});
    logind.prepareForSleep(u"soon"_s);
    logind.change(u"Active"_s, u"false"_s);
    // Another session's lock is not ours.
    logind.service.say(u"/org/freedesktop/login1/session/_38"_s, session, u"Lock"_s);

    const auto& stranger = serve(u"org.example.Stranger"_s);
    setPower(stranger, 3);
    stranger.say(sessionPath, session, u"Lock"_s);
    // Also to our face, past all that we subscribed to.
    for (const QString& whom : {QString(), systemBus.baseService(), sessionBus.baseService()}) {
        stranger.say(managerPath, manager, u"PrepareForSleep"_s, {true}, whom);
        stranger.say(u"/org/gnome/ScreenSaver"_s, gnome, u"ActiveChanged"_s, {true}, whom);
    }
    EXPECT_THAT(announced(), IsEmpty());
    EXPECT_TRUE(logind.isHeldUp());
    turn(saver, gnome, true); // What comes after is heard.
    EXPECT_THAT(announced(), ElementsAre("locked"));
}

TEST_F(PresenceTest, AServiceThatNeverAnswersIsStillHeardAndIsNotAskedOverAndOver) {
    auto& saver = serve(gnome);
    saver.ignore(u"GetActive"_s);
    auto& mutter = serve(mutterName);
    mutter.ignore(u"GetAll"_s);
    for (const QString& member : {u"Get"_s, u"GetSession"_s, u"Inhibit"_s}) {
        logind.service.ignore(member);
    }
    startWithLogind();
    logind.prepareForSleep(true);
    logind.prepareForSleep(false);
    turn(saver, gnome, true);
    EXPECT_THAT(announced(), ElementsAre("sleep", "wake", "locked"));
    for (int i = 0; i < 1000; ++i) {
        mutter.change(mutterPath, mutterName, {}, {powerSaveMode});
        logind.prepareForSleep(i % 2 == 0);
    }
    settle();
    EXPECT_EQ(mutter.calls(u"GetAll"_s), 1);
    EXPECT_EQ(logind.service.calls(u"Inhibit"_s), 1);
}

TEST_F(PresenceTest, AStormIsHeardAsItsFirstAndLastWord) {
    auto& saver = serveSaver(gnome, false);
    startWithLogind();
    for (int i = 0; i < 10'000; ++i) {
        turn(saver, gnome, i % 2 == 0);
    }
    EXPECT_THAT(announced(), ElementsAre("dark"));
    loop.advance(1.0);
    EXPECT_THAT(announced(), ElementsAre("bright"));

    // The name goes from hand to hand.
    const int asked = saver.calls(u"GetActive"_s);
    for (int i = 0; i < 500; ++i) {
        saver.disown(gnome);
        saver.own(gnome);
    }
    settle();
    EXPECT_LE(saver.calls(u"GetActive"_s), asked + 1);
    loop.advance(1.0);
    settle();
    turn(saver, gnome, true);
    EXPECT_THAT(announced(), ElementsAre("dark"));
}

} // namespace
