#include "Linux/Windows/SwayTree.h"

#include <QJsonArray>

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

std::optional<Window> focusedWindow(const QJsonObject& tree) {
    const auto focused = focusedNode(tree);
    return focused ? windowOf(*focused) : std::nullopt;
}

} // namespace orvanta
