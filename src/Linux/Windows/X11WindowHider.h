#pragma once

#include <QByteArray>

#include <xcb/xcb.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>

class QSocketNotifier;

namespace orvanta {

/// Iconifies the windows of a process and its children as they appear, and again when they come
/// back by themselves, as long as this lives: a client message WM_CHANGE_STATE to the window
/// manager (ICCCM 4.1.4) for what _NET_CLIENT_LIST shows with such a _NET_WM_PID (Extended Window
/// Manager Hints 1.5). Over a connection of its own.
class X11WindowHider final {
public:
    /// Null when there is no such server. `hidden` is called when the window manager has iconified
    /// a window, on the main thread and never from within this call; it must not destroy this.
    static std::unique_ptr<X11WindowHider> open(const QByteArray& display, qint64 process,
                                                std::function<void()> hidden);
    ~X11WindowHider();
    X11WindowHider(const X11WindowHider&) = delete;
    X11WindowHider& operator=(const X11WindowHider&) = delete;

private:
    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };
    using Connection = std::unique_ptr<xcb_connection_t, Disconnect>;

    X11WindowHider(Connection connection, xcb_window_t root, qint64 process,
                   std::function<void()> hidden);
    void read();
    void look();
    bool isOurs(qint64 process) const;
    void iconify(xcb_window_t window);
    std::uint32_t stateOf(xcb_window_t window) const;
    void watch(xcb_window_t window) const;

    Connection connection_;
    xcb_window_t root_;
    qint64 process_;
    std::function<void()> hidden_;
    xcb_atom_t clientList_;
    xcb_atom_t processOfWindow_;
    xcb_atom_t state_;
    xcb_atom_t changeState_;
    std::set<xcb_window_t> seen_;
    std::map<xcb_window_t, int> times_; ///< that each was iconified
    std::unique_ptr<QSocketNotifier> readable_;
};

} // namespace orvanta
