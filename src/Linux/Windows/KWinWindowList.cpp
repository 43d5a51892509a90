#include "Linux/Windows/KWinWindowList.h"

#include "plasma-window-management.h"

#include <wayland-client.h>

#include <memory>
#include <utility>

namespace orvanta {

namespace {

using PlasmaManager = org_kde_plasma_window_management;
using PlasmaHandle = org_kde_plasma_window;

// From 4 on a window can be destroyed; from 13 on the list names them by UUID. Above the version
// known here there are events that a newer description has and nobody is told of.
constexpr uint32_t lowestPlasmaVersion = 4;
constexpr uint32_t knownPlasmaVersion = 16;

/// An event of no interest here.
template <typename... Arguments>
void ignore(Arguments... /*arguments*/) {}

} // namespace

struct KWinWindowList::PlasmaWindow final : ListedWindowWatcher::Listed {
    PlasmaWindow(ListedWindowWatcher& itsWatcher, PlasmaHandle* itsHandle)
        : watcher(itsWatcher)
        , handle(itsHandle) {}
    ~PlasmaWindow() override { org_kde_plasma_window_destroy(handle); }

    ListedWindowWatcher& watcher;
    PlasmaHandle* handle;
};

std::unique_ptr<KWinWindowList> KWinWindowList::open(WaylandConnection& connection,
                                                     ListedWindowWatcher& watcher) {
    auto* const manager = connection.bind<PlasmaManager>(org_kde_plasma_window_management_interface,
                                                         lowestPlasmaVersion, knownPlasmaVersion);
    return std::unique_ptr<KWinWindowList>(manager != nullptr ? new KWinWindowList(manager, watcher)
                                                              : nullptr);
}

KWinWindowList::KWinWindowList(PlasmaManager* manager, ListedWindowWatcher& watcher)
    : manager_(manager)
    , watcher_(watcher) {
    static constexpr auto listener = [] {
        org_kde_plasma_window_management_listener made{};
        made.show_desktop_changed = ignore;
        made.window = [](void* self, PlasmaManager* list, uint32_t id) {
            static_cast<KWinWindowList*>(self)->add(
                org_kde_plasma_window_management_get_window(list, id));
        };
        made.stacking_order_changed = ignore;
        made.stacking_order_uuid_changed = ignore;
        made.window_with_uuid = [](void* self, PlasmaManager* list, uint32_t, const char* uuid) {
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

void KWinWindowList::add(PlasmaHandle* handle) {
    static constexpr auto windowOf = [](void* data) -> PlasmaWindow& {
        return *static_cast<PlasmaWindow*>(data);
    };
    static constexpr auto listener = [] {
        org_kde_plasma_window_listener made{};
        made.title_changed = ignore;
        made.app_id_changed = [](void* data, PlasmaHandle*, const char* name) {
            windowOf(data).window.wmClass = QString::fromUtf8(name);
        };
        made.state_changed = [](void* data, PlasmaHandle*, uint32_t flags) {
            windowOf(data).watcher.setActive(
                windowOf(data), (flags & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE) != 0);
        };
        made.virtual_desktop_changed = ignore;
        made.themed_icon_name_changed = ignore;
        made.unmapped = [](void* data, PlasmaHandle*) {
            windowOf(data).watcher.remove(windowOf(data));
        };
        made.initial_state = ignore;
        made.parent_window = ignore;
        made.geometry = ignore;
        made.icon_changed = ignore;
        made.pid_changed = [](void* data, PlasmaHandle*, uint32_t process) {
            windowOf(data).window.processIdentifier =
                process != 0 ? std::optional<qint64>(process) : std::nullopt;
        };
        made.virtual_desktop_entered = ignore;
        made.virtual_desktop_left = ignore;
        made.application_menu = ignore;
        made.activity_entered = ignore;
        made.activity_left = ignore;
        made.resource_name_changed = [](void* data, PlasmaHandle*, const char* name) {
            windowOf(data).window.wmInstance = QString::fromUtf8(name);
        };
        return made;
    }();
    auto window = std::make_unique<PlasmaWindow>(watcher_, handle);
    org_kde_plasma_window_add_listener(handle, &listener, window.get());
    watcher_.add(std::move(window));
}

} // namespace orvanta
