#pragma once

#include "Linux/Windows/ListedWindowWatcher.h"

#include <memory>

struct wl_array;
struct zwlr_foreign_toplevel_handle_v1;
struct zwlr_foreign_toplevel_manager_v1;

namespace orvanta {

/// The list of wlroots' compositors (wlr-protocols, "wlr-foreign-toplevel-management-unstable-v1").
/// It tells no processes.
class WlrWindowList final : public ListedWindowWatcher::List {
public:
    /// Null where it is not offered. The connection and the watcher outlive the list.
    static std::unique_ptr<WlrWindowList> open(WaylandConnection& connection,
                                               ListedWindowWatcher& watcher);
    ~WlrWindowList() override;

private:
    struct Toplevel;

    WlrWindowList(zwlr_foreign_toplevel_manager_v1* manager, ListedWindowWatcher& watcher);
    void add(zwlr_foreign_toplevel_handle_v1* handle);
    static void tellState(Toplevel& toplevel, const wl_array& states);
    void done(Toplevel& toplevel);

    zwlr_foreign_toplevel_manager_v1* manager_;
    ListedWindowWatcher& watcher_;
};

} // namespace orvanta
