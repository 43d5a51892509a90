#include "Views/Popover.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QWindow>

#include <utility>

namespace orvanta {

namespace {

/// A panel holds on to the keyboard for a moment after a click.
constexpr MainLoop::Duration grabInterval{0.05};
constexpr int grabAttempts = 40;

/// Without a key or a click, the keyboard is given back after so long.
constexpr MainLoop::Duration unused{30};

/// Between a window of ours and the next, none has the focus for a moment.
constexpr MainLoop::Duration betweenWindows{0.1};

bool isDesktopsModifier(int key) {
    return key == Qt::Key_Alt || key == Qt::Key_Meta || key == Qt::Key_Super_L ||
           key == Qt::Key_Super_R;
}

} // namespace

Popover::Popover(Kind kind, MainLoop& mainLoop)
    : QWidget(nullptr, (kind == Kind::Popup ? Qt::Popup : Qt::Window) | Qt::FramelessWindowHint)
    , mainLoop_(mainLoop) {
    setWindowTitle(QStringLiteral("orvanta"));
    setFixedSize(contentSize);
    setAttribute(Qt::WA_NoMouseReplay); // Nothing of a click that closes it is for others.
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, &Popover::focusMoved);
}

Popover::~Popover() = default;

void Popover::open(std::unique_ptr<QWidget> content, const Opening& opening) {
    content_ = content.release();
    content_->setParent(this);
    content_->setGeometry(QRect(QPoint(), contentSize));
    content_->show();
    leavesPointer_ = opening.leavesPointer;
    move(opening.place);
    qGuiApp->installEventFilter(this);
    show();
    if (!isPopup()) {
        if (opening.takesKeyboard) {
            windowHandle()->requestActivate();
        }
        return;
    }
    releasePointer();
    if (opening.takesKeyboard) {
        takeKeyboard(grabAttempts);
    } else {
        releaseKeyboard();
    }
}

bool Popover::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::KeyPress: {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Escape || (isPopup() && isDesktopsModifier(key))) {
            close();
            return true;
        }
        break;
    }
    case QEvent::Hide:
        didHide();
        break;
    default:
        break;
    }
    return QWidget::event(event);
}

/// Sees what happens in the content, and menus that open and close over it.
bool Popover::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::MouseButtonPress:
        // To windows first, whoever in them it is for.
        if (watched == windowHandle() && content_ != nullptr) {
            takeKeyboard(1);
        }
        break;
    case QEvent::Hide:
        // When a menu closes, Qt has the popup below it take all input again.
        if (const auto* widget = qobject_cast<QWidget*>(watched);
            widget != nullptr && widget != this && widget->windowType() == Qt::Popup) {
            QMetaObject::invokeMethod(this, &Popover::releasePointer, Qt::QueuedConnection);
        }
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

bool Popover::isPopup() const {
    return windowType() == Qt::Popup;
}

void Popover::focusMoved(QWindow* window) {
    if (!isVisible()) {
        return;
    }
    if (!isPopup()) {
        focusTimer_.reset();
        if (window == nullptr) {
            focusTimer_ = mainLoop_.once(betweenWindows, [this] { Q_EMIT wasLeft(); });
        }
    } else if (window != nullptr && window->type() != Qt::Popup) {
        // A dialogue of our own that came up is what keys are meant for.
        releaseKeyboard();
    }
}

void Popover::didHide() {
    qGuiApp->removeEventFilter(this);
    focusTimer_.reset();
    QWidget* content = std::exchange(content_, nullptr);
    if (content == nullptr) {
        return;
    }
    Q_EMIT didClose();
    // It may be one of its own buttons that closed the window.
    content->hide();
    content->deleteLater();
}

void Popover::takeKeyboard(int attempts) {
    if (!isPopup() || !isVisible()) {
        return;
    }
    if (windowHandle()->setKeyboardGrabEnabled(true)) {
        focusTimer_ = mainLoop_.once(unused, [this] { releaseKeyboard(); });
    } else if (attempts > 1) {
        focusTimer_ =
            mainLoop_.once(grabInterval, [this, attempts] { takeKeyboard(attempts - 1); });
    }
}

void Popover::releaseKeyboard() {
    focusTimer_.reset();
    windowHandle()->setKeyboardGrabEnabled(false);
}

void Popover::releasePointer() {
    if (isPopup() && leavesPointer_ && isVisible()) {
        windowHandle()->setMouseGrabEnabled(false);
    }
}

} // namespace orvanta
