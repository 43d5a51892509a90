#include "Views/MetricBand.h"

#include "Platform/Appearance.h"
#include "Views/Band.h"
#include "Views/DeviceGrid.h"
#include "Views/Palette.h"
#include "Views/PanelFont.h"
#include "Views/PanelGeometry.h"
#include "Views/Text/PanelText.h"

#include <QFontMetricsF>
#include <QPainter>

#include <utility>

namespace orvanta {

/// One share: an arrow, the percentage and what it is a share of.
class Metric final : public Band {
public:
    Metric(const Appearance& appearance, const QString& title, const QString& arrow,
           const QColor& color, QWidget* parent)
        : Band(appearance, QSize(panelWidth / 2, rowHeight), {}, parent)
        , title_(title)
        , arrow_(arrow)
        , color_(color) {}

    void setShare(const QString& share) {
        if (share != share_) {
            share_ = share;
            setAccessibleName(arrow_ + u' ' + share_ + u' ' + title_);
            update();
        }
    }

protected:
    void paintContent(QPainter& painter, const Palette& palette) override {
        constexpr double gap = 5;
        painter.setFont(panelFont(11.5, *this));
        const QFontMetricsF metrics(painter.font(), this);
        double x = cellPadding;
        for (const auto& [text, ink] :
             {std::pair(arrow_, color_), {share_, color_}, {title_, palette.foreground}}) {
            painter.setPen(ink);
            painter.drawText(QRectF(x, 0, width(), height()), Qt::AlignVCenter | Qt::AlignLeft,
                             text);
            x += metrics.horizontalAdvance(text) + gap;
        }
    }

private:
    QString title_;
    QString arrow_;
    QColor color_;
    QString share_;
};

MetricBand::MetricBand(const Appearance& appearance, QWidget* parent)
    : QWidget(parent)
    , appearance_(appearance)
    , production_(new Metric(appearance, QStringLiteral("PRODUÇÃO"), QStringLiteral("↑"),
                             Palette::green, this))
    , consumption_(new Metric(appearance, QStringLiteral("CONSUMO"), QStringLiteral("↓"),
                              Palette::red, this)) {
    setFixedSize(panelWidth, rowHeight);
    consumption_->move(panelWidth / 2, 0);
    setRatio(std::nullopt);
}

void MetricBand::setRatio(std::optional<double> ratio) {
    production_->setShare(metricPercentage(ratio));
    consumption_->setShare(metricPercentage(ratio ? std::optional(1 - *ratio) : std::nullopt));
    if (ratio != ratio_) {
        ratio_ = ratio;
        update(0, rowHeight - 1, panelWidth, 1);
    }
}

void MetricBand::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const double production = panelWidth * ratio_.value_or(0);
    drawRule(painter, QRectF(0, 0, production, rowHeight), Qt::BottomEdge, Palette::green);
    drawRule(painter, QRectF(production, 0, panelWidth - production, rowHeight), Qt::BottomEdge,
             ratio_ ? Palette::red : Palette(appearance_.colorScheme()).rule);
}

} // namespace orvanta
