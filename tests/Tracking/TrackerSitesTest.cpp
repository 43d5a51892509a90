#include "Fakes/World.h"

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

const auto unreachable = u"Não foi possível consultar o navegador"_s;

struct TrackerSitesTest : testing::Test {
    World world;
    Tracker& tracker = world.begin();

    TrackerSitesTest() { world.browsers.known = {u"browser"_s}; }
    std::size_t asked() const { return world.browsers.reads.size(); }
    std::optional<QString> active() const { return tracker.activeKey(); }
    void showSiteFor(double seconds) {
        world.front("browser");
        world.browsers.answer(u"a.org"_s);
        world.pass(seconds);
    }
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
    world.browsers.answer(u"youtube.com"_s);
    const Activity& first = world.activity("site:youtube.com");
    EXPECT_EQ(active(), first.key());
    EXPECT_EQ(first.category(), Category::consumption);
    EXPECT_EQ(first.name(), u"youtube.com"_s);
    EXPECT_FALSE(world.context().hasChanges());

    world.pass(3); // Ticks at 1, 2 and 3 s; the first asked and nothing came back yet.
    EXPECT_EQ(asked(), 1U);
    EXPECT_EQ(first.seconds(), 2.5);
    world.browsers.answer(u"b.org"_s);
    EXPECT_EQ(first.seconds(), 3);
    world.pass(2);
    world.front("editor");
    EXPECT_EQ(world.seconds("site:b.org"), 2);
    EXPECT_EQ(world.seconds("app:browser"), 0);

    world.front("browser");
    world.browsers.answer(u"a.org"_s);
    world.pass(0.25);
    tracker.setInspecting(true);
    ASSERT_EQ(asked(), 1U);                 // Opening the panel asks at once.
    world.front("com.brindlework.orvanta"); // The panel has the focus; the browser is behind it.
    world.browsers.answer(u"b.org"_s);
    world.pass(2.25);
    EXPECT_EQ(world.seconds("site:b.org"), 2 + 2.25);
    tracker.setInspecting(false);
    EXPECT_FALSE(active());
    world.checkInvariants();
}

TEST_F(TrackerSitesTest, DropsAnswersThatComeTooLate) {
    const auto isDropped = [&](const char* because) {
        ASSERT_EQ(asked(), 1U) << because;
        const quint64 revision = tracker.revision();
        world.browsers.answer(u"late.org"_s);
        EXPECT_EQ(tracker.revision(), revision) << because;
        EXPECT_EQ(world.find("site:late.org"), nullptr) << because;
        EXPECT_TRUE(tracker.browserStatus().isEmpty()) << because;
    };
    world.front("browser");
    world.front("editor");
    isDropped("another application is in front");
    world.front("browser");
    world.front("editor");
    world.front("browser"); // It may ask again only once the old answer is back.
    isDropped("the browser went and came back");
    world.pass(1);
    tracker.togglePause();
    isDropped("paused");
    tracker.togglePause();
    ASSERT_EQ(asked(), 1U);
    world.distributedCenter.post(Notification::ScreenIsLocked);
    isDropped("locked");
    world.distributedCenter.post(Notification::ScreenIsUnlocked);
    world.workspace.front.reset(); // Nobody has told the tracker yet.
    isDropped("nothing is in front");

    world.front("browser");
    world.pass(1);
    ASSERT_EQ(asked(), 1U);
    world.tracker.reset();
    world.browsers.answer(u"late.org"_s); // Nobody is there to take it.
    EXPECT_EQ(world.find("site:late.org"), nullptr);
}

TEST_F(TrackerSitesTest, BacksOffFromABrowserThatFails) {
    showSiteFor(1);
    for (const double wait : {2, 4, 8, 16, 30, 30}) {
        ASSERT_EQ(asked(), 1U);
        world.browsers.fail(unreachable);
        EXPECT_EQ(tracker.browserStatus(), unreachable);
        EXPECT_FALSE(active()); // The site it showed last is not known to be there any more.
        world.pass(wait - 1);
        EXPECT_EQ(asked(), 0U) << wait;
        world.pass(1);
    }
    EXPECT_EQ(world.seconds("site:a.org"), 1);

    world.browsers.answer(u"a.org"_s);
    EXPECT_TRUE(tracker.browserStatus().isEmpty());
    world.pass(1);
    world.browsers.fail(unreachable);
    world.pass(2);
    ASSERT_EQ(asked(), 1U); // Two seconds again.

    world.browsers.fail(unreachable);
    world.front("editor");
    EXPECT_TRUE(tracker.browserStatus().isEmpty());
    world.front("browser");
    EXPECT_EQ(asked(), 1U); // At once: another application was in front.
}

TEST_F(TrackerSitesTest, AnIgnoredSiteIsNoFailureAndIsNotTimed) {
    showSiteFor(2);
    world.activity("site:a.org").setCategory(Category::ignored);
    world.browsers.answer(u"a.org"_s);
    EXPECT_FALSE(active());
    EXPECT_TRUE(tracker.browserStatus().isEmpty());
    world.pass(1);
    ASSERT_EQ(asked(), 1U); // Without waiting: the tick goes on while the browser is in front.
    world.browsers.answer(u"b.org"_s);
    world.pass(1);
    EXPECT_EQ(world.seconds("site:a.org"), 2);
    EXPECT_EQ(world.seconds("site:b.org"), 1);
}

TEST_F(TrackerSitesTest, ABrowserThatIsSwitchedOffIsNotTimedAtAll) {
    showSiteFor(2.5);
    world.browsers.answer(u"a.org"_s);
    tracker.setSitesEnabled(u"browser"_s, false);
    EXPECT_EQ(tracker.browserStatus(), u"Ative a identificação de sites nos Ajustes"_s);
    EXPECT_EQ(world.seconds("site:a.org"), 2.5);
    world.pass(10);
    EXPECT_EQ(world.seconds("site:a.org"), 2.5);
    EXPECT_EQ(world.seconds("app:browser"), 0);
    EXPECT_EQ(world.loop.armedCount(), 0U);

    // Switched off and ignored as an application, it is like any ignored application.
    world.add(u"app:browser"_s, u"ignored"_s);
    tracker.refreshFocus();
    EXPECT_TRUE(tracker.browserStatus().isEmpty());
    EXPECT_EQ(asked(), 0U);

    tracker.setSitesEnabled(u"browser"_s, true);
    ASSERT_EQ(asked(), 1U);
    world.browsers.answer(u"a.org"_s); // As an application it may be ignored: its sites are judged.
    EXPECT_EQ(active(), u"site:a.org"_s);
}
