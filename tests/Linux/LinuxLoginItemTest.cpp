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
    struct stat status {};
    ::stat(qPrintable(own), &status);
    EXPECT_EQ(status.st_mode & 07777, 0644U);

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
        {"", "", true},
        {"Hidden=false\nX-GNOME-Autostart-enabled=true\n", "", true},
        {"Hidden=true\n", "", false},
        {"X-GNOME-Autostart-enabled=false\n", "", false},
        {"X-MATE-Autostart-enabled=false\n", "", false},
        {"OnlyShowIn=KDE;\n", "KDE", true},
        {"OnlyShowIn=GNOME;\n", "ubuntu:GNOME", true},
        {"OnlyShowIn=KDE;XFCE;\n", "GNOME", false},
        {"OnlyShowIn=KDE;\n", "", false},
        {"NotShowIn=KDE;\n", "GNOME", true},
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

TEST_F(LinuxLoginItemTest, AnEntryThatStartsNothingIsRenewed) {
    for (const char* content :
         {"", "garbage", "[Desktop Entry]\nExec=/gone/orvanta\n", "[Desktop Entry]\nExec=\"\n",
          "[Desktop Entry]\nExec=sh\nTryExec=/gone/orvanta\n"}) {
        folder.write(own, content);
        EXPECT_EQ(item().status(), Status::notRegistered) << content;
        EXPECT_EQ(item().registerItem(), std::nullopt);
        EXPECT_EQ(item().status(), Status::enabled) << content;
    }
}

TEST_F(LinuxLoginItemTest, WhatGoesWrongIsToldInTheSystemsWords) {
    const auto says = [](const std::optional<QString>& problem, int error) {
        return problem.value_or(QString()).endsWith(qt_error_string(error));
    };
    QDir().mkpath(own);
    EXPECT_TRUE(says(item().registerItem(), EISDIR));
    EXPECT_TRUE(says(item().unregisterItem(), EISDIR));
    QDir(home).removeRecursively();
    folder.write(home, "in the way");
    EXPECT_TRUE(says(item().registerItem(), ENOTDIR));
    EXPECT_EQ(item().unregisterItem(), std::nullopt);
    QFile::remove(executable);
    EXPECT_EQ(item().status(), Status::notFound);
    EXPECT_TRUE(says(item().registerItem(), ENOENT));
    EXPECT_EQ(folder.read(home), "in the way");
}

TEST_F(LinuxLoginItemTest, TheDesktopsOwnSettingsAreStarted) {
    const QString started = folder.path(u"started"_s);
    qputenv("PATH", QFile::encodeName(folder.path(u"bin"_s)));
    const std::pair<QStringList, QByteArray> rows[] = {
        {{u"ubuntu"_s, u"GNOME"_s}, "gnome-tweaks"},
        {{u"KDE"_s}, "systemsettings kcm_autostart"},
        {{u"X-Cinnamon"_s}, "cinnamon-settings startup"},
    };
    for (const auto& [desktops, command] : rows) {
        const QByteArray file = QFile::encodeName(started);
        folder.writeProgram(u"bin/"_s + QString::fromUtf8(command.split(' ')[0]),
                            "echo ${0##*/} $1 >" + file + "-\n/bin/mv " + file + "- " + file +
                                '\n');
    }
    for (const auto& [desktops, command] : rows) {
        item(desktops).openSystemSettingsLoginItems();
        EXPECT_TRUE(eventually([&] { return QFile::exists(started); }));
        EXPECT_EQ(folder.read(started).trimmed(), command);
        QFile::remove(started);
        EXPECT_EQ(shown<QMessageBox>(), nullptr);
    }
}

TEST_F(LinuxLoginItemTest, WithoutSettingsAMessageSaysWhereTheEntryIs) {
    LinuxLoginItem loginItem = item({u"XFCE"_s});
    const auto says = [&](const QString& text, const QString& place) {
        loginItem.openSystemSettingsLoginItems();
        const auto* box = shown<QMessageBox>();
        const QString said = box ? box->text() + u'\n' + box->informativeText() : QString();
        EXPECT_TRUE(said.contains(text) && said.contains(place)) << qPrintable(said);
    };
    says(u"não é aberto"_s, own);
    QDir().mkpath(own);
    says(loginItem.registerItem().value_or(u"none"_s), {});
    QDir().rmdir(own);
    folder.write(own, "[Desktop Entry]\nExec=sh\nHidden=true\n");
    says(u"“Hidden”"_s, own);
    QFile::remove(own);
    loginItem.registerItem();
    says(u"O orvanta é aberto quando você entra."_s, {});
    QFile::remove(executable);
    says(executable, {});
    EXPECT_FALSE(shown<QMessageBox>()->isModal());
}

} // namespace

} // namespace orvanta
