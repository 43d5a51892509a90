#include "Views/Confirmation.h"

#include "Platform/Appearance.h"
#include "Views/Accessibility.h"
#include "Views/Column.h"
#include "Views/DeviceGrid.h"
#include "Views/GridButton.h"
#include "Views/Palette.h"
#include "Views/PanelGeometry.h"
#include "Views/ReadingOrder.h"
#include "Views/TextBlock.h"

#include <QKeyEvent>
#include <QPainter>

namespace orvanta {

namespace {

constexpr int boxWidth = 276;
constexpr float veilOpacity = 0.75F; // Of the background over the panel.

} // namespace

Confirmation::Confirmation(const Appearance& appearance, const Question& question, QWidget* parent)
    : QWidget(parent)
    , appearance_(appearance)
    , box_(new QWidget(this)) {
    setFixedSize(panelWidth, panelHeight);
    setContextMenuPolicy(Qt::PreventContextMenu);
    setAccessibleRole(*this, QAccessible::Dialog);
    setAccessibleName(question.title);

    auto* const title = new TextBlock(appearance,
                                      {.size = 12,
                                       .tone = TextBlock::Tone::foreground,
                                       .padding = cellPadding,
                                       .above = cellPadding,
                                       .below = smallestGap / 2,
                                       .isCentred = true},
                                      boxWidth);
    title->setText(question.title);
    auto* const message = new TextBlock(appearance,
                                        {.size = 11,
                                         .padding = cellPadding,
                                         .above = smallestGap / 2,
                                         .below = cellPadding,
                                         .isCentred = true},
                                        boxWidth);
    message->setText(question.message);
    setAccessibleDescription(question.message);

    auto* const buttons = new QWidget;
    buttons->setFixedSize(boxWidth, rowHeight);
    const QSize half(boxWidth / 2, rowHeight);
    auto* const cancel = new GridButton(appearance, half, Qt::TopEdge | Qt::RightEdge, buttons);
    auto* const action = new GridButton(appearance, half, Qt::TopEdge, buttons);
    action->move(boxWidth / 2, 0);
    cancel->setLabel({.text = QStringLiteral("Cancelar")});
    cancel->setTitles({}, QStringLiteral("Cancelar"));
    action->setLabel({.text = question.action, .ink = GridButton::Ink::red});
    action->setTitles({}, question.action);
    connect(cancel, &GridButton::clicked, this, &Confirmation::cancelled);
    connect(action, &GridButton::clicked, this, &Confirmation::confirmed);

    auto* const column = unspacedColumn(box_);
    column->addWidget(title);
    column->addWidget(message);
    column->addWidget(buttons);
    box_->adjustSize();
    box_->move((width() - box_->width()) / 2, (height() - box_->height()) / 2);

    show();
    raise();
    cancel->setFocus(Qt::OtherFocusReason);
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

void Confirmation::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const Palette palette(appearance_.colorScheme());
    QColor veil = palette.background;
    veil.setAlphaF(veilOpacity);
    painter.fillRect(rect(), veil);
    painter.fillRect(box_->geometry(), palette.background);
    for (const Qt::Edge edge : {Qt::TopEdge, Qt::LeftEdge, Qt::RightEdge, Qt::BottomEdge}) {
        drawRule(painter, box_->geometry().adjusted(-1, -1, 1, 1), edge, palette.muted);
    }
}

void Confirmation::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        Q_EMIT cancelled();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void Confirmation::mousePressEvent(QMouseEvent* /*event*/) {}

void Confirmation::wheelEvent(QWheelEvent* /*event*/) {}

bool Confirmation::focusNextPrevChild(bool next) {
    return moveKeyboard(*this, next);
}

} // namespace orvanta
