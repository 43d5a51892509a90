#include "Fakes/World.h"

using namespace orvanta;

namespace {

const auto unreachable = QStringLiteral("Não foi possível consultar o navegador");
const auto enableSites = QStringLiteral("Ative a identificação de sites nos Ajustes");

struct TrackerSitesTest : testing::Test {
    World world;
    Tracker& tracker = world.begin();

    TrackerSitesTest() { world.browsers.known = {QStringLiteral("browser")}; }
    void answer(const char* site) { world.browsers.answer(QString::fromLatin1(site)); }
    std::size_t asked() const { return world.browsers.reads.size(); }
    std::optional<QString> active() const { return tracker.activeKey(); }
};

} // namespace

TEST_F(TrackerSitesTest, BooksTheSiteFromTheFirstAnswerOn) {
    world.front("editor");
    world.pass(5);
    world.front("browser");
    EXPECT_EQ(world.seconds("app:editor"), 5);
    EXPECT_FALSE(active());
    world.pass(0.5); // Nobody's: the site is not known yet.
    ASSERT_EQ(asked(), 1U);
    answer("youtube.com");
    EXPECT_EQ(active(), QStringLiteral("site:youtube.com"));
    EXPECT_EQ(world.activity("site:youtube.com").category(), Category::consumption);
    EXPECT_EQ(world.activity("site:youtube.com").name(), QStringLiteral("youtube.com"));
    EXPECT_FALSE(world.context().hasChanges());

    world.pass(3); // Ticks at 1, 2 and 3 s; the first asked and nothing came back yet.
    EXPECT_EQ(asked(), 1U);
    EXPECT_EQ(world.seconds("site:youtube.com"), 2.5);
    answer("b.org");
    EXPECT_EQ(world.seconds("site:youtube.com"), 3);
    world.pass(2);
    world.front("editor");
    EXPECT_EQ(world.seconds("site:b.org"), 2);
    EXPECT_EQ(world.seconds("app:browser"), 0);
    world.checkInvariants();
}

TEST_F(TrackerSitesTest, DropsAnswersThatComeTooLate) {
    const auto answersAre = [&](const char* site, const char* why) {
        ASSERT_EQ(asked(), 1U) << why;
        const quint64 revision = tracker.revision();
        answer(site);
        EXPECT_EQ(tracker.revision(), revision) << why;
        EXPECT_EQ(world.find("site:late.org"), nullptr) << why;
        EXPECT_TRUE(tracker.browserStatus().isEmpty()) << why;
    };
    world.front("browser");
    world.front("editor");
    answersAre("late.org", "another application is in front");

    world.front("browser");
    world.front("editor");
    world.front("browser"); // It may ask again only once the old answer is back.
    answersAre("late.org", "the browser went and came back");
    world.pass(1);
    tracker.togglePause();
    answersAre("late.org", "paused");
    tracker.togglePause();
    ASSERT_EQ(asked(), 1U);
    world.distributedCenter.post(Notification::ScreenIsLocked);
    answersAre("late.org", "locked");
    world.distributedCenter.post(Notification::ScreenIsUnlocked);
    world.workspace.front.reset(); // Nobody has told the tracker yet.
    answersAre("late.org", "nothing is in front");

    world.front("browser");
    world.pass(1);
    ASSERT_EQ(asked(), 1U);
    world.tracker.reset();
    answer("late.org"); // Nobody is there to take it.
    EXPECT_EQ(world.find("site:late.org"), nullptr);
}

TEST_F(TrackerSitesTest, BacksOffFromABrowserThatFails) {
    world.front("browser");
    answer("a.org");
    world.pass(1);
    std::vector<double> waits;
    for (int failure = 0; failure < 7; ++failure) {
        ASSERT_EQ(asked(), 1U);
        world.browsers.fail(unreachable);
        EXPECT_EQ(tracker.browserStatus(), unreachable);
        EXPECT_FALSE(active()); // The site it showed last is not known to be there any more.
        const double failed = world.loop.now();
        while (asked() == 0 && world.loop.now() < failed + 60) {
            world.pass(1);
        }
        waits.push_back(world.loop.now() - failed);
    }
    EXPECT_EQ(waits, (std::vector<double>{2, 4, 8, 16, 30, 30, 30}));
    EXPECT_EQ(world.seconds("site:a.org"), 1);

    answer("a.org");
    EXPECT_TRUE(tracker.browserStatus().isEmpty());
    world.pass(1);
    world.browsers.fail(unreachable);
    world.pass(2);
    EXPECT_EQ(asked(), 1U); // Two seconds again.

    world.browsers.fail(unreachable);
    world.front("editor");
    EXPECT_TRUE(tracker.browserStatus().isEmpty());
    world.front("browser");
    EXPECT_EQ(asked(), 1U); // At once: another application was in front.
}

TEST_F(TrackerSitesTest, AnIgnoredSiteIsNoFailureAndIsNotTimed) {
    world.front("browser");
    answer("a.org");
    world.pass(2);
    world.activity("site:a.org").setCategory(Category::ignored);
    answer("a.org");
    EXPECT_FALSE(active());
    EXPECT_TRUE(tracker.browserStatus().isEmpty());
    world.pass(1);
    EXPECT_EQ(asked(), 1U); // Without waiting: the tick goes on while the browser is in front.
    answer("b.org");
    world.pass(1);
    EXPECT_EQ(world.seconds("site:a.org"), 2);
    EXPECT_EQ(world.seconds("site:b.org"), 1);
}

TEST_F(TrackerSitesTest, ABrowserThatIsSwitchedOffIsNotTimedAtAll) {
    world.front("browser");
    answer("a.org");
    world.pass(2.5);
    answer("a.org");
    tracker.setSitesEnabled(QStringLiteral("browser"), false);
    EXPECT_EQ(tracker.browserStatus(), enableSites);
    EXPECT_EQ(world.seconds("site:a.org"), 2.5);
    world.pass(10);
    EXPECT_EQ(world.seconds("site:a.org"), 2.5);
    EXPECT_EQ(world.seconds("app:browser"), 0);
    EXPECT_EQ(world.loop.armedCount(), 0U);

    // Switched off and ignored as an application, it is like any ignored application.
    world.context().activities().append(QStringLiteral("app:browser"), QStringLiteral("B"),
                                        Category::ignored, 0);
    tracker.refreshFocus();
    EXPECT_TRUE(tracker.browserStatus().isEmpty());
    EXPECT_EQ(asked(), 0U);

    tracker.setSitesEnabled(QStringLiteral("browser"), true);
    EXPECT_EQ(asked(), 1U);
    answer("a.org"); // As an application it may be ignored: its sites are judged.
    EXPECT_EQ(active(), QStringLiteral("site:a.org"));
}

TEST_F(TrackerSitesTest, OpeningThePanelAsksAtOnce) {
    world.front("browser");
    answer("a.org");
    world.pass(0.25);
    tracker.setInspecting(true);
    EXPECT_EQ(asked(), 1U);
    world.front("com.brindlework.orvanta"); // The panel has the focus; the browser is behind it.
    answer("b.org");
    world.pass(2.75);
    EXPECT_EQ(world.seconds("site:b.org"), 2.75);
}
