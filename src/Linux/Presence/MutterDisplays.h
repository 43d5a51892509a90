#pragma once

#include "Linux/Presence/BusService.h"

#include <QObject>

namespace orvanta {

/// Whether GNOME's compositor has switched the displays off: `PowerSaveMode` of
/// `org.gnome.Mutter.DisplayConfig` (0 on, 1 standby, 2 suspend, 3 off, -1 unknown; mutter's
/// "org.gnome.Mutter.DisplayConfig.xml"). Unknown counts as on.
class MutterDisplays final : public QObject {
    Q_OBJECT

public:
    MutterDisplays(const QDBusConnection& sessionBus, MainLoop& mainLoop);
    void start() { service_.start(); }

    bool areOff() const { return off_; }

Q_SIGNALS:
    void changed();

private:
    void greet();
    void ask();
    void note(const Properties& properties);
    void setOff(bool off);

    BusService service_;
    bool off_ = false;
    bool heard_ = false;
    bool asking_ = false;
};

} // namespace orvanta
