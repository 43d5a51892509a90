#pragma once

#include "Linux/Windows/WindowWatcher.h"
#include "Platform/MainLoop.h"

#include <QByteArray>
#include <QTimer>

#include <xcb/xcb.h>

#include <array>
#include <memory>

namespace orvanta {

class ReadableNotifier;

/// The active window of an X server, as its window manager publishes it (Extended Window Manager
/// Hints 1.5), over a connection of its own.
///
/// Idle it costs nothing: it is woken by property changes of the root window only. The window's
/// process comes from the X-Resource extension (1.2) where the server has it, as _NET_WM_PID is
/// the client's own claim and counts in the client's pid namespace.
class X11WindowWatcher final : public WindowWatcher {
    Q_OBJECT

public:
    /// `display` as in $DISPLAY. No such server, or one that only stands in for a Wayland
    /// compositor: the state is Unsupported. `mainLoop` outlives the watcher.
    X11WindowWatcher(const QByteArray& display, MainLoop& mainLoop);
    ~X11WindowWatcher() override;
    X11WindowWatcher(const X11WindowWatcher&) = delete;
    X11WindowWatcher& operator=(const X11WindowWatcher&) = delete;

    void update() override;

private:
    enum Atom : unsigned {
        ActiveWindow,
        ClientList,
        Supported,
        SupportingWmCheck,
        WmPid,
        WindowType,
        WindowTypeDesktop,
        WindowTypeDock,
        GtkApplicationId,
        KdeDesktopFile,
        Utf8String,
        AtomCount
    };

    struct Disconnect {
        void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
    };

    using Atoms = std::array<xcb_atom_t, AtomCount>;

    struct WindowRequest;

    bool connectTo(const QByteArray& display);
    void process();
    void settle();
    void end();
    void note(const xcb_generic_event_t& event);
    void readWindowManager();
    bool isWindowManager(xcb_window_t check) const;
    void readActiveWindow();
    xcb_window_t activeWindowId() const;
    std::optional<Window> readWindow(xcb_window_t id) const;
    void stopAwaitingClass();
    void publish(std::optional<Window> window);
    void select(xcb_window_t window, uint32_t events) const;

    MainLoop& mainLoop_;
    std::unique_ptr<xcb_connection_t, Disconnect> connection_;
    std::unique_ptr<ReadableNotifier> readable_;
    xcb_window_t root_ = XCB_WINDOW_NONE;
    Atoms atoms_{};
    bool tellsClientIds_ = false;

    xcb_window_t check_ = XCB_WINDOW_NONE;         ///< the window manager's own window
    xcb_window_t awaitingClass_ = XCB_WINDOW_NONE; ///< active, but nameless so far
    bool windowManagerMoved_ = false;
    bool activeWindowMoved_ = false;
    QTimer gather_; ///< until what has come is looked at together

    std::unique_ptr<MainLoopTimer> patience_;
    std::unique_ptr<MainLoopTimer> noneSettles_;
};

} // namespace orvanta
