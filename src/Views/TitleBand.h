#pragma once

#include "Views/Symbols.h"
#include "Views/Text/Listing.h"

#include <QWidget>

#include <array>

namespace orvanta {

class Appearance;
class GridButton;
class TextBand;

/// What the panel shows, and the buttons that have it show something else.
class TitleBand final : public QWidget {
    Q_OBJECT

public:
    explicit TitleBand(const Appearance& appearance, QWidget* parent = nullptr);

    void setTexts(const QString& title, const QString& value);
    void setListing(Listing listing);

Q_SIGNALS:
    void clicked(orvanta::Listing target);
    void entered(orvanta::Listing target);
    void left();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct ListingButton {
        Listing target;
        Symbol symbol;
        GridButton* button;
    };
    ListingButton makeButton(Listing target, Symbol symbol, const QString& title, int x,
                             Qt::Edges rules);

    const Appearance& appearance_;
    TextBand* title_;
    std::array<ListingButton, 2> buttons_;
};

} // namespace orvanta
