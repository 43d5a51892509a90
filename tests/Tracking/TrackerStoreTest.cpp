#include "Fakes/World.h"

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

const auto resetDate = u"resetDate"_s;
const auto finderIgnored = u"finderIgnoredV1"_s;
const auto historySeeded = u"historySeededV1"_s;
constexpr auto finder = "app:com.apple.finder";

struct TrackerStoreTest : testing::Test {
    World world;
    Database other{world.storePath()};

    qint64 number(const QByteArray& sql) { return other.integer(sql.constData()); }
    bool isSet(const QString& preference) const { return world.defaults->boolValue(preference); }
    std::optional<QString> error() const { return world.tracker->storageError(); }
    /// Starts anew while another program has the store, or after it changed something.
    QString errorOfStart(const QByteArray& sql) {
        world.tracker.reset();
        world.container.reset();
        world.open();
        other.execute(sql);
        world.begin();
        return error().value_or(QString());
    }
};

} // namespace

TEST_F(TrackerStoreTest, TheFinderIsIgnoredAndTodaysSessionFiledOnce) {
    const Activity& used = world.add(u"app:used"_s, u"production"_s);
    world.record("2024-03-05", used, 400);
    world.add(u"app:new"_s, u"production"_s);
    world.add(u"app:unused"_s, u"production"_s);
    const struct {
        const char* session; // Begins.
        bool isFirst;
        double ofUsed, ofNew;
    } rows[] = {
        {"2024-03-04T23:59:59", true, 400, 0}, // Yesterday's says nothing of today.
        {"2024-03-05T00:00:00", true, 400, 1},
        {"2024-03-05T00:00:00", false, 400, 1},
    };
    for (const auto& [session, isFirst, ofUsed, ofNew] : rows) {
        world.defaults->setDate(resetDate, world.dateOf(session));
        world.defaults->setBool(finderIgnored, !isFirst);
        world.defaults->setBool(historySeeded, !isFirst);
        for (const char* key : {"app:used", "app:new"}) {
            world.activity(key).setSeconds(isFirst ? 1 : 900);
        }
        world.context().save();
        world.restart();
        EXPECT_EQ(world.daySeconds("2024-03-05", "app:used"), ofUsed) << session;
        EXPECT_EQ(world.daySeconds("2024-03-05", "app:new"), ofNew) << session;
        EXPECT_FALSE(world.days().contains(u"2024-03-05|app:unused"_s));
        EXPECT_EQ(world.activity("app:new").lastUsedAt(), world.date()) << "at the first start";
        EXPECT_FALSE(world.activity("app:unused").lastUsedAt());
        EXPECT_TRUE(isSet(finderIgnored) && isSet(historySeeded));
        EXPECT_EQ(world.activity(finder).name(), u"Finder"_s);
        EXPECT_EQ(world.activity(finder).category() == Category::ignored, isFirst);
        EXPECT_FALSE(world.context().hasChanges() || error());
        world.activity(finder).setCategory(Category::production);
    }
}

TEST_F(TrackerStoreTest, AStartReadsThePreferences) {
    const auto disabled = u"disabledBrowsers"_s;
    const auto chrome = u"com.google.Chrome"_s;
    world.construct();
    EXPECT_TRUE(!world.tracker->paused() && world.tracker->disabledBrowsers().empty());
    EXPECT_EQ(world.defaults->date(resetDate), world.date());

    world.defaults->setBool(u"chrome"_s, false);
    world.defaults->setBool(u"safari"_s, true);
    world.defaults->setBool(u"paused"_s, true);
    // A value that is no date counts as none, and is left alone.
    world.defaults->setBool(resetDate, true);
    world.pass(8);
    world.construct();
    EXPECT_TRUE(world.tracker->paused());
    EXPECT_EQ(world.tracker->resetDate(), world.date());
    EXPECT_FALSE(world.defaults->date(resetDate));
    EXPECT_EQ(world.tracker->disabledBrowsers(), std::set{chrome});
    EXPECT_FALSE(world.defaults->contains(disabled)); // Not before the set changes.
    world.tracker->setSitesEnabled(u"b"_s, false);
    world.tracker->setSitesEnabled(u"a"_s, false);
    EXPECT_EQ(world.defaults->stringArray(disabled), (QStringList{u"a"_s, u"b"_s, chrome}));
    world.tracker->setSitesEnabled(chrome, true);
    world.construct();
    EXPECT_EQ(world.tracker->disabledBrowsers(), (std::set{u"a"_s, u"b"_s}));
}

TEST_F(TrackerStoreTest, SystemComponentsAndBrowsersAreLeftOutOfTheTotals) {
    for (const QString& key :
         {u"app:panel"_s, u"app:tool"_s, u"app:com.apple.dock.extra"_s, u"unknown:x"_s,
          u"app:com.google.Chrome"_s, u"app:com.apple.Safari"_s, u"app:browser"_s}) {
        world.add(key, u"production"_s, 1);
    }
    world.add(u"app:com.apple.docks"_s, u"production"_s, 20);
    world.add(u"site:com.apple.dock"_s, u"production"_s, 300);
    world.workspace.components = {u"panel"_s};
    world.workspace.locations[u"tool"_s] = u"/System/Library/Tool.app"_s;
    world.browsers.known = {u"browser"_s};
    world.begin();
    EXPECT_EQ(world.tracker->total(Category::production), 320);
}

