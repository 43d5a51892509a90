#include "Linux/Windows/GnomeWindowWatcher.h"

#include "Fakes/HandMainLoop.h"
#include "Fakes/QtPrinters.h"
#include "PrivateBus.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <regex>

using namespace orvanta;
using testing::HasSubstr;
using State = WindowWatcher::State;

namespace {

const QString shellName = u"org.gnome.Shell"_s;
const QString path = u"/com/brindlework/orvanta/Shell"_s;
const QString interface = u"com.brindlework.orvanta.Shell"_s;

QVariantList focus(qulonglong window, const QString& application, const QString& wmClass,
                   int process) {
    return {window, application, wmClass, process};
}

class GnomeWindowWatcherTest : public testing::Test {
protected:
    void SetUp() override {
        for (const auto* const form : {"42", "45"}) {
            write(u"package/%1/extension.js"_s.arg(QLatin1String(form)), form);
            write(u"package/%1/metadata.json"_s.arg(QLatin1String(form)), "{}");
        }
        // The settings of a desktop in a folder, a file a key.
        write(u"gsettings"_s, "#!/bin/sh\n"
                              "cd \"${0%/*}\" || exit\n"
                              "[ ! -e locked ] || { echo 'The key is not writable' >&2; exit 1; }\n"
                              "if [ $1 = get ]; then cat $3; else echo \"$4\" >$3; fi\n");
        QFile::setPermissions(at(u"gsettings"_s), QFile::ReadOwner | QFile::ExeOwner);
        write(u"disable-user-extensions"_s, "false\n");
        write(u"enabled-extensions"_s, "['another@x']\n");
        write(u"disabled-extensions"_s, "@as []\n");
    }

