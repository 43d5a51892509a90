#pragma once

#include "Linux/Windows/Window.h"

#include <QJsonObject>

#include <optional>

namespace orvanta {

/// The window with the focus in sway's tree of containers (sway-ipc(7), "GET_TREE"). Absent when an
/// empty workspace has it, or a container of several windows, or none that is near enough to the
/// root.
std::optional<Window> focusedWindow(const QJsonObject& tree);

} // namespace orvanta
