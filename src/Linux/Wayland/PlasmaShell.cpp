#include "Linux/Wayland/PlasmaShell.h"

#include "plasma-shell.h"

#include <QGuiApplication>
#include <QWindow>
#include <qpa/qplatformnativeinterface.h>

#include <wayland-client.h>

#include <algorithm>
#include <string_view>
#include <utility>

namespace orvanta {

namespace {

// From 5 on a window can be left out of the switcher.
constexpr uint32_t lowestShellVersion = 5;

} // namespace

PlasmaShell::PlasmaShell() {
    auto* const display = static_cast<wl_display*>(
        QGuiApplication::platformNativeInterface()->nativeResourceForIntegration("wl_display"));
    if (display == nullptr) {
        return;
    }
    static constexpr wl_registry_listener listener{
        [](void* self, wl_registry* registry, uint32_t name, const char* interface,
           uint32_t version) {
            if (std::string_view(interface) == org_kde_plasma_shell_interface.name &&
                version >= lowestShellVersion) {
                static_cast<PlasmaShell*>(self)->shell_ =
                    static_cast<org_kde_plasma_shell*>(wl_registry_bind(
                        registry, name, &org_kde_plasma_shell_interface, lowestShellVersion));
            }
        },
        [](void*, wl_registry*, uint32_t) {
        }};
    // Qt's own events are left to Qt. What is said of the shell later on is of no interest.
    wl_event_queue* const queue = wl_display_create_queue(display);
    auto* const onQueue = static_cast<wl_display*>(wl_proxy_create_wrapper(display));
    wl_proxy_set_queue(reinterpret_cast<wl_proxy*>(onQueue), queue);
    wl_registry* const registry = wl_display_get_registry(onQueue);
    wl_proxy_wrapper_destroy(onQueue);
    wl_registry_add_listener(registry, &listener, this);
    wl_display_roundtrip_queue(display, queue);
    wl_registry_destroy(registry);
    if (shell_ != nullptr) {
        wl_proxy_set_queue(reinterpret_cast<wl_proxy*>(shell_), nullptr);
    }
    wl_event_queue_destroy(queue);
}

PlasmaShell::~PlasmaShell() {
    if (surface_ != nullptr) {
        org_kde_plasma_surface_destroy(surface_);
    }
    if (shell_ != nullptr) {
        org_kde_plasma_shell_destroy(shell_);
    }
}

void PlasmaShell::place(QWindow& window, QPoint place) {
    auto* const drawn = static_cast<wl_surface*>(
        QGuiApplication::platformNativeInterface()->nativeResourceForWindow("surface", &window));
    if (shell_ == nullptr || drawn == nullptr) {
        return;
    }
    if (auto* const former = std::exchange(surface_, nullptr)) {
        org_kde_plasma_surface_destroy(former);
    }
    surface_ = org_kde_plasma_shell_get_surface(shell_, drawn);
    org_kde_plasma_surface_set_position(surface_, place.x(), place.y());
    org_kde_plasma_surface_set_skip_taskbar(surface_, 1);
    org_kde_plasma_surface_set_skip_switcher(surface_, 1);
}

} // namespace orvanta
