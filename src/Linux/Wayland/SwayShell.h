#pragma once

#include "Platform/MainLoop.h"
#include "Platform/ScreenArea.h"

#include <QByteArray>
#include <QPoint>
#include <QString>

#include <memory>
#include <vector>

namespace orvanta {

class SwayConnection;

/// What sway tells of its bars, and where it puts a window, by its interface for other programs
/// (sway-ipc(7), sway(5)). Wayland's own protocols have neither.
class SwayShell {
public:
    /// As in $SWAYSOCK, or empty: everything does nothing where no sway listens there. The main
    /// loop outlives this.
    SwayShell(QByteArray socket, MainLoop& mainLoop);
    ~SwayShell();
    SwayShell(const SwayShell&) = delete;
    SwayShell& operator=(const SwayShell&) = delete;

    /// The outputs, the focused one first. Waits for the answer, a tenth of a second at most; empty
    /// where none comes, or none that makes sense.
    std::vector<ScreenArea> screenAreas() const;

    /// Has the window of this process with this title float with its top left corner at a place of
    /// sway's layout, as soon as sway shows it; forgotten after two seconds. One at a time.
    void place(const QString& title, QPoint place);

private:
    void send();
    void receive(const QByteArray& answer);

    QByteArray socket_;
    MainLoop& mainLoop_;
    QByteArray command_;
    int attemptsLeft_ = 0;
    std::unique_ptr<SwayConnection> connection_; ///< while a window is to be placed
    std::unique_ptr<MainLoopTimer> timer_;
};

} // namespace orvanta
