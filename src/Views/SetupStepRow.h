#pragma once

#include "Setup/Setup.h"

#include <QWidget>

namespace orvanta {

class Appearance;
class GridButton;
class TextBand;

/// One step of the setup: its name, and a button that shows its state.
class SetupStepRow final : public QWidget {
    Q_OBJECT

public:
    SetupStepRow(const Appearance& appearance, const Setup::Step& step, QWidget* parent = nullptr);

    const Setup::Step& step() const { return step_; }
    void setStep(const Setup::Step& step);

Q_SIGNALS:
    /// The person pressed the button.
    void actionRequested();

private:
    Setup::Step step_;
    TextBand* name_;
    GridButton* button_;
};

} // namespace orvanta
