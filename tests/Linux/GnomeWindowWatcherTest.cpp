#include "Linux/Windows/GnomeWindowWatcher.h"

#include "PrivateBus.h"
#include "Testing.h"
#include "WatcherContract.h"

#include <QRegularExpression>

using namespace orvanta;

namespace {

const QString path = u"/com/brindlework/orvanta/Shell"_s;
const QString interface = u"com.brindlework.orvanta.Shell"_s;

class GnomeRoute : public WatcherRoute {
protected:
    GnomeRoute() {
        for (const QString& form : {u"42"_s, u"45"_s}) {
            folder.write(u"package/%1/extension.js"_s.arg(form), form.toUtf8());
            folder.write(u"package/%1/metadata.json"_s.arg(form), "{}");
        }
        // The settings of a desktop in a folder, a file a key.
        folder.writeProgram(u"gsettings"_s,
                            "cd \"${0%/*}\" || exit\n"
                            "[ ! -e locked ] || { echo 'The key is not writable' >&2; exit 1; }\n"
                            "if [ $1 = get ]; then cat $3; else echo \"$4\" >$3; fi\n");
        folder.write(u"disable-user-extensions"_s, "false\n");
        folder.write(u"enabled-extensions"_s, "['another@x']\n");
        folder.write(u"disabled-extensions"_s, "@as []\n");
    }

    static QString installed(const QString& name) {
        return u"extensions/orvanta@brindlework.com/"_s + name;
    }
    FakeService& startShell(const QString& version) {
        shell.reset();
        shell = std::make_unique<FakeService>(bus);
        shell->on(u"Get"_s, QVariant::fromValue(QDBusVariant(version)));
        shell->own(u"org.gnome.Shell"_s);
        return *shell;
    }
    /// With the extension in this state.
    void startShell(const QString& version, const QVariantMap& information) {
        startShell(version).on(u"GetExtensionInfo"_s, information);
    }
    void startTellingShell() {
        startShell(u"43.9"_s).on(u"GetFocus"_s, [](const QDBusMessage&) {
            return QVariantList{1ULL, u"foot"_s, u"foot"_s, 4711};
        });
    }
    void start() {
        watcher = std::make_unique<GnomeWindowWatcher>(
            session, loop,
            GnomeExtension({.packageFolder = folder.path(u"package"_s),
                            .extensionsFolder = folder.path(u"extensions"_s),
                            .settingsProgram = folder.path(u"gsettings"_s)}));
    }
    void watch() {
        startTellingShell();
        start();
        ASSERT_TRUE(becomes(State::Watching));
    }
    void tell(const FakeService& who, const QVariantList& what) {
        who.say(path, interface, u"FocusChanged"_s, what);
        drain(who.connection());
        drain(session);
    }
    void show(const QString& name) {
        const bool isNone = name == u"none"_s;
        tell(*shell, {isNone ? 0ULL : qulonglong(name.front().unicode()), QString(),
                      isNone ? QString() : name, isNone ? 0 : 4711});
    }
    void end() { shell.reset(); }

