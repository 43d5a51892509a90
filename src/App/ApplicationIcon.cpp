#include "App/ApplicationIcon.h"

#include "Views/Palette.h"

#include <QIconEngine>
#include <QPainter>

#include <algorithm>

namespace orvanta {

namespace {

class ArrowsEngine final : public QIconEngine {
public:
    void paint(QPainter* painter, const QRect& rect, QIcon::Mode /*mode*/,
               QIcon::State /*state*/) override {
        constexpr qreal side = 16; // of the drawing
        const qreal scale = std::min(rect.width(), rect.height()) / side;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->translate(rect.topLeft());
        painter->scale(scale, scale);
        painter->setBrush(QColor(0x14, 0x18, 0x1a));
        painter->drawRoundedRect(QRectF(0, 0, side, side), 3.5, 3.5);
        painter->setBrush(Palette::green);
        painter->drawPolygon(QPolygonF({{5, 2}, {8, 6}, {6, 6}, {6, 13}, {4, 13}, {4, 6}, {2, 6}}));
        painter->setBrush(Palette::red);
        painter->drawPolygon(
            QPolygonF({{11, 14}, {8, 10}, {10, 10}, {10, 3}, {12, 3}, {12, 10}, {14, 10}}));
        painter->restore();
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap result(size);
        result.fill(Qt::transparent);
        QPainter painter(&result);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return result;
    }
    QList<QSize> availableSizes(QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
        return {{16, 16}, {32, 32}, {48, 48}};
    }
    QIconEngine* clone() const override { return new ArrowsEngine(*this); }
};

} // namespace

QIcon applicationIcon() {
    return QIcon(new ArrowsEngine);
}

} // namespace orvanta
