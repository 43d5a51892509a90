#pragma once

#include "Linux/Wayland/WaylandConnection.h"
#include "Linux/Windows/WindowWatcher.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

struct wl_array;
struct zwlr_foreign_toplevel_handle_v1;
struct zwlr_foreign_toplevel_manager_v1;

namespace orvanta {

/// The active window of a compositor that lists its windows for task bars (wlr-protocols,
/// "wlr-foreign-toplevel-management-unstable-v1"), as wlroots' do. It tells no processes.
class WlrWindowWatcher final : public WindowWatcher {
    Q_OBJECT

public:
    /// `display` as in $WAYLAND_DISPLAY. Waiting until the compositor has told what it offers;
    /// Unsupported where nobody listens or no such list is offered.
    explicit WlrWindowWatcher(const QByteArray& display);
    ~WlrWindowWatcher() override;
    WlrWindowWatcher(const WlrWindowWatcher&) = delete;
    WlrWindowWatcher& operator=(const WlrWindowWatcher&) = delete;

private:
    /// What is told of a window holds from its "done" on.
    struct Toplevel {
        WlrWindowWatcher* watcher;
        zwlr_foreign_toplevel_handle_v1* handle;
        quint64 id;
        QString toldAppId;
        bool toldActive = false;
        QString appId;
        bool isActive = false;
    };

    void start();
    void add(zwlr_foreign_toplevel_handle_v1* handle);
    static void tellState(Toplevel& toplevel, const wl_array& states);
    void done(Toplevel& toplevel);
    void remove(Toplevel& toplevel);
    void publish();
    void end(State state);

    WaylandConnection connection_;
    zwlr_foreign_toplevel_manager_v1* manager_ = nullptr;
    /// The one that came to the front last stands at the end.
    std::vector<std::unique_ptr<Toplevel>> toplevels_;
    quint64 lastId_ = 0;
};

} // namespace orvanta
