#include "Linux/Applications/SystemComponents.h"

#include "Testing.h"

using namespace orvanta;

TEST(SystemComponentsTest, PartsOfTheDesktopCountAndApplicationsThatPeopleWorkInDoNot) {
    for (const char* id :
         {"xfce4-panel", "Xfce4-panel", "Wrapper-2.0", "xfdesktop", "org.kde.plasmashell",
          "org.gnome.Shell.PortalHelper", "Rofi", "cinnamon-settings display", "Panel.trayer"}) {
        EXPECT_TRUE(isLinuxSystemComponent(QString::fromUtf8(id))) << id;
    }
    for (const char* id :
         {"", ".", "thunar", "org.gnome.Nautilus", "org.kde.dolphin", "debian-xterm",
          "org.gnome.Shellcheck", "rofiles", "dunstable.app", "com.brindlework.orvanta"}) {
        EXPECT_FALSE(isLinuxSystemComponent(QString::fromUtf8(id))) << id;
    }
}
