#include "Views/PanelRoot.h"

#include "Platform/Appearance.h"
#include "Setup/Setup.h"
#include "Views/Palette.h"
#include "Views/PanelFont.h"
#include "Views/PanelGeometry.h"
#include "Views/PanelView.h"
#include "Views/ReadingOrder.h"
#include "Views/SetupView.h"

#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QPainter>

#include <utility>

namespace orvanta {

PanelRoot::PanelRoot(Setup& setup, PanelSurroundings surroundings, QWidget* parent)
    : QWidget(parent)
    , setup_(setup)
    , surroundings_(std::move(surroundings)) {
    setFixedSize(panelWidth, panelHeight);
    setFont(panelFont(12, *this));
    setLayoutDirection(Qt::LeftToRight);
    setAccessibleName(QStringLiteral("orvanta"));
    connect(&setup_, &Setup::changed, this, &PanelRoot::chooseView);
    connect(&surroundings_.appearance, &Appearance::changed, this, qOverload<>(&QWidget::update));
    chooseView();
}

void PanelRoot::chooseView() {
    const bool panel = setup_.isReady();
    if (view_ != nullptr) {
        if (panel == showsPanel_) {
            return;
        }
        // A click on one of its buttons may be what brought us here.
        view_->hide();
        view_->deleteLater();
    }
    showsPanel_ = panel;
    if (panel) {
        view_ = new PanelView(surroundings_, this);
    } else {
        view_ = new SetupView(setup_, surroundings_.appearance, surroundings_.quit, this);
    }
    view_->show();
}

void PanelRoot::paintEvent(QPaintEvent* /*event*/) {
    QPainter(this).fillRect(rect(), Palette(surroundings_.appearance.colorScheme()).background);
}

void PanelRoot::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    setFocus(Qt::PopupFocusReason); // So that the first Tab leads to the first control.
}

/// Before the first Tab the Menu key comes here.
void PanelRoot::contextMenuEvent(QContextMenuEvent* event) {
    if (showsPanel_ && event->reason() == QContextMenuEvent::Keyboard) {
        QCoreApplication::sendEvent(view_, event);
    } else {
        QWidget::contextMenuEvent(event);
    }
}

bool PanelRoot::focusNextPrevChild(bool next) {
    return moveKeyboard(*this, next);
}

} // namespace orvanta
