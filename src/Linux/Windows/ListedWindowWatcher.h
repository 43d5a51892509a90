#pragma once

#include "Linux/Wayland/WaylandConnection.h"
#include "Linux/Windows/WindowWatcher.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

namespace orvanta {

/// The active window of a Wayland compositor that lists its windows for task bars, by whichever of
/// the protocols for that it speaks.
class ListedWindowWatcher final : public WindowWatcher {
    Q_OBJECT

public:
    /// `display` as in $WAYLAND_DISPLAY. Waiting until the compositor has told what it offers;
    /// Unsupported where nobody listens or no list is offered.
    explicit ListedWindowWatcher(const QByteArray& display);
    ~ListedWindowWatcher() override;
    ListedWindowWatcher(const ListedWindowWatcher&) = delete;
    ListedWindowWatcher& operator=(const ListedWindowWatcher&) = delete;

    /// One on the list, of which its protocol's proxy is a part.
    struct Listed {
        Listed() = default;
        virtual ~Listed() = default;
        Listed(const Listed&) = delete;
        Listed& operator=(const Listed&) = delete;

        Window window;
        bool isActive = false;
    };
    /// A protocol's side: tells the watcher as long as it lives.
    class List {
    public:
        List() = default;
        virtual ~List() = default;
        List(const List&) = delete;
        List& operator=(const List&) = delete;
    };

    /// For the list. A window that is added is given its number.
    void add(std::unique_ptr<Listed> listed);
    void setActive(Listed& listed, bool isActive);
    void remove(const Listed& listed);
    /// There is no list from here on.
    void withdraw() { end(State::Unsupported); }

private:
    void start();
    void publish();
    void end(State state);

    WaylandConnection connection_;
    std::unique_ptr<List> list_;
    /// The one that came to the front last stands at the end: before a window is told to be
    /// inactive the next one may be told to be active.
    std::vector<std::unique_ptr<Listed>> windows_;
    quint64 lastId_ = 0;
};

} // namespace orvanta
