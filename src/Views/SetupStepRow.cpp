#include "Views/SetupStepRow.h"

#include "Views/Band.h"
#include "Views/GridButton.h"
#include "Views/PanelGeometry.h"
#include "Views/Text/SetupText.h"

namespace orvanta {

SetupStepRow::SetupStepRow(const Appearance& appearance, const Setup::Step& step, QWidget* parent)
    : QWidget(parent)
    , name_(new TextBand(appearance, QSize(nameWidth, rowHeight), Qt::RightEdge | Qt::BottomEdge,
                         TextBand::Tone::foreground, this))
    , button_(new GridButton(appearance, QSize(panelWidth - nameWidth, rowHeight), Qt::BottomEdge,
                             this)) {
    setFixedSize(panelWidth, rowHeight);
    button_->move(nameWidth, 0);
    connect(button_, &GridButton::clicked, this, &SetupStepRow::actionRequested);
    setStep(step);
}

void SetupStepRow::setStep(const Setup::Step& step) {
    step_ = step;
    name_->setTexts(step.name);
    if (step.state == Setup::State::done) {
        button_->setLabel({.symbol = Symbol::checkmark, .ink = GridButton::Ink::green});
    } else {
        button_->setLabel({.text = setupActionLabel(step)});
    }
    button_->setTitles(setupActionToolTip(step), setupActionTitle(step));
}

} // namespace orvanta