TEST_F(TrackerStoreTest, AFailedSaveIsToldAndMadeUpForByTheNext) {
    world.begin();
    world.front("a");
    other.execute("BEGIN IMMEDIATE");
    world.pass(8);
    EXPECT_EQ(error(), u"Não foi possível salvar: database is locked"_s);
    EXPECT_EQ(world.seconds("app:a"), 8); // Counting goes on, and reading.
    EXPECT_NO_THROW(ActivityStore::open(world.folder.path()));
    world.tracker->togglePause();
    other.execute("ROLLBACK");
    world.context().save(); // Behind the tracker's back.
    world.tracker->save();
    EXPECT_TRUE(error()) << "only a save that had something to write clears a problem";
    world.tracker->togglePause();
    world.pass(2); // Every fifth second is saved.
    EXPECT_FALSE(error());
    EXPECT_EQ(number("SELECT ZSECONDS FROM ZACTIVITY WHERE ZKEY = 'app:a'"), 10);
}

TEST_F(TrackerStoreTest, OneOffStepsThatCouldNotBeSavedRunAgainAtTheNextStart) {
    // The last failure is the one that is told.
    EXPECT_EQ(errorOfStart("BEGIN IMMEDIATE"),
              u"Não foi possível salvar o histórico: database is locked"_s);
    EXPECT_FALSE(isSet(finderIgnored) || isSet(historySeeded));
    EXPECT_EQ(errorOfStart("ROLLBACK"), QString());
    world.defaults->setBool(finderIgnored, false);
    world.activity(finder).setCategory(Category::production);
    world.context().save();
    EXPECT_EQ(errorOfStart("BEGIN IMMEDIATE"),
              u"Não foi possível salvar a regra do Finder: database is locked"_s);
}

TEST_F(TrackerStoreTest, WhatCouldNotBeReadIsToldAndLosesNothing) {
    const auto noDay = u"Não foi possível ler o histórico: no such column: ZDAY"_s;
    const auto noName = u"Não foi possível salvar a regra do Finder: no such column: ZNAME"_s;
    const QByteArray hideDay = "ALTER TABLE ZDAYACTIVITY RENAME COLUMN ZDAY TO ZAWAY";
    const QByteArray showDay = "ALTER TABLE ZDAYACTIVITY RENAME COLUMN ZAWAY TO ZDAY";
    world.begin();
    world.front("b");
    world.pass(3);
    world.front("a");
    world.pass(5);
    world.nothingInFront();

    EXPECT_EQ(errorOfStart(hideDay), noDay);
    other.execute(showDay);
    world.front("a");
    for (const int expected : {10, 15}) { // Added to what stands there, and that once.
        world.pass(5);
        EXPECT_EQ(number("SELECT ZSECONDS FROM ZDAYACTIVITY WHERE ZKEY = 'app:a'"), expected);
        EXPECT_EQ(world.daySeconds("2024-03-05", "app:a"), expected);
    }
    world.restart();
    EXPECT_FALSE(error());
    other.execute(hideDay);
    world.tracker->completeHistory(); // The older days are read later.
    EXPECT_EQ(error(), noDay);
    other.execute(showDay);
    world.nothingInFront();

    EXPECT_EQ(errorOfStart("ALTER TABLE ZACTIVITY RENAME COLUMN ZNAME TO ZAWAY"), noName);
    world.front("a");
    world.pass(8);
    EXPECT_EQ(world.find("app:b"), nullptr);
    EXPECT_TRUE(error()->contains(u"ZNAME"_s));
    other.execute("ALTER TABLE ZACTIVITY RENAME COLUMN ZAWAY TO ZNAME");
    int told = 0;
    QObject::connect(world.tracker.get(), &Tracker::activitiesChanged, [&told] { ++told; });
    world.pass(2);
    EXPECT_FALSE(error());
    EXPECT_EQ(told, 1);
    EXPECT_EQ(number("SELECT ZSECONDS FROM ZACTIVITY WHERE ZKEY = 'app:a'"), 25);
    EXPECT_EQ(world.seconds("app:a"), 25);
    EXPECT_EQ(world.seconds("app:b"), 3);
}

TEST_F(TrackerStoreTest, ClearingTheHistoryErasesEveryDayAndKeepsTheSession) {
    world.begin();
    world.record("2020-01-01", world.add(u"site:old"_s, u"production"_s), 5);
    world.front("a");
    world.pass(6); // Has saved.
    // A row that no history can show, and one that is ahead of the counter.
    other.execute("INSERT INTO ZDAYACTIVITY VALUES (900, 2, 1, 5, 'someday', 'someday|x', 'x')");
    world.tracker->stop();
    world.restart(); // The older days are not read yet.
    world.pass(2.5);
    other.execute("BEGIN IMMEDIATE");
    world.tracker->clearHistory();
    EXPECT_TRUE(error());
    EXPECT_EQ(world.tracker->dayTotals().size(), 0U);
    EXPECT_EQ(world.tracker->total(Category::pending), 8.5);
    world.pass(1.5); // New time makes new records.
    EXPECT_EQ(world.daySeconds("2024-03-05", "app:a"), 1.5);
    other.execute("ROLLBACK");
    EXPECT_EQ(number("SELECT COUNT(*) FROM ZDAYACTIVITY"), 3);
    for (int save = 0; save < 2; ++save) { // The erasing is done once.
        world.pass(5);
        EXPECT_FALSE(error());
        EXPECT_EQ(number("SELECT Z_PK FROM ZDAYACTIVITY"), 901);
        EXPECT_EQ(number("SELECT Z_MAX FROM Z_PRIMARYKEY WHERE Z_ENT = 2"), 901);
    }
    EXPECT_EQ(world.days(), (std::map<QString, double>{{u"2024-03-05|app:a"_s, 11.5}}));
}
