#include "Views/PanelView.h"

#include "Model/Activity.h"
#include "Model/DurationText.h"
#include "Platform/Appearance.h"
#include "Platform/CleanText.h"
#include "Tracking/Tracker.h"
#include "Views/ActivityRows.h"
#include "Views/Column.h"
#include "Views/GridButton.h"
#include "Views/HistoryGrid.h"
#include "Views/MetricBand.h"
#include "Views/Palette.h"
#include "Views/PanelFooter.h"
#include "Views/PanelGeometry.h"
#include "Views/Text/HistoryText.h"
#include "Views/Text/PanelText.h"
#include "Views/TextBlock.h"
#include "Views/TitleBand.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>

#include <optional>
#include <utility>

namespace orvanta {

namespace {

constexpr int historyLength = 13; // Weeks.

/// Over the rows, where others have the panel behind them.
class PermitButton final : public GridButton {
public:
    PermitButton(const Appearance& appearance, QWidget* parent)
        : GridButton(appearance, QSize(panelWidth, rowHeight), Qt::TopEdge, parent) {
        setLabel({.text = QStringLiteral("PERMITIR")});
        setTitles({}, QStringLiteral("Permitir"));
        move(0, contentHeight - rowHeight);
    }

protected:
    void paintEvent(QPaintEvent* event) override {
        QPainter(this).fillRect(rect(), Palette(appearance().colorScheme()).background);
        GridButton::paintEvent(event);
    }
};

} // namespace

PanelView::PanelView(const PanelSurroundings& surroundings, QWidget* parent)
    : QWidget(parent)
    , surroundings_(surroundings)
    , listing_(surroundings.mainLoop, [this] { showListing(); })
    , metrics_(new MetricBand(surroundings.appearance))
    , title_(new TitleBand(surroundings.appearance))
    , content_(new QWidget)
    , footer_(new PanelFooter(surroundings.appearance))
    , banner_(new TextBlock(surroundings.appearance,
                            {.size = 9,
                             .padding = smallestGap,
                             .above = smallestGap,
                             .below = smallestGap,
                             .isFilled = true},
                            panelWidth, content_))
    , permit_(new PermitButton(surroundings.appearance, content_)) {
    setFixedSize(panelWidth, panelHeight);
    content_->setFixedSize(panelWidth, contentHeight);
    content_->installEventFilter(this);
    banner_->setAttribute(Qt::WA_TransparentForMouseEvents); // The rows below stay in reach.
    QVBoxLayout* const column = unspacedColumn(this);
    column->addWidget(metrics_);
    column->addWidget(title_);
    column->addWidget(content_);
    column->addWidget(footer_);

    connect(title_, &TitleBand::clicked, this, [this](Listing target) { listing_.click(target); });
    connect(title_, &TitleBand::entered, this,
            [this](Listing target) { listing_.enterButton(target); });
    connect(title_, &TitleBand::left, this, [this] { listing_.leave(); });

    Tracker& tracker = surroundings_.tracker;
    connect(footer_, &PanelFooter::pauseRequested, &tracker, &Tracker::togglePause);
    connect(footer_, &PanelFooter::resetRequested, this, &PanelView::askToReset);
    connect(footer_, &PanelFooter::quitRequested, this, surroundings_.quit);
    connect(permit_, &GridButton::clicked, this, [this] {
        if (const DesktopProblem problem = surroundings_.desktopProblem(); problem.solve) {
            problem.solve();
        }
    });
    for (const auto signal :
         {&Tracker::activitiesChanged, &Tracker::showAllActivitiesChanged, &Tracker::pausedChanged,
          &Tracker::activeKeyChanged, &Tracker::revisionChanged, &Tracker::browserStatusChanged,
          &Tracker::storageErrorChanged}) {
        connect(&tracker, signal, this, &PanelView::refresh);
    }
    showListing();
}

void PanelView::showListing() {
    QWidget* const former = list_ != nullptr ? static_cast<QWidget*>(list_) : history_;
    list_ = nullptr;
    history_ = nullptr;
    const Appearance& appearance = surroundings_.appearance;
    Tracker& tracker = surroundings_.tracker;
    if (listing_.listing() == Listing::history) {
        history_ = new HistoryGrid(
            appearance, surroundings_.calendar, [this] { showTotals(); }, content_);
        history_->show();
    } else {
        list_ = new ActivityRows(appearance, listing_.listing(), content_);
        connect(list_, &ActivityRows::stopRequested, this, &PanelView::askToStop);
        connect(list_, &ActivityRows::classificationRequested, &tracker,
                [&tracker](const Activity* activity, Category category) {
                    tracker.selectClassification(*activity, category);
                });
        connect(list_, &ActivityRows::resumeRequested, &tracker,
                [&tracker](const Activity* activity) { tracker.resumeMonitoring(*activity); });
        list_->show();
    }
    if (former != nullptr) {
        // The pointer has just left it, and Qt is not through with telling it.
        former->hide();
        former->deleteLater();
    }
    banner_->raise();
    permit_->raise();
    title_->setListing(listing_.listing());
    refresh();
}

void PanelView::refresh() {
    const Tracker& tracker = surroundings_.tracker;
    if (history_ != nullptr) {
        history_->setWeeks(tracker.historyWeeks(historyLength));
    }
    if (list_ != nullptr) {
        const auto timedKey = tracker.paused() ? std::nullopt : tracker.activeKey();
        if (listing_.listing() == Listing::unmonitored) {
            list_->setActivities(tracker.unmonitored(), timedKey);
        } else {
            list_->setActivities(tracker.sorted(), timedKey);
        }
    }
    showTotals();
    showBanner();
    footer_->setPaused(tracker.paused());
}

void PanelView::showTotals() {
    const Tracker& tracker = surroundings_.tracker;
    const HistoryDay* day = history_ != nullptr ? history_->hoveredDay() : nullptr;
    const DayTotals totals = day != nullptr ? day->totals
                                            : DayTotals{tracker.total(Category::production),
                                                        tracker.total(Category::consumption),
                                                        tracker.total(Category::pending)};
    const double classified = totals.production + totals.consumption;
    metrics_->setRatio(classified > 0 ? std::optional(totals.production / classified)
                                      : std::nullopt);

    const double all = classified + totals.pending;
    const Listing listing = listing_.listing();
    if (day != nullptr) {
        title_->setTexts(dayTitle(day->date, surroundings_.calendar), duration(all));
    } else if (listing == Listing::history) {
        title_->setTexts(listingTitle(listing, tracker.paused()),
                         QString::number(tracker.historyDayCount()));
    } else {
        title_->setTexts(listingTitle(listing, tracker.paused()),
                         listing == Listing::activities ? duration(all)
                                                        : QString::number(list_->count()));
        list_->setEmptyText(emptyText(listing, all > 0));
    }
}

void PanelView::showBanner() {
    const Tracker& tracker = surroundings_.tracker;
    DesktopProblem problem;
    if (const std::optional<QString>& error = tracker.storageError()) {
        problem.text = *error;
    } else if (problem = surroundings_.desktopProblem(); problem.text.isEmpty()) {
        problem.text = tracker.browserStatus();
    }
    const bool isShown =
        !problem.text.isEmpty() && !isStopAsked_ && listing_.listing() == Listing::activities;
    const bool isSolvable = isShown && problem.solve;
    if (isShown) {
        banner_->setText(problem.text);
        banner_->move(0, contentHeight - banner_->height() - (isSolvable ? rowHeight : 0));
    }
    banner_->setVisible(isShown);
    permit_->setVisible(isSolvable);
}

void PanelView::askToReset() {
    ask({QStringLiteral("Zerar o tempo acumulado?"),
         QStringLiteral("O tempo acumulado será apagado. Suas classificações serão preservadas."),
         QStringLiteral("Zerar")},
        [&tracker = surroundings_.tracker] { tracker.reset(); });
}

void PanelView::askToStop(const Activity* activity) {
    listing_.cancelDismissal();
    isStopAsked_ = true;
    const QString name = fontMetrics().elidedText(cleanName(activity->name()), Qt::ElideMiddle,
                                                  Confirmation::longestName);
    ask({stopTitle(name) + u'?',
         QStringLiteral("O tempo e a classificação serão preservados. Você pode reativar o "
                        "monitoramento pelo botão de olho riscado."),
         QStringLiteral("Parar")},
        [&tracker = surroundings_.tracker, activity] {
            tracker.classify(*activity, Category::ignored);
        });
}

void PanelView::ask(const Confirmation::Question& question, std::function<void()> action) {
    const QPointer<QWidget> before = window()->focusWidget();
    auto* const confirmation = new Confirmation(surroundings_.appearance, question, this);
    showBanner();
    const auto finish = [this, confirmation, before] {
        (before ? before.data() : this)->setFocus(Qt::OtherFocusReason);
        confirmation->hide();
        confirmation->deleteLater();
        isStopAsked_ = false;
        showBanner();
    };
    connect(confirmation, &Confirmation::cancelled, this, finish);
    connect(confirmation, &Confirmation::confirmed, this, [finish, action = std::move(action)] {
        finish();
        action();
    });
}

void PanelView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::RightButton) {
        openMenu(event->globalPosition().toPoint());
    } else {
        QWidget::mousePressEvent(event);
    }
}

/// Qt 6.8 sends none for a click in a popup, others do: of a click the press is what counts.
void PanelView::contextMenuEvent(QContextMenuEvent* event) {
    if (event->reason() != QContextMenuEvent::Mouse) {
        openMenu(event->globalPos());
    }
}

void PanelView::openMenu(QPoint place) {
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    Tracker& tracker = surroundings_.tracker;
    QAction* const all = menu->addAction(QStringLiteral("Mostrar todos"));
    all->setCheckable(true);
    all->setChecked(tracker.showAllActivities());
    connect(all, &QAction::toggled, &tracker, &Tracker::setShowAllActivities);
    menu->addSeparator();
    connect(menu->addAction(QStringLiteral("Ajustes…")), &QAction::triggered, this,
            surroundings_.openSettings);
    menu->popup(place);
}

void PanelView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    listing_.cancelDismissal();
}

/// Of the content area.
bool PanelView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == content_ && event->type() == QEvent::Enter) {
        listing_.cancelDismissal();
    } else if (watched == content_ && event->type() == QEvent::Leave) {
        listing_.leave();
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace orvanta
