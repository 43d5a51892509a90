#include "Views/PanelFooter.h"

#include "Views/GridButton.h"
#include "Views/PanelGeometry.h"
#include "Views/Text/PanelText.h"

namespace orvanta {

namespace {

constexpr int wideButton = (panelWidth - rowHeight) / 2;

} // namespace

PanelFooter::PanelFooter(const Appearance& appearance, QWidget* parent)
    : QWidget(parent) {
    setFixedSize(panelWidth, rowHeight);
    int x = 0;
    const auto addButton = [&](int width) {
        auto* const button =
            new GridButton(appearance, QSize(width, rowHeight), Qt::TopEdge | Qt::RightEdge, this);
        button->move(x, 0);
        x += width;
        return button;
    };
    const auto addText = [&](const QString& label, const QString& title) {
        GridButton* const button = addButton(wideButton);
        button->setLabel({.text = label});
        button->setTitles(footerToolTip(title), title);
        return button;
    };
    pause_ = addButton(rowHeight);
    connect(pause_, &GridButton::clicked, this, &PanelFooter::pauseRequested);
    connect(addText(QStringLiteral("ZERAR"), QStringLiteral("Zerar tempo")), &GridButton::clicked,
            this, &PanelFooter::resetRequested);
    connect(addText(QStringLiteral("SAIR"), QStringLiteral("Sair")), &GridButton::clicked, this,
            &PanelFooter::quitRequested);
    setPaused(false);
}

void PanelFooter::setPaused(bool paused) {
    pause_->setLabel({.symbol = paused ? Symbol::play : Symbol::pause, .size = 13});
    const QString title = pauseTitle(paused);
    pause_->setTitles(footerToolTip(title), title);
}

} // namespace orvanta
