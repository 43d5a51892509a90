#include "Fakes/FakeWorkspace.h"
#include "Fakes/HandMainLoop.h"
#include "Linux/Presence/Presence.h"
#include "PrivateBus.h"

#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QElapsedTimer>

#include <gmock/gmock.h>
#include <poll.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

namespace orvanta {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* freedesktop = "org.freedesktop.ScreenSaver";
constexpr const char* gnome = "org.gnome.ScreenSaver";
constexpr const char* mutterName = "org.gnome.Mutter.DisplayConfig";
constexpr const char* mutterPath = "/org/gnome/Mutter/DisplayConfig";

/// Hands out one delay lock at a time, and sees when it is given back.
class FakeLogind {
public:
    static constexpr const char* session = "/org/freedesktop/login1/session/_37";
    static constexpr const char* sessionInterface = "org.freedesktop.login1.Session";

    explicit FakeLogind(const PrivateBus& bus)
        : service(bus) {
        service.on("Get", QVariant::fromValue(QDBusVariant(false)));
        service.on("GetSession", [this](const QDBusMessage& call) -> std::optional<QVariantList> {
            if (call.arguments().value(0) != sessionId) {
                return std::nullopt;
            }
            return QVariantList{QVariant::fromValue(QDBusObjectPath(QLatin1String(session)))};
        });
        service.on("GetAll", [this](const QDBusMessage& call) -> std::optional<QVariantList> {
            if (call.path() != QLatin1String(session)) {
                return std::nullopt;
            }
            return QVariantList{properties};
        });
        service.on("Inhibit", [this](const QDBusMessage& call) {
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
    FakeLogind(const FakeLogind&) = delete;
    FakeLogind& operator=(const FakeLogind&) = delete;

    void appear() { service.own("org.freedesktop.login1"); }
    bool isHeldUp() const {
        pollfd end{lock, POLLIN, 0};
        return lock >= 0 && ::poll(&end, 1, 0) == 0;
    }
    void prepareForSleep(const QVariant& start) const {
        service.say("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
                    {start});
    }
    void change(const char* property, const QVariant& value) const {
        service.change(session, sessionInterface, {{QLatin1String(property), value}});
    }
    void ask(const char* signal) const { service.say(session, sessionInterface, signal); }

    FakeService service;
    QString sessionId = QStringLiteral("7");
    QVariantMap properties{{QStringLiteral("Active"), true}, {QStringLiteral("LockedHint"), false}};
    QVariantList inhibition;
    int lock = -1;
};

class PresenceTest : public testing::Test {
protected:
    void SetUp() override {
        for (auto* const center : {&workspaceCenter, &distributedCenter}) {
            for (const auto& [name, text] : names) {
                center->addObserver(name, [this, text = text] { log.emplace_back(text); });
            }
        }
    }

    void start(const QString& sessionId = QStringLiteral("7")) {
        presence = std::make_unique<Presence>(
            platform, Presence::Surroundings{systemBus, sessionBus, sessionId, 4711, {}});
        presence->start();
    }
    /// Starts beside a logind, and waits until all is known.
    void startWithLogind() {
        logind.appear();
        start();
        ASSERT_TRUE(eventually([&] { return logind.isHeldUp(); }));
        settle();
    }
    /// Lets everything that was said be heard, asked about and answered.
    void settle() {
        for (int i = 0; i < 8; ++i) {
            flush(systemBus);
            flush(sessionBus);
            drain(logind.service.connection());
            for (const auto& each : services) {
                drain(each->connection());
            }
            drain(systemBus);
            drain(sessionBus);
        }
    }
    FakeService& serve(const char* name) {
        services.push_back(std::make_unique<FakeService>(bus, name));
        return *services.back();
    }
    FakeService& serveSaver(const char* name, const QVariant& active) {
        services.push_back(std::make_unique<FakeService>(bus));
        services.back()->on("GetActive", active);
        services.back()->own(name);
        return *services.back();
    }
    /// What has been announced since it was asked last.
    std::vector<std::string> announced() {
        settle();
        return std::exchange(log, {});
    }
    static void turn(const FakeService& saver, const char* name, const QVariant& active) {
        saver.say("/a/saver", name, "ActiveChanged", {active});
        flush(saver.connection());
    }
    void bringToFront(const char* bundleIdentifier) {
        workspace.front = RunningApplication{QLatin1String(bundleIdentifier), {}, {}, {}};
        workspaceCenter.post(Notification::DidActivateApplication);
    }

    static inline const std::vector<std::pair<Notification, const char*>> names{
        {Notification::WillSleep, "sleep"},
        {Notification::DidWake, "wake"},
        {Notification::ScreensDidSleep, "dark"},
        {Notification::ScreensDidWake, "bright"},
        {Notification::SessionDidResignActive, "away"},
        {Notification::SessionDidBecomeActive, "back"},
        {Notification::ScreenIsLocked, "locked"},
        {Notification::ScreenIsUnlocked, "unlocked"},
    };

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

// Sleep

TEST_F(PresenceTest, SleepWaitsUntilItWasAnnouncedAndNoLonger) {
    bool heldUpWhenTold = false;
    workspaceCenter.addObserver(Notification::WillSleep,
                                [&] { heldUpWhenTold = logind.isHeldUp(); });
    startWithLogind();
    EXPECT_EQ(logind.inhibition.value(0), QStringLiteral("sleep"));
    EXPECT_EQ(logind.inhibition.value(1), QStringLiteral("orvanta"));
    EXPECT_EQ(logind.inhibition.value(3), QStringLiteral("delay"));
    for (int night = 1; night <= 3; ++night) {
        heldUpWhenTold = false;
        logind.prepareForSleep(true);
        ASSERT_TRUE(eventually([&] { return !logind.isHeldUp(); }));
        EXPECT_TRUE(heldUpWhenTold);
        EXPECT_THAT(announced(), ElementsAre("sleep"));
        EXPECT_EQ(logind.service.calls("Inhibit"), night);
        logind.prepareForSleep(false);
        ASSERT_TRUE(eventually([&] { return logind.isHeldUp(); }));
        EXPECT_THAT(announced(), ElementsAre("wake"));
    }
    presence.reset();
    EXPECT_TRUE(eventually([&] { return !logind.isHeldUp(); }));
}

TEST_F(PresenceTest, ALogindThatReturnsIsAskedAnew) {
    startWithLogind();
    logind.prepareForSleep(true);
    logind.change("Active", false);
    logind.change("LockedHint", true);
    EXPECT_THAT(announced(), ElementsAre("sleep", "away", "locked"));
    logind.service.disown("org.freedesktop.login1");
    EXPECT_THAT(announced(), IsEmpty()); // Its word stands.
    loop.advance(59.0);
    logind.appear();
    ASSERT_TRUE(eventually([&] { return logind.isHeldUp(); }));
    EXPECT_THAT(announced(), ElementsAre("wake", "back", "unlocked"));

    logind.change("LockedHint", true);
    logind.change("Active", false);
    EXPECT_THAT(announced(), ElementsAre("locked", "away"));
    logind.service.disown("org.freedesktop.login1");
    EXPECT_THAT(announced(), IsEmpty());
    loop.advance(61.0);
    EXPECT_THAT(announced(), ElementsAre("back", "unlocked"));
}

// What is found at the start

TEST_F(PresenceTest, AnnouncesWhatAlreadyHolds) {
    logind.service.on("Get", QVariant::fromValue(QDBusVariant(true)));
    logind.properties = {{QStringLiteral("Active"), false}, {QStringLiteral("LockedHint"), true}};
    auto& mutter = serve(mutterName);
    mutter.on("GetAll", QVariantMap{{QStringLiteral("PowerSaveMode"), 3}});
    logind.appear();
    start();
    ASSERT_TRUE(eventually([&] { return log.size() >= 4; }));
    EXPECT_THAT(announced(), testing::UnorderedElementsAre("sleep", "dark", "away", "locked"));
    EXPECT_EQ(logind.service.calls("Inhibit"), 0); // The machine is about to sleep.
}

TEST_F(PresenceTest, TheSessionIsFoundByItsProcessOrAsTheCallersOwn) {
    logind.appear();
    for (const char* id : {"", "none such"}) {
        logind.service.on("GetSessionByPID", [](const QDBusMessage& call) {
            EXPECT_EQ(call.arguments().value(0), QVariant(4711U));
            return QVariantList{
                QVariant::fromValue(QDBusObjectPath(QLatin1String(FakeLogind::session)))};
        });
        logind.properties[QStringLiteral("Active")] = false;
        start(QLatin1String(id));
        ASSERT_TRUE(eventually([&] { return !log.empty(); }));
        EXPECT_THAT(announced(), ElementsAre("away"));

        logind.service.on("GetSessionByPID", QStringLiteral("not a path"));
        logind.sessionId = QStringLiteral("auto");
        start(QLatin1String(id));
        ASSERT_TRUE(eventually([&] { return !log.empty(); }));
        EXPECT_THAT(announced(), ElementsAre("away"));
    }
}

TEST_F(PresenceTest, WithoutAnyBusThereIsNobodyToWaitFor) {
    systemBus = sessionBus = QDBusConnection(QStringLiteral("no such bus"));
    QElapsedTimer elapsed;
    elapsed.start();
    start();
    QCoreApplication::processEvents();
    EXPECT_LT(elapsed.elapsed(), 100);
    EXPECT_THAT(log, IsEmpty());
    EXPECT_EQ(loop.armedCount(), 0U);
}

// Each reason and several together

TEST_F(PresenceTest, EachReasonIsAnnouncedWhenItsFirstSourceComesAndItsLastGoes) {
    auto& mutter = serve(mutterName);
    auto& first = serveSaver(gnome, false);
    auto& second = serveSaver("org.mate.ScreenSaver", false);
    startWithLogind();
    EXPECT_THAT(announced(), IsEmpty());
    const auto power = [&](const QVariant& mode) {
        mutter.change(mutterPath, mutterName, {{QStringLiteral("PowerSaveMode"), mode}});
        flush(mutter.connection());
        loop.advance(2.0);
    };
    const auto saver = [&](FakeService& which, const char* name, bool active) {
        turn(which, name, active);
        settle();
        loop.advance(2.0);
    };
    logind.change("Active", false);
    logind.change("Active", false);
    logind.change("Active", true);
    EXPECT_THAT(announced(), ElementsAre("away", "back"));

    power(1);
    EXPECT_THAT(announced(), ElementsAre("dark"));
    saver(first, gnome, true); // Logind says that it is no lock.
    saver(second, "org.mate.ScreenSaver", true);
    power(-1);
    saver(first, gnome, false);
    EXPECT_THAT(announced(), IsEmpty());
    logind.change("LockedHint", true);
    EXPECT_THAT(announced(), ElementsAre("locked", "bright")); // Never neither.
    saver(second, "org.mate.ScreenSaver", false);
    EXPECT_THAT(announced(), IsEmpty());
    logind.change("LockedHint", false);
    EXPECT_THAT(announced(), ElementsAre("unlocked"));

    mutter.on("GetAll", QVariantMap{{QStringLiteral("PowerSaveMode"), 2}});
    mutter.change(mutterPath, mutterName, {}, {QStringLiteral("PowerSaveMode")});
    flush(mutter.connection());
    EXPECT_THAT(announced(), ElementsAre("dark"));
}

TEST_F(PresenceTest, ALockThatNobodyFulfilsIsForgotten) {
    startWithLogind();
    logind.ask("Lock");
    EXPECT_THAT(announced(), ElementsAre("locked"));
    loop.advance(29.0);
    EXPECT_THAT(announced(), IsEmpty());
    loop.advance(2.0);
    EXPECT_THAT(announced(), ElementsAre("unlocked"));
    logind.ask("Lock");
    logind.ask("Unlock");
    EXPECT_THAT(announced(), ElementsAre("locked", "unlocked"));
}

// Savers that come, go, and misbehave

TEST_F(PresenceTest, ASaverIsALockWhereNoLogindSaysOtherwise) {
    start();
    settle();
    auto& saver = serveSaver(freedesktop, true); // It comes later, and is active already.
    ASSERT_TRUE(eventually([&] { return !log.empty(); }));
    EXPECT_THAT(announced(), ElementsAre("locked"));
    loop.advance(2.0);
    turn(saver, freedesktop, false);
    EXPECT_THAT(announced(), ElementsAre("unlocked"));
}

TEST_F(PresenceTest, ASaverMayAnswerAtItsOtherPathOnly) {
    auto& saver = serve(freedesktop);
    saver.on("GetActive", [](const QDBusMessage& call) -> std::optional<QVariantList> {
        if (call.path() != QStringLiteral("/ScreenSaver")) {
            return std::nullopt;
        }
        return QVariantList{true};
    });
    start();
    ASSERT_TRUE(eventually([&] { return !log.empty(); }));
    EXPECT_THAT(announced(), ElementsAre("locked"));
}

class DyingSaverTest : public PresenceTest {
protected:
    void SetUp() override {
        PresenceTest::SetUp();
        serveSaver(gnome, true);
    }
    void lockWithoutLogind() {
        start();
        ASSERT_TRUE(eventually([&] { return !log.empty(); }));
        ASSERT_THAT(announced(), ElementsAre("locked"));
        loop.advance(2.0);
        services.clear();
        ASSERT_THAT(announced(), IsEmpty()); // Its word stands.
    }
};

TEST_F(DyingSaverTest, ItsWordStandsForAMinute) {
    lockWithoutLogind();
    loop.advance(59.0);
    EXPECT_THAT(announced(), IsEmpty());
    loop.advance(2.0);
    EXPECT_THAT(announced(), ElementsAre("unlocked"));
}

TEST_F(DyingSaverTest, ItsWordStandsUntilItsSuccessorSpeaks) {
    lockWithoutLogind();
    auto& successor = serveSaver(gnome, true);
    settle();
    loop.advance(100.0);
    EXPECT_THAT(announced(), IsEmpty());
    services.clear();
    settle();
    loop.advance(10.0);
    serveSaver(gnome, QStringLiteral("what?")); // One that answers, but not whether it is active.
    ASSERT_TRUE(eventually([&] { return !log.empty(); }));
    EXPECT_THAT(announced(), ElementsAre("unlocked"));
    static_cast<void>(successor);
}

TEST_F(DyingSaverTest, ItsWordStandsUntilAnApplicationComesToTheFront) {
    lockWithoutLogind();
    workspaceCenter.post(Notification::DidActivateApplication); // None has.
    EXPECT_THAT(announced(), IsEmpty());
    bringToFront("xterm");
    EXPECT_THAT(announced(), ElementsAre("unlocked"));
    loop.advance(61.0);
    EXPECT_THAT(announced(), IsEmpty());
}

TEST_F(DyingSaverTest, TheHintThatItLeftStandsUntilSomebodyIsAtWork) {
    logind.properties[QStringLiteral("LockedHint")] = true;
    startWithLogind();
    ASSERT_THAT(announced(), testing::Contains("locked"));
    bringToFront("xterm"); // Under a lock that lives.
    EXPECT_THAT(announced(), IsEmpty());
    loop.advance(2.0);
    services.clear();
    settle();
    loop.advance(3600.0);
    EXPECT_THAT(announced(), IsEmpty());
    bringToFront("xterm");
    EXPECT_THAT(announced(), ElementsAre("unlocked"));
    logind.change("LockedHint", false);
    logind.change("LockedHint", true); // A new lock.
    EXPECT_THAT(announced(), ElementsAre("locked"));
    bringToFront("xterm");
    EXPECT_THAT(announced(), IsEmpty());
}

TEST_F(PresenceTest, WhenTheBusDiesEverybodyOnItHasVanished) {
    serveSaver(gnome, true);
    start();
    ASSERT_TRUE(eventually([&] { return !log.empty(); }));
    log.clear();
    bus.kill();
    ASSERT_TRUE(eventually([&] { return !sessionBus.isConnected(); }));
    QCoreApplication::processEvents();
    loop.advance(50.0);
    EXPECT_THAT(log, IsEmpty());
    loop.advance(11.0);
    EXPECT_THAT(log, ElementsAre("unlocked"));
}

TEST_F(PresenceTest, OnlyTheOwnersOfTheNamesAreBelieved) {
    serveSaver(gnome, false);
    auto& mutter = serve(mutterName);
    static_cast<void>(mutter);
    startWithLogind();
    const FakeService stranger(bus);
    const QString us = systemBus.baseService();
    turn(stranger, gnome, true);
    stranger.change(mutterPath, mutterName, {{QStringLiteral("PowerSaveMode"), 3}});
    stranger.say("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
                 {true});
    stranger.say(FakeLogind::session, FakeLogind::sessionInterface, "Lock");
    // Also said to our face, past all that we subscribed to.
    for (const auto& connection : {systemBus, sessionBus}) {
        auto signal = QDBusMessage::createTargetedSignal(
            connection.baseService(), QLatin1String("/org/freedesktop/login1"),
            QLatin1String("org.freedesktop.login1.Manager"), QLatin1String("PrepareForSleep"));
        signal << true;
        stranger.connection().send(signal);
        signal = QDBusMessage::createTargetedSignal(
            connection.baseService(), QLatin1String("/org/gnome/ScreenSaver"),
            QLatin1String("org.gnome.ScreenSaver"), QLatin1String("ActiveChanged"));
        signal << true;
        stranger.connection().send(signal);
    }
    flush(stranger.connection());
    EXPECT_THAT(announced(), IsEmpty());
    // Nor is another session's lock ours.
    logind.service.say("/org/freedesktop/login1/session/_38", FakeLogind::sessionInterface, "Lock");
    EXPECT_THAT(announced(), IsEmpty());
    EXPECT_TRUE(logind.isHeldUp());
}

TEST_F(PresenceTest, WordsOfTheWrongTypeSayNothing) {
    auto& saver = serveSaver(gnome, QStringLiteral("yes"));
    auto& mutter = serve(mutterName);
    mutter.on("GetAll", QVariantMap{{QStringLiteral("PowerSaveMode"), QStringLiteral("off")}});
    logind.properties = {{QStringLiteral("Active"), 0}, {QStringLiteral("LockedHint"), 1}};
    logind.service.on("Get", QVariant(true)); // Not in a variant.
    startWithLogind();
    turn(saver, gnome, 1);
    turn(saver, gnome, QStringLiteral("true"));
    saver.say("/a/saver", gnome, "ActiveChanged");
    mutter.say(mutterPath, "org.freedesktop.DBus.Properties", "PropertiesChanged", {true});
    mutter.say(mutterPath, "org.freedesktop.DBus.Properties", "PropertiesChanged",
               {QLatin1String(mutterName), QStringLiteral("no map"), 3});
    mutter.change(mutterPath, "org.other", {{QStringLiteral("PowerSaveMode"), 3}});
    logind.prepareForSleep(QStringLiteral("soon"));
    logind.change("Active", QStringLiteral("false"));
    logind.service.say(FakeLogind::session, "org.freedesktop.DBus.Properties", "PropertiesChanged");
    flush(saver.connection());
    flush(mutter.connection());
    flush(logind.service.connection());
    EXPECT_THAT(announced(), IsEmpty());
    // And what comes after is heard.
    turn(saver, gnome, true);
    EXPECT_THAT(announced(), ElementsAre("locked"));
}

TEST_F(PresenceTest, AServiceThatNeverAnswersIsStillHeardAndIsNotAskedOverAndOver) {
    auto& saver = serve(gnome);
    saver.ignore("GetActive");
    auto& mutter = serve(mutterName);
    mutter.ignore("GetAll");
    for (const char* member : {"Get", "GetSession", "Inhibit"}) {
        logind.service.ignore(member);
    }
    logind.appear();
    start();
    ASSERT_TRUE(eventually([&] { return logind.service.calls("GetSession") == 1; }));
    logind.prepareForSleep(true);
    logind.prepareForSleep(false);
    turn(saver, gnome, true);
    EXPECT_THAT(announced(), ElementsAre("sleep", "wake", "locked"));
    for (int i = 0; i < 1000; ++i) {
        mutter.change(mutterPath, mutterName, {}, {QStringLiteral("PowerSaveMode")});
        logind.prepareForSleep(i % 2 == 0);
    }
    flush(mutter.connection());
    settle();
    EXPECT_EQ(mutter.calls("GetAll"), 1);
    EXPECT_EQ(logind.service.calls("Inhibit"), 1);
}

TEST_F(PresenceTest, AStormIsHeardAsItsFirstAndLastWord) {
    auto& saver = serveSaver(gnome, false);
    startWithLogind();
    for (int i = 0; i < 10'000; ++i) {
        saver.say("/a/saver", gnome, "ActiveChanged", {i % 2 == 0});
    }
    flush(saver.connection());
    EXPECT_THAT(announced(), ElementsAre("dark"));
    loop.advance(1.0);
    EXPECT_THAT(announced(), ElementsAre("bright"));

    // The name goes from hand to hand.
    const int asked = saver.calls("GetActive");
    for (int i = 0; i < 500; ++i) {
        saver.disown(gnome);
        saver.own(gnome);
    }
    settle();
    EXPECT_LE(saver.calls("GetActive"), asked + 1);
    loop.advance(1.0);
    settle();
    turn(saver, gnome, true);
    EXPECT_THAT(announced(), ElementsAre("dark"));
}

} // namespace

} // namespace orvanta