    const std::optional<qint64> process = 4711;
    TemporaryFolder folder;
    PrivateBus bus;
    QDBusConnection session = bus.connect();
    std::unique_ptr<FakeService> shell;
};
INSTANTIATE_TYPED_TEST_SUITE_P(Gnome, WatcherContract, GnomeRoute);

TEST_F(GnomeRoute, TheFocusIsWhatTheShellTellsAndNobodyElse) {
    watch();
    const Window foot{1, {}, u"foot"_s, {}, u"foot"_s, 4711};
    EXPECT_EQ(watcher->activeWindow(), foot);
    tell(FakeService(bus), {9ULL, QString(), u"stranger"_s, 9});
    tell(*shell, {});
    tell(*shell, {1, u"a"_s, u"a"_s, 1}); // A number of another type.
    tell(*shell, {2ULL, u"a"_s, u"a"_s});
    EXPECT_EQ(watcher->activeWindow(), foot);
    tell(*shell, {3ULL, QString(), u"mousepad"_s, 0});
    EXPECT_EQ(watcher->activeWindow(), (Window{3, {}, u"mousepad"_s, {}, {}, {}}));

    end();
    ASSERT_TRUE(becomes(State::Ended));
    startTellingShell(); // Another shell takes over.
    EXPECT_TRUE(becomes(u"foot"_s));
}

TEST_F(GnomeRoute, AnExtensionThatIsTakenAwayForAMomentIsStillBelieved) {
    watch();
    bool hasFaltered = false;
    QObject::connect(watcher.get(), &WindowWatcher::stateChanged, [&] { hasFaltered = true; });
    shell->say(path, interface, u"Ended"_s);
    EXPECT_TRUE(eventually([&] { return shell->calls(u"GetFocus"_s) == 2; }));
    drain(session);
    EXPECT_FALSE(hasFaltered);

    // The person turns it off, then on again.
    shell->on(u"GetFocus"_s, [](const QDBusMessage&) { return std::nullopt; });
    shell->on(u"GetExtensionInfo"_s, QVariantMap{{u"state"_s, 2.0}});
    shell->say(path, interface, u"Ended"_s);
    ASSERT_TRUE(becomes(State::NeedsPermission));
    EXPECT_EQ(active(), u"none"_s);
    show(u"xterm"_s);
    EXPECT_EQ(active(), u"xterm"_s);
}

TEST_F(GnomeRoute, ItIsInstalledOnceThePersonAgreesAndTellsFromTheNextLoginOn) {
    folder.write(u"disabled-extensions"_s, "['orvanta@brindlework.com']\n");
    startShell(u"43.9"_s, {});
    start();
    ASSERT_TRUE(becomes(State::NeedsPermission));
    EXPECT_FALSE(QFile::exists(folder.path(u"extensions"_s)));
    EXPECT_EQ(watcher->allow(), std::nullopt);
    EXPECT_TRUE(becomes(State::NeedsLogin));
    EXPECT_EQ(folder.read(installed(u"extension.js"_s)), "42");
    EXPECT_TRUE(folder.read(installed(u"metadata.json"_s)).contains("\"43\""));
    EXPECT_EQ(folder.read(u"enabled-extensions"_s), "['another@x', 'orvanta@brindlework.com']\n");
    EXPECT_EQ(folder.read(u"disabled-extensions"_s), "@as []\n");

    // It says so at each start, until then; a shell of another form is given that.
    startShell(u"45.0"_s, {{u"state"_s, 4.0}});
    start();
    EXPECT_TRUE(becomes(State::NeedsLogin));
    EXPECT_EQ(folder.read(installed(u"extension.js"_s)), "45");

    // A shell that nobody has seen yet is tried, and it is said when it has loaded it in vain.
    startShell(u"99.1"_s, {{u"state"_s, 4.0}});
    start();
    EXPECT_TRUE(becomes(State::NeedsLogin));
    const QString metadata = QString::fromUtf8(folder.read(installed(u"metadata.json"_s)));
    EXPECT_TRUE(metadata.contains(u"\"99\""_s));
    const QString digest = QRegularExpression(u"[0-9a-f]{64}"_s).match(metadata).captured();
    startShell(u"99.1"_s, {{u"state"_s, 3.0}, {u"digest"_s, digest}});
    start();
    EXPECT_TRUE(becomes(State::Incompatible));
}

TEST_F(GnomeRoute, WhatCannotBeInstalledIsSaidAndLeavesNothingBehind) {
    startShell(u"43.9"_s, {});
    start();
    ASSERT_TRUE(becomes(State::NeedsPermission));
    const auto fails = [&](const QString& reason) {
        const auto problem = watcher->allow();
        EXPECT_TRUE(problem && problem->contains(reason)) << qPrintable(problem.value_or(u"-"_s));
        EXPECT_FALSE(QFile::exists(folder.path(installed({}))));
        EXPECT_EQ(folder.read(u"enabled-extensions"_s), "['another@x']\n");
    };
    folder.write(u"disable-user-extensions"_s, "true\n");
    fails(u"desativadas"_s);
    folder.write(u"locked"_s, {});
    fails(u"The key is not writable"_s);
    QFile::remove(folder.path(u"locked"_s));
    QFile::remove(folder.path(u"package/42/metadata.json"_s));
    fails(u"metadata.json: "_s);
    drain(session);
    EXPECT_EQ(watcher->state(), State::NeedsPermission);
    startShell(u"3.38.6"_s, {}); // A shell that has no use for it.
    start();
    EXPECT_TRUE(becomes(State::Unsupported));
}

} // namespace
