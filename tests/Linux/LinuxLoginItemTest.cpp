#include "Linux/Autostart/LinuxLoginItem.h"

#include "Eventually.h"
#include "Fakes/QtPrinters.h"
#include "Linux/Applications/ExecLine.h"
#include "Linux/Applications/KeyFile.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace orvanta {

namespace {

using namespace Qt::StringLiterals;
using Status = LoginItem::Status;

class LinuxLoginItemTest : public testing::Test {
protected:
    LinuxLoginItemTest() { makeProgram(executable); }
    ~LinuxLoginItemTest() override { qputenv("PATH", path); }

    static void write(const QString& name, const QByteArray& content) {
        QDir().mkpath(QFileInfo(name).path());
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    static void makeProgram(const QString& name, const QByteArray& script = {}) {
        write(name, "#!/bin/sh\n" + script);
        ::chmod(qPrintable(name), 0755);
    }
    static QByteArray contentOf(const QString& name) {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    LinuxLoginItem item(const QStringList& desktops = {}) const {
        return LinuxLoginItem({home, {folder.filePath(u"xdg"_s)}, executable, desktops});
    }
    static QMessageBox* message() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* box = qobject_cast<QMessageBox*>(widget); box && box->isVisible()) {
                return box;
            }
        }
        return nullptr;
    }

    const QTemporaryDir folder;
    const QByteArray path = qgetenv("PATH");
    const QString executable = folder.filePath(u"with $pace 100%/orvanta"_s);
    const QString home = folder.filePath(u"home"_s);
    const QString own = home + u"/autostart/com.brindlework.orvanta.desktop"_s;
    const QString everybodys = folder.filePath(u"xdg/autostart/com.brindlework.orvanta.desktop"_s);
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
    EXPECT_EQ(execWords(QString::fromUtf8(entry->text("Desktop Entry", "Exec").get()), {}),
              QStringList{executable});
    EXPECT_EQ(QString::fromUtf8(entry->text("Desktop Entry", "TryExec").get()), executable);

    EXPECT_EQ(item().unregisterItem(), std::nullopt);
    EXPECT_FALSE(QFile::exists(own));
}

TEST_F(LinuxLoginItemTest, WhatThePersonOrTheDesktopTurnedOffStaysOff) {
    const QByteArray entry = "[Desktop Entry]\nType=Application\nExec=sh -c orvanta\n";
    const struct {
        QByteArray line;
        QStringList desktops;
        Status status;
    } rows[] = {
        {"", {}, Status::enabled},
        {"Hidden=false\nX-GNOME-Autostart-enabled=true\n", {}, Status::enabled},
        {"Hidden=true\n", {}, Status::requiresApproval},
        {"X-GNOME-Autostart-enabled=false\n", {}, Status::requiresApproval},
        {"X-MATE-Autostart-enabled=false\n", {}, Status::requiresApproval},
        {"OnlyShowIn=KDE;\n", {u"KDE"_s}, Status::enabled},
        {"OnlyShowIn=GNOME;\n", {u"ubuntu"_s, u"GNOME"_s}, Status::enabled},
        {"OnlyShowIn=KDE;XFCE;\n", {u"GNOME"_s}, Status::requiresApproval},
        {"OnlyShowIn=KDE;\n", {}, Status::requiresApproval},
        {"NotShowIn=KDE;\n", {u"GNOME"_s}, Status::enabled},
        {"NotShowIn=GNOME;\n", {u"ubuntu"_s, u"GNOME"_s}, Status::requiresApproval},
    };
    for (const auto& [line, desktops, expected] : rows) {
        for (const QString& place : {own, everybodys}) {
            write(place, entry + line);
            EXPECT_EQ(item(desktops).status(), expected) << line.constData();
            EXPECT_EQ(item(desktops).registerItem(), std::nullopt);
            EXPECT_EQ(contentOf(place), entry + line);
            EXPECT_EQ(QFile::exists(own), place == own);
            QFile::remove(place);
        }
    }
    write(everybodys, entry);
    write(own, entry + "Hidden=true\n");
    EXPECT_EQ(item().status(), Status::requiresApproval);
}

