#pragma once

#include "Linux/Wayland/WaylandConnection.h"

#include <QByteArray>
#include <QObject>

#include <cstdint>
#include <memory>
#include <vector>

namespace orvanta {

/// Whether a Wayland compositor has switched all its displays off to save power, where it tells:
/// wlroots' do ("wlr-output-power-management-unstable-v1"), and KWin ("dpms" of
/// plasma-wayland-protocols).
class WaylandDisplays final : public QObject {
    Q_OBJECT

public:
    /// `display` as in $WAYLAND_DISPLAY.
    explicit WaylandDisplays(const QByteArray& display);
    ~WaylandDisplays() override;
    WaylandDisplays(const WaylandDisplays&) = delete;
    WaylandDisplays& operator=(const WaylandDisplays&) = delete;

    /// False where nothing is known, too.
    bool areOff() const { return areOff_; }

Q_SIGNALS:
    void changed();

private:
    class Manager;
    class WlrManager;
    class KWinManager;
    struct Output;

    void start();
    void matchOutputs();
    void settle();

    /// Null where nothing is told.
    std::unique_ptr<WaylandConnection> connection_;
    std::unique_ptr<Manager> manager_;
    std::vector<std::unique_ptr<Output>> outputs_;
    bool areOff_ = false;
};

} // namespace orvanta
