#include "Views/PanelView.h"

#include "Model/DurationText.h"
#include "Tracking/Tracker.h"
#include "Views/Band.h"
#include "Views/Column.h"
#include "Views/MetricBand.h"
#include "Views/PanelFooter.h"
#include "Views/PanelGeometry.h"

#include <optional>

namespace orvanta {

PanelView::PanelView(const PanelSurroundings& surroundings, QWidget* parent)
    : QWidget(parent)
    , surroundings_(surroundings)
    , metrics_(new MetricBand(surroundings.appearance))
    , title_(new TextBand(surroundings.appearance, QSize(panelWidth, rowHeight), Qt::BottomEdge,
                          TextBand::Tone::muted))
    , footer_(new PanelFooter(surroundings.appearance)) {
    setFixedSize(panelWidth, panelHeight);
    QVBoxLayout* const column = unspacedColumn(this);
    column->addWidget(metrics_);
    column->addWidget(title_);
    column->addStretch();
    column->addWidget(footer_);

    Tracker& tracker = surroundings_.tracker;
    connect(footer_, &PanelFooter::pauseRequested, &tracker, &Tracker::togglePause);
    connect(footer_, &PanelFooter::quitRequested, this, surroundings_.quit);
    connect(&tracker, &Tracker::revisionChanged, this, &PanelView::refresh);
    connect(&tracker, &Tracker::pausedChanged, this, &PanelView::refresh);
    refresh();
}

void PanelView::refresh() {
    const Tracker& tracker = surroundings_.tracker;
    const double production = tracker.total(Category::production);
    const double consumption = tracker.total(Category::consumption);
    const double classified = production + consumption;
    metrics_->setRatio(classified > 0 ? std::optional(production / classified) : std::nullopt);
    title_->setTexts(tracker.paused() ? QStringLiteral("PAUSADO") : QStringLiteral("MONITORANDO"),
                     duration(classified + tracker.total(Category::pending)));
    footer_->setPaused(tracker.paused());
}

} // namespace orvanta