TEST_F(LinuxLoginItemTest, TheEntryForEverybodyIsHiddenAndComesBack) {
    write(everybodys, "[Desktop Entry]\nType=Application\nExec=sh\n");
    EXPECT_EQ(item().status(), Status::enabled);
    EXPECT_EQ(item().unregisterItem(), std::nullopt);
    EXPECT_TRUE(contentOf(own).contains("\nHidden=true\n"));
    EXPECT_EQ(item().status(), Status::notRegistered) << "nobody but Orvanta turned it off";
    EXPECT_EQ(item().registerItem(), std::nullopt);
    EXPECT_EQ(item().status(), Status::enabled);
}

TEST_F(LinuxLoginItemTest, AnEntryThatStartsNothingIsRenewed) {
    for (const char* content :
         {"", "garbage", "[Desktop Entry]\nExec=/gone/orvanta\n", "[Desktop Entry]\nExec=\"\n",
          "[Desktop Entry]\nExec=sh\nTryExec=/gone/orvanta\n"}) {
        write(own, content);
        EXPECT_EQ(item().status(), Status::notRegistered) << content;
        EXPECT_EQ(item().registerItem(), std::nullopt);
        EXPECT_EQ(item().status(), Status::enabled) << content;
    }
}

TEST_F(LinuxLoginItemTest, WhatGoesWrongIsToldInTheSystemsWords) {
    QDir().mkpath(own);
    EXPECT_TRUE(item().registerItem().value_or(QString()).endsWith(qt_error_string(EISDIR)));
    EXPECT_TRUE(item().unregisterItem().value_or(QString()).endsWith(qt_error_string(EISDIR)));
    QDir(home).removeRecursively();
    write(home, "in the way");
    EXPECT_TRUE(item().registerItem().value_or(QString()).endsWith(qt_error_string(ENOTDIR)));
    EXPECT_EQ(item().unregisterItem(), std::nullopt);
    QFile::remove(executable);
    EXPECT_EQ(item().status(), Status::notFound);
    EXPECT_TRUE(item().registerItem().value_or(QString()).endsWith(qt_error_string(ENOENT)));
    EXPECT_EQ(contentOf(home), "in the way");
}

TEST_F(LinuxLoginItemTest, TheDesktopsOwnSettingsAreStarted) {
    const QString started = folder.filePath(u"started"_s);
    for (const char* name : {"gnome-tweaks", "systemsettings", "cinnamon-settings"}) {
        makeProgram(folder.filePath(u"bin/"_s + QLatin1StringView(name)),
                    "echo " + QByteArray(name) + " $1 >" + QFile::encodeName(started) + "-\n" +
                        "/bin/mv " + QFile::encodeName(started) + "- " +
                        QFile::encodeName(started) + '\n');
    }
    qputenv("PATH", QFile::encodeName(folder.filePath(u"bin"_s)));
    const std::pair<QStringList, QByteArray> rows[] = {
        {{u"ubuntu"_s, u"GNOME"_s}, "gnome-tweaks\n"},
        {{u"KDE"_s}, "systemsettings kcm_autostart\n"},
        {{u"X-Cinnamon"_s}, "cinnamon-settings startup\n"},
    };
    for (const auto& [desktops, command] : rows) {
        item(desktops).openSystemSettingsLoginItems();
        EXPECT_TRUE(eventually([&] { return QFile::exists(started); }));
        EXPECT_EQ(contentOf(started), command);
        QFile::remove(started);
        EXPECT_EQ(message(), nullptr);
    }
}

TEST_F(LinuxLoginItemTest, WithoutSettingsAMessageSaysWhereTheEntryIs) {
    LinuxLoginItem loginItem = item({u"XFCE"_s});
    const auto said = [&] {
        loginItem.openSystemSettingsLoginItems();
        return message() ? message()->text() + u'\n' + message()->informativeText() : QString();
    };
    EXPECT_TRUE(said().contains(u"não é aberto"_s) && said().contains(own));
    QDir().mkpath(own);
    const QString problem = loginItem.registerItem().value_or(u"none"_s);
    EXPECT_TRUE(said().contains(problem)) << qPrintable(said());
    QDir().rmdir(own);
    write(own, "[Desktop Entry]\nExec=sh\nHidden=true\n");
    EXPECT_TRUE(said().contains(u"“Hidden”"_s) && said().contains(own));
    QFile::remove(own);
    loginItem.registerItem();
    EXPECT_TRUE(said().contains(u"O orvanta é aberto quando você entra."_s));
    QFile::remove(executable);
    EXPECT_TRUE(said().contains(executable));
    EXPECT_FALSE(message()->isModal());
}

} // namespace

} // namespace orvanta
