#include "Linux/StatusNotifier/StatusImage.h"

#include <QColor>
#include <QFont>
#include <QFontDatabase>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QTransform>

#include <algorithm>
#include <cmath>

namespace orvanta {

namespace {

struct Paint {
    QColor ink;
    QColor outline; ///< keeps the ink apart from a panel of like brightness
};

Paint paintOf(StatusTitle::Tone tone) {
    switch (tone) {
    case StatusTitle::Tone::production:
        return {QColor::fromRgbF(0.25F, 0.76F, 0.29F), QColor(0, 48, 10, 140)};
    case StatusTitle::Tone::consumption:
        return {QColor::fromRgbF(0.82F, 0.14F, 0.23F), QColor(255, 230, 230, 130)};
    case StatusTitle::Tone::secondary:
        break;
    }
    return {QColor(142, 142, 147), QColor(0, 0, 0, 40)};
}

/// The text's outlines in the monospaced system font, stretched so that they fill the box: edges
/// then lie on whole pixels at every size. Narrow text stays narrow.
QPainterPath textIn(const QRectF& box, const QString& text, Qt::Alignment alignment) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setWeight(QFont::Bold);
    font.setHintingPreference(QFont::PreferNoHinting);
    constexpr int designSize = 200; // px; large, so that rounding in the font does not show
    font.setPixelSize(designSize);
    QPainterPath path;
    path.addText(0, 0, font, text);
    // Digits differ a little in height; all are given the same, and a dash its place among them.
    QPainterPath digit;
    digit.addText(0, 0, font, QStringLiteral("0"));
    const QRectF height = digit.boundingRect();
    const QRectF width = path.boundingRect();
    const double sy = box.height() / height.height();
    const double sx = std::min(box.width() / width.width(), sy);
    const double left = alignment.testFlag(Qt::AlignHCenter)
                            ? box.center().x() - width.width() * sx / 2
                            : box.left();
    QTransform place;
    place.translate(left, box.top());
    place.scale(sx, sy);
    place.translate(-width.left(), -height.top());
    return place.map(path);
}

/// An arrow or the two bars of a pause, drawn by hand: the font's own are too thin at this size.
QPainterPath symbolIn(const QRectF& box, QChar symbol) {
    QPainterPath path;
    if (symbol == u'↑' || symbol == u'↓') {
        const bool up = symbol == u'↑';
        const double base = up ? box.bottom() : box.top();
        const double tip = up ? box.top() : box.bottom();
        path.moveTo(box.left(), base);
        path.lineTo(box.center().x(), tip);
        path.lineTo(box.right(), base);
        path.closeSubpath();
    } else if (symbol == u'Ⅱ') {
        const double bar = std::max(1.0, std::round(box.height() / 3));
        const double left = std::round(box.center().x() - 1.5 * bar);
        path.addRect(left, box.top(), bar, box.height());
        path.addRect(left + 2 * bar, box.top(), bar, box.height());
    } else {
        path = textIn(box, symbol, Qt::AlignHCenter);
    }
    return path;
}

QImage blank(int width, int height) {
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

/// How far the outline reaches beyond the ink, in pixels.
double outlineOf(int height) {
    constexpr double share = 0.75 / 22;
    return height * share;
}

int marginOf(int height) {
    return static_cast<int>(std::ceil(outlineOf(height)));
}

void draw(QImage& image, const QPainterPath& path, const Paint& paint) {
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.strokePath(path, QPen(paint.outline, 2 * outlineOf(image.height()), Qt::SolidLine,
                                  Qt::FlatCap, Qt::RoundJoin));
    // The outline does not shine through the ink's antialiased edge.
    painter.fillPath(path, paint.ink);
}

} // namespace

QImage statusImage(const StatusTitle& title, int edge) {
    QImage image = blank(edge, edge);
    const int margin = marginOf(edge);
    const int symbolHeight = (edge * 5 + 11) / 22;
    const int gap = std::max(1, (edge * 2) / 22);
    const bool below = title.symbol == u'↓';
    const int inner = edge - 2 * margin;
    const int digitsHeight = inner - symbolHeight - gap;
    const QRectF digits(margin, below ? margin : edge - margin - digitsHeight, inner, digitsHeight);
    const int symbolWidth = 2 * symbolHeight - (edge % 2);
    const QRectF symbol((edge - symbolWidth) / 2.0, below ? edge - margin - symbolHeight : margin,
                        symbolWidth, symbolHeight);
    QPainterPath path = textIn(digits, StatusTitle::share(title.production), Qt::AlignHCenter);
    path.addPath(symbolIn(symbol, title.symbol));
    draw(image, path, paintOf(title.tone));
    return image;
}

QImage wideStatusImage(const StatusTitle& title, int height) {
    const int margin = marginOf(height);
    const int digitsHeight = height * 7 / 11;
    const int top = (height - digitsHeight) / 2;
    const QString shares = StatusTitle::share(title.production) + QLatin1Char('/') +
                           StatusTitle::share(title.consumption);
    const QRectF symbol(margin, top, digitsHeight * 0.8, digitsHeight);
    QPainterPath path = symbolIn(symbol, title.symbol);
    constexpr double unlimited = 1e6;
    path.addPath(textIn(QRectF(symbol.right() + height / 4.0, top, unlimited, digitsHeight), shares,
                        Qt::AlignLeft));
    QImage image = blank(static_cast<int>(std::ceil(path.boundingRect().right())) + margin, height);
    draw(image, path, paintOf(title.tone));
    return image;
}

} // namespace orvanta
