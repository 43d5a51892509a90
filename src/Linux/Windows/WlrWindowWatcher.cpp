#include "Linux/Windows/WlrWindowWatcher.h"

#include "wlr-foreign-toplevel-management-unstable-v1.h"

#include <wayland-client.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>

namespace orvanta {

namespace {

using Manager = zwlr_foreign_toplevel_manager_v1;
using Handle = zwlr_foreign_toplevel_handle_v1;

constexpr uint32_t knownVersion = 3;

} // namespace

/// What is told of it holds from its "done" on.
struct WlrWindowWatcher::Toplevel final : Listed {
    ~Toplevel() override { zwlr_foreign_toplevel_handle_v1_destroy(handle); }

    Handle* handle = nullptr;
    QString toldAppId;
    bool toldActive = false;
};

WlrWindowWatcher::WlrWindowWatcher(const QByteArray& display)
    : ListedWindowWatcher(display) {}

WlrWindowWatcher::~WlrWindowWatcher() {
    if (manager_ != nullptr) {
        zwlr_foreign_toplevel_manager_v1_destroy(manager_);
    }
}

void WlrWindowWatcher::start() {
    static constexpr zwlr_foreign_toplevel_manager_v1_listener listener{
        .toplevel = [](void* self, Manager*,
                       Handle* handle) { static_cast<WlrWindowWatcher*>(self)->add(handle); },
        .finished =
            [](void* self, Manager*) {
                static_cast<WlrWindowWatcher*>(self)->end(State::Unsupported);
            }};
    manager_ =
        connection().bind<Manager>(zwlr_foreign_toplevel_manager_v1_interface, 1, knownVersion);
    if (manager_ == nullptr) {
        setState(State::Unsupported);
        return;
    }
    zwlr_foreign_toplevel_manager_v1_add_listener(manager_, &listener, this);
    setState(State::Watching);
}

void WlrWindowWatcher::add(Handle* handle) {
    static constexpr auto toplevelOf = [](void* data) -> Toplevel& {
        return *static_cast<Toplevel*>(data);
    };
    static constexpr auto watcherOf = [](void* data) -> WlrWindowWatcher& {
        return static_cast<WlrWindowWatcher&>(*toplevelOf(data).watcher);
    };
    static constexpr zwlr_foreign_toplevel_handle_v1_listener listener{
        .title = [](void*, Handle*, const char*) {},
        .app_id = [](void* data, Handle*,
                     const char* appId) { toplevelOf(data).toldAppId = boundedName(appId); },
        .output_enter = [](void*, Handle*, wl_output*) {},
        .output_leave = [](void*, Handle*, wl_output*) {},
        .state = [](void* data, Handle*,
                    wl_array* states) { tellState(toplevelOf(data), *states); },
        .done = [](void* data, Handle*) { watcherOf(data).done(toplevelOf(data)); },
        .closed = [](void* data, Handle*) { watcherOf(data).remove(toplevelOf(data)); },
        .parent =
            [](void*, Handle*, Handle*) {
            }};
    auto toplevel = std::make_unique<Toplevel>();
    toplevel->handle = handle;
    zwlr_foreign_toplevel_handle_v1_add_listener(handle, &listener, toplevel.get());
    ListedWindowWatcher::add(std::move(toplevel));
}

void WlrWindowWatcher::tellState(Toplevel& toplevel, const wl_array& states) {
    const std::span values(static_cast<const uint32_t*>(states.data),
                           states.size / sizeof(uint32_t));
    toplevel.toldActive =
        std::ranges::count(values, ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) > 0;
}

void WlrWindowWatcher::done(Toplevel& toplevel) {
    toplevel.window.wmClass = toplevel.toldAppId;
    setActive(toplevel, toplevel.toldActive);
}

} // namespace orvanta
