#include "Linux/Windows/WlrWindowList.h"

#include "wlr-foreign-toplevel-management-unstable-v1.h"

#include <wayland-client.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>

namespace orvanta {

namespace {

using WlrManager = zwlr_foreign_toplevel_manager_v1;
using WlrHandle = zwlr_foreign_toplevel_handle_v1;

constexpr uint32_t knownWlrVersion = 3;

} // namespace

/// What is told of it holds from its "done" on.
struct WlrWindowList::Toplevel final : ListedWindowWatcher::Listed {
    Toplevel(WlrWindowList& itsList, WlrHandle* itsHandle)
        : list(itsList)
        , handle(itsHandle) {}
    ~Toplevel() override { zwlr_foreign_toplevel_handle_v1_destroy(handle); }

    WlrWindowList& list;
    WlrHandle* handle;
    QString toldAppId;
    bool toldActive = false;
};

std::unique_ptr<WlrWindowList> WlrWindowList::open(WaylandConnection& connection,
                                                   ListedWindowWatcher& watcher) {
    auto* const manager =
        connection.bind<WlrManager>(zwlr_foreign_toplevel_manager_v1_interface, 1, knownWlrVersion);
    return std::unique_ptr<WlrWindowList>(manager != nullptr ? new WlrWindowList(manager, watcher)
                                                             : nullptr);
}

WlrWindowList::WlrWindowList(WlrManager* manager, ListedWindowWatcher& watcher)
    : manager_(manager)
    , watcher_(watcher) {
    static constexpr zwlr_foreign_toplevel_manager_v1_listener listener{
        .toplevel = [](void* self, WlrManager*,
                       WlrHandle* handle) { static_cast<WlrWindowList*>(self)->add(handle); },
        .finished =
            [](void* self, WlrManager*) {
                static_cast<WlrWindowList*>(self)->watcher_.withdraw();
            }};
    zwlr_foreign_toplevel_manager_v1_add_listener(manager_, &listener, this);
}

WlrWindowList::~WlrWindowList() {
    zwlr_foreign_toplevel_manager_v1_destroy(manager_);
}

void WlrWindowList::add(WlrHandle* handle) {
    static constexpr auto toplevelOf = [](void* data) -> Toplevel& {
        return *static_cast<Toplevel*>(data);
    };
    static constexpr zwlr_foreign_toplevel_handle_v1_listener listener{
        .title = [](void*, WlrHandle*, const char*) {},
        .app_id = [](void* data, WlrHandle*,
                     const char* appId) { toplevelOf(data).toldAppId = QString::fromUtf8(appId); },
        .output_enter = [](void*, WlrHandle*, wl_output*) {},
        .output_leave = [](void*, WlrHandle*, wl_output*) {},
        .state = [](void* data, WlrHandle*,
                    wl_array* states) { tellState(toplevelOf(data), *states); },
        .done = [](void* data, WlrHandle*) { toplevelOf(data).list.done(toplevelOf(data)); },
        .closed = [](void* data,
                     WlrHandle*) { toplevelOf(data).list.watcher_.remove(toplevelOf(data)); },
        .parent =
            [](void*, WlrHandle*, WlrHandle*) {
            }};
    auto toplevel = std::make_unique<Toplevel>(*this, handle);
    zwlr_foreign_toplevel_handle_v1_add_listener(handle, &listener, toplevel.get());
    watcher_.add(std::move(toplevel));
}

void WlrWindowList::tellState(Toplevel& toplevel, const wl_array& states) {
    const std::span values(static_cast<const uint32_t*>(states.data),
                           states.size / sizeof(uint32_t));
    toplevel.toldActive =
        std::ranges::count(values, ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) > 0;
}

void WlrWindowList::done(Toplevel& toplevel) {
    toplevel.window.wmClass = toplevel.toldAppId;
    watcher_.setActive(toplevel, toplevel.toldActive);
}

} // namespace orvanta
