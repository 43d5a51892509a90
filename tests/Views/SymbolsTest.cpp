#include "Views/Symbols.h"

#include "Views/DeviceGrid.h"
#include "WidgetReading.h"

using namespace orvanta;

namespace {

QImage sheet(double ratio) {
    QImage image(qRound(44 * ratio), qRound(44 * ratio), QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::white);
    return image;
}

} // namespace

TEST(SymbolsTest, StraightLinesFillWholePixelsAtEveryRatio) {
    for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0}) {
        // Across the symbol, at a height where it has neither ends nor corners.
        for (const auto& [symbol, height] : {std::pair(Symbol::plusSquare, 0.47),
                                             {Symbol::squareGrid3x3, 0.5},
                                             {Symbol::pause, 0.5}}) {
            QImage image = sheet(ratio);
            QPainter painter(&image);
            painter.translate(0.3, 0.7); // As a widget may lie between two pixels.
            drawSymbol(painter, symbol, QRectF(0, 0, 44, 44), 12, Qt::black);
            painter.end();
            int mixed = 0;
            for (int x = 0; x < image.width(); ++x) {
                const int grey = qGray(image.pixel(x, static_cast<int>(image.height() * height)));
                mixed += grey != 0 && grey != 255 ? 1 : 0;
            }
            EXPECT_EQ(mixed, 0) << static_cast<int>(symbol) << " at " << ratio;
            EXPECT_GT(count(image, Qt::black), 0) << static_cast<int>(symbol) << " at " << ratio;
        }
    }
}

TEST(SymbolsTest, RulesAreOnePixelUpToTwoAPoint) {
    struct Row {
        double ratio;
        int thickness;
    };
    for (const Row& row : {Row{1, 1}, {1.25, 1}, {1.5, 1}, {1.75, 1}, {2, 1}, {3, 2}, {4, 2}}) {
        for (const Qt::Edge edge : {Qt::TopEdge, Qt::LeftEdge, Qt::RightEdge, Qt::BottomEdge}) {
            QImage image = sheet(row.ratio);
            QPainter painter(&image);
            drawRule(painter, QRectF(0, 0, 44, 44), edge, Qt::red);
            painter.end();
            const bool vertical = edge == Qt::LeftEdge || edge == Qt::RightEdge;
            const int last = image.width() - row.thickness;
            const QRect line =
                vertical ? QRect(edge == Qt::LeftEdge ? 0 : last, 0, row.thickness, image.height())
                         : QRect(0, edge == Qt::TopEdge ? 0 : last, image.width(), row.thickness);
            EXPECT_EQ(count(image, Qt::red, line), line.width() * line.height()) << row.ratio;
            EXPECT_EQ(count(image, Qt::white),
                      image.width() * image.height() - line.width() * line.height())
                << row.ratio;
        }
    }
}
