#include "Linux/Windows/WlrWindowWatcher.h"

#include "wlr-foreign-toplevel-management-unstable-v1.h"

#include <wayland-client.h>

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>

namespace orvanta {

namespace {

using Manager = zwlr_foreign_toplevel_manager_v1;
using Handle = zwlr_foreign_toplevel_handle_v1;

constexpr uint32_t knownVersion = 3;

// A name of that size is garbage.
constexpr std::size_t longestName = 1024;

} // namespace

WlrWindowWatcher::WlrWindowWatcher(const QByteArray& display)
    : WindowWatcher(State::Waiting)
    , connection_(display) {
    if (!connection_.isOpen()) {
        setState(State::Unsupported);
        return;
    }
    connect(&connection_, &WaylandConnection::ready, this, [this] { start(); });
    connect(&connection_, &WaylandConnection::dispatched, this, [this] { publish(); });
    connect(&connection_, &WaylandConnection::ended, this, [this] { end(State::Ended); });
}

WlrWindowWatcher::~WlrWindowWatcher() {
    for (const auto& toplevel : toplevels_) {
        zwlr_foreign_toplevel_handle_v1_destroy(toplevel->handle);
    }
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
        connection_.bind<Manager>(zwlr_foreign_toplevel_manager_v1_interface, 1, knownVersion);
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
    static constexpr zwlr_foreign_toplevel_handle_v1_listener listener{
        .title = [](void*, Handle*, const char*) {},
        .app_id =
            [](void* data, Handle*, const char* appId) {
                const std::string_view name(appId);
                toplevelOf(data).toldAppId =
                    name.size() <= longestName ? QString::fromUtf8(appId) : QString();
            },
        .output_enter = [](void*, Handle*, wl_output*) {},
        .output_leave = [](void*, Handle*, wl_output*) {},
        .state = [](void* data, Handle*,
                    wl_array* states) { tellState(toplevelOf(data), *states); },
        .done = [](void* data, Handle*) { toplevelOf(data).watcher->done(toplevelOf(data)); },
        .closed = [](void* data, Handle*) { toplevelOf(data).watcher->remove(toplevelOf(data)); },
        .parent =
            [](void*, Handle*, Handle*) {
            }};
    auto& toplevel = *toplevels_.emplace_back(std::make_unique<Toplevel>());
    toplevel.watcher = this;
    toplevel.handle = handle;
    toplevel.id = ++lastId_;
    zwlr_foreign_toplevel_handle_v1_add_listener(handle, &listener, &toplevel);
}

void WlrWindowWatcher::tellState(Toplevel& toplevel, const wl_array& states) {
    const std::span values(static_cast<const uint32_t*>(states.data),
                           states.size / sizeof(uint32_t));
    toplevel.toldActive =
        std::ranges::count(values, ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED) > 0;
}

void WlrWindowWatcher::done(Toplevel& toplevel) {
    toplevel.appId = toplevel.toldAppId;
    if (std::exchange(toplevel.isActive, toplevel.toldActive) == toplevel.toldActive ||
        !toplevel.isActive) {
        return;
    }
    // Before a window is told to be inactive the next one is told to be active.
    const auto itself =
        std::ranges::find(toplevels_, &toplevel, [](const auto& each) { return each.get(); });
    std::rotate(itself, itself + 1, toplevels_.end());
}

void WlrWindowWatcher::remove(Toplevel& toplevel) {
    zwlr_foreign_toplevel_handle_v1_destroy(toplevel.handle);
    std::erase_if(toplevels_, [&](const auto& each) { return each.get() == &toplevel; });
}

void WlrWindowWatcher::publish() {
    const auto found = std::ranges::find_if(toplevels_.rbegin(), toplevels_.rend(),
                                            [](const auto& each) { return each->isActive; });
    if (found == toplevels_.rend()) {
        setActiveWindow(std::nullopt);
        return;
    }
    Window window;
    window.id = (*found)->id;
    window.wmClass = (*found)->appId;
    setActiveWindow(std::move(window));
}

void WlrWindowWatcher::end(State state) {
    if (this->state() == State::Watching || this->state() == State::Waiting) {
        for (const auto& toplevel : std::exchange(toplevels_, {})) {
            zwlr_foreign_toplevel_handle_v1_destroy(toplevel->handle);
        }
        setActiveWindow(std::nullopt);
        setState(state);
    }
}

} // namespace orvanta
