#pragma once

#include "Testing.h"

#include <QSocketNotifier>

#include <sys/socket.h>
#include <sys/un.h>
#include <wayland-server.h>

#include <cstring>
#include <stdexcept>

namespace orvanta {

/// A listening socket in a folder of its own.
class Listener {
public:
    Listener()
        : path_(QFile::encodeName(folder_.filePath(QStringLiteral("socket"))))
        , descriptor_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path_.constData(), static_cast<size_t>(path_.size()));
        if (::bind(descriptor_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
            ::listen(descriptor_, 1) != 0) {
            throw std::runtime_error("no socket");
        }
    }
    const QByteArray& path() const { return path_; }
    int descriptor() const { return descriptor_; }

private:
    QTemporaryDir folder_;
    QByteArray path_;
    int descriptor_;
};

/// A Wayland compositor that offers what a test adds to it, on the test's own main loop.
class Compositor {
public:
    Compositor() { wl_display_add_socket_fd(display_.get(), listener_.descriptor()); }

    wl_display* display() const { return display_.get(); }
    /// As $WAYLAND_DISPLAY.
    const QByteArray& name() const { return listener_.path(); }
    void flush() { wl_display_flush_clients(display_.get()); }
    void dropClients() { wl_display_destroy_clients(display_.get()); }

private:
    struct Destroy {
        void operator()(wl_display* display) const {
            wl_display_destroy_clients(display);
            wl_display_destroy(display);
        }
    };

    Listener listener_;
    std::unique_ptr<wl_display, Destroy> display_{wl_display_create()};
    wl_event_loop* loop_ = wl_display_get_event_loop(display_.get());
    QSocketNotifier readable_{wl_event_loop_get_fd(loop_), QSocketNotifier::Read};
    QMetaObject::Connection connection_ =
        QObject::connect(&readable_, &QSocketNotifier::activated, &readable_, [this] {
            wl_event_loop_dispatch(loop_, 0);
            flush();
        });
};

} // namespace orvanta
