#include "Linux/Applications/DesktopEntries.h"

#include "Testing.h"

#include <fcntl.h>
#include <sys/stat.h>

using namespace orvanta;
using Key = DesktopEntries::Key;

namespace {

class DesktopEntriesTest : public testing::Test {
protected:
    QString idOf(Key key, const QString& text) {
        const std::array clues{DesktopEntries::Clue{key, text}};
        const auto entry = entries.find(clues);
        return entry ? entry->id : QString();
    }
    bool has(const char* id) { return entries.withId(QString::fromUtf8(id)).has_value(); }
    QString nameOf(const char* id) { return entries.withId(QString::fromUtf8(id))->name; }
    void setTimesOfFolders(timespec time) const {
        const std::array times{time, time};
        for (const auto* folder : {&home, &system}) {
            ASSERT_EQ(::utimensat(AT_FDCWD, qPrintable(folder->path()), times.data(), 0), 0);
        }
    }

    TemporaryFolder home;
    TemporaryFolder system;
    DesktopEntries entries{{home.path(), system.path()}};
};

TEST_F(DesktopEntriesTest, EachKeyFindsTheOneEntryThatItMeans) {
    system.writeEntry(u"org.Example.Paint"_s, "Exec=/bin/cat %U\nStartupWMClass=Painter\n");
    system.writeEntry(u"org.one.Terminal"_s, "Exec=ls\n");
    system.writeEntry(u"org.two.Terminal"_s, "Exec=ls --other\n");
    system.writeEntry(u"shell"_s, "Exec=sh -c anything\n");
    system.writeEntry(u"a-helper"_s, "StartupWMClass=App\nNoDisplay=true\n");
    system.writeEntry(u"b-app"_s, "StartupWMClass=App\n");
    system.writeEntry(u"c-lonely"_s, "StartupWMClass=Lonely\nNoDisplay=true\n");
    const std::map<Key, std::vector<std::pair<const char*, const char*>>> rows{
        {Key::Id, {{"org.Example.Paint", "org.Example.Paint"}, {"org.example.paint", ""}}},
        {Key::FoldedId, {{"ORG.example.paint", "org.Example.Paint"}}},
        // What several share identifies none, nor does an interpreter.
        {Key::LastIdComponent, {{"pAINT", "org.Example.Paint"}, {"terminal", ""}}},
        {Key::ExecutableBasename, {{"cat", "org.Example.Paint"}, {"", ""}, {"ls", ""}, {"sh", ""}}},
        // One in the menu precedes a helper.
        {Key::StartupWmClass,
         {{"Painter", "org.Example.Paint"},
          {"painter", ""},
          {"", ""},
          {"App", "b-app"},
          {"Lonely", "c-lonely"}}}};
    for (const auto& [key, texts] : rows) {
        for (const auto& [text, id] : texts) {
            EXPECT_EQ(idOf(key, QString::fromUtf8(text)), QString::fromUtf8(id)) << text;
        }
    }
}

TEST_F(DesktopEntriesTest, TheFirstFolderPrecedesAndNamesAreBrazilianWhateverTheLocale) {
    home.writeEntry(u"both"_s, "Name[pt]=Europeu\nName[pt_BR]=Calculadora São\nName[de]=Rechner\n");
    home.writeEntry(u"removed"_s, "Hidden=true\n");
    for (const QString& id : {u"both"_s, u"removed"_s, u"sub/folder/deep"_s}) {
        system.writeEntry(id, "Name[de]=Rechner\nName[en_GB]=Colour\n");
    }
    system.writeEntry(u"portuguese"_s, "Name[pt]=Europeu\nName[de]=Rechner\n");
    EXPECT_FALSE(has("removed"));
    EXPECT_EQ(entries.withId(u"both"_s)->path, home.path(u"both.desktop"_s));
    EXPECT_EQ(nameOf("both"), u"Calculadora São"_s);
    EXPECT_EQ(nameOf("portuguese"), u"Europeu"_s);
    EXPECT_EQ(nameOf("sub-folder-deep"), u"sub/folder/deep"_s);
}

TEST_F(DesktopEntriesTest, WhatCannotBeStartedOrReadIsPassedOver) {
    const QByteArray application = "[Desktop Entry]\nType=Application\nName=Bus\n";
    system.writeEntry(u"no-program"_s, "Exec=/no/such/program\n");
    system.writeEntry(u"no-try"_s, "TryExec=/no/such/program\n");
    system.writeEntry(u"no-command"_s, "Exec=\"unclosed\n");
    system.write(u"link.desktop"_s, "[Desktop Entry]\nType=Link\nName=Link\nURL=http://a.test\n");
    system.write(u"folder.desktop/inside.desktop"_s, "x");
    system.link(u"/no/such/file"_s, u"dangling.desktop"_s);
    system.link(system.path(), u"loop"_s);
    ASSERT_EQ(::mkfifo(qPrintable(system.path(u"pipe.desktop"_s)), 0600), 0);
    system.write(u"binary.desktop"_s, QByteArray("\0\xff[Desktop Entry]\0\n", 19));
    system.writeEntry(u"huge"_s, QByteArray(10 << 20, '#'));
    for (const char* id : {"no-program", "no-try", "no-command", "link", "folder", "dangling",
                           "loop-sound", "pipe", "binary", "huge"}) {
        EXPECT_FALSE(has(id)) << id;
    }
    system.writeEntry(u"sound"_s);
    system.write(u"by-bus.desktop"_s, application + "DBusActivatable=true\n");
    system.write(u"latin.desktop"_s, application + "Exec=true\nStartupWMClass=Caf\xe9\n");
    const QByteArray tooLong(5000, 'x');
    system.writeEntry(u"long"_s, "StartupWMClass=" + tooLong + "\nName[pt_BR]=" + tooLong + "\n");
    EXPECT_TRUE(has("sound"));
    EXPECT_TRUE(has("by-bus"));
    EXPECT_EQ(nameOf("latin"), u"Bus"_s);
    EXPECT_EQ(nameOf("long"), QString());
    EXPECT_EQ(idOf(Key::StartupWmClass, QString::fromUtf8(tooLong)), QString());
}

TEST_F(DesktopEntriesTest, FoldersAreReadAgainWhereTheirTimeMayHideAChangeOnly) {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    setTimesOfFolders(now);
    EXPECT_FALSE(has("new"));
    system.writeEntry(u"new"_s);
    setTimesOfFolders(now); // As if within one tick of the file system's clock.
    EXPECT_TRUE(has("new"));

    constexpr timespec longAgo{1'000'000, 0};
    setTimesOfFolders(longAgo);
    EXPECT_FALSE(has("newer"));
    system.writeEntry(u"newer"_s);
    setTimesOfFolders(longAgo);
    EXPECT_FALSE(has("newer")) << "unchanged";
    system.writeEntry(u"newest"_s); // Now the folder's time tells.
    EXPECT_TRUE(has("newer"));
    system.writeEntry(u"sub/new"_s);
    EXPECT_TRUE(has("sub-new"));
    system.writeEntry(u"sub/newer"_s);
    EXPECT_TRUE(has("sub-newer"));
}

} // namespace
