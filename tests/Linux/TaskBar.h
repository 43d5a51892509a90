#pragma once

#include "Compositor.h"

#include <wlr-foreign-toplevel-management-unstable-v1-server.h>

namespace orvanta {

inline void destroyResource(wl_client*, wl_resource* resource) {
    wl_resource_destroy(resource);
}

/// The list of windows of a compositor of one client.
class TaskBar {
public:
    explicit TaskBar(Compositor& compositor)
        : compositor_(compositor)
        , global_(wl_global_create(compositor.display(),
                                   &zwlr_foreign_toplevel_manager_v1_interface, 3, this, bind)) {}

    bool isBound() const { return manager_ != nullptr; }
    void awaitAnother() { manager_ = nullptr; }

    void appear(const std::string& name) {
        auto& handle = windows_[name];
        handle = handle ? handle : add(name.c_str());
    }
    wl_resource* window(const std::string& name) const { return windows_.at(name); }
    void setActive(const std::string& name, bool isActive) { setActive(window(name), isActive); }

    wl_resource* add(const char* appId, bool isActive = false) {
        wl_client* client = wl_resource_get_client(manager_);
        wl_resource* handle =
            wl_resource_create(client, &zwlr_foreign_toplevel_handle_v1_interface, 3, 0);
        static const auto requests = [] {
            struct zwlr_foreign_toplevel_handle_v1_interface known {};
            known.destroy = destroyResource;
            return known;
        }();
        wl_resource_set_implementation(handle, &requests, nullptr, nullptr);
        zwlr_foreign_toplevel_manager_v1_send_toplevel(manager_, handle);
        zwlr_foreign_toplevel_handle_v1_send_title(handle, "a title");
        zwlr_foreign_toplevel_handle_v1_send_app_id(handle, appId);
        setActive(handle, isActive);
        return handle;
    }
    void setActive(wl_resource* handle, bool isActive) {
        sendState(handle, isActive);
        zwlr_foreign_toplevel_handle_v1_send_done(handle);
        compositor_.flush();
    }
    static void sendState(wl_resource* handle, bool isActive) {
        wl_array states;
        wl_array_init(&states);
        const auto put = [&](uint32_t state) {
            *static_cast<uint32_t*>(wl_array_add(&states, sizeof state)) = state;
        };
        put(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_MAXIMIZED);
        if (isActive) {
            put(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED);
        }
        zwlr_foreign_toplevel_handle_v1_send_state(handle, &states);
        wl_array_release(&states);
    }
    void close(wl_resource* handle) {
        zwlr_foreign_toplevel_handle_v1_send_closed(handle);
        compositor_.flush();
    }
    void finish() {
        zwlr_foreign_toplevel_manager_v1_send_finished(manager_);
        compositor_.flush();
    }

private:
    static void bind(wl_client* client, void* self, uint32_t version, uint32_t id) {
        auto& bar = *static_cast<TaskBar*>(self);
        bar.manager_ = wl_resource_create(client, &zwlr_foreign_toplevel_manager_v1_interface,
                                          static_cast<int>(version), id);
        static constexpr struct zwlr_foreign_toplevel_manager_v1_interface requests = {
            .stop = destroyResource};
        wl_resource_set_implementation(bar.manager_, &requests, self, nullptr);
    }

    Compositor& compositor_;
    wl_global* global_;
    wl_resource* manager_ = nullptr;
    std::map<std::string, wl_resource*> windows_;
};

} // namespace orvanta
