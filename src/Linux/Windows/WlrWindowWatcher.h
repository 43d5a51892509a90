#pragma once

#include "Linux/Windows/ListedWindowWatcher.h"

struct wl_array;
struct zwlr_foreign_toplevel_handle_v1;
struct zwlr_foreign_toplevel_manager_v1;

namespace orvanta {

/// The active window of a compositor with the list of wlroots (wlr-protocols,
/// "wlr-foreign-toplevel-management-unstable-v1"). It tells no processes.
class WlrWindowWatcher final : public ListedWindowWatcher {
    Q_OBJECT

public:
    explicit WlrWindowWatcher(const QByteArray& display);
    ~WlrWindowWatcher() override;
    WlrWindowWatcher(const WlrWindowWatcher&) = delete;
    WlrWindowWatcher& operator=(const WlrWindowWatcher&) = delete;

private:
    struct Toplevel;

    void start() override;
    void add(zwlr_foreign_toplevel_handle_v1* handle);
    static void tellState(Toplevel& toplevel, const wl_array& states);
    void done(Toplevel& toplevel);

    zwlr_foreign_toplevel_manager_v1* manager_ = nullptr;
};

} // namespace orvanta
