#include "Linux/StatusNotifier/StatusImage.h"

#include <QColor>
#include <QSet>

#include <gtest/gtest.h>

namespace orvanta {

namespace {

using namespace Qt::StringLiterals;
using Tone = StatusTitle::Tone;

/// The smallest rectangle around all pixels at least this opaque.
QRect inkOf(const QImage& image, int opacity = 200) {
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) >= opacity) {
                ink |= QRect(x, y, 1, 1);
            }
        }
    }
    return ink;
}

int count(const QImage& image, QRgb colour) {
    int found = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            found += image.pixel(x, y) == colour ? 1 : 0;
        }
    }
    return found;
}

TEST(StatusImageTest, EverythingIsInsideLargeAndInTheColourOfTheTone) {
    const QRgb green = QColor::fromRgbF(0.25F, 0.76F, 0.29F).rgb();
    const QRgb red = QColor::fromRgbF(0.82F, 0.14F, 0.23F).rgb();
    const QRgb grey = qRgb(142, 142, 147);
    const std::pair<StatusTitle, QRgb> rows[] = {{{u"↑"_s, u"63"_s, {}, Tone::production}, green},
                                                 {{u"↑"_s, u"100"_s, {}, Tone::production}, green},
                                                 {{u"↓"_s, u"0"_s, {}, Tone::consumption}, red},
                                                 {{u"↓"_s, u"49"_s, {}, Tone::consumption}, red},
                                                 {{u"Ⅱ"_s, u"63"_s, {}, Tone::secondary}, grey},
                                                 {{u"Ⅱ"_s, u"—"_s, {}, Tone::secondary}, grey}};
    for (const int edge : statusImageEdges) {
        for (const auto& [title, colour] : rows) {
            SCOPED_TRACE(testing::Message() << edge << qPrintable(title.text()));
            const QImage image = statusImage(title, edge);
            ASSERT_EQ(image.size(), QSize(edge, edge));
            const QRect ink = inkOf(image);
            EXPECT_TRUE(image.rect().adjusted(1, 1, -1, -1).contains(ink));
            if (title.productionShare != u"—"_s) {
                EXPECT_GE(ink.height(), edge * 3 / 4);
                EXPECT_GE(count(image, colour), edge * edge / 16);
            }
        }
    }
    // Below the arrow and the gap; large enough to read.
    const QImage small = statusImage({u"↑"_s, u"88"_s, {}, Tone::production}, 22);
    const QRect digits = inkOf(small.copy(0, 8, 22, 14));
    EXPECT_GE(digits.height(), 12);
    EXPECT_GE(digits.width(), 17);
}

TEST(StatusImageTest, EachShareAndEachSymbolLooksDifferent) {
    QSet<QByteArray> seen;
    const auto add = [&seen](const QString& symbol, const QString& share) {
        const QImage image = statusImage({symbol, share, {}, Tone::secondary}, 22);
        seen.insert(
            QByteArray(reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes()));
    };
    for (int share = 0; share <= 100; ++share) {
        add(u"↑"_s, QString::number(share));
    }
    add(u"↑"_s, u"—"_s);
    for (const QString& symbol : {u"↓"_s, u"Ⅱ"_s, u"?"_s}) {
        add(symbol, u"63"_s);
    }
    EXPECT_EQ(seen.size(), 105);
}

TEST(StatusImageTest, TheArrowPointsUpOrDown) {
    const auto widthAt = [](const QString& symbol, int y) {
        const QImage image = statusImage({symbol, u"1"_s, {}, Tone::production}, 44);
        return inkOf(image.copy(0, y, image.width(), 1), 128).width();
    };
    EXPECT_LT(widthAt(u"↑"_s, 3), widthAt(u"↑"_s, 10));
    EXPECT_GT(widthAt(u"↓"_s, 33), widthAt(u"↓"_s, 40));
}

TEST(StatusImageTest, TheWideImageHoldsTheWholeTitle) {
    const auto wide = [](const QString& production, const QString& consumption) {
        return wideStatusImage({u"↑"_s, production, consumption, Tone::production},
                               wideStatusImageHeight);
    };
    for (const QImage& image :
         {wide(u"—"_s, u"—"_s), wide(u"63"_s, u"37"_s), wide(u"100"_s, u"0"_s)}) {
        ASSERT_EQ(image.height(), wideStatusImageHeight);
        EXPECT_TRUE(image.rect().adjusted(1, 1, -1, -1).contains(inkOf(image)));
        EXPECT_LE(image.width() - inkOf(image).right(), 4) << "nothing empty at the end";
        EXPECT_GT(image.width(), wideStatusImageHeight * 3 / 2);
    }
    EXPECT_NE(wide(u"63"_s, u"37"_s), wide(u"63"_s, u"36"_s));
}

} // namespace

} // namespace orvanta
