#include "Views/Symbols.h"

#include "Views/DeviceGrid.h"
#include "WidgetReading.h"

using namespace orvanta;

namespace {

/// A square of 44 points, with this many pixels a point.
template <typename Paint>
QImage painted(double ratio, const Paint& paint) {
    QImage image(qRound(44 * ratio), qRound(44 * ratio), QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::white);
    QPainter painter(&image);
    paint(painter, QRectF(0, 0, 44, 44));
    return image;
}

} // namespace

TEST(SymbolsTest, StraightLinesFillWholePixelsAtEveryRatio) {
    for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0}) {
        // Across the symbol, at a height where it has neither ends nor corners.
        for (const auto& [symbol, height] : {std::pair(Symbol::plusSquare, 0.47),
                                             {Symbol::squareGrid3x3, 0.5},
                                             {Symbol::pause, 0.5}}) {
            const QImage image =
                painted(ratio, [&, symbol = symbol](QPainter& painter, const QRectF& area) {
                    painter.translate(0.3, 0.7); // As a widget may lie between two pixels.
                    drawSymbol(painter, symbol, area, 12, Qt::black);
                });
            const QRect line(0, static_cast<int>(image.height() * height), image.width(), 1);
            EXPECT_EQ(count(image, Qt::black, line) + count(image, Qt::white, line), line.width())
                << static_cast<int>(symbol) << " at " << ratio;
            EXPECT_GT(count(image, Qt::black), 0) << static_cast<int>(symbol) << " at " << ratio;
        }
    }
}

TEST(SymbolsTest, RulesAreOnePixelUpToTwoAPoint) {
    for (const auto& [ratio, thickness] :
         {std::pair(1.0, 1), {1.25, 1}, {1.5, 1}, {1.75, 1}, {2, 1}, {3, 2}, {4, 2}}) {
        for (const Qt::Edge edge : {Qt::TopEdge, Qt::LeftEdge, Qt::RightEdge, Qt::BottomEdge}) {
            const QImage image = painted(ratio, [edge](QPainter& painter, const QRectF& area) {
                drawRule(painter, area, edge, Qt::red);
            });
            const int side = image.width();
            const int rest = thickness - side;
            const QRect line = image.rect().adjusted(
                edge == Qt::RightEdge ? -rest : 0, edge == Qt::BottomEdge ? -rest : 0,
                edge == Qt::LeftEdge ? rest : 0, edge == Qt::TopEdge ? rest : 0);
            EXPECT_EQ(count(image, Qt::red, line), side * thickness) << ratio;
            EXPECT_EQ(count(image, Qt::white), side * side - side * thickness) << ratio;
        }
    }
}
