#pragma once

#include "Linux/Presence/BusService.h"

#include <QObject>

#include <memory>
#include <vector>

namespace orvanta {

/// The screen savers and lockers of the session bus: whether one is active. Each desktop has its
/// own name for the same interface (`GetActive`, `ActiveChanged`), that of freedesktop.org's draft
/// "Idle Inhibition Service" and of gnome-screensaver.
class ScreenSavers final : public QObject {
    Q_OBJECT

public:
    ScreenSavers(const QDBusConnection& sessionBus, MainLoop& mainLoop);
    void start();

    bool isActive() const;

    /// Lets go of what services said that vanished while they were active. Returns whether there
    /// were any.
    bool dropVanished();

Q_SIGNALS:
    void changed();

private:
    struct Saver {
        std::unique_ptr<BusService> service;
        std::vector<QString> paths; ///< where it may be asked, the likelier first
        QString interface;
        bool active = false;
        bool heard = false;          ///< this owner has told by itself
        bool vanishedActive = false; ///< the service died when active, and has not come back
    };

    void add(std::unique_ptr<BusService> service, const QString& interface,
             std::vector<QString> paths);
    void greet(Saver& saver);
    void ask(Saver& saver, size_t path);
    void setActive(Saver& saver, bool active);

    std::vector<std::unique_ptr<Saver>> savers_;
};

} // namespace orvanta
