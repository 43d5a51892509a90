#include "Linux/Applications/SystemComponents.h"

#include <algorithm>
#include <iterator>

namespace orvanta {

namespace {

/// Case-folded. An entry stands for itself and for whatever continues it after a dot or a space (as
/// Cinnamon's settings do in their class).
///
/// After each the Debian package, and what the text is there: "id" a desktop-file id, "class" a
/// WM_CLASS, "app_id" a Wayland one. A class is mostly the program's name. "Seen" are those whose
/// desktop file or program was read off the package of Debian 12; the others are from knowledge of
/// the programs.
constexpr QLatin1String components[] = {
    // GNOME
    QLatin1String("gnome-shell"),              // gnome-shell: class, seen
    QLatin1String("org.gnome.shell"),          // gnome-shell: id, seen, and its portal helper's
    QLatin1String("gnome-control-center"),     // gnome-control-center: class, seen
    QLatin1String("org.gnome.settings"),       // gnome-control-center: id, seen
    QLatin1String("gnome-screensaver"),        // gnome-screensaver: class
    QLatin1String("gnome-screensaver-dialog"), // gnome-screensaver: class
    QLatin1String("gnome-session-quit"),       // gnome-session-bin: class
    QLatin1String("gnome-panel"),              // gnome-panel: class
    QLatin1String("gnome-flashback"),          // gnome-flashback: class

    // KDE Plasma
    QLatin1String("plasmashell"),                       // plasma-workspace: class, seen
    QLatin1String("org.kde.plasmashell"),               // plasma-workspace: id, seen
    QLatin1String("plasmawindowed"),                    // plasma-workspace: class, seen
    QLatin1String("org.kde.plasmawindowed"),            // plasma-workspace: id, seen
    QLatin1String("krunner"),                           // plasma-workspace: class, seen
    QLatin1String("org.kde.krunner"),                   // plasma-workspace: id, seen
    QLatin1String("klipper"),                           // plasma-workspace: class, seen
    QLatin1String("org.kde.klipper"),                   // plasma-workspace: id, seen
    QLatin1String("ksmserver"),                         // plasma-workspace: class, seen
    QLatin1String("ksmserver-logout-greeter"),          // plasma-workspace: class, seen
    QLatin1String("ksplashqml"),                        // plasma-workspace: class, seen
    QLatin1String("xembedsniproxy"),                    // plasma-workspace: class, seen
    QLatin1String("kscreenlocker_greet"),               // libkscreenlocker5: class
    QLatin1String("kwin_x11"),                          // kwin-x11: class
    QLatin1String("kwin_wayland"),                      // kwin-wayland: app_id
    QLatin1String("kded5"),                             // kded5: class
    QLatin1String("org.kde.kded5"),                     // kded5: id
    QLatin1String("kwalletd5"),                         // libkf5wallet-bin: class
    QLatin1String("org.kde.kwalletd5"),                 // libkf5wallet-bin: id
    QLatin1String("ksshaskpass"),                       // ksshaskpass: class
    QLatin1String("org.kde.ksshaskpass"),               // ksshaskpass: id
    QLatin1String("kdesu"),                             // kde-cli-tools: class, seen
    QLatin1String("kcmshell5"),                         // kde-cli-tools: class, seen
    QLatin1String("org.kde.plasma.settings.open"),      // kde-cli-tools: id, seen
    QLatin1String("systemsettings"),                    // systemsettings: id and class, seen
    QLatin1String("systemsettings5"),                   // systemsettings: in its Exec, seen
    QLatin1String("kdesystemsettings"),                 // systemsettings: id, seen
    QLatin1String("org.kde.systemsettings"),            // systemsettings: app_id
    QLatin1String("polkit-kde-authentication-agent-1"), // polkit-kde-agent-1: class
    QLatin1String("org.kde.polkit-kde-authentication-agent-1"), // polkit-kde-agent-1: id
    QLatin1String("latte-dock"),                                // latte-dock: class
    QLatin1String("org.kde.latte-dock"),                        // latte-dock: id

    // XFCE
    QLatin1String("xfce4-panel"),                   // xfce4-panel: class, seen
    QLatin1String("wrapper-2.0"),                   // xfce4-panel: class of plugins
    QLatin1String("panel-preferences"),             // xfce4-panel: id, seen
    QLatin1String("panel-desktop-handler"),         // xfce4-panel: id, seen
    QLatin1String("xfdesktop"),                     // xfdesktop4: class, seen
    QLatin1String("xfdesktop-settings"),            // xfdesktop4: class, seen
    QLatin1String("xfce-backdrop-settings"),        // xfdesktop4: id, seen
    QLatin1String("xfce4-appfinder"),               // xfce4-appfinder: id and class, seen
    QLatin1String("xfce4-run"),                     // xfce4-appfinder: id, seen
    QLatin1String("xfce4-notifyd"),                 // xfce4-notifyd: id and class, seen
    QLatin1String("xfce4-notifyd-config"),          // xfce4-notifyd: id and class, seen
    QLatin1String("xfsettingsd"),                   // xfce4-settings: class, seen
    QLatin1String("xfce4-settings-manager"),        // xfce4-settings: class, seen
    QLatin1String("xfce-settings-manager"),         // xfce4-settings: id, seen
    QLatin1String("xfce4-settings-editor"),         // xfce4-settings: id and class, seen
    QLatin1String("xfce4-display-settings"),        // xfce4-settings: class, seen
    QLatin1String("xfce-display-settings"),         // xfce4-settings: id, seen
    QLatin1String("xfce4-keyboard-settings"),       // xfce4-settings: class, seen
    QLatin1String("xfce-keyboard-settings"),        // xfce4-settings: id, seen
    QLatin1String("xfce4-mouse-settings"),          // xfce4-settings: class, seen
    QLatin1String("xfce-mouse-settings"),           // xfce4-settings: id, seen
    QLatin1String("xfce4-appearance-settings"),     // xfce4-settings: class, seen
    QLatin1String("xfce-ui-settings"),              // xfce4-settings: id, seen
    QLatin1String("xfce4-accessibility-settings"),  // xfce4-settings: id and class, seen
    QLatin1String("xfce4-color-settings"),          // xfce4-settings: id and class, seen
    QLatin1String("xfce4-mime-settings"),           // xfce4-settings: id and class, seen
    QLatin1String("xfce4-mime-helper"),             // xfce4-settings: class, seen
    QLatin1String("xfwm4"),                         // xfwm4: class
    QLatin1String("xfwm4-settings"),                // xfwm4: class
    QLatin1String("xfce-wm-settings"),              // xfwm4: id
    QLatin1String("xfwm4-tweaks-settings"),         // xfwm4: class
    QLatin1String("xfce-wmtweaks-settings"),        // xfwm4: id
    QLatin1String("xfwm4-workspace-settings"),      // xfwm4: class
    QLatin1String("xfce-workspaces-settings"),      // xfwm4: id
    QLatin1String("xfce4-session"),                 // xfce4-session: class
    QLatin1String("xfce4-session-logout"),          // xfce4-session: id and class
    QLatin1String("xfce4-session-settings"),        // xfce4-session: class
    QLatin1String("xfce-session-settings"),         // xfce4-session: id
    QLatin1String("xfce4-power-manager"),           // xfce4-power-manager: class
    QLatin1String("xfce4-power-manager-settings"),  // xfce4-power-manager: id and class
    QLatin1String("xfce4-screensaver"),             // xfce4-screensaver: class
    QLatin1String("xfce4-screensaver-dialog"),      // xfce4-screensaver: class
    QLatin1String("xfce4-screensaver-preferences"), // xfce4-screensaver: id and class
    QLatin1String("xfce-polkit"),                   // not in Debian, XFCE's polkit agent: class

    // LXQt
    QLatin1String("lxqt-panel"),                     // lxqt-panel: id and class, seen
    QLatin1String("lxqt-config"),                    // lxqt-config: id and class, seen
    QLatin1String("lxqt-config-appearance"),         // lxqt-config: id and class, seen
    QLatin1String("lxqt-config-brightness"),         // lxqt-config: id and class, seen
    QLatin1String("lxqt-config-file-associations"),  // lxqt-config: id and class, seen
    QLatin1String("lxqt-config-input"),              // lxqt-config: id and class, seen
    QLatin1String("lxqt-config-locale"),             // lxqt-config: id and class, seen
    QLatin1String("lxqt-config-monitor"),            // lxqt-config: id and class, seen
    QLatin1String("lxqt-config-notificationd"),      // lxqt-notificationd: id and class
    QLatin1String("lxqt-config-powermanagement"),    // lxqt-powermanagement: id and class
    QLatin1String("lxqt-config-session"),            // lxqt-session: id and class
    QLatin1String("lxqt-config-globalkeyshortcuts"), // lxqt-globalkeys: id and class
    QLatin1String("lxqt-session"),                   // lxqt-session: class
    QLatin1String("lxqt-leave"),                     // lxqt-session: id and class
    QLatin1String("lxqt-runner"),                    // lxqt-runner: class
    QLatin1String("lxqt-notificationd"),             // lxqt-notificationd: class
    QLatin1String("lxqt-powermanagement"),           // lxqt-powermanagement: class
    QLatin1String("lxqt-policykit-agent"),           // lxqt-policykit: class
    QLatin1String("lxqt-openssh-askpass"),           // lxqt-openssh-askpass: class
    QLatin1String("lxqt-sudo"),                      // lxqt-sudo: class

    // LXDE
    QLatin1String("lxpanel"),                // lxpanel: class
    QLatin1String("lxsession-logout"),       // lxsession-logout: class
    QLatin1String("lxsession-default-apps"), // lxsession: id and class
    QLatin1String("lxpolkit"),               // lxpolkit: class
    QLatin1String("lxappearance"),           // lxappearance: id and class
    QLatin1String("lxinput"),                // lxinput: id and class
    QLatin1String("lxrandr"),                // lxrandr: id and class

    // MATE
    QLatin1String("mate-panel"),                         // mate-panel: id and class, seen
    QLatin1String("mate-control-center"),                // mate-control-center: class
    QLatin1String("matecc"),                             // mate-control-center: id
    QLatin1String("mate-screensaver"),                   // mate-screensaver: class
    QLatin1String("mate-screensaver-dialog"),            // mate-screensaver: class
    QLatin1String("mate-session"),                       // mate-session-manager: class
    QLatin1String("mate-settings-daemon"),               // mate-settings-daemon: class
    QLatin1String("mate-notification-daemon"),           // mate-notification-daemon: class
    QLatin1String("polkit-mate-authentication-agent-1"), // mate-polkit: class
    QLatin1String("brisk-menu"),                         // mate-applet-brisk-menu: class

    // Cinnamon
    QLatin1String("cinnamon"),                // cinnamon: class
    QLatin1String("org.cinnamon"),            // cinnamon-common: its settings' app_id, seen
    QLatin1String("cinnamon-settings"),       // cinnamon-common: class, seen
    QLatin1String("cinnamon-control-center"), // cinnamon-control-center: class
    QLatin1String("cinnamon-session"),        // cinnamon-session: class
    QLatin1String("cinnamon-session-quit"),   // cinnamon-session: class
    QLatin1String("cinnamon-screensaver"),    // cinnamon-screensaver: class

    // Budgie
    QLatin1String("budgie-panel"),                              // budgie-core: class, seen
    QLatin1String("org.buddiesofbudgie.budgiepanel"),           // budgie-core: id, seen
    QLatin1String("budgie-daemon"),                             // budgie-core: class, seen
    QLatin1String("org.buddiesofbudgie.budgiedaemon"),          // budgie-core: id, seen
    QLatin1String("budgie-wm"),                                 // budgie-core: class, seen
    QLatin1String("org.buddiesofbudgie.budgiewm"),              // budgie-core: id, seen
    QLatin1String("budgie-run-dialog"),                         // budgie-core: class, seen
    QLatin1String("budgie-power-dialog"),                       // budgie-core: class, seen
    QLatin1String("org.buddiesofbudgie.budgiepowerdialog"),     // budgie-core: id, seen
    QLatin1String("budgie-polkit-dialog"),                      // budgie-core: class, seen
    QLatin1String("org.buddiesofbudgie.budgiepolkit"),          // budgie-core: id, seen
    QLatin1String("budgie-desktop-settings"),                   // budgie-core: class, seen
    QLatin1String("org.buddiesofbudgie.budgiedesktopsettings"), // budgie-core: id, seen
    QLatin1String("budgie-control-center"),                     // budgie-control-center: class

    // Pantheon
    QLatin1String("wingpanel"),                          // not in Debian, the panel: class
    QLatin1String("io.elementary.wingpanel"),            // not in Debian, the panel: id
    QLatin1String("gala"),                               // gala: class
    QLatin1String("io.elementary.dock"),                 // not in Debian, the dock: id
    QLatin1String("io.elementary.switchboard"),          // not in Debian, settings: id
    QLatin1String("io.elementary.settings"),             // not in Debian, settings: id
    QLatin1String("io.elementary.greeter"),              // not in Debian, the greeter: id
    QLatin1String("io.elementary.notifications"),        // not in Debian, notifications: id
    QLatin1String("io.elementary.desktop.agent-polkit"), // not in Debian, polkit agent: id
    QLatin1String("io.elementary.shortcut-overlay"),     // not in Debian, part of the shell: id

    // Enlightenment
    QLatin1String("enlightenment"),         // enlightenment: class
    QLatin1String("enlightenment_askpass"), // enlightenment: class

    // Panels and docks of plain window managers and compositors
    QLatin1String("plank"),        // plank: id and class, seen
    QLatin1String("tint2"),        // tint2: class
    QLatin1String("tint2conf"),    // tint2: id and class
    QLatin1String("polybar"),      // polybar: class
    QLatin1String("waybar"),       // waybar: app_id
    QLatin1String("i3bar"),        // i3-wm: class
    QLatin1String("i3-nagbar"),    // i3-wm: class
    QLatin1String("i3-frame"),     // i3-wm: class of empty containers
    QLatin1String("swaybar"),      // sway: app_id
    QLatin1String("swaynag"),      // sway: app_id
    QLatin1String("trayer"),       // trayer: class
    QLatin1String("panel.trayer"), // trayer: class
    QLatin1String("stalonetray"),  // stalonetray: class
    QLatin1String("fbpanel"),      // fbpanel: class
    QLatin1String("cairo-dock"),   // cairo-dock-core: id and class
    QLatin1String("sfwbar"),       // sfwbar: app_id
    QLatin1String("yambar"),       // yambar: app_id
    QLatin1String("wf-panel"),     // not in Debian, Wayfire's panel: app_id
    QLatin1String("nwg-panel"),    // not in Debian, a panel: app_id
    QLatin1String("nwg-drawer"),   // not in Debian, a launcher: app_id
    QLatin1String("wlogout"),      // wlogout: app_id
    QLatin1String("conky"),        // conky-std: class

    // Launchers
    QLatin1String("rofi"),      // rofi: class, seen
    QLatin1String("dmenu"),     // suckless-tools: class
    QLatin1String("wofi"),      // wofi: app_id
    QLatin1String("bemenu"),    // bemenu: class
    QLatin1String("fuzzel"),    // fuzzel: app_id
    QLatin1String("tofi"),      // tofi: app_id
    QLatin1String("ulauncher"), // not in Debian: id and class
    QLatin1String("albert"),    // not in Debian: id and class
    QLatin1String("synapse"),   // synapse: id and class
    QLatin1String("kupfer"),    // kupfer: id and class
    QLatin1String("gmrun"),     // gmrun: class

    // Lock screens and greeters
    QLatin1String("xscreensaver"),        // xscreensaver: class
    QLatin1String("i3lock"),              // i3lock: class
    QLatin1String("swaylock"),            // swaylock: app_id
    QLatin1String("waylock"),             // waylock: app_id
    QLatin1String("gtklock"),             // gtklock: app_id
    QLatin1String("hyprlock"),            // not in Debian 12: app_id
    QLatin1String("slock"),               // suckless-tools: class
    QLatin1String("xsecurelock"),         // xsecurelock: class
    QLatin1String("xlock"),               // xlockmore: class
    QLatin1String("xtrlock"),             // xtrlock: class
    QLatin1String("light-locker"),        // light-locker: class
    QLatin1String("lightdm-gtk-greeter"), // lightdm-gtk-greeter: id and class
    QLatin1String("slick-greeter"),       // slick-greeter: id and class
    QLatin1String("arctica-greeter"),     // arctica-greeter: id and class
    QLatin1String("sddm-greeter"),        // sddm: class
    QLatin1String("gtkgreet"),            // gtkgreet: app_id
    QLatin1String("wlgreet"),             // wlgreet: app_id

    // Notifications
    QLatin1String("dunst"),                 // dunst: class
    QLatin1String("mako"),                  // mako-notifier: app_id
    QLatin1String("fnott"),                 // fnott: app_id
    QLatin1String("swaync"),                // sway-notification-center: app_id
    QLatin1String("org.erikreider.swaync"), // sway-notification-center: app_id
    QLatin1String("notify-osd"),            // notify-osd: class
    QLatin1String("notification-daemon"),   // notification-daemon: class

    // Passwords, keys and permissions
    QLatin1String("polkit-gnome-authentication-agent-1"), // policykit-1-gnome: id and class, seen
    QLatin1String("gcr-prompter"),                        // gcr: id and class
    QLatin1String("ssh-askpass"),                         // ssh-askpass: class
    QLatin1String("sshaskpass"),                          // ssh-askpass: class
    QLatin1String("x11-ssh-askpass"),                     // ssh-askpass: program
    QLatin1String("gnome-ssh-askpass"),                   // ssh-askpass-gnome: class
    QLatin1String("gnome-ssh-askpass3"),                  // ssh-askpass-gnome: class
    QLatin1String("ssh-askpass-fullscreen"),              // ssh-askpass-fullscreen: class
    QLatin1String("pinentry"),                            // pinentry-*: class
    QLatin1String("pinentry-gtk-2"),                      // pinentry-gtk2: class
    QLatin1String("pinentry-gnome3"),                     // pinentry-gnome3: class
    QLatin1String("pinentry-qt"),                         // pinentry-qt: class
    QLatin1String("pinentry-x11"),                        // pinentry-qt: program
    QLatin1String("pinentry-fltk"),                       // pinentry-fltk: class
    QLatin1String("org.gnupg.pinentry-qt"),               // pinentry-qt: id
    QLatin1String("nm-applet"),                           // network-manager-gnome: id and class

    // Dialogues that portals show for other applications
    QLatin1String("xdg-desktop-portal-gtk"),                  // xdg-desktop-portal-gtk: id, seen
    QLatin1String("xdg-desktop-portal-gnome"),                // xdg-desktop-portal-gnome: id
    QLatin1String("xdg-desktop-portal-kde"),                  // xdg-desktop-portal-kde: class
    QLatin1String("org.freedesktop.impl.portal.desktop.kde"), // xdg-desktop-portal-kde: id
    QLatin1String("xdg-desktop-portal-lxqt"),                 // xdg-desktop-portal-lxqt: class
    QLatin1String("xdg-desktop-portal-xapp"),                 // xdg-desktop-portal-xapp: class
};

} // namespace

bool isLinuxSystemComponent(const QString& bundleIdentifier) {
    const QString id = bundleIdentifier.toCaseFolded();
    return std::ranges::any_of(components, [&](QLatin1String component) {
        return id.startsWith(component) &&
               (id.size() == component.size() || id[component.size()] == QLatin1Char('.') ||
                id[component.size()] == QLatin1Char(' '));
    });
}

} // namespace orvanta
