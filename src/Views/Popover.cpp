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

bool isDesktopsModifier(int key) {
    return key == Qt::Key_Alt || key == Qt::Key_Meta || key == Qt::Key_Super_L ||
           key == Qt::Key_Super_R;
}

} // namespace

Popover::Popover(MainLoop& mainLoop)
    : QWidget(nullptr, Qt::Popup | Qt::FramelessWindowHint)
    , mainLoop_(mainLoop) {
    setWindowTitle(QStringLiteral("orvanta"));
    setFixedSize(contentSize);
    setAttribute(Qt::WA_NoMouseReplay); // Nothing of a click that closes it is for others.
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this](QWindow* window) {
        // A dialogue of our own that came up is what keys are meant for.
        if (isVisible() && window != nullptr && window->type() != Qt::Popup) {
            releaseKeyboard();
        }
    });
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
        if (key == Qt::Key_Escape || isDesktopsModifier(key)) {
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

void Popover::didHide() {
    qGuiApp->removeEventFilter(this);
    keyboardTimer_.reset();
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
    if (!isVisible()) {
        return;
    }
    if (windowHandle()->setKeyboardGrabEnabled(true)) {
        keyboardTimer_ = mainLoop_.once(unused, [this] { releaseKeyboard(); });
    } else if (attempts > 1) {
        keyboardTimer_ =
            mainLoop_.once(grabInterval, [this, attempts] { takeKeyboard(attempts - 1); });
    }
}

void Popover::releaseKeyboard() {
    keyboardTimer_.reset();
    windowHandle()->setKeyboardGrabEnabled(false);
}

void Popover::releasePointer() {
    if (leavesPointer_ && isVisible()) {
        windowHandle()->setMouseGrabEnabled(false);
    }
}

} // namespace orvanta
