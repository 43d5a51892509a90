#pragma once

#include "Linux/MainLoop/ReadableNotifier.h"
#include "Platform/MainLoop.h"

#include <QByteArray>
#include <QObject>
#include <QTimer>

#include <cstdint>
#include <memory>

struct xcb_connection_t;

namespace orvanta {

/// What an X server says of its displays.
struct X11DisplayState {
    bool saverOn = false;     ///< its own screen saver blanks the screen
    bool dpmsEnabled = false; ///< whether the level below is in force
    uint16_t dpmsLevel = 0;   ///< 0 on, 1 standby, 2 suspend, 3 off

    bool isOff() const { return saverOn || (dpmsEnabled && dpmsLevel != 0); }
};

/// Whether an X server has switched its displays off, by power saving ("X Display Power Management
/// Signaling (DPMS) Extension") or by its own screen saver ("X11 Screen Saver Extension").
///
/// DPMS announces its changes from version 1.2 on. Before that they are read when the saver says
/// something, which goes on and off with them on common servers, and once every `pollInterval`,
/// which costs next to nothing. Without DPMS nothing is polled.
class X11Displays final : public QObject {
    Q_OBJECT

public:
    static constexpr MainLoop::Duration pollInterval{30.0};

    /// Connects to the display of this name (as in DISPLAY) and reads its state.
    X11Displays(const QByteArray& display, MainLoop& mainLoop);
    ~X11Displays() override;
    X11Displays(const X11Displays&) = delete;
    X11Displays& operator=(const X11Displays&) = delete;

    /// False where nothing is known, too.
    bool areOff() const { return state_.isOff(); }

Q_SIGNALS:
    void changed();

private:
    bool connectTo(const QByteArray& display);
    void findSaver();
    void findDpms();
    void read();
    void readState();
    void process();
    void takeEvents();
    void settle();
    void end();

    struct Disconnect {
        void operator()(xcb_connection_t* connection) const;
    };
    MainLoop& mainLoop_;
    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    std::unique_ptr<ReadableNotifier> readable_;
    QTimer again_;
    std::unique_ptr<MainLoopTimer> poll_;
    uint32_t root_ = 0;
    bool hasSaver_ = false;
    bool hasDpms_ = false;
    uint8_t saverEvent_ = 0;
    uint8_t dpmsOpcode_ = 0;
    bool moved_ = false;
    X11DisplayState state_;
};

} // namespace orvanta
