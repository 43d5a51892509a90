#include "Views/SetupView.h"

#include "Views/Band.h"
#include "Views/Column.h"
#include "Views/DeviceGrid.h"
#include "Views/GridButton.h"
#include "Views/Palette.h"
#include "Views/PanelGeometry.h"
#include "Views/SetupStepRow.h"
#include "Views/Text/SetupText.h"

#include <QFontMetrics>
#include <QPainter>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace orvanta {

/// The name between its arrows, over how much of the setup is done.
class SetupHeader final : public Band {
public:
    explicit SetupHeader(const Appearance& appearance)
        : Band(appearance, QSize(panelWidth, rowHeight), {}) {
        setAccessibleName(QStringLiteral("orvanta"));
    }

    /// From 0 to 1.
    void setProgress(double progress) {
        if (progress != progress_) {
            progress_ = progress;
            update();
        }
    }

protected:
    void paintContent(QPainter& painter, const Palette& palette) override {
        const std::pair<QString, QColor> parts[] = {
            {QStringLiteral("↑"), Palette::green},
            {QStringLiteral("orvanta"), palette.foreground},
            {QStringLiteral("↓"), Palette::red},
        };
        const QFontMetrics metrics = painter.fontMetrics();
        int width = 0;
        for (const auto& [text, color] : parts) {
            width += metrics.horizontalAdvance(text);
        }
        int x = (panelWidth - width) / 2;
        for (const auto& [text, color] : parts) {
            painter.setPen(color);
            painter.drawText(QRect(x, 0, panelWidth, rowHeight), Qt::AlignVCenter | Qt::AlignLeft,
                             text);
            x += metrics.horizontalAdvance(text);
        }
        const double done = panelWidth * progress_;
        drawRule(painter, QRectF(0, 0, done, rowHeight), Qt::BottomEdge, Palette::green);
        drawRule(painter, QRectF(done, 0, panelWidth - done, rowHeight), Qt::BottomEdge,
                 palette.rule);
    }

private:
    double progress_ = 0;
};

SetupView::SetupView(Setup& setup, const Appearance& appearance, std::function<void()> quit,
                     QWidget* parent)
    : QWidget(parent)
    , setup_(setup)
    , appearance_(appearance)
    , header_(new SetupHeader(appearance))
    , title_(new TextBand(appearance, QSize(panelWidth, rowHeight), Qt::BottomEdge,
                          TextBand::Tone::muted))
    , scrollArea_(new QScrollArea) {
    scrollArea_->setFixedSize(panelWidth, contentHeight);
    scrollArea_->setFrameShape(QFrame::NoFrame);
    scrollArea_->setFocusPolicy(Qt::NoFocus);
    scrollArea_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrollArea_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scrollArea_->viewport()->setAutoFillBackground(false);

    connect(&setup_, &Setup::changed, this, &SetupView::refresh);
    refresh();

    auto* const quitButton = new GridButton(appearance, QSize(panelWidth, rowHeight), Qt::TopEdge);
    quitButton->setLabel({.text = QStringLiteral("SAIR")});
    quitButton->setTitles({}, QStringLiteral("Sair"));
    connect(quitButton, &GridButton::clicked, this, std::move(quit));

    setFixedSize(panelWidth, panelHeight);
    QVBoxLayout* const column = unspacedColumn(this);
    column->addWidget(header_);
    column->addWidget(title_);
    column->addWidget(scrollArea_);
    column->addWidget(quitButton);
}

void SetupView::refresh() {
    const std::vector<Setup::Step> required = setup_.required();
    const std::vector<Setup::Step> optional = setup_.optional();
    header_->setProgress(static_cast<double>(setup_.done()) / static_cast<double>(required.size()));
    title_->setTexts(QStringLiteral("CONFIGURAÇÃO"), setupCounter(setup_.done(), required.size()));

    std::vector<Setup::Step> steps = required;
    steps.insert(steps.end(), optional.begin(), optional.end());
    const bool sameRows = std::ranges::equal(rows_, steps, [](const auto* row, const auto& step) {
        return row->step().id == step.id && row->step().optional == step.optional;
    });
    if (!sameRows) {
        rebuild(required, optional);
        return;
    }
    // The rows stay, and with them the place in the list and the keyboard's.
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        rows_[i]->setStep(steps[i]);
    }
}

void SetupView::rebuild(const std::vector<Setup::Step>& required,
                        const std::vector<Setup::Step>& optional) {
    auto* const list = new QWidget;
    QVBoxLayout* const column = unspacedColumn(list);
    rows_.clear();
    const auto addRows = [this, column](const std::vector<Setup::Step>& steps) {
        for (const Setup::Step& step : steps) {
            auto* const row = new SetupStepRow(appearance_, step);
            connect(row, &SetupStepRow::actionRequested, this, [this, row] {
                const Setup::Step asked = row->step(); // The row may be gone before it is done.
                setup_.perform(asked);
            });
            column->addWidget(row);
            rows_.push_back(row);
        }
    };
    addRows(required);
    if (!optional.empty()) {
        auto* const heading = new TextBand(appearance_, QSize(panelWidth, rowHeight),
                                           Qt::BottomEdge, TextBand::Tone::muted);
        heading->setTexts(QStringLiteral("OUTROS NAVEGADORES"), QStringLiteral("OPCIONAL"));
        column->addWidget(heading);
        addRows(optional);
    }
    // One of the rows' buttons may be what brought us here.
    if (QWidget* const former = scrollArea_->takeWidget(); former != nullptr) {
        former->hide();
        former->deleteLater();
    }
    scrollArea_->setWidget(list);
    list->setAutoFillBackground(false);
    list->show();
}

} // namespace orvanta
