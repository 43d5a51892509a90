#include "Linux/BrowserBridge/BrowserBridge.h"

#include "BrowserHostEnd.h"
#include "Linux/BrowserBridge/BrowserTransport.h"
#include "Story.h"
#include "Testing.h"

#include <sys/stat.h>

namespace orvanta {

namespace {

/// In a story a host's name says what its browser tells: its site, then + or - for the focus, then
/// the question that it answers. What is asked for a browser's site is noted when it is answered.
class BrowserBridgeTest : public Story {
protected:
    BrowserBridgeTest() {
        become(chromium);
        on(u"front"_s, [this](int process) {
            const bool isOwn = process == 0;
            const QString identifier =
                isOwn ? workspace.ownBundleIdentifier() : QString::number(process);
            workspace.front =
                RunningApplication{identifier, identifier, {}, isOwn ? ::getpid() : process};
            center.post(Notification::DidActivateApplication);
        });
        on(u"ask"_s, [this](int process) {
            readSite(*transport, process, [this](const QString& site) { noted += site; });
        });
        on(u"own"_s, [this](int isOpen) { isOwnWindowOpen = isOpen != 0; });
        on(u"questions"_s, [this](int expected) {
            int questions = 0;
            for (const auto& host : hosts) {
                questions += static_cast<int>(host->heard().count("\"ask\""));
            }
            EXPECT_EQ(questions, expected);
        });
    }

    /// Whoever connects from now on was started by this process.
    void become(qint64 browser) {
        isHost(hostExecutable, "1 (a) b) S " + QByteArray::number(browser) + " 1 1");
    }
    void isHost(const QString& executable, const QByteArray& stat) const {
        const QString own = u"proc/%1/"_s.arg(::getpid());
        folder.link(executable, own + u"exe"_s);
        folder.write(own + u"stat"_s, stat);
    }
    void connect(const QString& name) {
        auto* host = hosts.emplace_back(std::make_unique<Host>(socket)).get();
        on<QString>(name, [host](const QString& said) {
            const qsizetype focus = said.indexOf(QRegularExpression(u"[+-]"_s));
            host->say(focus > 0 ? said.first(focus).toUtf8() : QByteArray(), said[focus] == u'+',
                      said.sliced(focus + 1).toInt());
        });
    }
    void open() {
        bridge = std::make_unique<BrowserBridge>(
            BrowserBridge::Place{socket, hostExecutable, folder.path(u"proc"_s)}, now,
            [](qint64) { return true; });
        transport = std::make_unique<BrowserTransport>(
            *bridge, BrowserTransport::Surroundings{workspace, center, loop, now, [this] {
                                                        return isOwnWindowOpen;
                                                    }});
    }
    void settle() override { orvanta::settle(); }

    static constexpr int chromium = 4242;
    static constexpr int firefox = 77;
    TemporaryFolder folder;
    const QString socket = folder.path(u"runtime/browsers"_s);
    const QString hostExecutable = u"/opt/orvanta/orvanta-browser-host"_s;
    FakeWorkspace workspace;
    NotificationCenter center;
    const std::function<double()> now = [this] {
        return loop.now();
    };
    bool isOwnWindowOpen = false;
    std::unique_ptr<BrowserBridge> bridge;
    std::unique_ptr<BrowserTransport> transport;
    std::vector<std::unique_ptr<Host>> hosts;
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

