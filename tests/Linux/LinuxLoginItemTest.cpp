#include "Linux/Autostart/LinuxLoginItem.h"

#include "Linux/Applications/ExecLine.h"
#include "Linux/Applications/KeyFile.h"
#include "Testing.h"
#include "Widgets.h"

#include <QMessageBox>

#include <sys/stat.h>

namespace orvanta {

namespace {

using Status = LoginItem::Status;

class LinuxLoginItemTest : public testing::Test {
protected:
    LinuxLoginItemTest() { folder.writeProgram(executable); }
    ~LinuxLoginItemTest() override { qputenv("PATH", path); }

    LinuxLoginItem item(const QStringList& desktops = {}) const {
        return LinuxLoginItem({home, {folder.path(u"xdg"_s)}, executable, desktops});
    }

    const TemporaryFolder folder;
    const QByteArray path = qgetenv("PATH");
    const QString executable = folder.path(u"with $pace 100%/orvanta"_s);
    const QString home = folder.path(u"home"_s);
    const QString own = home + u"/autostart/com.brindlework.orvanta.desktop"_s;
    const QString everybodys = folder.path(u"xdg/autostart/com.brindlework.orvanta.desktop"_s);
};

TEST_F(LinuxLoginItemTest, ItIsRegisteredAndUnregistered) {
    EXPECT_EQ(item().status(), Status::notRegistered);
    EXPECT_EQ(item().unregisterItem(), std::nullopt);
    const mode_t mask = ::umask(077);
    EXPECT_EQ(item().registerItem(), std::nullopt);
    ::umask(mask);
    EXPECT_EQ(item({u"KDE"_s}).status(), Status::enabled);
    EXPECT_EQ(QFile::permissions(own).toInt() & 0x7077, 0x6044);

    const auto entry = KeyFile::read(QFile::encodeName(own));
    ASSERT_TRUE(entry);
    const auto valueOf = [&](const char* key) {
        return QString::fromUtf8(entry->text("Desktop Entry", key).get());
    };
    EXPECT_EQ(execWords(valueOf("Exec"), {}), QStringList{executable});
    EXPECT_EQ(valueOf("TryExec"), executable);
    EXPECT_EQ(item().unregisterItem(), std::nullopt);
    EXPECT_FALSE(QFile::exists(own));
}

TEST_F(LinuxLoginItemTest, WhatThePersonOrTheDesktopTurnedOffStaysOff) {
    const QByteArray entry = "[Desktop Entry]\nType=Application\nExec=sh -c orvanta\n";
    const struct {
        const char* line;
        const char* desktops;
        bool isOn;
    } rows[] = {
        {"Hidden=false\nX-GNOME-Autostart-enabled=true\n", "", true},
        {"Hidden=true\n", "", false},
        {"X-GNOME-Autostart-enabled=false\n", "", false},
        {"X-MATE-Autostart-enabled=false\n", "", false},
        {"OnlyShowIn=KDE;\n", "KDE", true},
        {"OnlyShowIn=KDE;XFCE;\n", "GNOME", false},
        {"OnlyShowIn=KDE;\n", "", false},
        {"NotShowIn=GNOME;\n", "ubuntu:GNOME", false},
    };
    for (const auto& [line, names, isOn] : rows) {
        const QStringList desktops = QString::fromUtf8(names).split(u':', Qt::SkipEmptyParts);
        const auto expected = isOn ? Status::enabled : Status::requiresApproval;
        for (const QString& place : {own, everybodys}) {
            folder.write(place, entry + line);
            EXPECT_EQ(item(desktops).status(), expected) << line;
            EXPECT_EQ(item(desktops).registerItem(), std::nullopt);
            EXPECT_EQ(folder.read(place), entry + line);
            EXPECT_EQ(QFile::exists(own), place == own);
            QFile::remove(place);
        }
    }
    for (const char* dead : {"", "[Desktop Entry]\nExec=/gone/orvanta\n",
                             "[Desktop Entry]\nExec=sh\nTryExec=/gone/orvanta\n"}) {
        folder.write(own, dead);
        EXPECT_EQ(item().status(), Status::notRegistered) << dead;
        EXPECT_EQ(item().registerItem(), std::nullopt);
        EXPECT_EQ(item().status(), Status::enabled) << dead << " is renewed";
    }
    folder.write(everybodys, entry);
    folder.write(own, entry + "Hidden=true\n");
    EXPECT_EQ(item().status(), Status::requiresApproval);
}

TEST_F(LinuxLoginItemTest, TheEntryForEverybodyIsHiddenAndComesBack) {
    folder.write(everybodys, "[Desktop Entry]\nType=Application\nExec=sh\n");
    EXPECT_EQ(item().status(), Status::enabled);
    EXPECT_EQ(item().unregisterItem(), std::nullopt);
    EXPECT_TRUE(folder.read(own).contains("\nHidden=true\n"));
    EXPECT_EQ(item().status(), Status::notRegistered) << "nobody but Orvanta turned it off";
    EXPECT_EQ(item().registerItem(), std::nullopt);
    EXPECT_EQ(item().status(), Status::enabled);
}

TEST_F(LinuxLoginItemTest, TheDesktopsOwnSettingsAreStarted) {
    qputenv("PATH", QFile::encodeName(folder.path(u"bin"_s)));
    folder.writeProgram(u"bin/systemsettings"_s, "echo $1 >\"${0%/*}/started\"\n");
    item({u"KDE"_s}).openSystemSettingsLoginItems();
    EXPECT_TRUE(eventually([&] { return folder.read(u"bin/started"_s) == "kcm_autostart\n"; }));
    EXPECT_EQ(shown<QMessageBox>(), nullptr);
}

TEST_F(LinuxLoginItemTest, WithoutSettingsAMessageSaysWhereTheEntryIsAndWhatIsWrongWithIt) {
    LinuxLoginItem loginItem = item({u"XFCE"_s});
    const auto says = [&](const QString& text, const QString& place) {
        loginItem.openSystemSettingsLoginItems();
        const auto* box = shown<QMessageBox>();
        const QString said = box ? box->text() + u'\n' + box->informativeText() : QString();
        EXPECT_TRUE(said.contains(text) && said.contains(place)) << qPrintable(said);
    };
    const auto isProblem = [](const std::optional<QString>& problem, int error) {
        return problem.value_or(QString()).endsWith(qt_error_string(error));
    };
    says(u"não é aberto"_s, own);
    QDir().mkpath(own);
    EXPECT_TRUE(isProblem(loginItem.registerItem(), EISDIR));
    EXPECT_TRUE(isProblem(item().unregisterItem(), EISDIR));
    says(qt_error_string(EISDIR), own);
    QDir().rmdir(own);
    folder.write(own, "[Desktop Entry]\nExec=sh\nHidden=true\n");
    says(u"“Hidden”"_s, own);
    QFile::remove(own);
    loginItem.registerItem();
    says(u"O orvanta é aberto quando você entra."_s, own);
    QFile::remove(executable);
    says(u"O programa do orvanta não foi encontrado."_s, executable);
    EXPECT_EQ(item().status(), Status::notFound);
    EXPECT_TRUE(isProblem(item().registerItem(), ENOENT));
    EXPECT_FALSE(shown<QMessageBox>()->isModal());
}

} // namespace

} // namespace orvanta
