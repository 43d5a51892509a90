#pragma once

#include <QWidget>

namespace orvanta {

class Appearance;

/// A question over the whole panel. It is no window of its own, which would close the popover, and
/// keeps pointer and keyboard to itself until it is answered; Escape cancels.
class Confirmation final : public QWidget {
    Q_OBJECT

public:
    /// A name of this width in a question leaves it short, in points.
    static constexpr int longestName = 230;

    struct Question {
        QString title;
        QString message;
        QString action; ///< on the button that does it
    };

    Confirmation(const Appearance& appearance, const Question& question, QWidget* parent);

Q_SIGNALS:
    void confirmed();
    void cancelled();

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    const Appearance& appearance_;
    QWidget* box_;
};

} // namespace orvanta
