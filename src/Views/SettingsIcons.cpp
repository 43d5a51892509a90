#include "Views/SettingsIcons.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmap>

#include <cmath>
#include <numbers>

namespace orvanta {

namespace {

using Drawing = QPainterPath (*)();

/// In a square of side 16, of lines.
QPainterPath gear() {
    constexpr int teeth = 8;
    constexpr double middle = 8;
    constexpr double outer = 7;
    constexpr double inner = 5.2;
    QPainterPath path;
    for (int i = 0; i < 4 * teeth; ++i) {
        const double radius = i % 4 < 2 ? outer : inner;
        const double angle = 2 * std::numbers::pi * (i - 0.5) / (4 * teeth);
        const QPointF corner(middle + radius * std::cos(angle), middle + radius * std::sin(angle));
        i == 0 ? path.moveTo(corner) : path.lineTo(corner);
    }
    path.closeSubpath();
    path.addEllipse(QPointF(middle, middle), 2.3, 2.3);
    return path;
}

QPainterPath tag() {
    QPainterPath path(QPointF(1.5, 1.5));
    for (const QPointF corner :
         {QPointF(7.8, 1.5), QPointF(14.5, 8.2), QPointF(8.2, 14.5), QPointF(1.5, 7.8)}) {
        path.lineTo(corner);
    }
    path.closeSubpath();
    path.addEllipse(QPointF(5, 5), 1.1, 1.1);
    return path;
}

class DrawnIcon final : public QIconEngine {
public:
    explicit DrawnIcon(Drawing drawing)
        : drawing_(drawing) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State /*state*/) override {
        constexpr double side = 16;
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / side, rect.height() / side);
        painter->setPen(QPen(QGuiApplication::palette().color(
                                 mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active,
                                 QPalette::WindowText),
                             1.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter->drawPath(drawing_());
        painter->restore();
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap result(size);
        result.fill(Qt::transparent);
        QPainter painter(&result);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return result;
    }
    QIconEngine* clone() const override { return new DrawnIcon(*this); }

private:
    Drawing drawing_;
};

} // namespace

QIcon gearIcon() {
    return QIcon(new DrawnIcon(gear));
}

QIcon tagIcon() {
    return QIcon(new DrawnIcon(tag));
}

} // namespace orvanta