    const QString old = hostExecutable + u".old"_s;
    const QString deleted = hostExecutable + u" (deleted)"_s;
    const struct {
        QString executable;
        QByteArray stat;
        bool isIn;
    } rows[] = {{hostExecutable, "1 (orvanta) S 4242 1", true},
                {hostExecutable, "1 (a) S 7 (b)) S 4242 1", true},
                {deleted, "1 (orvanta) S 4242 1", true},
                {old, "1 (orvanta) S 4242 1", false},
                {u"/usr/bin/python3"_s, "1 (orvanta) S 4242 1", false},
                {u"/"_s, "1 (orvanta) S 4242 1", false},
                {hostExecutable, "1 (orvanta) S 1 1", false},
                {hostExecutable, "garbage", false},
                {hostExecutable, "", false}};
    for (const auto& [executable, stat, isIn] : rows) {
        isHost(executable, stat);
        Host host(socket);
        EXPECT_EQ(host.isClosed(), !isIn) << qPrintable(executable) << stat.constData();
        EXPECT_EQ(bridge->connections(chromium).size(), isIn ? 1U : 0U);
    }
    QFile::remove(folder.path(u"proc/%1/exe"_s.arg(::getpid())));
    EXPECT_TRUE(Host(socket).isClosed());
}

TEST_F(BrowserBridgeTest, APlaceThatIsTakenStaysAsItIs) {
    folder.write(u"file"_s, "theirs");
    for (const QString& path :
         {folder.path(u"file"_s), folder.path(), folder.path(u"file/browsers"_s),
          folder.path(QString(200, u'x')), QString()}) {
        const BrowserBridge taken(
            {path, hostExecutable}, [] { return 0.0; }, [](qint64) { return true; });
        EXPECT_FALSE(taken.isListening());
        EXPECT_FALSE(taken.problem().isEmpty()) << qPrintable(path);
    }
    EXPECT_EQ(folder.read(u"file"_s), "theirs");
}

TEST_F(BrowserBridgeTest, ABrowserIsAskedOnlyWhenItsStateMayBeOld) {
    open();
    play(u"front=4242 ask=4242 [failed]"_s); // Nobody is connected.
    connect(u"host"_s);
    play(u"10s ask=4242 questions=1 host=https://a.org+1 [a.org]"_s);
    for (int second = 0; second < 59; ++second) {
        play(u"1s ask=4242 [a.org]"_s);
    }
    // A sign of life, then no site: on the way to another, or at a page of the browser's own.
    play(u"questions=0 1s ask=4242 questions=1 host=https://b.org+2 [b.org] "
         "host=https://c.org+ ask=4242 [c.org] host=+ ask=4242 host=https://b.org+ [b.org] "
         "host=+ ask=4242 0.4s [] 0.1s [none]"_s);
    // Frozen: asked anew, once a read. A late answer is as good.
    play(u"front=1 1s host=https://d.org- 1s front=4242 ask=4242 questions=1 1.9s [] 0.1s [failed] "
         "ask=4242 questions=1 host=https://d.org+3 [d.org]"_s);
    EXPECT_EQ(loop.armedCount(), 0U);
}

TEST_F(BrowserBridgeTest, TheWindowThatHadTheFocusLastAnswersForAllProfiles) {
    open();
    connect(u"first"_s);
    connect(u"second"_s);
    become(firefox);
    connect(u"other"_s);
    play(u"front=4242 first=https://first.org+ second=https://second.org- other=https://other.org+ "
         "ask=4242 ask=77 [first.org other.org]"_s);
    // The other profile's window comes to the front.
    play(u"5s first=https://first.org- ask=4242 [] 0.3s second=https://second.org+ [second.org]"_s);
    // A window of ours, then a private one; from then on at once, also behind a window of ours.
    play(u"5s own=1 second=https://second.org- ask=4242 [second.org] front=0 ask=4242 [second.org] "
         "own=0 second=https://second.org+ 5s second=https://second.org- ask=4242 0.4s [] 0.1s "
         "[none] "
         "ask=4242 [none] own=1 ask=4242 [none] questions=0"_s);
    // One with the focus is enough.
    play(u"own=0 front=4242 1s front=4242 ask=4242 questions=2 first=https://first.org-1 [] "
         "second=https://late.org+ [late.org]"_s);
    // It is not always told that another profile's window took it, and so is asked before it
    // counts.
    play(u"5s first=https://first.org+ first=https://first.org- ask=4242 questions=1 [] "
         "second=https://late.org-2 0.5s [none]"_s);
}

TEST_F(BrowserBridgeTest, BadBytesEndTheirConnectionAndNoOther) {
    open();
    connect(u"good"_s);
    play(u"front=4242 good=https://a.org+"_s);
    const QByteArray message = "{\"v\":1,\"origin\":null,\"focused\":true}";
    const FrameHeader header = frameHeader(std::size_t(message.size()));
    const QByteArray flood = (QByteArray(header.data(), header.size()) + message).repeated(200);
    for (const QByteArray& bytes :
         {QByteArray(4, '\0'), QByteArray(4, '\xff'), "\2\0\0\0{}"_ba, flood}) {
        Host bad(socket);
        loop.advance(1.0);
        bad.send(bytes);
        EXPECT_TRUE(bad.isClosed()) << bytes.left(20).toHex().constData();
        EXPECT_FALSE(bridge->problem().isEmpty());
        EXPECT_EQ(bridge->connections(chromium).size(), 1U);
    }
    play(u"ask=4242 [a.org]"_s);

    become(firefox);
    {
        Host leaving(socket);
        play(u"ask=77"_s);
        leaving.send("\x9\0\0"_ba); // In the middle of a frame.
    }
    play(u"[failed]"_s);
    {
        std::vector<std::unique_ptr<Host>> crowd;
        for (int i = 0; i < 70; ++i) {
            crowd.push_back(std::make_unique<Host>(socket));
        }
        EXPECT_EQ(bridge->connections(firefox).size(), 63U);
    }
    settle();
    EXPECT_EQ(bridge->browserProcesses(), std::vector<qint64>{chromium});
}

} // namespace

} // namespace orvanta