    QString at(const QString& name) const { return folder.filePath(name); }
    void write(const QString& name, const QByteArray& content) const {
        QDir().mkpath(QFileInfo(at(name)).path());
        QFile file(at(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    std::string read(const QString& name) const {
        QFile file(at(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "(none)";
    }
    static QString installed(const QString& name) {
        return u"extensions/orvanta@brindlework.com/"_s + name;
    }

    /// The shell, with the extension in this state; in none, it does not know it.
    std::unique_ptr<FakeService> startShell(const QString& version, std::optional<double> state,
                                            const QString& digest = {}) {
        auto shell = std::make_unique<FakeService>(bus);
        shell->on(u"Get"_s, QVariant::fromValue(QDBusVariant(version)));
        QVariantMap information;
        if (state) {
            information = {{u"state"_s, *state}, {u"digest"_s, digest}};
        }
        shell->on(u"GetExtensionInfo"_s, information);
        shell->own(shellName);
        return shell;
    }
    std::unique_ptr<FakeService> startTellingShell() {
        auto shell = std::make_unique<FakeService>(bus);
        shell->on(u"Get"_s, QVariant::fromValue(QDBusVariant(u"43.9"_s)));
        shell->on(u"GetFocus"_s,
                  [](const QDBusMessage&) { return focus(1, u"foot"_s, u"foot"_s, 4711); });
        shell->own(shellName);
        return shell;
    }
    void start() {
        watcher = std::make_unique<GnomeWindowWatcher>(
            session, loop,
            GnomeExtension({.packageFolder = at(u"package"_s),
                            .extensionsFolder = at(u"extensions"_s),
                            .settingsProgram = at(u"gsettings"_s)}));
    }
    bool becomes(State state) const {
        return eventually([&] { return watcher->state() == state; });
    }
    bool shows(const QString& wmClass) const {
        return eventually(
            [&] { return watcher->activeWindow() && watcher->activeWindow()->wmClass == wmClass; });
    }

    QTemporaryDir folder;
    PrivateBus bus;
    QDBusConnection session = bus.connect();
    HandMainLoop loop;
    std::unique_ptr<GnomeWindowWatcher> watcher;
};

TEST_F(GnomeWindowWatcherTest, TheFocusIsWhatTheShellTellsAndNobodyElse) {
    auto shell = startTellingShell();
    start();
    ASSERT_TRUE(becomes(State::Watching));
    Window foot;
    foot.id = 1;
    foot.wmClass = u"foot"_s;
    foot.desktopFile = u"foot"_s;
    foot.processIdentifier = 4711;
    EXPECT_EQ(watcher->activeWindow(), foot);

    const auto tell = [&](const FakeService& who, const QVariantList& what) {
        who.say(path, interface, u"FocusChanged"_s, what);
        drain(who.connection());
        drain(session);
    };
    const FakeService stranger(bus);
    tell(stranger, focus(9, {}, u"stranger"_s, 9));
    tell(*shell, {});
    tell(*shell, {1, u"a"_s, u"a"_s, 1}); // A number of another type.
    tell(*shell, {qulonglong{2}, u"a"_s, u"a"_s});
    EXPECT_EQ(watcher->activeWindow(), foot);
    tell(*shell, focus(0, {}, {}, 0));
    EXPECT_EQ(watcher->activeWindow(), std::nullopt);
    EXPECT_EQ(watcher->state(), State::Watching);
    tell(*shell, focus(3, {}, u"mousepad"_s, 0));
    ASSERT_TRUE(watcher->activeWindow());
    EXPECT_EQ(watcher->activeWindow()->processIdentifier, std::nullopt);

    // Another shell takes over.
    shell.reset();
    ASSERT_TRUE(becomes(State::Ended));
    EXPECT_EQ(watcher->activeWindow(), std::nullopt);
    shell = startTellingShell();
    EXPECT_TRUE(eventually([&] {
        loop.advance(1);
        return watcher->state() == State::Watching;
    }));
    EXPECT_EQ(watcher->activeWindow(), foot);
}

TEST_F(GnomeWindowWatcherTest, AnExtensionThatIsTakenAwayForAMomentIsStillBelieved) {
    const auto shell = startTellingShell();
    start();
    ASSERT_TRUE(becomes(State::Watching));
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
    EXPECT_EQ(watcher->activeWindow(), std::nullopt);
    shell->say(path, interface, u"FocusChanged"_s, focus(2, {}, u"xterm"_s, 1));
    EXPECT_TRUE(shows(u"xterm"_s));
}

TEST_F(GnomeWindowWatcherTest, ItIsInstalledOnceThePersonAgreesAndTellsFromTheNextLoginOn) {
    write(u"disabled-extensions"_s, "['orvanta@brindlework.com']\n");
    auto shell = startShell(u"43.9"_s, std::nullopt);
    start();
    ASSERT_TRUE(becomes(State::NeedsPermission));
    EXPECT_FALSE(QFile::exists(at(u"extensions"_s)));
    EXPECT_EQ(watcher->allow(), std::nullopt);
    EXPECT_TRUE(becomes(State::NeedsLogin));
    EXPECT_EQ(read(installed(u"extension.js"_s)), "42");
    EXPECT_THAT(read(installed(u"metadata.json"_s)), HasSubstr("\"43\""));
    EXPECT_EQ(read(u"enabled-extensions"_s), "['another@x', 'orvanta@brindlework.com']\n");
    EXPECT_EQ(read(u"disabled-extensions"_s), "@as []\n");

    // It says so at each start, until then; a shell of another form is given that.
    shell.reset();
    shell = startShell(u"45.0"_s, 4.0);
    start();
    EXPECT_TRUE(becomes(State::NeedsLogin));
    EXPECT_EQ(read(installed(u"extension.js"_s)), "45");
    EXPECT_EQ(watcher->allow(), std::nullopt); // Nothing to agree to.

    // A shell that nobody has seen yet is tried, and it is said when it has loaded it in vain.
    shell.reset();
    shell = startShell(u"99.1"_s, 4.0);
    start();
    EXPECT_TRUE(becomes(State::NeedsLogin));
    const std::string metadata = read(installed(u"metadata.json"_s));
    EXPECT_THAT(metadata, HasSubstr("\"99\""));
    std::smatch digest;
    ASSERT_TRUE(std::regex_search(metadata, digest, std::regex("[0-9a-f]{64}")));
    for (const double state : {1.0, 3.0, 4.0}) {
        shell.reset();
        shell = startShell(u"99.1"_s, state, QString::fromStdString(digest.str()));
        start();
        EXPECT_TRUE(becomes(State::Incompatible)) << state;
    }
    shell.reset();
    shell = startTellingShell();
    start();
    EXPECT_TRUE(shows(u"foot"_s));
}

TEST_F(GnomeWindowWatcherTest, WhatCannotBeInstalledIsSaidAndLeavesNothingBehind) {
    const auto shell = startShell(u"43.9"_s, std::nullopt);
    start();
    ASSERT_TRUE(becomes(State::NeedsPermission));
    const auto fails = [&](const QString& reason) {
        const auto problem = watcher->allow();
        EXPECT_TRUE(problem && problem->contains(reason)) << qPrintable(problem.value_or(u"-"_s));
        EXPECT_FALSE(QFile::exists(at(installed({}))));
        EXPECT_EQ(read(u"enabled-extensions"_s), "['another@x']\n");
    };
    write(u"disable-user-extensions"_s, "true\n");
    fails(u"desativadas"_s);
    write(u"locked"_s, {});
    fails(u"The key is not writable"_s);
    QFile::remove(at(u"locked"_s));
    QFile::remove(at(u"package/42/metadata.json"_s));
    fails(u"metadata.json: "_s);
    drain(session);
    EXPECT_EQ(watcher->state(), State::NeedsPermission);
}

TEST_F(GnomeWindowWatcherTest, AShellThatHasNoUseForItIsLeftAlone) {
    const auto shell = startShell(u"3.38.6"_s, std::nullopt);
    start();
    EXPECT_TRUE(becomes(State::Unsupported));
}

} // namespace
