#include "Linux/Applications/DesktopEntries.h"

#include "Applications.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <array>

namespace orvanta {

namespace {

using Key = DesktopEntries::Key;

class DesktopEntriesTest : public testing::Test {
protected:
    QString idOf(Key key, const char* text) {
        const std::array clues{DesktopEntries::Clue{key, QString::fromUtf8(text)}};
        const auto entry = entries.find(clues);
        return entry ? entry->id : QString();
    }

    TemporaryFolder home;
    TemporaryFolder system;
    DesktopEntries entries{{home.path(), system.path()}};
};

TEST_F(DesktopEntriesTest, AnEntryIsFoundByEachOfItsKeys) {
    system.writeEntry(QStringLiteral("org.Example.Paint"),
                      "Exec=/bin/cat %U\nStartupWMClass=Painter\n");
    const QString id = QStringLiteral("org.Example.Paint");
    EXPECT_EQ(idOf(Key::Id, "org.Example.Paint"), id);
    EXPECT_EQ(idOf(Key::FoldedId, "ORG.example.paint"), id);
    EXPECT_EQ(idOf(Key::LastIdComponent, "pAINT"), id);
    EXPECT_EQ(idOf(Key::StartupWmClass, "Painter"), id);
    EXPECT_EQ(idOf(Key::ExecutableBasename, "cat"), id);
    EXPECT_EQ(entries.withId(id)->path, system.path(QStringLiteral("org.Example.Paint.desktop")));

    EXPECT_EQ(idOf(Key::Id, "org.example.paint"), QString());
    EXPECT_EQ(idOf(Key::StartupWmClass, "painter"), QString());
    EXPECT_EQ(idOf(Key::StartupWmClass, ""), QString());
    EXPECT_EQ(idOf(Key::ExecutableBasename, ""), QString());
}

TEST_F(DesktopEntriesTest, WhatSeveralEntriesShareIdentifiesNone) {
    system.writeEntry(QStringLiteral("org.one.Terminal"), "Exec=cat\n");
    system.writeEntry(QStringLiteral("org.two.Terminal"), "Exec=cat --other\n");
    system.writeEntry(QStringLiteral("shell"), "Exec=sh -c anything\n");
    EXPECT_EQ(idOf(Key::LastIdComponent, "terminal"), QString());
    EXPECT_EQ(idOf(Key::ExecutableBasename, "cat"), QString());
    EXPECT_EQ(idOf(Key::ExecutableBasename, "sh"), QString());
}

TEST_F(DesktopEntriesTest, AnEntryInTheMenuPrecedesAHelperWithItsClass) {
    system.writeEntry(QStringLiteral("a-helper"), "StartupWMClass=App\nNoDisplay=true\n");
    system.writeEntry(QStringLiteral("b-app"), "StartupWMClass=App\n");
    system.writeEntry(QStringLiteral("c-lonely"), "StartupWMClass=Lonely\nNoDisplay=true\n");
    EXPECT_EQ(idOf(Key::StartupWmClass, "App"), QStringLiteral("b-app"));
    EXPECT_EQ(idOf(Key::StartupWmClass, "Lonely"), QStringLiteral("c-lonely"));
}

TEST_F(DesktopEntriesTest, TheFirstFolderPrecedesAndCanHide) {
    for (const auto* folder : {&home, &system}) {
        folder->writeEntry(QStringLiteral("both"));
    }
    system.writeEntry(QStringLiteral("removed"));
    home.writeEntry(QStringLiteral("removed"), "Hidden=true\n");
    system.writeEntry(QStringLiteral("sub/folder/deep"));
    EXPECT_EQ(entries.withId(QStringLiteral("both"))->path,
              home.path(QStringLiteral("both.desktop")));
    EXPECT_FALSE(entries.withId(QStringLiteral("removed")));
    EXPECT_EQ(idOf(Key::Id, "sub-folder-deep"), QStringLiteral("sub-folder-deep"));
}

TEST_F(DesktopEntriesTest, EntriesThatCannotBeStartedDoNotCount) {
    system.writeEntry(QStringLiteral("no-program"), "Exec=/no/such/program\n");
    system.writeEntry(QStringLiteral("no-try"), "TryExec=/no/such/program\n");
    system.write(QStringLiteral("link.desktop"),
                 "[Desktop Entry]\nType=Link\nName=Link\nURL=http://a.test\n");
    system.writeEntry(QStringLiteral("no-command"), "Exec=\"unclosed\n");
    system.write(QStringLiteral("by-bus.desktop"),
                 "[Desktop Entry]\nType=Application\nName=Bus\nDBusActivatable=true\n");
    EXPECT_EQ(idOf(Key::Id, "no-command"), QString());
    EXPECT_EQ(idOf(Key::Id, "by-bus"), QStringLiteral("by-bus"));
    EXPECT_EQ(idOf(Key::Id, "no-program"), QString());
    EXPECT_EQ(idOf(Key::Id, "no-try"), QString());
    EXPECT_EQ(idOf(Key::Id, "link"), QString());
}

TEST_F(DesktopEntriesTest, NamesAreBrazilianWhateverTheLocale) {
    system.writeEntry(QStringLiteral("both"),
                      "Name[pt]=Europeu\nName[pt_BR]=Calculadora São\nName[de]=Rechner\n");
    system.writeEntry(QStringLiteral("portuguese"), "Name[pt]=Europeu\nName[de]=Rechner\n");
    system.writeEntry(QStringLiteral("neither"), "Name[de]=Rechner\nName[en_GB]=Colour\n");
    const auto name = [&](const char* id) {
        return entries.withId(QString::fromUtf8(id))->name;
    };
    EXPECT_EQ(name("both"), QString::fromUtf8("Calculadora São"));
    EXPECT_EQ(name("portuguese"), QStringLiteral("Europeu"));
    EXPECT_EQ(name("neither"), QStringLiteral("neither"));
}

TEST_F(DesktopEntriesTest, BrokenFilesAreNoHindrance) {
    system.write(QStringLiteral("folder.desktop/inside.desktop"), "x");
    QFile::link(QStringLiteral("/no/such/file"), system.path(QStringLiteral("dangling.desktop")));
    QFile::link(system.path(), system.path(QStringLiteral("loop")));
    ASSERT_EQ(::mkfifo(system.path(QStringLiteral("pipe.desktop")).toUtf8().constData(), 0600), 0);
    system.write(QStringLiteral("empty.desktop"), "");
    system.write(QStringLiteral("binary.desktop"), QByteArray("\0\xff[Desktop Entry]\0\n", 19));
    system.write(QStringLiteral("latin.desktop"),
                 "[Desktop Entry]\nType=Application\nExec=true\nName=Caf\xe9\n"
                 "StartupWMClass=Caf\xe9\n");
    system.writeEntry(QStringLiteral("huge"), QByteArray(10 << 20, '#'));
    system.writeEntry(QStringLiteral("long"), "StartupWMClass=" + QByteArray(5000, 'x') +
                                                  "\nName[pt_BR]=" + QByteArray(5000, 'y') + "\n");
    system.writeEntry(QStringLiteral("sound"));

    EXPECT_EQ(idOf(Key::Id, "sound"), QStringLiteral("sound"));
    EXPECT_EQ(idOf(Key::Id, "huge"), QString());
    EXPECT_EQ(idOf(Key::Id, "loop-sound"), QString());
    EXPECT_EQ(entries.withId(QStringLiteral("long"))->name, QString());
    EXPECT_EQ(idOf(Key::StartupWmClass, QByteArray(5000, 'x').constData()), QString());
    for (const char* id : {"folder", "dangling", "pipe", "empty", "binary"}) {
        EXPECT_EQ(idOf(Key::Id, id), QString()) << id;
    }
}

TEST_F(DesktopEntriesTest, WhatIsInstalledLaterIsFoundWithoutAMainLoop) {
    DesktopEntries late{{home.path(QStringLiteral("later")), system.path()}};
    EXPECT_FALSE(late.withId(QStringLiteral("new")));
    system.writeEntry(QStringLiteral("new"));
    EXPECT_TRUE(late.withId(QStringLiteral("new")));
    system.writeEntry(QStringLiteral("sub/new"));
    EXPECT_TRUE(late.withId(QStringLiteral("sub-new")));
    system.writeEntry(QStringLiteral("sub/newer"));
    EXPECT_TRUE(late.withId(QStringLiteral("sub-newer")));
    home.writeEntry(QStringLiteral("later/newest"));
    EXPECT_TRUE(late.withId(QStringLiteral("newest")));
}

TEST_F(DesktopEntriesTest, AChangeThatTheFoldersTimeDoesNotShowYetIsFound) {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    const auto stamp = [&] {
        const std::array times{now, now};
        ASSERT_EQ(::utimensat(AT_FDCWD, system.path().toUtf8().constData(), times.data(), 0), 0);
    };
    stamp();
    EXPECT_FALSE(entries.withId(QStringLiteral("new")));
    system.writeEntry(QStringLiteral("new"));
    stamp(); // as if within one tick of the file system's clock
    EXPECT_TRUE(entries.withId(QStringLiteral("new")));
}

TEST_F(DesktopEntriesTest, UnchangedFoldersAreNotReadAgain) {
    system.writeEntry(QStringLiteral("app"), "StartupWMClass=Before\n");
    const auto age = [&] {
        const std::array<timespec, 2> longAgo{timespec{1'000'000, 0}, timespec{1'000'000, 0}};
        for (const auto* folder : {&home, &system}) {
            ASSERT_EQ(::utimensat(AT_FDCWD, folder->path().toUtf8().constData(), longAgo.data(), 0),
                      0);
        }
    };
    age();
    EXPECT_EQ(idOf(Key::StartupWmClass, "Before"), QStringLiteral("app"));
    system.writeEntry(QStringLiteral("app"), "StartupWMClass=After\n");
    system.writeEntry(QStringLiteral("other"));
    age();
    EXPECT_EQ(idOf(Key::StartupWmClass, "After"), QString());
    system.writeEntry(QStringLiteral("third")); // Now the folder's time tells.
    EXPECT_EQ(idOf(Key::StartupWmClass, "After"), QStringLiteral("app"));
}

} // namespace

} // namespace orvanta
