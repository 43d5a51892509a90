#include "Views/TextBlock.h"

#include "Views/Palette.h"
#include "Views/PanelFont.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>

namespace orvanta {

TextBlock::TextBlock(const Appearance& appearance, const Style& style, int maxWidth,
                     QWidget* parent)
    : Band(appearance, QSize(maxWidth, style.minHeight), {}, parent)
    , style_(style)
    , maxWidth_(maxWidth) {
    setFont(panelFont(style.size, *this));
}

int TextBlock::flags() const {
    return static_cast<int>(Qt::TextWordWrap) | Qt::AlignVCenter |
           (style_.isCentred ? Qt::AlignHCenter : Qt::AlignLeft);
}

void TextBlock::setText(const QString& text) {
    if (text == text_) {
        return;
    }
    text_ = text;
    const QRect room(0, 0, maxWidth_ - 2 * style_.padding, QWIDGETSIZE_MAX);
    const QSize needed = fontMetrics().boundingRect(room, flags(), text_).size() +
                         QSize(2 * style_.padding, style_.above + style_.below);
    setFixedSize(style_.isCentred ? maxWidth_ : needed.width(),
                 std::max(style_.minHeight, needed.height()));
    setAccessibleName(text_);
    update();
}

void TextBlock::paintContent(QPainter& painter, const Palette& palette) {
    if (style_.isFilled) {
        painter.fillRect(rect(), palette.background);
    }
    painter.setPen(style_.tone == Tone::muted ? palette.muted : palette.foreground);
    painter.drawText(rect().adjusted(style_.padding, style_.above, -style_.padding, -style_.below),
                     flags(), text_);
}

} // namespace orvanta
