#pragma once

#include "Views/Symbols.h"

#include <QAbstractButton>

#include <optional>

namespace orvanta {

class Appearance;
struct Palette;

/// A button of the panel: its label, and a faint tint of its whole area while the pointer is over
/// it, the keyboard has come to it, or it is held down.
class GridButton : public QAbstractButton {
    Q_OBJECT

public:
    enum class Ink { foreground, muted, green, red };

    struct Label {
        QString text = {};
        std::optional<Symbol> symbol = {}; ///< instead of the text
        double size = 12;                  ///< of the symbol, in points
        Ink ink = Ink::foreground;

        friend bool operator==(const Label&, const Label&) = default;
    };

    /// Where lines separate the button from its neighbours.
    GridButton(const Appearance& appearance, const QSize& size, Qt::Edges rules,
               QWidget* parent = nullptr);

    void setLabel(const Label& label);
    const Label& label() const { return label_; }

    /// What the button does, for those who point at it and for those who cannot see it.
    void setTitles(const QString& toolTip, const QString& accessibleName);

    /// For a button that was moved to or from under a pointer that stands still.
    void setPointerOver(bool over);

protected:
    virtual void paintLabel(QPainter& painter, const Palette& palette);

    void paintEvent(QPaintEvent* event) override;
    /// What is chosen is not the button's to say.
    void nextCheckState() override {}
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

    const Appearance& appearance() const { return appearance_; }
    /// Whether it came here and this is worth showing.
    bool hasKeyboard() const { return hasKeyboard_; }

private:
    double tint() const;

    const Appearance& appearance_;
    Qt::Edges rules_;
    Label label_;
    bool hasKeyboard_ = false;
};

} // namespace orvanta
