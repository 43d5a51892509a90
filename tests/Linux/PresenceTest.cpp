#include "Linux/Presence/Presence.h"

#include "PrivateBus.h"
#include "Story.h"
#include "Testing.h"

#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>

#include <poll.h>

using namespace orvanta;

namespace {

const QString freedesktop = u"org.freedesktop.ScreenSaver"_s;
const QString gnome = u"org.gnome.ScreenSaver"_s;
const QString shield = u"org.gnome.Shell.ScreenShield"_s;
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

class PresenceTest : public Story {
protected:
    PresenceTest() {
        int first = static_cast<int>(Notification::WillSleep);
        for (const char* name :
             {"sleep", "wake", "dark", "bright", "away", "back", "locked", "unlocked"}) {
            for (auto* center : {&workspaceCenter, &distributedCenter}) {
                center->addObserver(Notification(first),
                                    [this, name] { noted.append(QLatin1String(name)); });
            }
            ++first;
        }
        on(u"logind"_s, [this](int is) { is != 0 ? logind.appear() : logind.disappear(); });
        on(u"start"_s, [this](int) { start(); });
        on(u"sleep"_s, [this](int is) { logind.prepareForSleep(is != 0); });
        on(u"held"_s, [this](int is) { EXPECT_EQ(logind.isHeldUp(), is != 0); });
        on(u"inhibits"_s, [this](int n) { EXPECT_EQ(logind.service.calls(u"Inhibit"_s), n); });
        on(u"active"_s, [this](int is) { logind.change(u"Active"_s, is != 0); });
        on(u"hint"_s, [this](int is) { logind.change(u"LockedHint"_s, is != 0); });
        on(u"lock"_s, [this](int) { logind.service.say(sessionPath, session, u"Lock"_s); });
        on(u"unlock"_s, [this](int) { logind.service.say(sessionPath, session, u"Unlock"_s); });
        on(u"power"_s, [this](int mode) { setPower(serve(mutterName), mode); });
        on(u"power?"_s, [this](int mode) {
            serve(mutterName).on(u"GetAll"_s, QVariantMap{{powerSaveMode, mode}});
        });
        on(u"gone"_s, [this](int) { services.clear(); });
        on(u"whatever"_s, [this](int) { noted.clear(); });
        on(u"front"_s, [this](int is) {
            const RunningApplication xterm{u"xterm"_s, {}, {}, {}};
            workspace.front = is != 0 ? std::optional(xterm) : std::nullopt;
            workspaceCenter.post(Notification::DidActivateApplication);
        });
        for (const auto& [word, saver] :
             {std::pair(u"gnome"_s, gnome), {u"other"_s, freedesktop}, {u"shield"_s, shield}}) {
            on(word, [this, saver = saver](int is) { turn(saver, is != 0); });
            // It is there, and answers so when asked.
            on(word + u'?',
               [this, saver = saver](int is) { serve(saver).on(u"GetActive"_s, is != 0); });
        }
    }

    void start(const QString& sessionId = u"7"_s) {
        presence = std::make_unique<Presence>(
            platform, Presence::Surroundings{systemBus, sessionBus, sessionId, 4711, {}, {}});
        presence->start();
    }
    FakeService& serve(const QString& name) {
        auto& service = services[name];
        if (!service) {
            service = std::make_unique<FakeService>(bus);
            service->own(name);
        }
        return *service;
    }
    void settle() override {
        for (int i = 0; sessionBus.isConnected() && i < 8; ++i) {
            drain(logind.service.connection());
            for (const auto& [name, service] : services) {
                drain(service->connection());
            }
            drain(systemBus);
            drain(sessionBus);
        }
    }
    void turn(const QString& saver, const QVariant& active) {
        const QString& interface = saver == freedesktop ? freedesktop : gnome;
        serve(saver).say(u"/a/saver"_s, interface, u"ActiveChanged"_s, {active});
    }
    static void setPower(const FakeService& who, const QVariant& mode) {
        who.change(mutterPath, mutterName, {{powerSaveMode, mode}});
    }

