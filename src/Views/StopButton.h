#pragma once

#include "Views/GridButton.h"

namespace orvanta {

/// The small button after an activity's name. It is there for the keyboard and for screen readers
/// all the time, and to be seen while its row is in hand.
class StopButton final : public GridButton {
    Q_OBJECT

public:
    static constexpr int seenWidth = 12; ///< of what is seen of it, in points

    explicit StopButton(const Appearance& appearance, QWidget* parent = nullptr);

    /// Where what is seen of it begins.
    void placeAt(int x);
    void setRevealed(bool revealed);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    bool isRevealed_ = false;
};

} // namespace orvanta
