#include "Linux/BrowserBridge/BrowserBridge.h"

#include "BrowserHostEnd.h"
#include "Fakes/FakeWorkspace.h"
#include "Fakes/HandMainLoop.h"
#include "Fakes/QtPrinters.h"
#include "Linux/BrowserBridge/BrowserTransport.h"
#include "Linux/BrowserBridge/LinuxAutomationPermission.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <memory>
#include <vector>

namespace orvanta {

namespace {

using namespace Qt::StringLiterals;

class BrowserBridgeTest : public testing::Test {
protected:
    BrowserBridgeTest() { become(chromium); }

    /// Whoever connects from now on was started by this process.
    void become(qint64 browser) {
        const QString own = folder.filePath(u"proc/%1"_s.arg(::getpid()));
        QDir().mkpath(own);
        QFile::remove(own + u"/exe"_s);
        QFile::link(hostExecutable, own + u"/exe"_s);
        setStat("1 (a) b) S " + QByteArray::number(browser) + " 1 1");
    }
    void setStat(const QByteArray& content) {
        QFile file(folder.filePath(u"proc/%1/stat"_s.arg(::getpid())));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    void comeToTheFront(const QString& identifier, qint64 process) {
        workspace.front = RunningApplication{identifier, identifier, {}, process};
        center.post(Notification::DidActivateApplication);
    }
    void open() {
        bridge = std::make_unique<BrowserBridge>(
            BrowserBridge::Place{socket, hostExecutable, folder.filePath(u"proc"_s)},
            [this] { return loop.now(); }, [](qint64) { return true; });
        transport = std::make_unique<BrowserTransport>(
            *bridge,
            BrowserTransport::Surroundings{workspace, center, loop, [this] { return loop.now(); },
                                           [this] {
                                               return isOwnWindowOpen;
                                           }});
    }
    void ask(qint64 process = chromium) {
        const AppleEvent event{
            .eventClass = fourCharCode("core"),
            .eventID = fourCharCode("getd"),
            .target = EventDescriptor::processIdentifier(static_cast<int>(process)),
            .parameters = {{AppleEvent::directObject, EventDescriptor::record()}}};
        transport->send(event, 0, AppleEventTransport::Duration(2),
                        [this](const std::optional<AppleEvent>& reply) {
                            const auto* address =
                                reply ? reply->parameter(AppleEvent::directObject) : nullptr;
                            answers.append(!reply    ? u"failed"_s
                                           : address ? address->stringValue().value()
                                                     : u"none"_s);
                        });
        settle();
    }
    QStringList taken() { return std::exchange(answers, {}); }

    static constexpr qint64 chromium = 4242;
    static constexpr qint64 firefox = 77;
    QTemporaryDir folder;
    const QString socket = folder.filePath(u"runtime/browsers"_s);
    const QString hostExecutable = u"/opt/orvanta/orvanta-browser-host"_s;
    HandMainLoop loop;
    FakeWorkspace workspace;
    NotificationCenter center;
    bool isOwnWindowOpen = false;
    std::unique_ptr<BrowserBridge> bridge;
    std::unique_ptr<BrowserTransport> transport;
    QStringList answers;
};

TEST_F(BrowserBridgeTest, OnlyTheHostsOfThisPersonsBrowsersAreLetIn) {
    {
        open(); // What an earlier process left.
        ::link(qPrintable(socket), qPrintable(socket + u".left"_s));
    }
    bridge.reset();
    ASSERT_EQ(::rename(qPrintable(socket + u".left"_s), qPrintable(socket)), 0);
    const mode_t mask = ::umask(0);
    open();
    ::umask(mask);
    ASSERT_TRUE(bridge->isListening()) << qPrintable(bridge->problem());
    struct stat status {};
    ::stat(qPrintable(socket), &status);
    EXPECT_EQ(status.st_mode & 07777, 0600U);

    const QString own = folder.filePath(u"proc/%1/exe"_s.arg(::getpid()));
    const struct {
        QString executable;
        QByteArray stat;
        bool isIn;
    } rows[] = {
        {hostExecutable, "1 (orvanta) S 4242 1", true},
        {hostExecutable, "1 (a) S 7 (b)) S 4242 1", true},
        {hostExecutable + u" (deleted)"_s, "1 (orvanta) S 4242 1", true},
        {hostExecutable + u".old"_s, "1 (orvanta) S 4242 1", false},
        {u"/usr/bin/python3"_s, "1 (orvanta) S 4242 1", false},
        {QString(), "1 (orvanta) S 4242 1", false},
        {hostExecutable, "1 (orvanta) S 1 1", false},
        {hostExecutable, "garbage", false},
        {hostExecutable, "", false},
    };
    for (const auto& [executable, stat, isIn] : rows) {
        QFile::remove(own);
        if (!executable.isEmpty()) {
            QFile::link(executable, own);
        }
        setStat(stat);
        Host host(socket);
        EXPECT_EQ(host.isClosed(), !isIn) << qPrintable(executable) << stat.constData();
        EXPECT_EQ(bridge->connections(chromium).size(), isIn ? 1U : 0U);
    }
}

TEST_F(BrowserBridgeTest, APlaceThatIsTakenStaysAsItIs) {
    const auto problemAt = [this](const QString& path) {
        const BrowserBridge taken(
            {path, hostExecutable}, [] { return 0.0; }, [](qint64) { return true; });
        EXPECT_FALSE(taken.isListening());
        return taken.problem();
    };
    QFile file(folder.filePath(u"file"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_FALSE(problemAt(file.fileName()).isEmpty());
    EXPECT_FALSE(problemAt(folder.path()).isEmpty());
    EXPECT_FALSE(problemAt(file.fileName() + u"/browsers"_s).isEmpty());
    EXPECT_FALSE(problemAt(folder.filePath(QString(200, u'x'))).isEmpty());
    EXPECT_FALSE(problemAt(QString()).isEmpty());
    EXPECT_TRUE(QFile::exists(file.fileName()));
}

TEST_F(BrowserBridgeTest, ABrowserIsAskedOnlyWhenItsStateMayBeOld) {
    open();
    comeToTheFront(u"chromium"_s, chromium);
    ask();
    EXPECT_EQ(taken(), QStringList{u"failed"_s}) << "nobody is connected";

    Host host(socket);
    loop.advance(10.0);
    ask();
    EXPECT_EQ(host.questions(), 1);
    host.say("https://a.org", true, 1);
    EXPECT_EQ(taken(), QStringList{u"https://a.org"_s});
    for (int second = 0; second < 59; ++second) {
        loop.advance(1.0);
        ask();
    }
    EXPECT_EQ(taken().count(u"https://a.org"_s), 59);
    EXPECT_EQ(host.questions(), 0);
    loop.advance(1.0);
    ask(); // A sign of life.
    EXPECT_EQ(host.questions(), 1);
    host.say("https://b.org", true, 2);
    EXPECT_EQ(taken(), QStringList{u"https://b.org"_s});
    host.say("https://c.org", true);
    ask();
    EXPECT_EQ(taken(), QStringList{u"https://c.org"_s});
    host.say(nullptr, true); // On the way from site to site, or at a page of the browser's own.
    ask();
    host.say("https://b.org", true);
    EXPECT_EQ(taken(), QStringList{u"https://b.org"_s});
    host.say(nullptr, true);
    ask();
    loop.advance(0.4);
    EXPECT_TRUE(answers.isEmpty());
    loop.advance(0.1);
    EXPECT_EQ(taken(), QStringList{u"none"_s});

    comeToTheFront(u"xterm"_s, 1);
    loop.advance(1.0);
    host.say("https://d.org", false);
    loop.advance(1.0);
    comeToTheFront(u"chromium"_s, chromium);
    ask();
    EXPECT_EQ(host.questions(), 1);
    loop.advance(1.9);
    EXPECT_TRUE(answers.isEmpty());
    loop.advance(0.1);
    EXPECT_EQ(taken(), QStringList{u"failed"_s});
    ask(); // Frozen: asked anew, once a read.
    EXPECT_EQ(host.questions(), 1);
    host.say("https://d.org", true, 3); // Late, and as good.
    EXPECT_EQ(taken(), QStringList{u"https://d.org"_s});
    EXPECT_EQ(loop.armedCount(), 0U);
}

TEST_F(BrowserBridgeTest, TheWindowThatHadTheFocusLastAnswersForAllProfiles) {
    open();
    comeToTheFront(u"chromium"_s, chromium);
    Host first(socket);
    Host second(socket);
    become(firefox);
    Host other(socket);
    first.say("https://first.org", true);
    second.say("https://second.org", false);
    other.say("https://other.org", true);
    ask();
    ask(firefox);
    EXPECT_EQ(taken(), (QStringList{u"https://first.org"_s, u"https://other.org"_s}));

    loop.advance(5.0);
    first.say("https://first.org", false); // The other profile's window comes to the front.
    ask();
    EXPECT_TRUE(answers.isEmpty());
    loop.advance(0.3);
    second.say("https://second.org", true);
    EXPECT_EQ(taken(), QStringList{u"https://second.org"_s});

    const auto taking = [this] {
        ask();
        return taken();
    };
    loop.advance(5.0);
    isOwnWindowOpen = true;
    second.say("https://second.org", false);
    EXPECT_EQ(taking(), QStringList{u"https://second.org"_s});
    comeToTheFront(workspace.ownBundleIdentifier(), ::getpid());
    EXPECT_EQ(taking(), QStringList{u"https://second.org"_s});
    isOwnWindowOpen = false;
    second.say("https://second.org", true);

    loop.advance(5.0);
    second.say("https://second.org", false); // A private window.
    ask();
    loop.advance(0.4);
    EXPECT_TRUE(answers.isEmpty());
    loop.advance(0.1);
    EXPECT_EQ(taken(), QStringList{u"none"_s});
    EXPECT_EQ(taking(), QStringList{u"none"_s}) << "and from then on at once";
    isOwnWindowOpen = true;
    EXPECT_EQ(taking(), QStringList{u"none"_s}) << "also behind a window of ours";
    EXPECT_EQ(first.questions() + second.questions() + other.questions(), 0);

    isOwnWindowOpen = false;
    comeToTheFront(u"chromium"_s, chromium);
    loop.advance(1.0);
    comeToTheFront(u"chromium"_s, chromium);
    ask();
    EXPECT_EQ(first.questions() + second.questions(), 2);
    first.say("https://first.org", false, 1);
    second.say("https://late.org", true); // One with the focus is enough.
    EXPECT_EQ(taken(), QStringList{u"https://late.org"_s});
}

TEST_F(BrowserBridgeTest, BadBytesEndTheirConnectionAndNoOther) {
    open();
    comeToTheFront(u"chromium"_s, chromium);
    Host good(socket);
    good.say("https://a.org", true);
    const QByteArray message = "{\"v\":1,\"origin\":null,\"focused\":true}";
    const QByteArray rows[] = {
        QByteArray(4, '\0'),
        QByteArray(4, '\xff'),
        "\3\0\0\0{\xff}"_ba,
        "\2\0\0\0{}"_ba,
        "\7\0\0\0{\"v\":2}"_ba,
        [&message] {
            const FrameHeader header = frameHeader(static_cast<std::size_t>(message.size()));
            return (QByteArray(header.data(), header.size()) + message).repeated(200);
        }(),
    };
    for (const QByteArray& bytes : rows) {
        Host bad(socket);
        loop.advance(1.0);
        bad.send(bytes);
        EXPECT_TRUE(bad.isClosed()) << bytes.left(20).toHex().constData();
        EXPECT_FALSE(bridge->problem().isEmpty());
        EXPECT_EQ(bridge->connections(chromium).size(), 1U);
    }
    ask();
    EXPECT_EQ(taken(), QStringList{u"https://a.org"_s});

    become(firefox);
    {
        Host leaving(socket);
        ask(firefox);
        leaving.send("\x9\0\0"_ba); // In the middle of a frame.
    }
    settle();
    EXPECT_EQ(taken(), QStringList{u"failed"_s});
    {
        std::vector<std::unique_ptr<Host>> crowd;
        for (int i = 0; i < 70; ++i) {
            crowd.push_back(std::make_unique<Host>(socket));
        }
        EXPECT_EQ(bridge->connections(firefox).size(), 63U);
    }
    settle();
    EXPECT_EQ(bridge->browserProcesses(), std::vector{chromium});
}

TEST_F(BrowserBridgeTest, ADecisionIsKeptAndAllowsOnceTheBrowserHasBeenConnected) {
    open();
    std::map<QString, QStringList> lists;
    QStringList asked;
    const auto make = [&] {
        return std::make_unique<LinuxAutomationPermission>(
            *bridge,
            LinuxAutomationPermission::Surroundings{
                [&lists](const QString& key) { return lists[key]; },
                [&lists](const QString& key, const QStringList& list) { lists[key] = list; },
                [&asked](const QString& identifier) { asked.append(identifier); },
                [](qint64 process) {
                    return process == chromium  ? u"chromium"_s
                           : process == firefox ? u"firefox-esr"_s
                                                : QString();
                }});
    };
    auto permission = make();
    const auto determine = [&permission](qint64 process, bool askUser) {
        return permission->determine(EventDescriptor::processIdentifier(static_cast<int>(process)),
                                     fourCharCode("core"), fourCharCode("getd"), askUser);
    };
    EXPECT_EQ(determine(chromium, false), AutomationPermission::undecided);
    EXPECT_TRUE(asked.isEmpty());
    EXPECT_EQ(determine(chromium, true), AutomationPermission::undecided);
    EXPECT_EQ(asked, QStringList{u"chromium"_s});

    permission->agree(u"chromium"_s);
    EXPECT_EQ(determine(chromium, true), AutomationPermission::undecided);
    EXPECT_EQ(asked.size(), 2) << "agreed, and not connected yet: something is left to do";
    permission = make();
    {
        const Host host(socket);
        EXPECT_TRUE(permission->isConnected(u"chromium"_s));
        EXPECT_EQ(determine(chromium, false), AutomationPermission::permitted);
    }
    settle();
    permission = make();
    EXPECT_EQ(determine(chromium, false), AutomationPermission::permitted);
    permission->refuse(u"chromium"_s);
    EXPECT_EQ(determine(chromium, true), AutomationPermission::refused);
    EXPECT_EQ(asked.size(), 2);

    become(firefox);
    const Host host(socket);
    EXPECT_EQ(determine(firefox, false), AutomationPermission::undecided)
        << "a connection alone allows nothing";
    permission->agree(u"firefox-esr"_s);
    permission->agree(u"chromium"_s);
    EXPECT_EQ(determine(firefox, false), AutomationPermission::permitted);
    EXPECT_EQ(lists, (std::map<QString, QStringList>{{u"agreed"_s, {u"chromium"_s}},
                                                     {u"allowed"_s, {u"firefox-esr"_s}},
                                                     {u"refused"_s, {}}}));
}

} // namespace

} // namespace orvanta
