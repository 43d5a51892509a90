#include "Views/PlainLabels.h"

#include <QApplication>
#include <QEvent>
#include <QLabel>

namespace orvanta {

PlainLabels::PlainLabels() {
    QApplication::instance()->installEventFilter(this);
}

bool PlainLabels::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Polish) {
        if (auto* const label = qobject_cast<QLabel*>(watched)) {
            label->setTextFormat(Qt::PlainText);
        }
    }
    return false;
}

} // namespace orvanta
