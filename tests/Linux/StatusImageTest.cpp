#include "Linux/StatusNotifier/StatusImage.h"

#include <QColor>
#include <QSet>

#include <gmock/gmock.h>

namespace orvanta {

namespace {

using Tone = StatusTitle::Tone;

StatusTitle title(const char* symbol, const char* production, Tone tone) {
    return {QString::fromUtf8(symbol), QString::fromUtf8(production), QStringLiteral("50"), tone};
}

/// The smallest rectangle around all pixels at least this opaque.
QRect inkOf(const QImage& image, int opacity) {
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

const std::vector<StatusTitle> titles{
    title("↑", "63", Tone::production), title("↑", "100", Tone::production),
    title("↓", "0", Tone::consumption), title("↓", "49", Tone::consumption),
    title("Ⅱ", "63", Tone::secondary),  title("Ⅱ", "—", Tone::secondary),
    title("↑", "—", Tone::secondary)};

TEST(StatusImageTest, EverythingIsInsideAndTheHeightIsUsed) {
    for (const int edge : statusImageEdges) {
        for (const StatusTitle& shown : titles) {
            const QImage image = statusImage(shown, edge);
            ASSERT_EQ(image.size(), QSize(edge, edge));
            const QRect ink = inkOf(image, 200);
            EXPECT_TRUE(image.rect().adjusted(1, 1, -1, -1).contains(ink))
                << edge << qPrintable(shown.text());
            if (shown.productionShare != QStringLiteral("—")) {
                EXPECT_GE(ink.height(), edge * 3 / 4) << edge << qPrintable(shown.text());
            }
        }
    }
}

TEST(StatusImageTest, TwoDigitsAreLargeEnoughToReadAt22Pixels) {
    const QImage image = statusImage(title("↑", "88", Tone::production), 22);
    // Below the arrow and the gap.
    const QRect digits = inkOf(image.copy(0, 8, 22, 14), 200);
    EXPECT_GE(digits.height(), 12);
    EXPECT_GE(digits.width(), 17);
}

TEST(StatusImageTest, TheInkHasTheColourOfTheTone) {
    const QRgb green = QColor::fromRgbF(0.25F, 0.76F, 0.29F).rgb();
    const QRgb red = QColor::fromRgbF(0.82F, 0.14F, 0.23F).rgb();
    for (const int edge : statusImageEdges) {
        const QImage production = statusImage(title("↑", "63", Tone::production), edge);
        const QImage consumption = statusImage(title("↓", "37", Tone::consumption), edge);
        const QImage secondary = statusImage(title("Ⅱ", "63", Tone::secondary), edge);
        EXPECT_GE(count(production, green), edge * edge / 16) << edge;
        EXPECT_GE(count(consumption, red), edge * edge / 16) << edge;
        for (int y = 0; y < edge; ++y) {
            for (int x = 0; x < edge; ++x) {
                const QColor grey = secondary.pixelColor(x, y);
                EXPECT_LE(grey.alpha() > 200 ? grey.saturation() : 0, 24);
            }
        }
    }
}

TEST(StatusImageTest, EachShareAndEachSymbolLooksDifferent) {
    QSet<QByteArray> seen;
    const auto add = [&seen](const StatusTitle& shown) {
        const QImage image = statusImage(shown, 22);
        seen.insert(
            QByteArray(reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes()));
    };
    for (int share = 0; share <= 100; ++share) {
        add(title("↑", qPrintable(QString::number(share)), Tone::secondary));
    }
    for (const char* symbol : {"↓", "Ⅱ", "?"}) {
        add(title(symbol, "63", Tone::secondary));
    }
    add(title("↑", "—", Tone::secondary));
    EXPECT_EQ(seen.size(), 105);
}

TEST(StatusImageTest, TheArrowPointsUpOrDown) {
    const auto widthAt = [](const QImage& image, int y) {
        return inkOf(image.copy(0, y, image.width(), 1), 128).width();
    };
    const QImage up = statusImage(title("↑", "1", Tone::production), 44);
    EXPECT_LT(widthAt(up, 3), widthAt(up, 10));
    const QImage down = statusImage(title("↓", "1", Tone::consumption), 44);
    EXPECT_GT(widthAt(down, 33), widthAt(down, 40));
}

TEST(StatusImageTest, TheWideImageHoldsTheWholeTitle) {
    int lastWidth = 0;
    for (const auto& [production, consumption] :
         {std::pair("—", "—"), std::pair("63", "37"), std::pair("100", "0")}) {
        const StatusTitle shown{QStringLiteral("↑"), QString::fromUtf8(production),
                                QString::fromUtf8(consumption), Tone::production};
        for (const int height : {16, 21, wideStatusImageHeight}) {
            const QImage image = wideStatusImage(shown, height);
            ASSERT_EQ(image.height(), height);
            const QRect ink = inkOf(image, 200);
            EXPECT_TRUE(image.rect().contains(ink));
            EXPECT_LE(image.width() - ink.right(), 4) << "nothing empty at the end";
            lastWidth = image.width();
        }
        EXPECT_GT(lastWidth, wideStatusImageHeight * 3 / 2);
    }
    EXPECT_NE(wideStatusImage({QStringLiteral("↑"), QStringLiteral("63"), QStringLiteral("37"),
                               Tone::production},
                              42),
              wideStatusImage({QStringLiteral("↑"), QStringLiteral("63"), QStringLiteral("36"),
                               Tone::production},
                              42));
}

} // namespace

} // namespace orvanta
