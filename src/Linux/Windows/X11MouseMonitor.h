#pragma once

#include "Platform/Desktop.h"

#include <QByteArray>

#include <xcb/xcb.h>

#include <functional>
#include <memory>

class QSocketNotifier;

namespace orvanta {

/// Hears of every press of a mouse button on an X server (X Input Extension 2.2, raw events), over
/// a connection of its own, and takes none of them away.
class X11MouseMonitor final : public EventMonitor {
public:
    /// Null when there is no such server or it tells nobody. `pressed` is called when a press has
    /// been seen, on the main thread.
    static std::unique_ptr<X11MouseMonitor> open(const QByteArray& display,
                                                 std::function<void()> pressed);
    ~X11MouseMonitor() override;

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };
    using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

    X11MouseMonitor(Connection connection, std::uint8_t extension, std::function<void()> pressed);
    void read();

    Connection connection_;
    std::uint8_t extension_;
    std::function<void()> pressed_;
    std::unique_ptr<QSocketNotifier> readable_;
};

} // namespace orvanta
