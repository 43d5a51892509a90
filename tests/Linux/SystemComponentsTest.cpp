#include "Linux/Applications/SystemComponents.h"

#include <gmock/gmock.h>

namespace orvanta {

namespace {

TEST(SystemComponentsTest, PartsOfTheDesktopCount) {
    for (const char* id : {"xfce4-panel",
                           "Xfce4-panel",
                           "Wrapper-2.0",
                           "xfdesktop",
                           "lxqt-panel",
                           "plasmashell",
                           "org.kde.plasmashell",
                           "gnome-shell",
                           "org.gnome.Shell",
                           "org.gnome.Shell.PortalHelper",
                           "Rofi",
                           "krunner",
                           "i3lock",
                           "polkit-gnome-authentication-agent-1",
                           "gcr-prompter",
                           "xdg-desktop-portal-gtk",
                           "org.gnome.Settings",
                           "systemsettings",
                           "cinnamon-settings display",
                           "Panel.trayer"}) {
        EXPECT_TRUE(isLinuxSystemComponent(QString::fromUtf8(id))) << id;
    }
}

TEST(SystemComponentsTest, ApplicationsThatPeopleWorkInDoNot) {
    for (const char* id :
         {"", "thunar", "org.gnome.Nautilus", "org.kde.dolphin", "pcmanfm-qt", "nemo", "caja",
          "debian-xterm", "org.xfce.mousepad", "org.gnome.Shellcheck", "rofiles", "dunstable.app",
          "org.kde.plasma-systemmonitor", "com.brindlework.orvanta", "."}) {
        EXPECT_FALSE(isLinuxSystemComponent(QString::fromUtf8(id))) << id;
    }
}

} // namespace

} // namespace orvanta
