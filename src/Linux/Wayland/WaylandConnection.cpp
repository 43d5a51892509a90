#include "Linux/Wayland/WaylandConnection.h"

#include "Linux/MainLoop/ReadableNotifier.h"

#include <QSocketNotifier>

#include <wayland-client.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace orvanta {

WaylandConnection::WaylandConnection(const QByteArray& display) {
    if (display.isEmpty()) {
        return; // libwayland would look for a display itself.
    }
    display_ = wl_display_connect(display.constData());
    if (display_ == nullptr) {
        return;
    }
    static constexpr wl_registry_listener registryListener{
        [](void* self, wl_registry*, uint32_t name, const char* interface, uint32_t version) {
            auto* const connection = static_cast<WaylandConnection*>(self);
            connection->globals_.push_back({name, version, interface});
            connection->tellOfGlobals();
        },
        [](void* self, wl_registry*, uint32_t name) {
            auto* const connection = static_cast<WaylandConnection*>(self);
            std::erase_if(connection->globals_,
                          [name](const Global& global) { return global.name == name; });
            connection->tellOfGlobals();
        }};
    registry_ = wl_display_get_registry(display_);
    wl_registry_add_listener(registry_, &registryListener, this);

    static constexpr wl_callback_listener syncListener{[](void* data, wl_callback*, uint32_t) {
        auto* const self = static_cast<WaylandConnection*>(data);
        wl_callback_destroy(std::exchange(self->sync_, nullptr));
        Q_EMIT self->ready();
    }};
    sync_ = wl_display_sync(display_);
    wl_callback_add_listener(sync_, &syncListener, this);

    const int socket = wl_display_get_fd(display_);
    readable_ = std::make_unique<ReadableNotifier>(socket);
    connect(readable_.get(), &ReadableNotifier::activated, this, &WaylandConnection::read);
    writable_ = std::make_unique<QSocketNotifier>(socket, QSocketNotifier::Write);
    connect(writable_.get(), &QSocketNotifier::activated, this, &WaylandConnection::flush);
    flush();
}

WaylandConnection::~WaylandConnection() {
    readable_.reset();
    writable_.reset();
    if (sync_ != nullptr) {
        wl_callback_destroy(sync_);
    }
    if (registry_ != nullptr) {
        wl_registry_destroy(registry_);
    }
    if (display_ != nullptr) {
        wl_display_disconnect(display_);
    }
}

void* WaylandConnection::bindAny(const wl_interface& interface, uint32_t lowest, uint32_t highest) {
    const auto global = std::ranges::find(globals_, QByteArray(interface.name), &Global::interface);
    if (ended_ || global == globals_.end() || global->version < lowest) {
        return nullptr;
    }
    return wl_registry_bind(registry_, global->name, &interface,
                            std::min(global->version, highest));
}

std::vector<uint32_t> WaylandConnection::globals(const wl_interface& interface) const {
    std::vector<uint32_t> names;
    for (const Global& global : globals_) {
        if (global.interface == interface.name) {
            names.push_back(global.name);
        }
    }
    return names;
}

void* WaylandConnection::bindNamed(uint32_t name, const wl_interface& interface, uint32_t version) {
    return wl_registry_bind(registry_, name, &interface, version);
}

void WaylandConnection::tellOfGlobals() {
    if (sync_ == nullptr) {
        Q_EMIT globalsChanged();
    }
}

void WaylandConnection::flush() {
    if (ended_ || display_ == nullptr) {
        return;
    }
    const bool isBlocked = wl_display_flush(display_) < 0 && errno == EAGAIN;
    // Any other failure shows when reading.
    writable_->setEnabled(isBlocked);
}

void WaylandConnection::read() {
    bool isSound = true;
    while (isSound && wl_display_prepare_read(display_) != 0) {
        isSound = wl_display_dispatch_pending(display_) >= 0;
    }
    // Does not wait: what it reads has come, or the socket has been closed.
    if (isSound) {
        isSound = wl_display_read_events(display_) >= 0 || errno == EAGAIN;
    }
    if (!isSound || wl_display_dispatch_pending(display_) < 0) {
        readable_->setEnabled(false);
        writable_->setEnabled(false);
        ended_ = true;
        Q_EMIT ended();
        return;
    }
    Q_EMIT dispatched();
    flush();
}

} // namespace orvanta
