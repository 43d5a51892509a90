#include "Linux/Windows/KWinScriptWatcher.h"

#include "PrivateBus.h"
#include "Testing.h"
#include "WatcherContract.h"

using namespace orvanta;

namespace {

class KWinScriptRoute : public WatcherRoute {
protected:
    /// A KWin that gives its scripts this number.
    void startKWin(int script = 0) {
        kwin = std::make_unique<FakeService>(bus);
        kwin->on(u"unloadScript"_s, true);
        kwin->on(u"loadScript"_s, script);
        kwin->on(u"start"_s, [](const QDBusMessage&) { return QVariantList(); });
        kwin->own(u"org.kde.KWin"_s);
    }
    void start(const QString& place = u"runtime"_s) {
        watcher = std::make_unique<KWinScriptWatcher>(session, loop, folder.path(place));
    }
    bool isLoaded() {
        return eventually([&] {
            loop.advance(1);
            return kwin->calls(u"start"_s) == 1;
        });
    }
    void watch() {
        startKWin();
        start();
        ASSERT_TRUE(isLoaded());
        EXPECT_EQ(watcher->state(), State::Waiting);
        show(u"none"_s);
        ASSERT_EQ(watcher->state(), State::Watching);
    }
    void tell(const FakeService& who, const QStringList& words) const {
        tell(who, QVariantList(words.begin(), words.end()));
    }
    void tell(const FakeService& who, const QVariantList& words) const {
        ask(who.connection(),
            methodCall(session.baseService(), u"/com/brindlework/orvanta/Windows"_s,
                       u"com.brindlework.orvanta.Windows"_s, u"Activated"_s, words));
    }
    void show(const QString& name) const {
        const QString text = name == u"none"_s ? QString() : name;
        tell(*kwin, QStringList{text, text, text, text, u"4711"_s});
    }
    void end() { kwin.reset(); }

    const std::optional<qint64> process = 4711;
    TemporaryFolder folder;
    PrivateBus bus;
    QDBusConnection session = bus.connect();
    std::unique_ptr<FakeService> kwin;
};
INSTANTIATE_TYPED_TEST_SUITE_P(KWinScript, WatcherContract, KWinScriptRoute);

TEST_F(KWinScriptRoute, TheWindowIsWhatKWinTellsAndNobodyElse) {
    const QString script = u"runtime/windows.js"_s;
    watch();
    EXPECT_EQ(kwin->calls(u"unloadScript"_s), 1); // What a killed process left.
    EXPECT_TRUE(folder.read(script).contains(session.baseService().toUtf8()));
    tell(*kwin, QStringList{u"{a}"_s, u"class"_s, u"instance"_s, u"org.kde.dolphin"_s, u"4711"_s});
    const auto dolphin = watcher->activeWindow();
    ASSERT_TRUE(dolphin);
    EXPECT_EQ(*dolphin,
              (Window{dolphin->id, u"instance"_s, u"class"_s, {}, u"org.kde.dolphin"_s, 4711}));

    tell(FakeService(bus), QStringList{u"{b}"_s, u"evil"_s, u"evil"_s, u"evil"_s, u"1"_s});
    tell(*kwin, QVariantList());
    tell(*kwin, QStringList{u"{b}"_s, u"short"_s, u"short"_s});
    tell(*kwin, QVariantList{1, 2, 3, 4, 5});
    EXPECT_EQ(watcher->activeWindow(), dolphin);
    tell(*kwin, QStringList{u"{b}"_s, u"xterm"_s, u"xterm"_s, QString(), u"NaN"_s});
    ASSERT_EQ(active(), u"xterm"_s);
    EXPECT_EQ(watcher->activeWindow()->processIdentifier, std::nullopt);

    // Another KWin takes over, and is given the script as well.
    end();
    ASSERT_TRUE(becomes(State::Ended));
    startKWin();
    ASSERT_TRUE(isLoaded());
    show(u"a"_s);
    EXPECT_EQ(active(), u"a"_s);
    watcher.reset();
    EXPECT_TRUE(eventually([&] { return kwin->calls(u"unloadScript"_s) == 2; }));
    EXPECT_EQ(folder.read(script), QByteArray());
}

TEST_F(KWinScriptRoute, WhereTheScriptCannotBeLoadedOrWrittenItIsUnsupported) {
    startKWin(-1);
    start();
    EXPECT_TRUE(becomes(State::Unsupported));
    folder.write(u"blocked"_s, {});
    start(u"blocked"_s);
    EXPECT_TRUE(becomes(State::Unsupported));
    EXPECT_EQ(kwin->calls(u"loadScript"_s), 1);
    EXPECT_EQ(KWinScriptWatcher(session, loop, {}).state(), State::Unsupported);
}

} // namespace
