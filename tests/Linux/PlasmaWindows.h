#pragma once

#include "Compositor.h"
#include "Testing.h"

#include <plasma-window-management-server.h>

namespace orvanta {

/// The list of windows of a KWin of one client.
class PlasmaWindows {
public:
    static constexpr std::optional<qint64> process{4711};

    explicit PlasmaWindows(Compositor& compositor)
        : compositor_(compositor)
        , global_(wl_global_create(compositor.display(),
                                   &org_kde_plasma_window_management_interface, 16, this, bind)) {}

    bool isBound() const { return manager_ != nullptr; }

    void awaitAnother() { manager_ = nullptr; }

    void announce(const std::string& uuid) {
        org_kde_plasma_window_management_send_window_with_uuid(manager_, 1, uuid.c_str());
        compositor_.flush();
        ASSERT_TRUE(eventually([&] { return window(uuid) != nullptr; }));
    }
    void appear(const std::string& name) {
        if (!window(name)) {
            announce(name);
            tell(name, name.c_str(), uint32_t(*process), false);
        }
    }
    /// Null until the client has asked for it.
    wl_resource* window(const std::string& uuid) const {
        const auto found = windows_.find(uuid);
        return found != windows_.end() ? found->second : nullptr;
    }
    void tell(const std::string& uuid, const char* appId, uint32_t pid, bool isActive) {
        org_kde_plasma_window_send_app_id_changed(window(uuid), appId);
        org_kde_plasma_window_send_pid_changed(window(uuid), pid);
        setActive(uuid, isActive);
    }
    void setActive(const std::string& uuid, bool isActive) {
        uint32_t flags = ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_MAXIMIZED;
        if (isActive) {
            flags |= ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE;
        }
        org_kde_plasma_window_send_state_changed(window(uuid), flags);
        compositor_.flush();
    }
    void unmap(const std::string& uuid) {
        org_kde_plasma_window_send_unmapped(window(uuid));
        compositor_.flush();
    }

private:
    static void bind(wl_client* client, void* self, uint32_t version, uint32_t id) {
        auto& list = *static_cast<PlasmaWindows*>(self);
        list.manager_ = wl_resource_create(client, &org_kde_plasma_window_management_interface,
                                           static_cast<int>(version), id);
        static const auto requests = [] {
            struct org_kde_plasma_window_management_interface known {};
            known.get_window_by_uuid = [](wl_client* who, wl_resource* manager, uint32_t number,
                                          const char* uuid) {
                static const auto windowRequests = [] {
                    struct org_kde_plasma_window_interface destroys {};
                    destroys.destroy = [](wl_client*, wl_resource* window) {
                        wl_resource_destroy(window);
                    };
                    return destroys;
                }();
                wl_resource* window =
                    wl_resource_create(who, &org_kde_plasma_window_interface, 16, number);
                wl_resource_set_implementation(window, &windowRequests, nullptr, nullptr);
                static_cast<PlasmaWindows*>(wl_resource_get_user_data(manager))->windows_[uuid] =
                    window;
            };
            return known;
        }();
        wl_resource_set_implementation(list.manager_, &requests, self, nullptr);
    }

    Compositor& compositor_;
    wl_global* global_;
    wl_resource* manager_ = nullptr;
    std::map<std::string, wl_resource*> windows_;
};

} // namespace orvanta
