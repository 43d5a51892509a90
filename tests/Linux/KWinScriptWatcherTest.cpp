#include "Linux/Windows/KWinScriptWatcher.h"

#include "Fakes/HandMainLoop.h"
#include "Fakes/QtPrinters.h"
#include "PrivateBus.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

using namespace orvanta;
using State = WindowWatcher::State;

namespace {

class KWinScriptWatcherTest : public testing::Test {
protected:
    /// Which gives its scripts this number.
    std::unique_ptr<FakeService> startKWin(int script) {
        auto kwin = std::make_unique<FakeService>(bus);
        kwin->on(u"unloadScript"_s, true);
        kwin->on(u"loadScript"_s, script);
        kwin->on(u"start"_s, [](const QDBusMessage&) { return QVariantList(); });
        kwin->own(u"org.kde.KWin"_s);
        return kwin;
    }
    void start() {
        watcher = std::make_unique<KWinScriptWatcher>(session, loop, folder.filePath(u"runtime"_s));
    }
    bool becomes(State state) const {
        return eventually([&] { return watcher->state() == state; });
    }
    void tell(const FakeService& who, const QVariantList& words) const {
        ask(who.connection(),
            methodCall(session.baseService(), u"/com/brindlework/orvanta/Windows"_s,
                       u"com.brindlework.orvanta.Windows"_s, u"Activated"_s, words));
    }
    std::string script() const {
        QFile file(folder.filePath(u"runtime/windows.js"_s));
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "none";
    }

    QTemporaryDir folder;
    PrivateBus bus;
    QDBusConnection session = bus.connect();
    HandMainLoop loop;
    std::unique_ptr<KWinScriptWatcher> watcher;
};

TEST_F(KWinScriptWatcherTest, TheWindowIsWhatKWinTellsAndNobodyElse) {
    auto kwin = startKWin(0);
    start();
    ASSERT_TRUE(eventually([&] { return kwin->calls(u"start"_s) == 1; }));
    EXPECT_EQ(kwin->calls(u"unloadScript"_s), 1); // What a killed process left.
    EXPECT_THAT(script(), testing::HasSubstr(session.baseService().toStdString()));
    EXPECT_EQ(watcher->state(), State::Waiting);

    tell(*kwin, {u"{a}"_s, u"dolphin"_s, u"dolphin"_s, u"org.kde.dolphin"_s, u"4711"_s});
    ASSERT_EQ(watcher->state(), State::Watching);
    const auto dolphin = watcher->activeWindow();
    ASSERT_TRUE(dolphin);
    EXPECT_EQ(dolphin->desktopFile, u"org.kde.dolphin"_s);
    EXPECT_EQ(dolphin->processIdentifier, 4711);

    tell(FakeService(bus), {u"{b}"_s, u"evil"_s, u"evil"_s, u"evil"_s, u"1"_s});
    tell(*kwin, {});
    tell(*kwin, {u"{b}"_s, u"short"_s, u"short"_s});
    tell(*kwin, {1, 2, 3, 4, 5});
    EXPECT_EQ(watcher->activeWindow(), dolphin);
    tell(*kwin, {u"{b}"_s, u"xterm"_s, u"xterm"_s, QString(), u"NaN"_s});
    ASSERT_TRUE(watcher->activeWindow());
    EXPECT_NE(watcher->activeWindow()->id, dolphin->id);
    EXPECT_EQ(watcher->activeWindow()->processIdentifier, std::nullopt);
    tell(*kwin, {QString(), QString(), QString(), QString(), QString()});
    EXPECT_EQ(watcher->activeWindow(), std::nullopt);

    // Another KWin takes over, and is given the script as well.
    kwin.reset();
    ASSERT_TRUE(becomes(State::Ended));
    kwin = startKWin(0);
    ASSERT_TRUE(eventually([&] {
        loop.advance(1);
        return kwin->calls(u"start"_s) == 1;
    }));
    tell(*kwin, {u"{a}"_s, u"dolphin"_s, u"dolphin"_s, u"org.kde.dolphin"_s, u"4711"_s});
    EXPECT_EQ(watcher->activeWindow(), dolphin);

    watcher.reset();
    EXPECT_TRUE(eventually([&] { return kwin->calls(u"unloadScript"_s) == 2; }));
    EXPECT_EQ(script(), "none");
}

TEST_F(KWinScriptWatcherTest, WhereTheScriptCannotBeLoadedOrWrittenItIsUnsupported) {
    const auto kwin = startKWin(-1);
    start();
    EXPECT_TRUE(becomes(State::Unsupported));
    QFile(folder.filePath(u"blocked"_s)).open(QIODevice::WriteOnly);
    watcher = std::make_unique<KWinScriptWatcher>(session, loop, folder.filePath(u"blocked"_s));
    EXPECT_TRUE(becomes(State::Unsupported));
    EXPECT_EQ(kwin->calls(u"loadScript"_s), 1);
    EXPECT_EQ(KWinScriptWatcher(session, loop, {}).state(), State::Unsupported);
}

} // namespace
