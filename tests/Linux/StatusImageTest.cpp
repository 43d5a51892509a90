#include "Linux/StatusNotifier/StatusImage.h"

#include "Testing.h"

#include <QColor>

using namespace orvanta;
using Tone = StatusTitle::Tone;

namespace {

struct Ink {
    QRect area;     ///< the smallest rectangle around what is all but opaque
    int pixels = 0; ///< of exactly this colour
};

Ink inkOf(const QImage& image, QRgb colour = 0) {
    Ink ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            ink.area |= qAlpha(pixel) >= 200 ? QRect(x, y, 1, 1) : QRect();
            ink.pixels += pixel == colour ? 1 : 0;
        }
    }
    return ink;
}

TEST(StatusImageTest, EverythingIsInsideLargeAndInTheColourOfTheTone) {
    const QRgb green = QColor::fromRgbF(0.25F, 0.76F, 0.29F).rgb();
    const QRgb red = QColor::fromRgbF(0.82F, 0.14F, 0.23F).rgb();
    const QRgb grey = qRgb(142, 142, 147);
    const std::pair<StatusTitle, QRgb> rows[] = {{{u'↑', 63, {}, Tone::production}, green},
                                                 {{u'↓', 0, {}, Tone::consumption}, red},
                                                 {{u'Ⅱ', 63, {}, Tone::secondary}, grey}};
    for (const int edge : statusImageEdges) {
        for (const auto& [title, colour] : rows) {
            const QImage image = statusImage(title, edge);
            ASSERT_EQ(image.size(), QSize(edge, edge));
            const Ink ink = inkOf(image, colour);
            EXPECT_TRUE(image.rect().adjusted(1, 1, -1, -1).contains(ink.area)) << edge;
            EXPECT_GE(ink.area.height(), edge * 3 / 4) << edge << qPrintable(title.text());
            EXPECT_GE(ink.pixels, edge * edge / 16) << edge << qPrintable(title.text());
        }
    }
    // Below the arrow and the gap; large enough to read.
    const QRect digits = inkOf(statusImage(rows[0].first, 22).copy(0, 8, 22, 14)).area;
    EXPECT_GE(std::min(digits.height() + 5, digits.width()), 17);
}

TEST(StatusImageTest, EachShareAndEachSymbolLooksDifferentAndTheArrowPointsUpOrDown) {
    QList<QImage> seen;
    std::vector<std::pair<QChar, std::optional<int>>> all{
        {u'↑', {}}, {u'↓', 63}, {u'Ⅱ', 63}, {u'?', 63}};
    for (int share = 0; share <= 100; ++share) {
        all.emplace_back(u'↑', share);
    }
    for (const auto& [symbol, share] : all) {
        const QImage image = statusImage({symbol, share, {}, Tone::secondary}, 22);
        EXPECT_FALSE(seen.contains(image)) << int(symbol.unicode()) << ' ' << share.value_or(-1);
        seen.append(image);
    }

    const QImage up = statusImage({u'↑', 1, {}, Tone::production}, 44);
    const QImage down = statusImage({u'↓', 1, {}, Tone::production}, 44);
    EXPECT_LT(inkOf(up.copy(0, 4, 44, 1)).area.width(), inkOf(up.copy(0, 10, 44, 1)).area.width());
    EXPECT_GT(inkOf(down.copy(0, 33, 44, 1)).area.width(),
              inkOf(down.copy(0, 39, 44, 1)).area.width());
}

TEST(StatusImageTest, TheWideImageHoldsTheWholeTitleAndNothingEmptyAtTheEnd) {
    const QImage image = wideStatusImage({u'↑', 100, 0, Tone::production}, 42);
    const QRect ink = inkOf(image).area;
    EXPECT_TRUE(image.rect().adjusted(1, 1, -1, -1).contains(ink));
    EXPECT_LE(image.width() - ink.right(), 4);
}

} // namespace
