#pragma once

#include "Linux/StatusNotifier/StatusNotifierItem.h"
#include "Platform/MainLoop.h"
#include "Platform/StatusItem.h"

#include <memory>

namespace orvanta {

class EmbeddedStatusItem;
class SystemTrayManager;

/// The status item where this desktop has a place for it: with a StatusNotifierHost if there is
/// one, else in an X11 tray, and wherever a place appears later.
class LinuxStatusItem final : public StatusItem {
public:
    /// Needs a QApplication; the main loop outlives the item.
    LinuxStatusItem(const QDBusConnection& connection, Handlers handlers,
                    StatusNotifierItem::Configuration configuration, MainLoop& mainLoop);
    ~LinuxStatusItem() override;
    LinuxStatusItem(const LinuxStatusItem&) = delete;
    LinuxStatusItem& operator=(const LinuxStatusItem&) = delete;

    bool isShown() const override;
    void setTitle(const StatusTitle& title) override;
    void toolTipChanged() override;

private:
    void choose();
    void embed();

    Handlers handlers_;
    MainLoop& mainLoop_;
    StatusTitle title_;
    StatusNotifierItem notifierItem_;
    std::unique_ptr<SystemTrayManager> trayManager_; ///< absent until a host was missed
    std::unique_ptr<EmbeddedStatusItem> embedded_;
    std::unique_ptr<MainLoopTimer> embedding_;
};

} // namespace orvanta
