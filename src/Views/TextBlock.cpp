#include "Views/TextBlock.h"

#include "Views/Palette.h"
#include "Views/PanelFont.h"

#include <QPainter>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace orvanta {

TextBlock::TextBlock(const Appearance& appearance, const Style& style, int maxWidth,
                     QWidget* parent)
    : Band(appearance, QSize(maxWidth, style.minHeight), {}, parent)
    , style_(style)
    , maxWidth_(maxWidth) {
    setFont(panelFont(style.size, *this));
}

TextBlock::~TextBlock() = default;

void TextBlock::setText(const QString& text) {
    if (layout_ != nullptr && text == accessibleName()) {
        return;
    }
    setAccessibleName(text);
    QString lines = text;
    lines.replace(u'\n', QChar::LineSeparator);
    QTextOption option(style_.isCentred ? Qt::AlignHCenter : Qt::AlignLeft);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout_ = std::make_unique<QTextLayout>(lines, font(), this);
    layout_->setTextOption(option);
    layout_->beginLayout();
    double height = 0;
    double width = 0;
    for (QTextLine line = layout_->createLine(); line.isValid(); line = layout_->createLine()) {
        line.setLineWidth(maxWidth_ - 2 * style_.padding);
        line.setPosition(QPointF(0, height));
        height += line.height();
        width = std::max(width, line.naturalTextWidth());
    }
    layout_->endLayout();
    setFixedSize(style_.isCentred ? maxWidth_
                                  : static_cast<int>(std::ceil(width)) + 2 * style_.padding,
                 std::max(style_.minHeight,
                          static_cast<int>(std::ceil(height)) + style_.above + style_.below));
    update();
}

void TextBlock::paintContent(QPainter& painter, const Palette& palette) {
    if (style_.isFilled) {
        painter.fillRect(rect(), palette.background);
    }
    if (layout_ != nullptr) {
        painter.setPen(style_.tone == Tone::muted ? palette.muted : palette.foreground);
        const double room = height() - style_.above - style_.below;
        layout_->draw(
            &painter,
            QPointF(style_.padding, style_.above + (room - layout_->boundingRect().height()) / 2));
    }
}

} // namespace orvanta
