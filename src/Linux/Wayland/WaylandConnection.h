#pragma once

#include <QByteArray>
#include <QObject>

#include <cstdint>
#include <memory>
#include <vector>

class QSocketNotifier;
struct wl_callback;
struct wl_display;
struct wl_interface;
struct wl_registry;

namespace orvanta {

class ReadableNotifier;

/// A line of our own to a Wayland compositor, beside that of Qt's windows: it is there whatever Qt
/// draws with, and what goes wrong on it is ours to handle. It never waits for the compositor.
class WaylandConnection final : public QObject {
    Q_OBJECT

public:
    /// `display` as in $WAYLAND_DISPLAY: a name in $XDG_RUNTIME_DIR, or a path.
    explicit WaylandConnection(const QByteArray& display);
    ~WaylandConnection() override;
    WaylandConnection(const WaylandConnection&) = delete;
    WaylandConnection& operator=(const WaylandConnection&) = delete;

    /// False when nobody listens there, and from `ended` on.
    bool isOpen() const { return display_ != nullptr && !ended_; }

    /// The proxy of a global that the compositor offers, of the highest version that both know;
    /// null when it does not offer it, or only one below `lowest`. The caller destroys it before
    /// the connection.
    template <typename Proxy>
    Proxy* bind(const wl_interface& interface, std::uint32_t lowest, std::uint32_t highest) {
        return static_cast<Proxy*>(bindAny(interface, lowest, highest));
    }

    /// The names of the globals of this interface that the compositor offers now.
    std::vector<std::uint32_t> globals(const wl_interface& interface) const;
    /// The proxy of one of them, of a version that it has.
    template <typename Proxy>
    Proxy* bindGlobal(std::uint32_t name, const wl_interface& interface, std::uint32_t version) {
        return static_cast<Proxy*>(bindNamed(name, interface, version));
    }

    /// Sends what has been requested.
    void flush();

Q_SIGNALS:
    /// All globals of the start are known.
    void ready();
    /// Later on, one has come or gone.
    void globalsChanged();
    /// The events that had come have been handled.
    void dispatched();
    /// The compositor has gone, or what was said made no sense to one of us. All proxies are dead:
    /// they may be destroyed, and nothing else.
    void ended();

private:
    struct Global {
        std::uint32_t name;
        std::uint32_t version;
        QByteArray interface;
    };

    void* bindAny(const wl_interface& interface, std::uint32_t lowest, std::uint32_t highest);
    void* bindNamed(std::uint32_t name, const wl_interface& interface, std::uint32_t version);
    void tellOfGlobals();
    void read();

    wl_display* display_ = nullptr; ///< null when nobody listened
    bool ended_ = false;
    wl_registry* registry_ = nullptr;
    wl_callback* sync_ = nullptr;
    std::vector<Global> globals_;
    std::unique_ptr<ReadableNotifier> readable_;
    std::unique_ptr<QSocketNotifier> writable_; ///< enabled while the compositor does not read
};

} // namespace orvanta
