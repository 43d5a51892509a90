#pragma once

#include "Views/Confirmation.h"
#include "Views/ListingSwitch.h"
#include "Views/PanelSurroundings.h"

#include <QWidget>

#include <functional>

namespace orvanta {

class Activity;
class ActivityRows;
class GridButton;
class HistoryGrid;
class MetricBand;
class PanelFooter;
class TextBlock;
class TitleBand;

/// What was measured, in four bands, and what can be done about it. It computes and stores nothing
/// of that: it shows what the tracker publishes and passes on what the person wants.
class PanelView final : public QWidget {
    Q_OBJECT

public:
    explicit PanelView(const PanelSurroundings& surroundings, QWidget* parent = nullptr);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    /// Of a day, or of the time since the last reset.
    void showTotals();
    void showBanner();
    void showListing();
    void refresh();

    void askToReset();
    void askToStop(const Activity* activity);
    void ask(const Confirmation::Question& question, std::function<void()> action);
    void openMenu(QPoint place);

    PanelSurroundings surroundings_;
    ListingSwitch listing_;
    MetricBand* metrics_;
    TitleBand* title_;
    QWidget* content_;
    PanelFooter* footer_;
    // One of these two is in the content.
    ActivityRows* list_ = nullptr;
    HistoryGrid* history_ = nullptr;
    TextBlock* banner_;
    GridButton* permit_; ///< below the banner when what it says can be solved
    bool isStopAsked_ = false;
};

} // namespace orvanta
