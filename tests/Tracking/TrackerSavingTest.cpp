#include "Fakes/World.h"

using namespace orvanta;
using namespace Qt::StringLiterals;

namespace {

struct TrackerSavingTest : testing::Test {
    World world;
    Database other{world.storePath()};

    qint64 stored(const QByteArray& key) {
        return other.integer("SELECT ZSECONDS FROM ZACTIVITY WHERE ZKEY = '" + key + "'");
    }
    bool isSet(const QString& preference) const { return world.defaults->boolValue(preference); }
    std::optional<QString> error() const { return world.tracker->storageError(); }
};

} // namespace

TEST_F(TrackerSavingTest, SavesAtEveryFifthTickAndAtEachChangeOfFocus) {
    world.begin();
    world.front("a");
    for (const int expected : {0, 0, 0, 0, 5, 5, 5, 5, 5, 10, 10}) {
        world.pass(1);
        EXPECT_EQ(stored("app:a"), expected);
    }
    EXPECT_EQ(other.integer("SELECT ZSECONDS FROM ZDAYACTIVITY WHERE ZID = '2024-03-05|app:a'"),
              10);
    EXPECT_EQ(other.integer("SELECT round(ZLASTUSEDAT) FROM ZACTIVITY WHERE ZKEY = 'app:a'"),
              world.date().sinceReference - 1);
    world.front("b");
    EXPECT_EQ(stored("app:a"), 11);
    EXPECT_EQ(other.integer("SELECT COUNT(*) FROM ZACTIVITY WHERE ZKEY = 'app:b'"), 1);
}

TEST_F(TrackerSavingTest, AFailedSaveIsToldAndMadeUpForByTheNext) {
    world.begin();
    world.front("a");
    other.execute("BEGIN IMMEDIATE");
    world.pass(5);
    const QString problem = u"Não foi possível salvar: database is locked"_s;
    EXPECT_EQ(error(), problem);
    world.pass(3);
    EXPECT_EQ(error(), problem);
    EXPECT_EQ(world.seconds("app:a"), 8); // Counting goes on, and reading.
    EXPECT_NO_THROW(ActivityStore::open(world.folder.path()));
    other.execute("ROLLBACK");
    world.pass(2);
    EXPECT_FALSE(error());
    EXPECT_EQ(stored("app:a"), 10);

    world.pass(1); // Only a save that had something to write clears a problem.
    other.execute("BEGIN IMMEDIATE");
    world.tracker->togglePause();
    EXPECT_TRUE(error());
    other.execute("ROLLBACK");
    world.context().save(); // Behind the tracker's back.
    world.tracker->save();
    EXPECT_TRUE(error());
    world.tracker->togglePause();
    world.front("b");
    EXPECT_FALSE(error());
}

TEST_F(TrackerSavingTest, OneOffStepsThatCouldNotBeSavedRunAgainAtTheNextStart) {
    const auto finderIgnored = u"finderIgnoredV1"_s;
    const auto historySeeded = u"historySeededV1"_s;
    other.execute("BEGIN IMMEDIATE");
    world.construct();
    // The last failure is the one that is told.
    EXPECT_EQ(error(), u"Não foi possível salvar o histórico: database is locked"_s);
    EXPECT_FALSE(isSet(finderIgnored) || isSet(historySeeded));
    other.execute("ROLLBACK");
    world.restart();
    EXPECT_FALSE(error());
    EXPECT_TRUE(isSet(finderIgnored) && isSet(historySeeded));

    world.defaults->setBool(finderIgnored, false);
    world.activity("app:com.apple.finder").setCategory(Category::production);
    world.context().save();
    other.execute("BEGIN IMMEDIATE");
    world.construct();
    EXPECT_EQ(error(), u"Não foi possível salvar a regra do Finder: database is locked"_s);
    other.execute("ROLLBACK");
}

TEST_F(TrackerSavingTest, WhatCouldNotBeReadIsToldAndLosesNothing) {
    const auto noDay = u"Não foi possível ler o histórico: no such column: ZDAY"_s;
    const QByteArray hideDay = "ALTER TABLE ZDAYACTIVITY RENAME COLUMN ZDAY TO ZAWAY";
    const QByteArray showDay = "ALTER TABLE ZDAYACTIVITY RENAME COLUMN ZAWAY TO ZDAY";
    const QByteArray hideName = "ALTER TABLE ZACTIVITY RENAME COLUMN ZNAME TO ZAWAY";
    const QByteArray showName = "ALTER TABLE ZACTIVITY RENAME COLUMN ZAWAY TO ZNAME";
    const auto restartAfter = [this](const QByteArray& sql) {
        world.nothingInFront();
        world.tracker.reset();
        world.container.reset();
        world.open();
        other.execute(sql);
        world.begin();
    };
    world.begin();
    world.front("b");
    world.pass(3);
    world.front("a");
    world.pass(5);
    world.activity("app:a").setCategory(Category::production);

    restartAfter(hideDay);
    EXPECT_EQ(error(), noDay);
    EXPECT_EQ(world.seconds("app:a"), 5);
    other.execute(showDay);
    world.front("a");
    for (const int expected : {10, 15}) { // Added to what stands there, and that once.
        world.pass(5);
        EXPECT_EQ(other.integer("SELECT ZSECONDS FROM ZDAYACTIVITY WHERE ZKEY = 'app:a'"),
                  expected);
        EXPECT_EQ(world.daySeconds("2024-03-05", "app:a"), expected);
    }
    world.restart();
    EXPECT_FALSE(error());
    other.execute(hideDay);
    world.tracker->completeHistory(); // The older days are read later.
    EXPECT_EQ(error(), noDay);
    other.execute(showDay);

    restartAfter(hideName);
    EXPECT_TRUE(error()->contains(u"ZNAME"_s));
    world.front("a");
    world.pass(8);
    EXPECT_EQ(world.seconds("app:a"), 8);
    EXPECT_EQ(world.find("app:b"), nullptr);
    EXPECT_TRUE(error()->contains(u"ZNAME"_s));
    other.execute(showName);
    int told = 0;
    QObject::connect(world.tracker.get(), &Tracker::activitiesChanged, [&told] { ++told; });
    world.pass(2);
    EXPECT_FALSE(error());
    EXPECT_EQ(told, 1);
    EXPECT_EQ(stored("app:a"), 25);
    EXPECT_EQ(world.activity("app:a").category(), Category::production);
    EXPECT_EQ(world.seconds("app:b"), 3);
    world.restart();
    EXPECT_EQ(world.seconds("app:a"), 25);
    world.checkInvariants();
}
