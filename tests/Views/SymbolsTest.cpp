#include "Views/Symbols.h"

#include "WidgetReading.h"

using namespace orvanta;

TEST(SymbolsTest, StraightLinesFillWholePixelsAtEveryRatio) {
    for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0, 3.0}) {
        // Across the symbol, at a height where it has neither ends nor corners.
        for (const auto& [symbol, height] : {std::pair(Symbol::plusSquare, 0.47),
                                             {Symbol::squareGrid3x3, 0.5},
                                             {Symbol::pause, 0.5}}) {
            QImage image(qRound(44 * ratio), qRound(44 * ratio), QImage::Format_RGB32);
            image.setDevicePixelRatio(ratio);
            image.fill(Qt::white);
            QPainter painter(&image);
            painter.translate(0.3, 0.7); // As a widget may lie between two pixels.
            drawSymbol(painter, symbol, QRectF(0, 0, 44, 44), 12, Qt::black);
            const QRect line(0, static_cast<int>(image.height() * height), image.width(), 1);
            EXPECT_EQ(count(image, Qt::black, line) + count(image, Qt::white, line), line.width())
                << static_cast<int>(symbol) << " at " << ratio;
            EXPECT_GT(count(image, Qt::black), 0) << static_cast<int>(symbol) << " at " << ratio;
        }
    }
}
