#include "Views/ElidedLabel.h"

#include <QPainter>
#include <QStyle>

namespace orvanta {

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent)
    : QLabel(text, parent) {
    setTextFormat(Qt::PlainText);
}

QSize ElidedLabel::minimumSizeHint() const {
    constexpr int letters = 8;
    const QSize whole = QLabel::minimumSizeHint();
    return {qMin(whole.width(), letters * fontMetrics().averageCharWidth()), whole.height()};
}

QString ElidedLabel::shownText() const {
    return fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width());
}

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(), static_cast<int>(alignment()), palette(),
                          isEnabled(), shownText(), foregroundRole());
}

void ElidedLabel::resizeEvent(QResizeEvent* event) {
    QLabel::resizeEvent(event);
    setToolTip(shownText() == text() ? QString() : text());
}

} // namespace orvanta
