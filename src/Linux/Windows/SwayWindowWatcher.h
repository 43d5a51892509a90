#pragma once

#include "Linux/Windows/ListedWindowWatcher.h"
#include "Linux/Windows/SwayConnection.h"

namespace orvanta {

/// The focused window of sway. When it changes, a locker's coming included, is told to task bars;
/// what it is, its process and the class of X windows included, stands in sway's tree (sway-ipc(7),
/// GET_TREE).
class SwayWindowWatcher final : public WindowWatcher {
    Q_OBJECT

public:
    /// As in $SWAYSOCK and $WAYLAND_DISPLAY. Waiting until sway has shown its tree; Unsupported
    /// where it does not.
    SwayWindowWatcher(const QByteArray& socket, const QByteArray& display);

private:
    void readTree();
    void receive(std::uint32_t type, const QByteArray& text);
    void end();

    ListedWindowWatcher windows_;
    SwayConnection connection_;
    bool isReading_ = false; ///< the tree was asked for and has not come
    bool isStale_ = false;   ///< the tree that comes next is older than the last change
};

} // namespace orvanta
