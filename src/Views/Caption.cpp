#include "Views/Caption.h"

#include "Views/Ink.h"

#include <QEvent>

namespace orvanta {

Caption::Caption(const QString& text, QWidget* parent)
    : QLabel(text, parent) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
}

bool Caption::event(QEvent* event) {
    const bool isHandled = QLabel::event(event);
    switch (event->type()) {
    case QEvent::ParentChange:
    case QEvent::PaletteChange:
    case QEvent::FontChange:
    case QEvent::ApplicationFontChange:
    case QEvent::Polish:
        adopt();
        break;
    default:
        break;
    }
    return isHandled;
}

void Caption::adopt() {
    const QWidget* const around = parentWidget();
    if (around == nullptr) {
        return;
    }
    setFont(captionFont(around->font()));
    QPalette inks = around->palette();
    inks.setColor(QPalette::WindowText, secondaryInk(inks));
    setPalette(inks);
}

} // namespace orvanta
