#pragma once

#include "Linux/Wayland/WaylandConnection.h"
#include "Linux/Windows/WindowWatcher.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

namespace orvanta {

/// The active window of a Wayland compositor that lists its windows for task bars, whatever the
/// protocol of the list.
class ListedWindowWatcher : public WindowWatcher {
    Q_OBJECT

protected:
    /// One on the list, of which its protocol's proxy is a part.
    struct Listed {
        Listed() = default;
        virtual ~Listed() = default;
        Listed(const Listed&) = delete;
        Listed& operator=(const Listed&) = delete;

        ListedWindowWatcher* watcher = nullptr;
        Window window;
        bool isActive = false;
    };

    /// `display` as in $WAYLAND_DISPLAY. Waiting until the compositor has told what it offers;
    /// Unsupported where nobody listens.
    explicit ListedWindowWatcher(const QByteArray& display);

    /// Once what the compositor offers is known: takes the list and is Watching, or has none to
    /// take and is Unsupported.
    virtual void start() = 0;

    WaylandConnection& connection() { return connection_; }
    /// Gives it its number.
    void add(std::unique_ptr<Listed> listed);
    void setActive(Listed& listed, bool isActive);
    void remove(const Listed& listed);
    /// From here on there is no list.
    void end(State state);

    /// As it was told; empty when it is so long that it is garbage.
    static QString boundedName(const char* name);

private:
    void publish();

    WaylandConnection connection_;
    /// The one that came to the front last stands at the end: before a window is told to be
    /// inactive the next one may be told to be active.
    std::vector<std::unique_ptr<Listed>> windows_;
    quint64 lastId_ = 0;
};

} // namespace orvanta
