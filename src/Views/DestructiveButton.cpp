#include "Views/DestructiveButton.h"

#include "Views/Ink.h"

#include <QEvent>

namespace orvanta {

DestructiveButton::DestructiveButton(const QString& text, QWidget* parent)
    : QPushButton(text, parent) {}

bool DestructiveButton::event(QEvent* event) {
    const bool isHandled = QPushButton::event(event);
    const auto type = event->type();
    if (parentWidget() != nullptr &&
        (type == QEvent::ParentChange || type == QEvent::Polish || type == QEvent::PaletteChange)) {
        QPalette inks = parentWidget()->palette();
        for (const auto group : {QPalette::Active, QPalette::Inactive}) {
            inks.setColor(group, QPalette::ButtonText, destructiveInk(inks));
        }
        setPalette(inks);
    }
    return isHandled;
}

} // namespace orvanta
