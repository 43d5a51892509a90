#pragma once

#include "Views/Band.h"

#include <memory>

QT_BEGIN_NAMESPACE
class QTextLayout;
QT_END_NAMESPACE

namespace orvanta {

/// A text in as many lines as it takes, as high as they are.
class TextBlock final : public Band {
    Q_OBJECT

public:
    enum class Tone { foreground, muted };

    struct Style {
        double size; ///< of the font, in points
        Tone tone = Tone::muted;
        int padding = 0; ///< left and right of the text
        int above = 0;
        int below = 0;
        int minHeight = 0;      ///< of the whole
        bool isFilled = false;  ///< with the background, over what lies below
        bool isCentred = false; ///< not from the left
    };

    /// It takes as much of `maxWidth` as it needs, or all of it when it is centred.
    TextBlock(const Appearance& appearance, const Style& style, int maxWidth,
              QWidget* parent = nullptr);
    ~TextBlock() override;

    void setText(const QString& text);

protected:
    void paintContent(QPainter& painter, const Palette& palette) override;

private:
    Style style_;
    int maxWidth_;
    std::unique_ptr<QTextLayout> layout_; ///< null until there is a text
};

} // namespace orvanta
