#include "Views/TitleBand.h"

#include "Views/Band.h"
#include "Views/GridButton.h"
#include "Views/PanelGeometry.h"
#include "Views/Text/PanelText.h"

#include <QEvent>

namespace orvanta {

TitleBand::TitleBand(const Appearance& appearance, QWidget* parent)
    : QWidget(parent)
    , appearance_(appearance)
    , title_(new TextBand(appearance, QSize(nameWidth, rowHeight), Qt::RightEdge | Qt::BottomEdge,
                          TextBand::Tone::muted, this))
    , buttons_{makeButton(Listing::history, Symbol::squareGrid3x3,
                          QStringLiteral("Histórico por dia"), nameWidth,
                          Qt::RightEdge | Qt::BottomEdge),
               makeButton(Listing::unmonitored, Symbol::eyeSlash, QStringLiteral("Não monitorados"),
                          nameWidth + rowHeight, Qt::BottomEdge)} {
    setFixedSize(panelWidth, rowHeight);
    setListing(Listing::activities);
}

TitleBand::ListingButton TitleBand::makeButton(Listing target, Symbol symbol, const QString& title,
                                               int x, Qt::Edges rules) {
    auto* const button = new GridButton(appearance_, QSize(rowHeight, rowHeight), rules, this);
    button->move(x, 0);
    button->setTitles(listingToolTip(title), title);
    button->setCheckable(true);
    button->installEventFilter(this);
    connect(button, &GridButton::clicked, this, [this, target] { Q_EMIT clicked(target); });
    return {target, symbol, button};
}

void TitleBand::setTexts(const QString& title, const QString& value) {
    title_->setTexts(title, value);
}

void TitleBand::setListing(Listing listing) {
    for (const ListingButton& each : buttons_) {
        const bool isShown = each.target == listing;
        each.button->setLabel(
            {.symbol = each.symbol,
             .ink = isShown ? GridButton::Ink::green : GridButton::Ink::foreground});
        each.button->setChecked(isShown);
    }
}

bool TitleBand::eventFilter(QObject* watched, QEvent* event) {
    for (const ListingButton& each : buttons_) {
        if (watched == each.button && event->type() == QEvent::Enter) {
            Q_EMIT entered(each.target);
        } else if (watched == each.button && event->type() == QEvent::Leave) {
            Q_EMIT left();
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace orvanta
