#include "Fakes/OtherProgram.h"
#include "Fakes/World.h"

using namespace orvanta;

namespace {

struct TrackerSavingTest : testing::Test {
    World world;
    OtherProgram other{world.folder.path()};

    double stored(const char* key) {
        return other.number(
            (std::string("SELECT ZSECONDS FROM ZACTIVITY WHERE ZKEY = '") + key + "'").c_str());
    }
};

} // namespace

TEST_F(TrackerSavingTest, SavesAtEveryFifthTickAndAtEachChangeOfFocus) {
    world.begin();
    world.front("a");
    EXPECT_EQ(stored("app:a"), 0);
    for (const double expected : {0, 0, 0, 0, 5, 5, 5, 5, 5, 10, 10}) {
        world.pass(1);
        EXPECT_EQ(stored("app:a"), expected);
    }
    EXPECT_EQ(other.number("SELECT ZSECONDS FROM ZDAYACTIVITY WHERE ZID = '2024-03-05|app:a'"), 10);
    EXPECT_NEAR(other.number("SELECT ZLASTUSEDAT FROM ZACTIVITY WHERE ZKEY = 'app:a'"),
                world.date().sinceReference - 1, 1e-5);
    world.front("b");
    EXPECT_EQ(stored("app:a"), 11);
    EXPECT_EQ(stored("app:b"), 0);
}

TEST_F(TrackerSavingTest, AFailedSaveIsToldAndMadeUpForByTheNext) {
    Tracker& tracker = world.begin();
    world.front("a");
    other.run("BEGIN IMMEDIATE");
    world.pass(5);
    const QString problem = QStringLiteral("Não foi possível salvar: database is locked");
    EXPECT_EQ(tracker.storageError(), problem);
    world.pass(3);
    EXPECT_EQ(tracker.storageError(), problem);
    EXPECT_EQ(world.seconds("app:a"), 8); // Counting goes on.

    other.run("ROLLBACK");
    world.pass(2);
    EXPECT_FALSE(tracker.storageError());
    EXPECT_EQ(stored("app:a"), 10);
}

TEST_F(TrackerSavingTest, OnlyASaveThatHadSomethingToWriteClearsAProblem) {
    Tracker& tracker = world.begin();
    world.front("a");
    world.pass(1);
    other.run("BEGIN IMMEDIATE");
    tracker.togglePause();
    EXPECT_TRUE(tracker.storageError());
    other.run("ROLLBACK");
    world.context().save(); // Behind the tracker's back: nothing is left to write.
    tracker.save();
    EXPECT_TRUE(tracker.storageError());
    tracker.togglePause();
    world.front("b");
    EXPECT_FALSE(tracker.storageError());
}

TEST_F(TrackerSavingTest, OneOffStepsThatCouldNotBeSavedRunAgainAtTheNextStart) {
    other.run("BEGIN IMMEDIATE");
    world.construct();
    // The last failure is the one that is told.
    EXPECT_EQ(world.tracker->storageError(),
              QStringLiteral("Não foi possível salvar o histórico: database is locked"));
    EXPECT_FALSE(world.defaults->boolValue(QStringLiteral("finderIgnoredV1")));
    EXPECT_FALSE(world.defaults->boolValue(QStringLiteral("historySeededV1")));
    other.run("ROLLBACK");
    world.restart();
    EXPECT_FALSE(world.tracker->storageError());
    EXPECT_TRUE(world.defaults->boolValue(QStringLiteral("finderIgnoredV1")));
    EXPECT_TRUE(world.defaults->boolValue(QStringLiteral("historySeededV1")));

    world.defaults->setBool(QStringLiteral("historySeededV1"), true);
    world.defaults->setBool(QStringLiteral("finderIgnoredV1"), false);
    world.activity("app:com.apple.finder").setCategory(Category::production);
    world.context().save();
    other.run("BEGIN IMMEDIATE");
    world.construct();
    EXPECT_EQ(world.tracker->storageError(),
              QStringLiteral("Não foi possível salvar a regra do Finder: database is locked"));
    other.run("ROLLBACK");
}

TEST_F(TrackerSavingTest, TellsWhichRecordsCouldNotBeReadAndTracksAllTheSame) {
    world.begin();
    world.front("a");
    world.pass(5);
    world.tracker->stop();
    other.run("ALTER TABLE ZDAYACTIVITY RENAME COLUMN ZDAY TO ZAWAY");
    world.construct();
    EXPECT_EQ(world.tracker->storageError(),
              QStringLiteral("Não foi possível ler o histórico: no such column: ZDAY"));
    EXPECT_EQ(world.seconds("app:a"), 5);
    other.run("ALTER TABLE ZDAYACTIVITY RENAME COLUMN ZAWAY TO ZDAY");
    world.restart();
    EXPECT_FALSE(world.tracker->storageError());
    other.run("ALTER TABLE ZDAYACTIVITY RENAME COLUMN ZDAY TO ZAWAY");
    world.tracker->completeHistory(); // The older days are read later.
    EXPECT_EQ(world.tracker->storageError(),
              QStringLiteral("Não foi possível ler o histórico: no such column: ZDAY"));
    other.run("ALTER TABLE ZDAYACTIVITY RENAME COLUMN ZAWAY TO ZDAY");
    other.run("ALTER TABLE ZACTIVITY RENAME COLUMN ZNAME TO ZAWAY");
    world.tracker.reset();
    world.container.reset();
    // A store of another shape is not opened at all; one that loses its shape meanwhile is told of.
    EXPECT_THROW(world.open(), ModelError);
    other.run("ALTER TABLE ZACTIVITY RENAME COLUMN ZAWAY TO ZNAME");
    world.open();
    other.run("ALTER TABLE ZACTIVITY RENAME COLUMN ZNAME TO ZAWAY");
    world.workspace.front.reset();
    world.begin();
    EXPECT_EQ(world.find("app:a"), nullptr);
    EXPECT_TRUE(world.tracker->storageError()->contains(QStringLiteral("ZNAME")));
    other.run("ALTER TABLE ZACTIVITY RENAME COLUMN ZAWAY TO ZNAME");
    world.front("new");
    world.pass(5);
    EXPECT_EQ(world.seconds("app:new"), 5);
}
