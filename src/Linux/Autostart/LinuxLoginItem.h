#pragma once

#include "Platform/LoginItem.h"

#include <QMessageBox>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <optional>

namespace orvanta {

/// The desktop entry by which desktops start Orvanta when the person logs in (freedesktop.org,
/// "Desktop Application Autostart", 0.5), com.brindlework.orvanta.desktop.
///
/// The person's own entry stands for the one that is there for everybody. Where the latter exists,
/// unregistering puts one into the person's folder that hides it, with a mark by which it is known
/// as Orvanta's own doing: any other way to turn it off is the person's, and stays.
class LinuxLoginItem final : public LoginItem {
public:
    struct Places {
        QString configHome;     ///< where XDG_CONFIG_HOME points
        QStringList configDirs; ///< what XDG_CONFIG_DIRS lists
        QString executable;     ///< absolute path of the program to start
        QStringList desktops;   ///< what XDG_CURRENT_DESKTOP lists

        /// By the environment, of this program.
        static Places ofThisProcess();
    };

    explicit LinuxLoginItem(Places places);
    ~LinuxLoginItem() override;

    /// An entry whose program is no longer there counts as none, so that it is registered anew.
    Status status() const override;
    std::optional<QString> registerItem() override;
    std::optional<QString> unregisterItem() override;
    /// Starts what the desktop has for it. Where that is nothing, a message says where the entry
    /// is, how it stands and what to do; it waits for nobody.
    void openSystemSettingsLoginItems() override;

private:
    struct Found;

    Found find() const;
    QString ownPath() const;
    void explain();

    Places places_;
    std::optional<QString> problem_; ///< of the last registration, for the message
    QPointer<QMessageBox> message_;
};

} // namespace orvanta
