#pragma once

#include "Platform/MainLoop.h"

#include <QWidget>

#include <memory>

namespace orvanta {

/// The frameless window beside the status item. It is made once and holds a view while it is shown.
///
/// Where the desktop allows it, it is a popup: over everything, no window that a task bar would
/// list, and the window behind it stays the active one. The keyboard is therefore taken by a grab,
/// as a menu does; but only for whoever opened it or clicked in it, and only while it is used, as
/// nobody can lock the screen meanwhile. Modifiers that belong to the desktop (Alt, Super) close it
/// and reach the desktop. Elsewhere it is a window that is active while it is used.
class Popover final : public QWidget {
    Q_OBJECT

public:
    /// In device-independent pixels.
    static constexpr QSize contentSize{320, 352};

    enum class Kind { Popup, Window };

    /// The main loop outlives the popover.
    Popover(Kind kind, MainLoop& mainLoop);
    ~Popover() override;

    struct Opening {
        QPoint place;       ///< of the top left corner; for a popup
        bool takesKeyboard; ///< whether the person asked for it
        bool leavesPointer; ///< whether somebody else sees the clicks outside that close it;
                            ///< for a popup
    };
    /// Not while it is shown. Which of its parts has the keyboard is for the content to say.
    void open(std::unique_ptr<QWidget> content, const Opening& opening);

Q_SIGNALS:
    /// A window that was active is not any more, nor is another of this application.
    void wasLeft();
    /// However it came about. The content goes when this has returned.
    void didClose();

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool isPopup() const;
    void focusMoved(QWindow* window);
    void didHide();
    void takeKeyboard(int attempts);
    void releaseKeyboard();
    void releasePointer();

    MainLoop& mainLoop_;
    QWidget* content_ = nullptr;
    bool leavesPointer_ = false;
    /// Of giving the keyboard back; of a window, of having been left.
    std::unique_ptr<MainLoopTimer> focusTimer_;
};

} // namespace orvanta
