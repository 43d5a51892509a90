#pragma once

#include "Linux/Windows/ListedWindowWatcher.h"

#include <memory>

struct org_kde_plasma_window;
struct org_kde_plasma_window_management;

namespace orvanta {

/// The list of KWin (plasma-wayland-protocols, "plasma-window-management"). It is offered to a
/// program whose installed desktop entry names the program's path in `Exec` and the interface in
/// `X-KDE-Wayland-Interfaces`.
class KWinWindowList final : public ListedWindowWatcher::List {
public:
    /// Null where it is not offered. The connection and the watcher outlive the list.
    static std::unique_ptr<KWinWindowList> open(WaylandConnection& connection,
                                                ListedWindowWatcher& watcher);
    ~KWinWindowList() override;

private:
    struct PlasmaWindow;

    KWinWindowList(org_kde_plasma_window_management* manager, ListedWindowWatcher& watcher);
    void add(org_kde_plasma_window* handle);

    org_kde_plasma_window_management* manager_;
    ListedWindowWatcher& watcher_;
};

} // namespace orvanta
