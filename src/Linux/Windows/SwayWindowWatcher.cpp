#include "Linux/Windows/SwayWindowWatcher.h"

#include "Linux/Windows/SwayTree.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

namespace orvanta {

SwayWindowWatcher::SwayWindowWatcher(const QByteArray& socket, const QByteArray& display)
    : WindowWatcher(State::Waiting)
    , windows_(display)
    , connection_(socket) {
    if (!connection_.isOpen() || windows_.state() == State::Unsupported) {
        setState(State::Unsupported);
        return;
    }
    connect(&windows_, &WindowWatcher::activeWindowChanged, this, &SwayWindowWatcher::readTree);
    connect(&windows_, &WindowWatcher::stateChanged, this, [this] {
        if (windows_.state() != State::Watching) {
            end();
        }
    });
    connect(&connection_, &SwayConnection::received, this, &SwayWindowWatcher::receive);
    connect(&connection_, &SwayConnection::ended, this, &SwayWindowWatcher::end);
    readTree();
}

void SwayWindowWatcher::readTree() {
    isStale_ = std::exchange(isReading_, true);
    if (!isStale_) {
        connection_.send(SwayConnection::GetTree);
    }
}

void SwayWindowWatcher::receive(std::uint32_t type, const QByteArray& text) {
    if (type != SwayConnection::GetTree) {
        return;
    }
    isReading_ = false;
    if (std::exchange(isStale_, false)) {
        readTree();
        return;
    }
    const QJsonDocument tree = QJsonDocument::fromJson(text);
    if (!tree.isObject()) {
        end();
        return;
    }
    setState(State::Watching);
    setActiveWindow(focusedWindow(tree.object()));
}

void SwayWindowWatcher::end() {
    setActiveWindow(std::nullopt);
    setState(state() == State::Watching ? State::Ended : State::Unsupported);
}

} // namespace orvanta
