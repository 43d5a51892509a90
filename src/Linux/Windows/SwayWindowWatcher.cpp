#include "Linux/Windows/SwayWindowWatcher.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

namespace orvanta {

namespace {

/// Sway nests a workspace's containers as deep as the person splits them.
constexpr int deepestNode = 200;

std::optional<QJsonObject> focusedNode(const QJsonObject& node, int depth = 0) {
    if (node.value(QLatin1String("focused")).toBool()) {
        return node;
    }
    if (depth == deepestNode) {
        return std::nullopt;
    }
    for (const auto kind : {QLatin1String("nodes"), QLatin1String("floating_nodes")}) {
        const QJsonArray children = node.value(kind).toArray();
        for (const auto& child : children) {
            if (auto found = focusedNode(child.toObject(), depth + 1)) {
                return found;
            }
        }
    }
    return std::nullopt;
}

/// Absent when what has the focus is an empty workspace, or a container of several windows.
std::optional<Window> windowOf(const QJsonObject& node) {
    const QJsonValue process = node.value(QLatin1String("pid"));
    if (!process.isDouble()) {
        return std::nullopt;
    }
    Window window;
    window.id = static_cast<quint64>(node.value(QLatin1String("id")).toInteger());
    window.wmClass = node.value(QLatin1String("app_id")).toString();
    const QJsonObject x11 = node.value(QLatin1String("window_properties")).toObject();
    if (!x11.isEmpty()) {
        window.wmClass = x11.value(QLatin1String("class")).toString();
        window.wmInstance = x11.value(QLatin1String("instance")).toString();
    }
    if (process.toInteger() > 0) {
        window.processIdentifier = process.toInteger();
    }
    return window;
}

} // namespace

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
    const auto focused = focusedNode(tree.object());
    setState(State::Watching);
    setActiveWindow(focused ? windowOf(*focused) : std::nullopt);
}

void SwayWindowWatcher::end() {
    setActiveWindow(std::nullopt);
    setState(state() == State::Watching ? State::Ended : State::Unsupported);
}

} // namespace orvanta
