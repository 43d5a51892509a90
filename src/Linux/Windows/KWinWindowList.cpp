#include "Linux/Windows/KWinWindowList.h"

#include "plasma-window-management.h"

#include <wayland-client.h>

#include <memory>
#include <utility>

namespace orvanta {

namespace {

using Manager = org_kde_plasma_window_management;
using Handle = org_kde_plasma_window;

// From 4 on a window can be destroyed; from 13 on the list names them by UUID. Above the version
// known here there are events that a newer description has and nobody is told of.
constexpr uint32_t lowestVersion = 4;
constexpr uint32_t knownVersion = 16;

} // namespace

struct KWinWindowList::PlasmaWindow final : ListedWindowWatcher::Listed {
    PlasmaWindow(ListedWindowWatcher& itsWatcher, Handle* itsHandle)
        : watcher(itsWatcher)
        , handle(itsHandle) {}
    ~PlasmaWindow() override { org_kde_plasma_window_destroy(handle); }

    ListedWindowWatcher& watcher;
    Handle* handle;
};

std::unique_ptr<KWinWindowList> KWinWindowList::open(WaylandConnection& connection,
                                                     ListedWindowWatcher& watcher) {
    auto* const manager = connection.bind<Manager>(org_kde_plasma_window_management_interface,
                                                   lowestVersion, knownVersion);
    return std::unique_ptr<KWinWindowList>(manager != nullptr ? new KWinWindowList(manager, watcher)
                                                              : nullptr);
}

KWinWindowList::KWinWindowList(Manager* manager, ListedWindowWatcher& watcher)
    : manager_(manager)
    , watcher_(watcher) {
    static constexpr auto listener = [] {
        org_kde_plasma_window_management_listener made{};
        made.show_desktop_changed = [](void*, Manager*, uint32_t) {};
        made.window = [](void* self, Manager* list, uint32_t id) {
            static_cast<KWinWindowList*>(self)->add(
                org_kde_plasma_window_management_get_window(list, id));
        };
        made.stacking_order_changed = [](void*, Manager*, wl_array*) {};
        made.stacking_order_uuid_changed = [](void*, Manager*, const char*) {};
        made.window_with_uuid = [](void* self, Manager* list, uint32_t, const char* uuid) {
            static_cast<KWinWindowList*>(self)->add(
                org_kde_plasma_window_management_get_window_by_uuid(list, uuid));
        };
        return made;
    }();
    org_kde_plasma_window_management_add_listener(manager_, &listener, this);
}

KWinWindowList::~KWinWindowList() {
    org_kde_plasma_window_management_destroy(manager_);
}

void KWinWindowList::add(Handle* handle) {
    static constexpr auto windowOf = [](void* data) -> PlasmaWindow& {
        return *static_cast<PlasmaWindow*>(data);
    };
    static constexpr auto listener = [] {
        org_kde_plasma_window_listener made{};
        made.title_changed = [](void*, Handle*, const char*) {};
        made.app_id_changed = [](void* data, Handle*, const char* name) {
            windowOf(data).window.wmClass = ListedWindowWatcher::boundedName(name);
        };
        made.state_changed = [](void* data, Handle*, uint32_t flags) {
            windowOf(data).watcher.setActive(
                windowOf(data), (flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE) != 0);
        };
        made.virtual_desktop_changed = [](void*, Handle*, int32_t) {};
        made.themed_icon_name_changed = [](void*, Handle*, const char*) {};
        made.unmapped = [](void* data, Handle*) {
            windowOf(data).watcher.remove(windowOf(data));
        };
        made.initial_state = [](void*, Handle*) {};
        made.parent_window = [](void*, Handle*, Handle*) {};
        made.geometry = [](void*, Handle*, int32_t, int32_t, uint32_t, uint32_t) {};
        made.icon_changed = [](void*, Handle*) {};
        made.pid_changed = [](void* data, Handle*, uint32_t process) {
            windowOf(data).window.processIdentifier =
                process != 0 ? std::optional<qint64>(process) : std::nullopt;
        };
        made.virtual_desktop_entered = [](void*, Handle*, const char*) {};
        made.virtual_desktop_left = [](void*, Handle*, const char*) {};
        made.application_menu = [](void*, Handle*, const char*, const char*) {};
        made.activity_entered = [](void*, Handle*, const char*) {};
        made.activity_left = [](void*, Handle*, const char*) {};
        made.resource_name_changed = [](void* data, Handle*, const char* name) {
            windowOf(data).window.wmInstance = ListedWindowWatcher::boundedName(name);
        };
        return made;
    }();
    auto window = std::make_unique<PlasmaWindow>(watcher_, handle);
    org_kde_plasma_window_add_listener(handle, &listener, window.get());
    watcher_.add(std::move(window));
}

} // namespace orvanta