    PrivateBus bus;
    QDBusConnection systemBus = bus.connect();
    QDBusConnection sessionBus = bus.connect();
    FakeLogind logind{bus};
    std::map<QString, std::unique_ptr<FakeService>> services;
    FakeWorkspace workspace;
    NotificationCenter workspaceCenter;
    NotificationCenter defaultCenter;
    NotificationCenter distributedCenter;
    Platform platform{workspace, workspaceCenter, defaultCenter, distributedCenter, loop, [] {
                          return std::chrono::system_clock::now();
                      }};
    std::unique_ptr<Presence> presence;
};

TEST_F(PresenceTest, SleepWaitsUntilItWasAnnouncedAndNoLonger) {
    bool heldUpWhenTold = false;
    workspaceCenter.addObserver(Notification::WillSleep,
                                [&] { heldUpWhenTold = logind.isHeldUp(); });
    play(u"logind=1 start held=1"_s);
    EXPECT_EQ(logind.inhibition.value(0), u"sleep"_s);
    EXPECT_EQ(logind.inhibition.value(3), u"delay"_s);
    for (const QString& night : {u"inhibits=1"_s, u"inhibits=2"_s}) {
        play(u"sleep=1 [sleep] held=0 "_s + night);
        EXPECT_TRUE(std::exchange(heldUpWhenTold, false));
        play(u"sleep=0 [wake] held=1"_s);
    }
    presence.reset();
    EXPECT_FALSE(logind.isHeldUp());
}

TEST_F(PresenceTest, ALogindThatReturnsIsAskedAnew) {
    play(u"logind=1 start sleep=1 active=0 active=0 hint=1 [sleep away locked] "
         "logind=0 [] 59s logind=1 [wake back unlocked] held=1 " // Its word stands until then.
         "lock active=0 [locked away] unlock [unlocked] logind=0 [] 61s [back]"_s);
}

TEST_F(PresenceTest, WhatHoldsAlreadyIsAnnounced) {
    logind.service.on(u"Get"_s, QVariant::fromValue(QDBusVariant(true)));
    logind.properties = {{u"Active"_s, false}, {u"LockedHint"_s, true}};
    // The machine is about to sleep.
    play(u"power?=3 logind=1 start {sleep dark away locked} inhibits=0"_s);
}

TEST_F(PresenceTest, TheSessionIsFoundByItsProcessOrAsTheCallersOwn) {
    logind.appear();
    logind.properties[u"Active"_s] = false;
    logind.service.on(u"GetSessionByPID"_s, [this](const QDBusMessage& call) {
        return call.arguments().value(0) == 4711U ? std::optional(logind.path) : std::nullopt;
    });
    for (const QString& id : {QString(), u"none such"_s}) {
        start(id);
        play(u"[away]"_s);
    }
    logind.service.on(u"GetSessionByPID"_s, u"not a path"_s);
    logind.sessionId = u"auto"_s;
    start({});
    play(u"[away]"_s);
}

TEST_F(PresenceTest, EachReasonIsAnnouncedWhenItsFirstSourceComesAndItsLastGoes) {
    // A saver is no lock where logind says so; there is never neither.
    play(u"power?=0 gnome?=0 other?=0 logind=1 start [] power=1 [dark] gnome=1 other=1 2s power=-1 "
         "gnome=0 2s [] hint=1 [locked bright] other=0 2s [] hint=0 [unlocked]"_s);
    auto& mutter = *services.at(mutterName);
    mutter.on(u"GetAll"_s, QVariantMap{{powerSaveMode, 2}});
    mutter.change(mutterPath, mutterName, {}, {powerSaveMode});
    play(u"[dark]"_s);
}

TEST_F(PresenceTest, TheWordOfASaverThatDiedStandsUntilItsSuccessorSpeaks) {
    play(u"start"_s);
    // It comes later, is active already, and is a lock where no logind says otherwise.
    serve(freedesktop).on(u"GetActive"_s, [](const QDBusMessage& call) {
        return call.path() == u"/ScreenSaver"_s ? std::optional(QVariantList{true}) : std::nullopt;
    });
    play(u"[locked] gone 59s [] other?=1 100s gone 59s []"_s);
    serve(freedesktop).on(u"GetActive"_s, u"what?"_s); // It answers, but not whether it is active.
    play(u"100s [unlocked]"_s);
}

TEST_F(PresenceTest, GnomesLockIsHeardWhetherOrNotItsScreenSaverServiceRuns) {
    // The service passes on what the shell says.
    play(u"shield?=0 start shield=1 [locked] gnome?=1 gnome=0 2s [] shield=0 [unlocked]"_s);
}

TEST_F(PresenceTest, TheHintThatASaverLeftStandsUntilSomebodyIsAtWork) {
    logind.properties[u"LockedHint"_s] = true;
    play(u"gnome?=1 logind=1 start whatever front=1 [] 2s " // Under a lock that lives.
         "gone 3600s front=0 [] front=1 [unlocked] hint=0 hint=1 [locked] front=1 []"_s);
}

TEST_F(PresenceTest, WhenTheBusDiesEverybodyOnItHasVanishedAfterAMinute) {
    play(u"gnome?=1 start [locked]"_s);
    bus.kill();
    ASSERT_TRUE(eventually([&] { return !sessionBus.isConnected(); }));
    QCoreApplication::processEvents();
    play(u"59s [] 2s [unlocked]"_s);
    start();
    QCoreApplication::processEvents();
    EXPECT_EQ(loop.armedCount(), 0U) << "nobody to wait for";
}

// Strangers, nonsense and floods

TEST_F(PresenceTest, StrangersAndWordsOfTheWrongTypeSayNothing) {
    serve(gnome).on(u"GetActive"_s, u"yes"_s);
    auto& mutter = serve(mutterName);
    mutter.on(u"GetAll"_s, QVariantMap{{powerSaveMode, u"off"_s}});
    logind.properties = {{u"Active"_s, 0}, {u"LockedHint"_s, 1}};
    logind.service.on(u"Get"_s, QVariant(true)); // Not in a variant.
    play(u"logind=1 start"_s);
    settle();
    turn(gnome, 1);
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
    play(u"[] held=1 gnome=1 [locked]"_s); // What comes after is heard.
}

TEST_F(PresenceTest, AServiceThatNeverAnswersIsStillHeardAndIsNotAskedOverAndOver) {
    serve(gnome).ignore(u"GetActive"_s);
    auto& mutter = serve(mutterName);
    mutter.ignore(u"GetAll"_s);
    for (const QString& member : {u"Get"_s, u"GetSession"_s, u"Inhibit"_s}) {
        logind.service.ignore(member);
    }
    play(u"logind=1 start sleep=1 sleep=0 gnome=1 [sleep wake locked]"_s);
    for (int i = 0; i < 1000; ++i) {
        mutter.change(mutterPath, mutterName, {}, {powerSaveMode});
        logind.prepareForSleep(i % 2 == 0);
    }
    play(u"inhibits=1"_s);
    EXPECT_EQ(mutter.calls(u"GetAll"_s), 1);
}

TEST_F(PresenceTest, AStormIsHeardAsItsFirstAndLastWord) {
    auto& saver = serve(gnome);
    saver.on(u"GetActive"_s, false);
    play(u"logind=1 start"_s);
    settle();
    for (int i = 0; i < 10'000; ++i) {
        turn(gnome, i % 2 == 0);
    }
    play(u"[dark] 1s [bright]"_s);

    // The name goes from hand to hand.
    const int asked = saver.calls(u"GetActive"_s);
    for (int i = 0; i < 500; ++i) {
        saver.disown(gnome);
        saver.own(gnome);
    }
    settle();
    EXPECT_LE(saver.calls(u"GetActive"_s), asked + 1);
    play(u"1s gnome=1 [dark]"_s);
}

} // namespace
